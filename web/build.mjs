// Builds the page into dist/: bundles the TypeScript, copies the static files, the
// engine (engine.js, engine.wasm from the emscripten build folder given as the first
// argument) and the shipped collection, and writes the service worker's file list.
import { build } from "esbuild";
import { createHash } from "node:crypto";
import { copyFileSync, mkdirSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const engineDir = process.argv[2] ?? join(here, "..", "build-web");
const dist = join(here, "dist");
rmSync(dist, { recursive: true, force: true });
mkdirSync(dist, { recursive: true });

const common = { bundle: true, minify: true, target: "es2020", logLevel: "warning", legalComments: "none" };
await build({ ...common, entryPoints: [join(here, "src/main.ts")], outfile: join(dist, "main.js"), format: "iife" });
await build({ ...common, entryPoints: [join(here, "src/worker.ts")], outfile: join(dist, "worker.js"), format: "iife" });

for (const name of readdirSync(join(here, "static"))) {
  if (name !== "sw.js") copyFileSync(join(here, "static", name), join(dist, name));
}
copyFileSync(join(engineDir, "engine.js"), join(dist, "engine.js"));
copyFileSync(join(engineDir, "engine.wasm"), join(dist, "engine.wasm"));
copyFileSync(join(here, "..", "data", "puzzles.fut"), join(dist, "puzzles.fut"));

const files = readdirSync(dist).sort();
const hash = createHash("sha256");
for (const name of files) hash.update(name).update(readFileSync(join(dist, name)));
const version = hash.digest("hex").slice(0, 12);
const list = ["./", ...files.filter((f) => f !== "index.html")];
writeFileSync(
  join(dist, "sw.js"),
  readFileSync(join(here, "static/sw.js"), "utf8")
    .replace("__VERSION__", version)
    .replace("__FILES__", JSON.stringify(list)),
);

let total = 0;
for (const name of readdirSync(dist)) total += statSync(join(dist, name)).size;
console.log(`web/dist: ${readdirSync(dist).length} files, ${total} bytes`);
