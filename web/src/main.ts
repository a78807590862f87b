// The page: one puzzle of a collection at a time, played with keys, the pointer or the
// digit pad; the engine answers in WebAssembly, creation and paths in a worker.
import { buildCells, drawGrid, GridView, labelCells } from "./grid";
import { bytesToText, EngineModule, Explanation, Puzzle, startEngine, StepAnswer, textToBytes } from "./engine";
import * as store from "./store";

interface Snapshot {
  cells: string;
  marks: number[];
}
interface Progress extends Snapshot {
  undo: Snapshot[];
  redo: Snapshot[];
}
interface Session {
  name: string;
  text: string; // the collection's bytes as character codes
  ordinal: number;
  played: number[]; // ordinals with progress, written back on Save file
}

const COLLECTION_PATH = "/collection.fut";
const HISTORY_LIMIT = 500;

let engine: EngineModule;
let session: Session;
let puzzle: Puzzle;
let progress: Progress;
let selected = 0;
let pencil = false;
let conflictsOn = false;
let lit = new Set<number>();
let changed = new Set<number>();
let wrong = new Set<number>();
let hint: { key: string; level: number; step: StepAnswer } | null = null;

const $ = <T extends HTMLElement>(id: string) => document.getElementById(id) as T;
const svg = document.getElementById("drawing") as unknown as SVGSVGElement;
const gridEl = $("grid");
const statusEl = $("status");

function say(text: string): void {
  statusEl.textContent = text;
}

// ---- the puzzle and its progress -------------------------------------------------

function n(): number {
  return puzzle.size;
}

function layoutTexts(): string[] {
  return puzzle.positions.map((t, k) => (puzzle.given[k] > 0 || "<>^v".includes(t) ? t : ""));
}

function cellPosition(i: number): number {
  const l = 2 * n() - 1;
  return 2 * Math.floor(i / n()) * l + 2 * (i % n());
}

function givenCells(): boolean[] {
  return Array.from({ length: n() * n() }, (_, i) => puzzle.given[cellPosition(i)] > 0);
}

function clueCells(): string {
  return givenCells()
    .map((g, i) => (g ? String(puzzle.given[cellPosition(i)]) : "."))
    .join("");
}

function freshProgress(): Progress {
  return { cells: clueCells(), marks: new Array(n() * n()).fill(0), undo: [], redo: [] };
}

function marksText(): string {
  return progress.marks
    .map((m) => {
      let s = "";
      for (let d = 1; d <= 9; d++) if (m & (1 << d)) s += d;
      return s;
    })
    .join(",");
}

let saving: Promise<void> = Promise.resolve();
function remember(): void {
  const key = puzzle.code;
  const value: Progress = JSON.parse(JSON.stringify(progress));
  const current = { ordinal: session.ordinal, played: [...session.played] };
  saving = saving
    .then(() => store.put("progress", key, value))
    .then(() => store.put("session", "last", current))
    .catch(() => say("Progress cannot be kept in this browser"));
}

// The collection's bytes are written only when another collection is opened.
function rememberCollection(): void {
  const kept = { name: session.name, text: session.text };
  saving = saving.then(() => store.put("session", "collection", kept)).catch(() => undefined);
}

async function show(loaded: Puzzle): Promise<void> {
  puzzle = loaded;
  const kept = await store.get<Progress>("progress", puzzle.code).catch(() => undefined);
  progress = kept && kept.cells.length === n() * n() ? kept : freshProgress();
  selected = Math.min(selected, n() * n() - 1);
  hint = null;
  lit = new Set();
  changed = new Set();
  wrong = new Set();
  buildCells(gridEl, view());
  render();
  // A shared or new puzzle carries its code as its comment: a name reads better.
  $("title").textContent =
    puzzle.comment === puzzle.code ? `Shared puzzle, ${n()}\u00d7${n()}` : `#${puzzle.number} ${puzzle.comment}`;
  $("where").textContent = `Puzzle ${session.ordinal} of ${Math.max(puzzle.count, 1)}`;
  ($("previous") as HTMLButtonElement).disabled = session.ordinal <= 1;
  ($("next-puzzle") as HTMLButtonElement).disabled = session.ordinal >= puzzle.count;
  $("path").hidden = true;
  remember();
}

function view(): GridView {
  const bad = new Set(wrong);
  if (conflictsOn) {
    const answer = JSON.parse(engine.check(progress.cells)) as { conflicts: number[] };
    for (const i of answer.conflicts) bad.add(i);
  }
  return {
    size: n(),
    layout: layoutTexts(),
    cells: progress.cells,
    given: givenCells(),
    marks: progress.marks,
    selected,
    lit,
    changed,
    bad,
  };
}

function render(): void {
  const v = view();
  drawGrid(svg, v);
  labelCells(gridEl, v);
  ($("undo") as HTMLButtonElement).disabled = progress.undo.length === 0;
  ($("redo") as HTMLButtonElement).disabled = progress.redo.length === 0;
  $("pencil").setAttribute("aria-pressed", String(pencil));
  renderPad();
}

function renderPad(): void {
  const pad = $("pad");
  if (pad.childElementCount === n() + 1) return;
  pad.replaceChildren();
  for (let d = 1; d <= n(); d++) {
    const b = document.createElement("button");
    b.type = "button";
    b.textContent = String(d);
    b.setAttribute("aria-label", `Digit ${d}`);
    b.addEventListener("click", () => {
      enter(d);
      gridEl.focus();
    });
    pad.append(b);
  }
  const clear = document.createElement("button");
  clear.type = "button";
  clear.textContent = "\u232b";
  clear.setAttribute("aria-label", "Clear cell");
  clear.addEventListener("click", () => {
    enter(0);
    gridEl.focus();
  });
  pad.append(clear);
}

// ---- the player's actions -----------------------------------------------------------

function act(change: (p: Progress) => void): void {
  progress.undo.push({ cells: progress.cells, marks: [...progress.marks] });
  if (progress.undo.length > HISTORY_LIMIT) progress.undo.shift();
  progress.redo = [];
  change(progress);
  afterChange();
}

function afterChange(): void {
  wrong = new Set();
  changed = new Set();
  if (!session.played.includes(session.ordinal)) session.played.push(session.ordinal);
  render();
  remember();
  if (!progress.cells.includes(".")) {
    const answer = JSON.parse(engine.check(progress.cells)) as { solved: boolean };
    say(answer.solved ? "Solved" : "Every cell is filled, but not every digit is right: Check shows which");
  }
}

function setCell(cells: string, i: number, c: string): string {
  return cells.slice(0, i) + c + cells.slice(i + 1);
}

function enter(digit: number): void {
  if (givenCells()[selected]) {
    say("A given digit cannot be changed");
    return;
  }
  const i = selected;
  if (pencil && digit > 0) {
    if (progress.cells[i] !== ".") return;
    act((p) => {
      p.marks = [...p.marks];
      p.marks[i] ^= 1 << digit;
    });
    return;
  }
  const c = digit > 0 ? String(digit) : ".";
  if (progress.cells[i] === c && digit > 0) return;
  act((p) => {
    p.cells = setCell(p.cells, i, c);
    if (digit > 0) {
      // A digit placed leaves the marks of its row and column.
      p.marks = p.marks.map((m, j) =>
        j === i ? 0 : Math.floor(j / n()) === Math.floor(i / n()) || j % n() === i % n() ? m & ~(1 << digit) : m,
      );
    } else {
      p.marks = [...p.marks];
      p.marks[i] = 0;
    }
  });
}

function undo(): void {
  const before = progress.undo.pop();
  if (!before) return;
  progress.redo.push({ cells: progress.cells, marks: progress.marks });
  progress.cells = before.cells;
  progress.marks = before.marks;
  afterChange();
}

function redo(): void {
  const after = progress.redo.pop();
  if (!after) return;
  progress.undo.push({ cells: progress.cells, marks: progress.marks });
  progress.cells = after.cells;
  progress.marks = after.marks;
  afterChange();
}

function cellOf(rc: [number, number]): number {
  return (rc[0] - 1) * n() + (rc[1] - 1);
}

// Next step, in the window's three levels: where to look, the step, the step made.
function nextStep(): void {
  const key = progress.cells + "|" + marksText();
  if (!hint || hint.key !== key) {
    const step = JSON.parse(engine.nextStep(progress.cells, marksText())) as StepAnswer;
    if (step.status || step.error) {
      hint = null;
      lit = new Set();
      changed = new Set();
      render();
      say(step.status ?? step.error ?? "");
      return;
    }
    hint = { key, level: 0, step };
  }
  hint.level++;
  const step = hint.step;
  if (hint.level === 1) {
    lit = new Set(step.cells.map(cellOf));
    render();
    say(step.hint);
    return;
  }
  if (hint.level === 2) {
    changed = new Set([...step.placed.map((p) => cellOf(p.cell)), ...step.removed.map((r) => cellOf(r.cell))]);
    render();
    say(step.shown);
    return;
  }
  hint = null;
  const candidates = JSON.parse(engine.candidates(progress.cells)) as string[];
  act((p) => {
    p.marks = [...p.marks];
    for (const placed of step.placed) {
      const i = cellOf(placed.cell);
      p.cells = setCell(p.cells, i, String(placed.digit));
      p.marks[i] = 0;
    }
    for (const removed of step.removed) {
      const i = cellOf(removed.cell);
      if (p.cells[i] !== ".") continue;
      let m = p.marks[i];
      if (!m) for (const d of candidates[i]) m |= 1 << Number(d);
      for (const d of removed.digits) m &= ~(1 << Number(d));
      p.marks[i] = m;
    }
  });
  lit = new Set();
  render();
  if (statusEl.textContent !== "Solved") say(step.made);
}

function check(): void {
  const answer = JSON.parse(engine.check(progress.cells)) as {
    conflicts: number[];
    wrong: number[];
    solved: boolean;
    solutions: number;
  };
  wrong = new Set([...answer.wrong, ...answer.conflicts]);
  render();
  if (answer.solved) say("Solved");
  else if (answer.solutions !== 1) say("This puzzle does not have exactly one solution: digits cannot be checked");
  else if (wrong.size) say(`${wrong.size === 1 ? "1 digit is" : `${wrong.size} digits are`} wrong (marked)`);
  else say("No mistakes so far");
}

// ---- the worker ------------------------------------------------------------------

const worker = new Worker("worker.js");
let requestId = 0;
const waiting = new Map<number, (answer: string) => void>();
worker.onmessage = (event: MessageEvent<{ id: number; answer: string }>) => {
  waiting.get(event.data.id)?.(event.data.answer);
  waiting.delete(event.data.id);
};
worker.onerror = (event) => {
  event.preventDefault();
  for (const resolve of waiting.values()) resolve(JSON.stringify({ error: `The worker stopped: ${event.message}` }));
  waiting.clear();
};
function ask(request: Record<string, unknown>): Promise<string> {
  const id = ++requestId;
  return new Promise((resolve) => {
    waiting.set(id, resolve);
    worker.postMessage({ ...request, id });
  });
}

async function solutionPath(): Promise<void> {
  const panel = $("path");
  panel.hidden = false;
  $("path-grade").textContent = "Working out the path\u2026";
  $("path-steps").replaceChildren();
  // The path of the puzzle itself, from its clues: its steps and its grade.
  const result = JSON.parse(await ask({ op: "path", code: puzzle.code, cells: clueCells() })) as Explanation;
  if (result.error) {
    say(result.error);
    return;
  }
  const g = result.grade;
  $("path-grade").textContent = `Grade: ${g.name} (level ${g.level}, score ${g.score})`;
  const list = $("path-steps");
  for (const step of result.steps) {
    const li = document.createElement("li");
    li.textContent = `${step.technique}: ${step.text}`;
    list.append(li);
  }
  if (result.needs_search) {
    const li = document.createElement("li");
    li.textContent = "The techniques stop here; a search finishes the grid.";
    list.append(li);
  }
}

async function createPuzzle(size: number, grade: number): Promise<void> {
  const button = $("create") as HTMLButtonElement;
  button.disabled = true;
  say("Making a new puzzle\u2026");
  const seed = Math.floor(Math.random() * 2 ** 31);
  const answer = JSON.parse(await ask({ op: "create", size, grade, seed })) as Puzzle & {
    grade: { name: string };
  };
  button.disabled = false;
  ($("new-dialog") as HTMLDialogElement).close();
  if (answer.error) {
    say(answer.error);
    return;
  }
  await openCode(answer.code, false);
  say(`New ${size}\u00d7${size} puzzle, grade ${answer.grade.name}`);
}

// ---- collections, links and files -------------------------------------------------

function loadOrdinal(ordinal: number): Puzzle {
  engine.FS.writeFile(COLLECTION_PATH, textToBytes(session.text));
  return JSON.parse(engine.loadRecord(COLLECTION_PATH, ordinal)) as Puzzle;
}

async function openCollection(name: string, text: string, ordinal: number, played: number[] = []): Promise<boolean> {
  const previous = session;
  session = { name, text, ordinal, played };
  const loaded = loadOrdinal(ordinal);
  if (loaded.error) {
    session = previous;
    if (previous) loadOrdinal(previous.ordinal);
    say(loaded.error);
    return false;
  }
  if (previous?.text !== text || previous?.name !== name) rememberCollection();
  await show(loaded);
  return true;
}

async function openCode(code: string, fromLink: boolean): Promise<boolean> {
  const loaded = JSON.parse(engine.loadCode(code)) as Puzzle;
  if (loaded.error) {
    say(`This link holds no puzzle: ${loaded.error}`);
    if (session) loadOrdinal(session.ordinal);
    return false;
  }
  const record = engine.recordText(clueCells2(loaded));
  session = { name: `${loaded.code}.fut`, text: record, ordinal: 1, played: [] };
  rememberCollection();
  await show(loaded);
  if (fromLink) say(`Opened the shared puzzle ${loaded.code}`);
  return true;
}

function clueCells2(p: Puzzle): string {
  const l = 2 * p.size - 1;
  let s = "";
  for (let i = 0; i < p.size * p.size; i++) {
    const k = 2 * Math.floor(i / p.size) * l + 2 * (i % p.size);
    s += p.given[k] > 0 ? String(p.given[k]) : ".";
  }
  return s;
}

async function move(by: number): Promise<void> {
  const ordinal = session.ordinal + by;
  if (ordinal < 1 || ordinal > puzzle.count) return;
  session.ordinal = ordinal;
  const loaded = loadOrdinal(ordinal);
  if (loaded.error) {
    say(loaded.error);
    return;
  }
  await show(loaded);
}

// Record starts: every line that begins with "#", as the reader counts them.
function recordStarts(text: string): number[] {
  const starts: number[] = [];
  for (let i = 0; i < text.length; i = text.indexOf("\n", i) + 1 || text.length) {
    if (text[i] === "#") starts.push(i);
  }
  return starts;
}

async function saveFile(): Promise<void> {
  let text = session.text;
  // Later records first, so earlier offsets stay true.
  const played = [...session.played].sort((a, b) => b - a);
  for (const ordinal of played) {
    const starts = recordStarts(text);
    if (ordinal > starts.length) continue;
    const p = JSON.parse(engine.loadRecord(writeText(text), ordinal)) as Puzzle;
    if (p.error) continue;
    const kept = ordinal === session.ordinal ? progress : await store.get<Progress>("progress", p.code);
    if (!kept) continue;
    const record = engine.recordText(kept.cells);
    const from = starts[ordinal - 1];
    const to = ordinal < starts.length ? starts[ordinal] : text.length;
    text = text.slice(0, from) + record + text.slice(to);
  }
  loadOrdinal(session.ordinal);
  const blob = new Blob([textToBytes(text)], { type: "application/octet-stream" });
  const a = document.createElement("a");
  a.href = URL.createObjectURL(blob);
  a.download = session.name;
  document.body.append(a);
  a.click();
  a.remove();
  setTimeout(() => URL.revokeObjectURL(a.href), 10000);
  say(`Saved ${session.name}`);
}

function writeText(text: string): string {
  engine.FS.writeFile(COLLECTION_PATH, textToBytes(text));
  return COLLECTION_PATH;
}

async function share(): Promise<void> {
  const link = `${location.origin}${location.pathname}#p=${puzzle.code}`;
  try {
    await navigator.clipboard.writeText(link);
    say(`Link copied: ${link}`);
  } catch {
    say(`Share this link: ${link}`);
  }
}

// ---- keys and wiring -------------------------------------------------------------

function onKey(e: KeyboardEvent): void {
  const size = n();
  const r = Math.floor(selected / size);
  const c = selected % size;
  const ctrl = e.ctrlKey || e.metaKey;
  const key = e.key;
  let handled = true;
  if (ctrl && (key === "z" || key === "Z")) {
    if (e.shiftKey) redo();
    else undo();
  } else if (ctrl && (key === "y" || key === "Y")) redo();
  else if (ctrl || e.altKey) handled = false;
  else if (key === "ArrowUp") selected = ((r + size - 1) % size) * size + c;
  else if (key === "ArrowDown") selected = ((r + 1) % size) * size + c;
  else if (key === "ArrowLeft") selected = r * size + ((c + size - 1) % size);
  else if (key === "ArrowRight") selected = r * size + ((c + 1) % size);
  else if (/^[1-9]$/.test(key) && Number(key) <= size) enter(Number(key));
  else if (key === "Backspace" || key === "Delete") enter(0);
  else if (key === "p" || key === "P") togglePencil();
  else if (key === "h" || key === "H") nextStep();
  else handled = false;
  if (handled) {
    e.preventDefault();
    render();
  }
}

function togglePencil(): void {
  pencil = !pencil;
  render();
}

function wire(): void {
  gridEl.addEventListener("keydown", onKey);
  gridEl.addEventListener("pointerdown", (e) => {
    const cell = (e.target as HTMLElement).closest<HTMLElement>("[role=gridcell]");
    if (!cell) return;
    const [, r, c] = cell.id.split("-").map(Number);
    selected = r * n() + c;
    render();
    gridEl.focus();
  });
  $("next").addEventListener("click", nextStep);
  $("undo").addEventListener("click", undo);
  $("redo").addEventListener("click", redo);
  $("pencil").addEventListener("click", togglePencil);
  $("check").addEventListener("click", check);
  $("conflicts").addEventListener("change", (e) => {
    conflictsOn = (e.target as HTMLInputElement).checked;
    render();
  });
  $("solution-path").addEventListener("click", () => void solutionPath());
  $("share").addEventListener("click", () => void share());
  $("previous").addEventListener("click", () => void move(-1));
  $("next-puzzle").addEventListener("click", () => void move(1));
  const dialog = $("new-dialog") as HTMLDialogElement;
  $("new").addEventListener("click", () => dialog.showModal());
  $("cancel").addEventListener("click", () => dialog.close());
  $("new-form").addEventListener("submit", (e) => {
    e.preventDefault();
    const size = Number(($("size") as HTMLSelectElement).value);
    const grade = Number(($("grade") as HTMLSelectElement).value);
    void createPuzzle(size, grade);
  });
  const picker = $("file") as HTMLInputElement;
  $("open").addEventListener("click", () => picker.click());
  picker.addEventListener("change", async () => {
    const file = picker.files?.[0];
    if (!file) return;
    const text = bytesToText(new Uint8Array(await file.arrayBuffer()));
    picker.value = "";
    if (await openCollection(file.name, text, 1)) say(`Opened ${file.name}: ${puzzle.count} puzzles`);
  });
  $("save").addEventListener("click", () => void saveFile());
  window.addEventListener("hashchange", () => void openFromHash());
}

function fillGrades(): void {
  const select = $("grade") as HTMLSelectElement;
  const grades = JSON.parse(engine.grades()) as { level: number; name: string; search: boolean }[];
  for (const g of grades) {
    if (g.search) continue;
    const option = document.createElement("option");
    option.value = String(g.level);
    option.textContent = g.name;
    select.append(option);
  }
}

async function openFromHash(): Promise<boolean> {
  const match = /^#p=(.+)$/.exec(location.hash);
  return match ? openCode(decodeURIComponent(match[1]), true) : false;
}

async function main(): Promise<void> {
  // The engine compiles while the kept session is read.
  const starting = startEngine();
  const keeping = store.get<{ name: string; text: string }>("session", "collection").catch(() => undefined);
  const placing = store.get<{ ordinal: number; played: number[] }>("session", "last").catch(() => undefined);
  engine = await starting;
  fillGrades();
  wire();
  if (await openFromHash()) return;
  const kept = await keeping;
  const last = await placing;
  if (kept && last && (await openCollection(kept.name, kept.text, last.ordinal, last.played))) return;
  const response = await fetch("puzzles.fut");
  const text = bytesToText(new Uint8Array(await response.arrayBuffer()));
  await openCollection("puzzles.fut", text, 1);
}

if ("serviceWorker" in navigator) {
  navigator.serviceWorker.register("sw.js").catch(() => undefined);
}
main()
  .then(() => performance.mark("quillmere-ready"))
  .catch((error) => say(`The page could not start: ${error}`));
