// The page in headless chromium, driven as a player would drive it.
import assert from "node:assert/strict";
import { copyFileSync, existsSync, mkdtempSync, readFileSync, readdirSync, statSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { cellLabels, goTo, root, runCli, shipped, startPage, status, waitForStatus } from "./helpers.mjs";

let env;
let page;

const codeOf = (n) => runCli("code", shipped, "-n", String(n)).code;

// A fresh load of the page at a link (not only a change of the link).
async function open(hash) {
  await page.goto("about:blank");
  await page.goto(env.base + hash, { waitUntil: "networkidle0" });
  await page.waitForSelector("[role=gridcell]");
}

before(async () => {
  env = await startPage(Number(process.env.QM_WEB_TEST_PORT ?? 8091));
  page = env.watch(await env.browser.newPage());
  await page.setViewport({ width: 1100, height: 850 });
});

after(async () => {
  await env?.browser.close();
  env?.server.close();
});

test("a share link opens its puzzle, also when the link changes", async () => {
  const code = codeOf(3);
  await open(`#p=${code}`);
  assert.equal(await page.$eval("[role=grid]", (g) => g.getAttribute("aria-label")), "Puzzle");
  assert.equal((await page.$$("[role=grid] > [role=row]")).length, 4);
  const labels = await cellLabels(page);
  assert.equal(labels.length, 16);
  assert.equal(labels[2], "Row 1, column 3, given 3");
  assert.equal(labels[0], "Row 1, column 1, empty");
  assert.equal(await page.$eval("#cell-0-0", (c) => c.getAttribute("aria-description")), "less than the cell to its right");

  const other = codeOf(40);
  const size = Number(other.split("-")[0]);
  await page.evaluate((c) => (location.hash = `#p=${c}`), other);
  await page.waitForFunction((n) => document.querySelectorAll("[role=gridcell]").length === n, {}, size * size);
  assert.match(await status(page), new RegExp(`Opened the shared puzzle ${other}`));

  await page.evaluate(() => (location.hash = "#p=3-Lzz"));
  assert.match(await waitForStatus(page, /This link holds no puzzle: /), /has more/);
});

test("Next step: where to look, the sentence explain gives, then the step made", async () => {
  const explained = runCli("explain", shipped, "-n", "5");
  const first = explained.steps[0];
  await open(`#p=${codeOf(5)}`);
  await page.focus("[role=grid]");
  await page.keyboard.press("h");
  assert.ok((await status(page)).startsWith(`Hint: ${first.technique}: look at `));
  await page.keyboard.press("h");
  assert.equal(await status(page), `Step: ${first.technique}: ${first.text}`);
  const before = await cellLabels(page);
  await page.click("#next");
  assert.equal(await status(page), `Made: ${first.technique}: ${first.text}`);
  const after = await cellLabels(page);
  const n = Math.sqrt(after.length);
  for (const { cell, digit } of first.placed) {
    assert.equal(after[(cell[0] - 1) * n + cell[1] - 1], `Row ${cell[0]}, column ${cell[1]}, ${digit}`);
  }
  if (first.placed.length === 0) assert.deepEqual(after, before, "a step that only strikes candidates places nothing");
  // The made step is one action for Undo.
  await page.click("#undo");
  assert.deepEqual(await cellLabels(page), before);
});

test("solving by keys ends in Solved", async () => {
  const solution = runCli("solutions", shipped, "-n", "3").first;
  await open(`#p=${codeOf(3)}`);
  const labels = await cellLabels(page);
  const n = 4;
  for (let r = 1; r <= n; r++) {
    for (let c = 1; c <= n; c++) {
      if (labels[(r - 1) * n + c - 1].includes("given")) continue;
      await goTo(page, r, c);
      await page.keyboard.press(solution[(2 * r - 2) * (2 * n - 1) + 2 * c - 2]);
    }
  }
  assert.equal(await status(page), "Solved");
  await page.click("#check");
  assert.equal(await status(page), "Solved");
});

test("pencil marks, undo and redo", async () => {
  await open(`#p=${codeOf(7)}`);
  const marks = () => page.$$eval("#drawing text.mark", (t) => t.length);
  const empty = (await cellLabels(page)).findIndex((l) => l.endsWith("empty"));
  const n = Math.sqrt((await cellLabels(page)).length);
  const [r, c] = [Math.floor(empty / n) + 1, (empty % n) + 1];
  const label = async () => (await cellLabels(page))[empty];
  await goTo(page, r, c);
  await page.keyboard.press("p");
  assert.equal(await page.$eval("#pencil", (b) => b.getAttribute("aria-pressed")), "true");
  const start = await marks();
  await page.keyboard.press("1");
  await page.keyboard.press("2");
  assert.equal(await marks(), start + 2);
  assert.match(await label(), /empty$/);
  await page.keyboard.press("1");
  assert.equal(await marks(), start + 1, "a second press takes the mark away");
  await page.keyboard.press("P");
  assert.equal(await page.$eval("#pencil", (b) => b.getAttribute("aria-pressed")), "false");
  await page.keyboard.press("3");
  assert.match(await label(), /, 3$/);
  assert.equal(await marks(), start, "a digit replaces the cell's marks");

  const chord = async (...keys) => {
    for (const k of keys) await page.keyboard.down(k);
    for (const k of keys.reverse()) await page.keyboard.up(k);
  };
  await chord("Control", "z");
  assert.match(await label(), /empty$/);
  assert.equal(await marks(), start + 1);
  await chord("Control", "y");
  assert.match(await label(), /, 3$/);
  await chord("Control", "z");
  await chord("Control", "Shift", "Z");
  assert.match(await label(), /, 3$/);
  await page.keyboard.press("Backspace");
  assert.match(await label(), /empty$/);
  await page.click("#undo");
  await page.click("#undo");
  assert.match(await label(), /empty$/, "back before the digit 3");
  await page.click("#redo");
  assert.match(await label(), /, 3$/);
});

test("New puzzle makes one of the chosen size and grade in a worker", async () => {
  await open(`#p=${codeOf(3)}`);
  await page.click("#new");
  const dialog = await page.waitForSelector("dialog[open]");
  assert.equal(await dialog.evaluate((d) => document.getElementById(d.getAttribute("aria-labelledby")).textContent), "New puzzle");
  const options = await page.$$eval("#grade option", (o) => o.map((x) => x.textContent));
  assert.equal(options[0], "Any");
  assert.ok(options.includes("Gentle") && options.includes("Expert") && !options.includes("Needs search"));
  await page.select("#size", "5");
  const moderate = await page.$eval("#grade", (s) => [...s.options].find((o) => o.textContent === "Moderate").value);
  await page.select("#grade", moderate);
  await page.click("#create");
  await waitForStatus(page, /^New 5×5 puzzle, grade Moderate$/, 90000);
  assert.equal((await cellLabels(page)).length, 25);

  // The engine of the desktop grades the new puzzle the same.
  await page.click("#share");
  // The link is shown once the clipboard has taken it, a moment after the click.
  const code = /#p=(\S+)/.exec(await waitForStatus(page, /#p=\S+/))[1];
  const file = join(mkdtempSync(join(tmpdir(), "qm-web-")), "new.fut");
  runCli("open", code, "-o", file);
  assert.equal(runCli("explain", file).grade.name, "Moderate");
  assert.equal(runCli("solutions", file).solutions, 1);
});

test("a collection opened from a file saves back as the desktop writes it", async () => {
  await open("");
  const dir = mkdtempSync(join(tmpdir(), "qm-web-"));
  const source = join(dir, "sample.fut");
  copyFileSync(shipped, source);
  const input = await page.$("#file");
  await input.uploadFile(source);
  await waitForStatus(page, /^Opened sample\.fut: 61 puzzles$/);

  const session = await env.browser.target().createCDPSession();
  const download = async () => {
    const into = mkdtempSync(join(tmpdir(), "qm-download-"));
    await session.send("Browser.setDownloadBehavior", { behavior: "allow", downloadPath: into });
    await page.click("#save");
    const file = join(into, "sample.fut");
    // The file can appear before its bytes do: wait until it has a size that holds still.
    let last = -1;
    for (let i = 0; i < 100; i++) {
      await new Promise((r) => setTimeout(r, 100));
      const size = existsSync(file) ? statSync(file).size : -1;
      if (size > 0 && size === last) break;
      last = size;
    }
    assert.ok(existsSync(file), `downloaded: ${readdirSync(into)}`);
    return readFileSync(file);
  };
  const original = readFileSync(shipped);
  assert.ok((await download()).equals(original), "nothing played: the same bytes");

  // Puzzle 2 with one digit placed: the record is written as the desktop writes a puzzle
  // whose entered digit it keeps, the rest of the file unchanged.
  await page.click("#next-puzzle");
  await waitForStatus(page, /./).catch(() => undefined);
  assert.equal(await page.$eval("#where", (e) => e.textContent), "Puzzle 2 of 61");
  const labels = await cellLabels(page);
  const empty = labels.findIndex((l) => l.endsWith("empty"));
  const n = 4;
  await goTo(page, Math.floor(empty / n) + 1, (empty % n) + 1);
  await page.keyboard.press("4");
  const saved = await download();

  const text = original.toString("latin1");
  const starts = [...text.matchAll(/^#/gm)].map((m) => m.index);
  const lines = text.slice(starts[1], starts[2]).split("\r\n");
  const [size, signs, clues] = lines[2].split(" ");
  lines[2] = `${size} ${signs} ${Number(clues) + 1}`;
  const row = 3 + 2 * Math.floor(empty / n);
  const col = 2 * (empty % n);
  lines[row] = lines[row].slice(0, col) + "4" + lines[row].slice(col + 1);
  const expected = text.slice(0, starts[1]) + lines.join("\r\n") + text.slice(starts[2]);
  assert.equal(saved.toString("latin1"), expected);
});

test("progress survives a reload, and the page opens where the player left", async () => {
  await open(`#p=${codeOf(9)}`);
  const empty = (await cellLabels(page)).findIndex((l) => l.endsWith("empty"));
  const n = Math.sqrt((await cellLabels(page)).length);
  await goTo(page, Math.floor(empty / n) + 1, (empty % n) + 1);
  await page.keyboard.press("1");
  await new Promise((r) => setTimeout(r, 300));
  await page.reload({ waitUntil: "networkidle0" });
  await page.waitForSelector("[role=gridcell]");
  assert.match((await cellLabels(page))[empty], /, 1$/);
  await page.keyboard.down("Control");
  await page.keyboard.press("z");
  await page.keyboard.up("Control");
  await page.focus("[role=grid]");
  await page.keyboard.down("Control");
  await page.keyboard.press("z");
  await page.keyboard.up("Control");
  assert.match((await cellLabels(page))[empty], /empty$/, "the history came back too");
  await page.keyboard.down("Control");
  await page.keyboard.press("y");
  await page.keyboard.up("Control");
  await new Promise((r) => setTimeout(r, 300));
  await open("");
  assert.match((await cellLabels(page))[empty], /, 1$/);
});

test("after one visit the page opens offline", async () => {
  await open("");
  await page.evaluate(() => navigator.serviceWorker.ready);
  await page.reload({ waitUntil: "networkidle0" });
  assert.ok(await page.evaluate(() => navigator.serviceWorker.controller !== null));
  await page.setOfflineMode(true);
  try {
    await page.reload({ waitUntil: "networkidle0" });
    await page.waitForSelector("[role=gridcell]");
    await page.focus("[role=grid]");
    await page.keyboard.press("h");
    assert.match(await status(page), /^(Hint: |Nothing is left)/);
  } finally {
    await page.setOfflineMode(false);
  }
});

test("axe finds no serious or critical accessibility fault", async () => {
  const axe = createRequire(import.meta.url).resolve("axe-core/axe.min.js");
  const audit = async () => {
    await page.addScriptTag({ path: axe });
    const results = await page.evaluate(() => window.axe.run(document));
    return results.violations.filter((v) => v.impact === "serious" || v.impact === "critical").map((v) => v.id);
  };
  await open(`#p=${codeOf(3)}`);
  await page.click("#solution-path");
  await page
    .waitForFunction(() => document.querySelectorAll("#path-steps li").length > 0, { timeout: 20000 })
    .catch(async (e) => assert.fail(`${e.message}; the page says: ${await status(page)}`));
  assert.match(await page.$eval("#path-grade", (e) => e.textContent), /^Grade: Moderate \(level \d+, score [\d.]+\)$/);
  assert.deepEqual(await audit(), []);
  await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: "dark" }]);
  await page.click("#new");
  assert.deepEqual(await audit(), []);
  await page.keyboard.press("Escape");
  await page.emulateMediaFeatures([]);
});

test("a phone-sized screen shows the whole grid without sideways scrolling", async () => {
  await page.setViewport({ width: 360, height: 740, isMobile: true, hasTouch: true });
  await open(`#p=${codeOf(60)}`);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= 360));
  const box = await page.$eval("[role=grid]", (g) => g.getBoundingClientRect().toJSON());
  assert.ok(box.right <= 360 && box.left >= 0);
  // The digit pad places digits on touch screens.
  await page.tap("#cell-0-0");
  const pad = await page.$$("#pad button");
  assert.ok(pad.length >= 4);
  await page.screenshot({ path: join(root, "build-web", "phone.png"), fullPage: true });
  await page.setViewport({ width: 1100, height: 850 });
});

test("no console error and no failed request on any page", () => {
  assert.deepEqual(env.problems, []);
});
