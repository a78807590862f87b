// Speed figures of the web edition, measured in headless Debian chromium (not a test:
// it prints what it measures). Needs web/dist built and a release quillmere-cli:
//   node web/bench.mjs [path/to/quillmere-cli]
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { gzipSync } from "node:zlib";
import { dist, root, startPage } from "./tests/helpers.mjs";

const cli = process.argv[2] ?? join(root, "build-rel", "bin", "quillmere-cli");
const HARD = Number(process.env.QM_BENCH_HARD ?? 100);

let bytes = 0;
let gzipped = 0;
for (const name of readdirSync(dist)) {
  const data = readFileSync(join(dist, name));
  bytes += data.length;
  gzipped += gzipSync(data, { level: 9 }).length;
}
console.log(`web/dist: ${bytes} bytes (${(bytes / 1048576).toFixed(2)} MB), ${gzipped} bytes gzipped`);

const env = await startPage(8093);
const page = env.watch(await env.browser.newPage());
const median = (xs) => [...xs].sort((a, b) => a - b)[Math.floor(xs.length / 2)];

// Opening the page to the grid taking a key.
const opens = [];
const ready = []; // the page's own clock: navigation to the grid drawn and listening
for (let i = 0; i < 5; i++) {
  await page.goto("about:blank");
  const start = Date.now();
  await page.goto(env.base);
  await page.waitForSelector("#cell-0-0[aria-label]");
  await page.focus("[role=grid]");
  await page.keyboard.press("ArrowRight");
  await page.waitForFunction(() => document.querySelector("[role=grid]").getAttribute("aria-activedescendant") === "cell-0-1");
  opens.push(Date.now() - start);
  ready.push(await page.evaluate(() => performance.getEntriesByName("quillmere-ready")[0]?.startTime ?? NaN));
  await page.keyboard.press("ArrowLeft");
}
console.log(`open to a key answered: median ${median(opens)} ms (${opens.join(", ")})`);
console.log(`navigation to the grid ready (page clock): median ${median(ready).toFixed(0)} ms`);

// The engine in the page: a second instance beside the page's own.
const figures = await page.evaluate(async (hardCount) => {
  const m = await QuillmereEngine({ locateFile: (f) => f });
  const level = (name) => JSON.parse(m.grades()).find((g) => g.name === name).level;
  const [tough, expert] = [level("Tough"), level("Expert")];
  const time = (f) => {
    const t = performance.now();
    const r = f();
    return [performance.now() - t, r];
  };
  // Hard 9x9 puzzles: Tough to Expert, made here.
  const hard = [];
  for (let seed = 1; hard.length < hardCount && seed < hardCount * 40; seed++) {
    const made = JSON.parse(m.create(9, tough, expert, seed));
    if (!made.error) hard.push({ code: made.code, record: m.recordText(".".repeat(81)), grade: made.grade.name });
  }
  const empty = ".".repeat(81);
  const next = [];
  const paths = [];
  for (const p of hard) {
    m.loadCode(p.code);
    next.push(time(() => m.nextStep(empty, ""))[0]);
    paths.push(time(() => m.explain(empty))[0]);
  }
  const sum = paths.reduce((a, b) => a + b, 0);
  const expertRuns = [];
  for (let seed = 1; seed <= 5; seed++) {
    const [ms, r] = time(() => JSON.parse(m.create(9, expert, expert, 100 + seed)));
    expertRuns.push({ ms, ok: !r.error });
  }
  return { hard, next, paths, sum, expert: expertRuns };
}, HARD);
const sorted = (xs) => [...xs].sort((a, b) => a - b);
console.log(`hard 9x9 puzzles made: ${figures.hard.length} (${[...new Set(figures.hard.map((h) => h.grade))].join(", ")})`);
console.log(`Next step on a hard 9x9: median ${median(figures.next).toFixed(1)} ms, worst ${sorted(figures.next).at(-1).toFixed(1)} ms`);
console.log(`solution path of a hard 9x9: median ${median(figures.paths).toFixed(1)} ms, worst ${sorted(figures.paths).at(-1).toFixed(1)} ms`);
console.log(`new 9x9 Expert (bounded tries of creation and grading): ${figures.expert.map((e) => `${e.ms.toFixed(0)} ms ${e.ok ? "made" : "none"}`).join("; ")}`);

// The main thread while the worker creates: the longest task.
await page.goto(env.base);
await page.waitForSelector("[role=gridcell]");
await page.evaluate(() => {
  window.longest = 0;
  new PerformanceObserver((list) => {
    for (const e of list.getEntries()) window.longest = Math.max(window.longest, e.duration);
  }).observe({ type: "longtask" });
});
for (let i = 0; i < 3; i++) {
  await page.click("#new");
  await page.select("#size", "9");
  await page.click("#create");
  await page.waitForFunction(() => !/Making/.test(document.querySelector("[role=status]").textContent), { timeout: 120000 });
}
console.log(`longest main-thread task while creating 9x9 puzzles: ${(await page.evaluate(() => window.longest)).toFixed(0)} ms (0: none over 50 ms)`);

// The same explains natively, on one core.
const dir = mkdtempSync(join(tmpdir(), "qm-bench-"));
const file = join(dir, "hard.fut");
writeFileSync(file, Buffer.from(figures.hard.map((h) => h.record).join(""), "latin1"));
const start = process.hrtime.bigint();
execFileSync("taskset", ["-c", "0", cli, "grade", file, "--json"]);
const nativeMs = Number(process.hrtime.bigint() - start) / 1e6;
console.log(`${figures.hard.length} hard 9x9 explains: WebAssembly ${figures.sum.toFixed(0)} ms, native ${nativeMs.toFixed(0)} ms (one core, process start and reading included): ratio ${(figures.sum / nativeMs).toFixed(2)}`);
if (env.problems.length) console.log(`page problems: ${env.problems.join("; ")}`);
await env.browser.close();
env.server.close();
