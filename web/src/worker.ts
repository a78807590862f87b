// Creation and whole solution paths run here, so the page never waits on them.
import { EngineModule, startEngine } from "./engine";

declare function importScripts(...urls: string[]): void;
importScripts("engine.js");

const ready: Promise<EngineModule> = startEngine();

interface Request {
  id: number;
  op: "create" | "path";
  size?: number;
  grade?: number;
  seed?: number;
  code?: string;
  cells?: string;
}

self.onmessage = async (event: MessageEvent<Request>) => {
  const r = event.data;
  let engine: EngineModule;
  try {
    engine = await ready;
  } catch (error) {
    (self as unknown as Worker).postMessage({ id: r.id, answer: JSON.stringify({ error: `The engine did not start: ${error}` }) });
    return;
  }
  let answer: string;
  if (r.op === "create") {
    answer = engine.create(r.size ?? 5, r.grade ?? 0, r.grade ?? 0, r.seed ?? 1);
  } else {
    const loaded = JSON.parse(engine.loadCode(r.code ?? ""));
    answer = loaded.error ? JSON.stringify({ error: loaded.error }) : engine.explain(r.cells ?? "");
  }
  (self as unknown as Worker).postMessage({ id: r.id, answer });
};
