// The WebAssembly engine as the page and its worker call it. Every answer is a JSON text.
export interface EngineModule {
  loadRecord(path: string, n: number): string;
  loadCode(code: string): string;
  shareCode(): string;
  recordText(cells: string): string;
  check(cells: string): string;
  candidates(cells: string): string;
  nextStep(cells: string, marks: string): string;
  explain(cells: string): string;
  solutions(cells: string, limit: number): string;
  grades(): string;
  create(size: number, minGrade: number, maxGrade: number, seed: number): string;
  FS: { writeFile(path: string, data: Uint8Array): void };
}

export interface Puzzle {
  size: number;
  number: number;
  comment: string;
  count: number;
  code: string;
  positions: string[];
  given: number[];
  solution: string[];
  error?: string;
}

export interface StepAnswer {
  technique: string;
  level: number;
  text: string;
  cells: [number, number][];
  placed: { cell: [number, number]; digit: number }[];
  removed: { cell: [number, number]; digits: string }[];
  hint: string;
  shown: string;
  made: string;
  status?: string;
  error?: string;
}

export interface Explanation {
  solved: boolean;
  needs_search: boolean;
  grade: { level: number; name: string; score: number };
  steps: { technique: string; level: number; text: string }[];
  error?: string;
}

declare const QuillmereEngine: (options: object) => Promise<EngineModule>;

export function startEngine(): Promise<EngineModule> {
  return QuillmereEngine({ locateFile: (file: string) => file });
}

// Bytes of a collection file kept as a string of character codes 0..255.
export function bytesToText(bytes: Uint8Array): string {
  let text = "";
  for (let i = 0; i < bytes.length; i += 8192) {
    text += String.fromCharCode(...bytes.subarray(i, i + 8192));
  }
  return text;
}

export function textToBytes(text: string): Uint8Array {
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; i++) bytes[i] = text.charCodeAt(i) & 0xff;
  return bytes;
}
