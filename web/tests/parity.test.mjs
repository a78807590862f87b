// The engine in WebAssembly answers as the native CLI does: explain, solutions and
// share codes on the shipped collection and on puzzles of every size made for the test.
import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { promisify } from "node:util";
import { cli, dist, shipped } from "./helpers.mjs";

const run = promisify(execFile);
// With the 61 shipped puzzles, 7 sizes of 35 make 306.
const PER_SIZE = Number(process.env.QM_WEB_PARITY_PER_SIZE ?? 35);

async function engine() {
  const factory = createRequire(import.meta.url)(join(dist, "engine.js"));
  // Node's fetch cannot read files: the module is handed its bytes.
  return factory({ wasmBinary: readFileSync(join(dist, "engine.wasm")) });
}

async function cliJson(...args) {
  const { stdout } = await run(cli, [...args, "--json"], { maxBuffer: 16 << 20 });
  return JSON.parse(stdout);
}

// Runs `work` on every item, two at a time (the machine has two cores).
async function pool(items, work) {
  let next = 0;
  const worker = async () => {
    while (next < items.length) await work(items[next++]);
  };
  await Promise.all([worker(), worker()]);
}

test("explain, solutions and code agree with the CLI on puzzles of every size", async () => {
  const m = await engine();
  const dir = mkdtempSync(join(tmpdir(), "qm-parity-"));
  const file = join(dir, "every-size.fut");
  let text = "";
  for (let size = 3; size <= 9; size++) {
    for (let i = 0; i < PER_SIZE; i++) {
      const made = JSON.parse(m.create(size, 0, 0, 1000 * size + i));
      assert.equal(made.error, undefined);
      text += m.recordText(".".repeat(size * size));
    }
  }
  writeFileSync(file, Buffer.from(text, "latin1"));
  const shippedCount = (await cliJson("count", shipped)).count;
  const cases = [
    ...Array.from({ length: 7 * PER_SIZE }, (_, i) => [file, i + 1]),
    ...Array.from({ length: shippedCount }, (_, i) => [shipped, i + 1]),
  ];
  m.FS.writeFile("/every-size.fut", readFileSync(file));
  m.FS.writeFile("/shipped.fut", readFileSync(shipped));
  const sizes = new Set();
  let compared = 0;
  await pool(cases, async ([path, n]) => {
    const [explained, solutions, coded] = await Promise.all([
      cliJson("explain", path, "-n", String(n)),
      cliJson("solutions", path, "-n", String(n)),
      cliJson("code", path, "-n", String(n)),
    ]);
    const where = `${path === file ? "made" : "shipped"} puzzle ${n}`;
    const loaded = JSON.parse(m.loadRecord(path === file ? "/every-size.fut" : "/shipped.fut", n));
    assert.equal(loaded.error, undefined, where);
    sizes.add(loaded.size);
    const empty = ".".repeat(loaded.size * loaded.size);
    assert.deepEqual(JSON.parse(m.explain(empty)), explained, `explain of ${where}`);
    assert.deepEqual(JSON.parse(m.solutions(empty, 2)), solutions, `solutions of ${where}`);
    assert.equal(m.shareCode(), coded.code, `code of ${where}`);
    compared++;
  });
  assert.equal(compared, cases.length);
  assert.deepEqual([...sizes].sort(), [3, 4, 5, 6, 7, 8, 9]);
});

test("a player's digits count the same in both", async () => {
  const m = await engine();
  m.FS.writeFile("/shipped.fut", readFileSync(shipped));
  // Puzzle 3 with a right digit, and with a wrong one that breaks it.
  for (const [set, cell] of [["14=3", 4], ["0=2", 0]]) {
    const loaded = JSON.parse(m.loadRecord("/shipped.fut", 3));
    const cells = [...".".repeat(loaded.size * loaded.size)];
    cells[cell] = set.split("=")[1];
    const explained = await cliJson("explain", shipped, "-n", "3", "--set", set);
    assert.deepEqual(JSON.parse(m.explain(cells.join(""))), explained, set);
    const solutions = await cliJson("solutions", shipped, "-n", "3", "--set", set);
    assert.deepEqual(JSON.parse(m.solutions(cells.join(""), 2)), solutions, set);
  }
});
