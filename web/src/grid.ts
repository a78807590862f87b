// The grid drawn as SVG the way the desktop draws it (boxes, chevrons between them,
// clues bold), with an accessible grid of cells laid over it.
export interface GridView {
  size: number;
  layout: string[];      // the record's layout texts: clues, signs, "" elsewhere
  cells: string;         // N*N characters: the digit shown or "."
  given: boolean[];      // per cell
  marks: number[];       // per cell, bit d for digit d
  selected: number;
  lit: Set<number>;      // cells a hint points at
  changed: Set<number>;  // cells a shown step changes
  bad: Set<number>;      // conflicts or wrong digits
}

const S = 10; // cell side
const G = 5; // room for a sign between two cells
const SVG_NS = "http://www.w3.org/2000/svg";

export function extent(n: number): number {
  return n * S + (n - 1) * G;
}

function el(name: string, attrs: Record<string, string | number>, text?: string): SVGElement {
  const e = document.createElementNS(SVG_NS, name);
  for (const [k, v] of Object.entries(attrs)) e.setAttribute(k, String(v));
  if (text !== undefined) e.textContent = text;
  return e;
}

// The sign at layout position (row, col) of a (2N-1)-wide layout, from 0.
function signAt(view: GridView, row: number, col: number): string {
  const l = 2 * view.size - 1;
  return view.layout[row * l + col] ?? "";
}

export function signDescription(view: GridView, r: number, c: number): string {
  const parts: string[] = [];
  const side = (sign: string, meGreater: string, meSmaller: string, where: string) => {
    if (sign === meGreater) parts.push(`greater than the cell ${where}`);
    if (sign === meSmaller) parts.push(`less than the cell ${where}`);
  };
  if (c + 1 < view.size) side(signAt(view, 2 * r, 2 * c + 1), ">", "<", "to its right");
  if (c > 0) side(signAt(view, 2 * r, 2 * c - 1), "<", ">", "to its left");
  if (r + 1 < view.size) side(signAt(view, 2 * r + 1, 2 * c), "v", "^", "below it");
  if (r > 0) side(signAt(view, 2 * r - 1, 2 * c), "^", "v", "above it");
  return parts.length ? parts.join("; ") : "";
}

export function drawGrid(svg: SVGSVGElement, view: GridView): void {
  const n = view.size;
  const w = extent(n);
  svg.setAttribute("viewBox", `-1 -1 ${w + 2} ${w + 2}`);
  svg.replaceChildren();
  for (let r = 0; r < n; r++) {
    for (let c = 0; c < n; c++) {
      const i = r * n + c;
      const x = c * (S + G);
      const y = r * (S + G);
      const classes = ["cell"];
      if (view.lit.has(i)) classes.push("lit");
      if (view.changed.has(i)) classes.push("changed");
      if (view.bad.has(i)) classes.push("bad");
      if (i === view.selected) classes.push("selected");
      svg.append(el("rect", { x, y, width: S, height: S, rx: 1.2, class: classes.join(" ") }));
      const digit = view.cells[i];
      if (digit && digit !== ".") {
        const cls = view.given[i] ? "digit given" : view.bad.has(i) ? "digit player bad" : "digit player";
        svg.append(el("text", { x: x + S / 2, y: y + S / 2, class: cls }, digit));
      } else if (view.marks[i]) {
        for (let d = 1; d <= 9; d++) {
          if (!(view.marks[i] & (1 << d))) continue;
          const mx = x + S * (0.2 + 0.3 * ((d - 1) % 3));
          const my = y + S * (0.2 + 0.3 * Math.floor((d - 1) / 3));
          svg.append(el("text", { x: mx, y: my, class: "mark" }, String(d)));
        }
      }
    }
  }
  // Chevrons: the point faces the smaller cell.
  const l = 2 * n - 1;
  for (let row = 0; row < l; row++) {
    for (let col = 0; col < l; col++) {
      const s = signAt(view, row, col);
      if (!"<>^v".includes(s) || !s) continue;
      const cx = (col % 2 === 1 ? (col - 1) / 2 * (S + G) + S + G / 2 : col / 2 * (S + G) + S / 2);
      const cy = (row % 2 === 1 ? (row - 1) / 2 * (S + G) + S + G / 2 : row / 2 * (S + G) + S / 2);
      const a = 1.3;
      const b = 2.2;
      const points =
        s === "<" ? [[cx + a, cy - b], [cx - a, cy], [cx + a, cy + b]]
        : s === ">" ? [[cx - a, cy - b], [cx + a, cy], [cx - a, cy + b]]
        : s === "^" ? [[cx - b, cy + a], [cx, cy - a], [cx + b, cy + a]]
        : [[cx - b, cy - a], [cx, cy + a], [cx + b, cy - a]];
      svg.append(el("polyline", { points: points.map((p) => p.join(",")).join(" "), class: "sign" }));
    }
  }
}

// The accessible cells over the drawing, placed where the drawing puts the boxes.
export function buildCells(grid: HTMLElement, view: GridView): void {
  const n = view.size;
  const w = extent(n) + 2;
  grid.replaceChildren();
  for (let r = 0; r < n; r++) {
    const row = document.createElement("div");
    row.setAttribute("role", "row");
    row.className = "row";
    for (let c = 0; c < n; c++) {
      const cell = document.createElement("div");
      cell.setAttribute("role", "gridcell");
      cell.id = `cell-${r}-${c}`;
      cell.className = "hit";
      cell.style.left = `${((1 + c * (S + G)) / w) * 100}%`;
      cell.style.top = `${((1 + r * (S + G)) / w) * 100}%`;
      cell.style.width = cell.style.height = `${(S / w) * 100}%`;
      row.append(cell);
    }
    grid.append(row);
  }
  labelCells(grid, view);
}

export function labelCells(grid: HTMLElement, view: GridView): void {
  const n = view.size;
  for (let r = 0; r < n; r++) {
    for (let c = 0; c < n; c++) {
      const i = r * n + c;
      const cell = grid.querySelector<HTMLElement>(`#cell-${r}-${c}`);
      if (!cell) continue;
      const d = view.cells[i];
      const what = d === "." ? "empty" : view.given[i] ? `given ${d}` : d;
      cell.setAttribute("aria-label", `Row ${r + 1}, column ${c + 1}, ${what}`);
      const description = signDescription(view, r, c);
      if (description) cell.setAttribute("aria-description", description);
      else cell.removeAttribute("aria-description");
      cell.setAttribute("aria-selected", String(i === view.selected));
    }
  }
  grid.setAttribute("aria-activedescendant", `cell-${Math.floor(view.selected / n)}-${view.selected % n}`);
}
