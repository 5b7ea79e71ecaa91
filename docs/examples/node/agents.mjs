#!/usr/bin/env node
// Prints a numbered table of the agents that SNMPDiscovery finds.
//
// usage: agents.mjs [OPTION OF SNMPDiscovery]...

import { spawnSync } from "node:child_process";

/** The addresses that the tool found, in numeric order. Throws when it gave no document. */
function discover(options) {
  // The exit code says nothing (64 after every good run), so it is not checked. A run takes seven
  // seconds, so one that takes thirty hangs.
  const done = spawnSync(process.env.SNMPDISCOVERY ?? "SNMPDiscovery", options, {
    stdio: ["ignore", "pipe", "inherit"],
    encoding: "utf8",
    timeout: 30_000,
    maxBuffer: 64 * 1024 * 1024,
  });
  if (done.error) {
    throw done.error;
  }
  const number = (address) => address.split(".").reduce((all, part) => all * 256 + Number(part), 0);
  return JSON.parse(done.stdout)
    .map((entry) => entry.hostname)
    .sort((a, b) => number(a) - number(b));
}

try {
  const found = discover(process.argv.slice(2));
  console.log(["No.\tAddress", ...found.map((address, i) => `${i + 1}\t${address}`)].join("\n"));
} catch (error) {
  console.error(`agents.mjs: SNMPDiscovery gave no document: ${error.message}`);
  process.exitCode = 1;
}
