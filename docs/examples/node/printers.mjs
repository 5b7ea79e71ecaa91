#!/usr/bin/env node
// Prints the address and the page count of every printer.
//
// usage: printers.mjs [OPTION OF snmp-inventory]...

import { spawnSync } from "node:child_process";

const program = process.env.SNMP_INVENTORY ?? "snmp-inventory";
const done = spawnSync(program, ["--printers", "--format", "json", ...process.argv.slice(2)], {
  stdio: ["ignore", "pipe", "inherit"],
  encoding: "utf8",
  maxBuffer: 64 * 1024 * 1024,
});
if (done.error) {
  throw done.error;
}
if (done.status !== 0) {
  process.exit(1); // it has said why there is no report
}
for (const { hostname, pages } of JSON.parse(done.stdout)) {
  console.log(`${hostname}\t${pages ?? "unknown"}`);
}
