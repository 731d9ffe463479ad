import { ApiError, read } from "./api.js";
import { make } from "./dom.js";
import { clock, number } from "./format.js";
import { GAUGES, Sample } from "./gauges.js";
import { Sparkline } from "./sparkline.js";
import { makeTable } from "./table.js";

const INTERVAL = 2000;
const KEPT = 150;

const status = document.getElementById("status");
const clockText = document.getElementById("clock");
const notice = document.getElementById("notice");
const pause = document.getElementById("pause");
const all = document.getElementById("all");

let before = null;
let timer = 0;
let isPaused = false;

/** A panel with the current value and its picture. */
class Gauge {
  #definition;
  #value = make("p", { class: "value" }, "–");
  #note = make("p", { class: "note" }, " ");
  #line = new Sparkline(KEPT);
  #panel;

  constructor(definition) {
    this.#definition = definition;
    const picture = definition.isStill ? [] : [this.#line.element, this.#note];
    this.#panel = make("section", { class: "panel gauge" }, make("h2", {}, definition.title), this.#value, ...picture);
    document.getElementById("gauges").append(this.#panel);
  }

  show(now, earlier) {
    const { value, shown, isBad } = this.#definition;
    const current = value(now, earlier);
    const highest = this.#line.add(current);
    this.#value.textContent = current === null ? "–" : shown(current);
    this.#note.textContent = highest > 0 ? `highest ${shown(highest)}` : " ";
    this.#panel.classList.toggle("bad", current !== null && Boolean(isBad?.(current)));
  }
}

const gauges = GAUGES.map((definition) => new Gauge(definition));
const answers = new Map();

/** A gauge for each status that was answered at least once. */
function showAnswers(now, earlier) {
  for (const [code, count] of now.all("answers_total")) {
    if (count > 0 && !answers.has(code)) {
      answers.set(code, new Gauge({
        title: `Answers with status ${code}`,
        shown: (value) => `${number(Math.round(10 * value) / 10)} /s`,
        value: (sample, last) => sample.rate(last, "answers_total", `status="${code}"`),
        isBad: (value) => code === "503" && value > 0,
      }));
    }
    answers.get(code)?.show(now, earlier);
  }
}

function showTable({ rows }) {
  if (all.open) {
    all.querySelector(".scroll")?.remove();
    all.append(makeTable("All metrics", [
      { title: "Metric", kind: "code", value: (row) => row.name },
      { title: "Labels", kind: "code", value: (row) => row.labels },
      { title: "Value", kind: "number", value: (row) => Number(row.value) },
    ], rows));
  }
}

function show(now) {
  for (const gauge of gauges) {
    gauge.show(now, before);
  }
  showAnswers(now, before);
  showTable(now);
  before = now;
}

function showNotice(text) {
  notice.hidden = text === "";
  notice.textContent = text;
}

/** Says whether the collector takes packages. */
function showState(isReady) {
  status.className = isReady ? "" : "bad";
  status.textContent = isReady ? "Running." : "Running, but not ready.";
  showNotice(isReady ? "" : "The store is away, or the collector is about to stop. Packages are not accepted."
    + " The clients keep them, and send them later.");
}

async function poll() {
  try {
    const now = new Sample(await read("system"));
    show(now);
    showState(now.value("ready") !== 0);
    clockText.textContent = `Last answer at ${clock()} UTC`;
  } catch (error) {
    if (!(error instanceof ApiError)) {
      throw error;
    }
    before = null;
    showNotice(`${error.message} ${error.detail} The page tries again.`);
    status.textContent = "";
  }
  proceed();
}

/** Polls again unless the page is paused or hidden. */
function proceed() {
  clearTimeout(timer);
  if (!isPaused && !document.hidden) {
    timer = setTimeout(poll, INTERVAL);
  }
}

pause.addEventListener("click", () => {
  isPaused = !isPaused;
  pause.setAttribute("aria-pressed", String(isPaused));
  pause.textContent = isPaused ? "Continue" : "Pause";
  before = null;
  proceed();
});
document.addEventListener("visibilitychange", proceed);
all.addEventListener("toggle", () => before && showTable(before));
poll();
