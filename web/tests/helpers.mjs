// What the page's tests share: the CLI built beside them, the served page in headless
// Debian chromium (never a downloaded browser), and a watch on console errors and
// failed requests.
import { execFileSync } from "node:child_process";
import { mkdtempSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import puppeteer from "puppeteer-core";
import { serve } from "../serve.mjs";

export const root = join(dirname(fileURLToPath(import.meta.url)), "..", "..");
export const dist = join(root, "web", "dist");
export const cli = process.env.QM_CLI ?? join(root, "build-test", "bin", "quillmere-cli");
export const shipped = join(root, "data", "puzzles.fut");

export function runCli(...args) {
  return JSON.parse(execFileSync(cli, [...args, "--json"], { encoding: "utf8" }));
}

export const CHROMIUM_FLAGS = [
  "--headless",
  "--no-sandbox",
  "--disable-gpu",
  "--disable-background-networking",
  "--disable-component-update",
  "--disable-sync",
  "--no-first-run",
];

export async function startPage(port) {
  const server = await serve(dist, port);
  const browser = await puppeteer.launch({
    executablePath: process.env.QM_CHROMIUM ?? "/usr/bin/chromium",
    headless: true,
    args: CHROMIUM_FLAGS,
    userDataDir: mkdtempSync(join(tmpdir(), "qm-chromium-")),
  });
  const problems = [];
  const watch = (page) => {
    page.on("console", (m) => {
      if (m.type() === "error") problems.push(`console: ${m.text()}`);
    });
    page.on("pageerror", (e) => problems.push(`page error: ${e.message}`));
    page.on("requestfailed", (r) => {
      // Offline on purpose, and a download handed to the browser, are not failures.
      if (!r.url().startsWith("blob:")) problems.push(`request failed: ${r.url()} ${r.failure()?.errorText}`);
    });
    page.on("response", (r) => {
      if (r.status() >= 400) problems.push(`HTTP ${r.status()}: ${r.url()}`);
    });
    return page;
  };
  return { server, browser, problems, watch, base: `http://127.0.0.1:${port}/` };
}

export async function status(page) {
  return page.$eval("[role=status]", (e) => e.textContent);
}

export async function waitForStatus(page, test, timeout = 20000) {
  await page.waitForFunction(
    (source) => new RegExp(source).test(document.querySelector("[role=status]").textContent),
    { timeout },
    test.source,
  );
  return status(page);
}

export async function cellLabels(page) {
  return page.$$eval("[role=gridcell]", (cells) => cells.map((c) => c.getAttribute("aria-label")));
}

// Moves the selection to cell (r, c), from 1, starting at the top left.
export async function goTo(page, r, c) {
  await page.focus("[role=grid]");
  const current = await page.$eval("[role=grid]", (g) => g.getAttribute("aria-activedescendant"));
  const [, r0, c0] = current.split("-").map(Number);
  for (let i = r0; i < r - 1; i++) await page.keyboard.press("ArrowDown");
  for (let i = r0; i > r - 1; i--) await page.keyboard.press("ArrowUp");
  for (let i = c0; i < c - 1; i++) await page.keyboard.press("ArrowRight");
  for (let i = c0; i > c - 1; i--) await page.keyboard.press("ArrowLeft");
}
