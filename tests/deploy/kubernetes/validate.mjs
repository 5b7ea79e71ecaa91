// Checks each document of a YAML file against the published schema of its kind, and says what it is
// or what is wrong. The exit code is the number of wrong documents.

import { readFileSync } from "node:fs";
import { loadAll } from "js-yaml";

// The schemas let members pass that they do not know, which a cluster does not. So it is watched
// which members the check asks for: one that it does not ask for is unknown.
function watch(value, path, objects) {
  if (value === null || typeof value !== "object") {
    return value;
  }
  if (Array.isArray(value)) {
    return value.map((each, index) => watch(each, `${path}[${index}]`, objects));
  }
  const names = Object.keys(value);
  const inner = Object.fromEntries(
    names.map((name) => [name, watch(value[name], `${path}.${name}`, objects)]));
  const asked = new Set();
  objects.push({ path, names, asked });
  return new Proxy(inner, {
    get(target, name) {
      asked.add(name);
      return target[name];
    },
    ownKeys(target) {
      names.forEach((name) => asked.add(name)); // a map, such as labels: any name will do
      return Reflect.ownKeys(target);
    },
  });
}

async function check(document) {
  const { apiVersion, kind } = document;
  const objects = [];
  const models = await import(`kubernetes-models/${apiVersion}`);
  // Assigned afterwards, because the constructor copies what it is given.
  Object.assign(new models[kind](), watch(document, kind, objects)).validate();
  const unknown = objects.flatMap(({ path, names, asked }) =>
    names.filter((name) => !asked.has(name)).map((name) => `${path}.${name}`));
  if (unknown.length > 0) {
    throw new Error(`unknown: ${unknown.join(", ")}`);
  }
}

let wrong = 0;
for (const document of loadAll(readFileSync(process.argv[2], "utf8"))) {
  try {
    await check(document);
    console.log(`${document.kind} ${document.metadata.name}`);
  } catch (error) {
    console.log(`${document.kind}: ${error.message}`);
    wrong += 1;
  }
}
process.exitCode = wrong;
