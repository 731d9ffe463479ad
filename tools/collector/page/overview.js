import { runAll } from "./api.js";
import { makeButton } from "./dom.js";
import {
  drawCommands, drawCrashes, drawDays, drawEvents, drawMemory, drawVersions, drawWeeks, rateOf,
} from "./drawings.js";
import { Figure } from "./figure.js";
import { Filters } from "./filters.js";
import { clock, number } from "./format.js";

const status = document.getElementById("status");
const notice = document.getElementById("notice");
const filters = new Filters(document.getElementById("filters"), load);
let loading = new AbortController();
let isLoading = false;

const draws = {
  "events-by-day": drawEvents,
  versions: drawVersions(crashesOf),
  "installations-by-day": drawDays,
  "installations-by-week": drawWeeks,
  memory: drawMemory,
  crashes: drawCrashes(crashedSessions),
  commands: drawCommands,
};
const figures = new Map([...document.querySelectorAll("[data-figure]")].map((section) => {
  const figure = new Figure(section, draws[section.dataset.figure], changed);
  return [figure.name, figure];
}));

const rowsOf = (figure) => figures.get(figure).rows;
const sumOf = (figure, column) => rowsOf(figure)?.reduce((total, row) => total + row[column], 0) ?? null;

function crashesOf(version) {
  const rows = rowsOf("crashes");
  return rows && rows.filter((row) => row.version === version).reduce((total, row) => total + row.crashes, 0);
}

function crashedSessions(version) {
  const { from, until, installation = "" } = filters.parameters;
  const query = Object.entries({ from, until, installation, version, end: "crashed" });
  return `/sessions?${new URLSearchParams(query.filter(([, value]) => value !== ""))}`;
}

/** Shows the sums of what has been read. */
function showTotals() {
  const [crashes, sessions] = [sumOf("crashes", "crashes"), sumOf("versions", "sessions")];
  const days = rowsOf("installations-by-day");
  const totals = {
    events: sumOf("events-by-day", "events"),
    sessions,
    installations: days && days.reduce((largest, row) => Math.max(largest, row.installations), 0),
    crashes,
    rate: rateOf(crashes, sessions),
  };
  for (const [name, value] of Object.entries(totals)) {
    document.querySelector(`[data-total="${name}"]`).textContent = value === null ? "–" : number(value);
  }
}

/** How many figures could not be read, or when all were read. */
function showStatus() {
  const failed = [...figures.values()].filter((figure) => figure.failure).length;
  status.className = failed ? "bad" : "";
  status.textContent = failed
    ? `${failed} of ${figures.size} figures could not be read.`
    : `Read at ${clock()} UTC.`;
}

function changed(figure) {
  if (figure.name === "crashes") {
    figures.get("versions").redraw();
  }
  showTotals();
  if (!isLoading) {
    showStatus();
  }
}

/** Offers the days that the store has if the chosen ones are empty. */
function showNotice({ first, last }) {
  const failure = commonFailure();
  const hadFocus = notice.contains(document.activeElement);
  notice.hidden = !failure && (rowsOf("events-by-day")?.length !== 0 || !first);
  notice.classList.toggle("bad", Boolean(failure));
  if (failure) {
    notice.replaceChildren(`${failure.message} ${failure.detail ?? ""} `, makeButton("Try again", load));
    figures.forEach((figure) => figure.hideReason());
  } else {
    notice.replaceChildren(`These filters match no events. The store has events from ${first} until ${last}. `,
      makeButton("Show these days", () => filters.setRange(first, last)));
  }
  if (hadFocus) {
    (notice.hidden ? document.getElementById("main") : notice.querySelector("button")).focus();
  }
}

/** Why all figures failed, null if one did not, or for another reason. */
function commonFailure() {
  const failures = [...figures.values()].map((figure) => figure.failure);
  return failures.every((failure) => failure && failure.message === failures[0].message) ? failures[0] : null;
}

async function load() {
  loading.abort();
  loading = new AbortController();
  const { signal } = loading;
  isLoading = true;
  status.className = "";
  status.textContent = "Loading …";
  let days = {};
  const tasks = [...figures.values()].map((figure) => () => figure.load(filters.parameters, signal));
  tasks.splice(1, 0, async () => {
    days = await filters.offerVersions(signal);
  });
  await runAll(tasks);
  if (!signal.aborted) {
    isLoading = false;
    showNotice(days);
    showStatus();
  }
}

document.getElementById("refresh").addEventListener("click", load);
load();
