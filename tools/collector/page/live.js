import { ApiError, read } from "./api.js";
import { foreign, make, makeButton, payload } from "./dom.js";
import { Filters } from "./filters.js";
import { clock } from "./format.js";
import { sessionAddress } from "./names.js";
import { makeRow } from "./table.js";

const KEPT = 500;
const FIRST = 50;
const INTERVAL = 1000;
const LONGEST = 8000;

const status = document.getElementById("status");
const clockText = document.getElementById("clock");
const pause = document.getElementById("pause");
const body = document.getElementById("events");
const filters = new Filters(document.getElementById("filters"), restart);

let cursor = "";
let isPaused = false;
let timer = 0;
let loading = new AbortController();
let delay = INTERVAL;

const columns = [
  { title: "Received", kind: "time", value: (row) => row.received },
  { title: "Event", cell: (row) => makeOpener(row) },
  { title: "Category", value: (row) => [row.category, row.subcategory].filter(Boolean).join(" · ") },
  { title: "Installation", value: (row) => row.installation },
  { title: "Session", kind: "code", value: (row) => row.session?.slice(0, 8),
    link: (row) => row.session && sessionAddress(row.session) },
  { title: "User", value: (row) => row.user },
];

/** A button that shows and hides the payload under its row. Who reads does not want the rows to move. */
function makeOpener(row) {
  const button = makeButton("", () => {
    const isOpen = button.getAttribute("aria-expanded") === "true";
    button.setAttribute("aria-expanded", String(!isOpen));
    const place = button.closest("tr");
    if (isOpen) {
      place.nextElementSibling.remove();
    } else {
      place.after(make("tr", { class: "payload" }, make("td", { colspan: String(columns.length) }, payload(row.text))));
      setPaused(true);
    }
  }, { class: "open", "aria-expanded": "false" });
  button.append(foreign(row.event || row.subcategory || "(no name)"));
  return button;
}

/** Adds what arrived after the cursor, or begins again with the newest rows if there is none. */
function add(rows) {
  if (rows.length === 0) {
    return;
  }
  if (cursor === "") {
    body.replaceChildren();
  }
  body.prepend(...rows.reverse().map((row) => makeRow(columns, row)));
  while (body.childElementCount > KEPT) {
    body.lastElementChild.remove();
  }
  document.getElementById("waiting").hidden = true;
}

function show(text, isBad = false) {
  status.className = isBad ? "bad" : "";
  if (status.textContent !== text) {
    status.textContent = text;
  }
}

/**
 * Asks for what arrived, and again after a second. After a failure the page waits longer. If more arrived than the page
 * keeps, it goes on with the newest rows, so that it never lags.
 */
async function poll() {
  const { signal } = loading;
  const limit = cursor === "" ? FIRST : KEPT;
  try {
    const rows = await read("live", { ...filters.parameters, after: cursor, limit: String(limit) }, signal);
    const next = rows.cursor ?? rows.at(-1)?.cursor ?? cursor;
    add(rows);
    cursor = next;
    const isBehind = rows.length === KEPT;
    cursor = isBehind ? "" : cursor;
    delay = INTERVAL;
    show(isBehind ? "More events arrive than the page can show." : "Receiving.");
    clockText.textContent = `Last answer at ${clock()} UTC`;
  } catch (error) {
    if (signal.aborted) {
      return;
    }
    if (!(error instanceof ApiError)) {
      throw error;
    }
    delay = Math.min(2 * delay, LONGEST);
    show(`${error.message} ${error.detail} Next attempt in ${delay / 1000} s.`, true);
  }
  timer = setTimeout(poll, delay);
}

function stop() {
  clearTimeout(timer);
  loading.abort();
  loading = new AbortController();
}

/** Polls unless the page is paused or hidden. */
function proceed() {
  stop();
  if (isPaused) {
    show("Paused.");
  } else if (!document.hidden) {
    poll();
  }
}

function setPaused(isWanted) {
  if (isPaused !== isWanted) {
    isPaused = isWanted;
    pause.setAttribute("aria-pressed", String(isPaused));
    pause.textContent = isPaused ? "Continue" : "Pause";
    proceed();
  }
}

function clear() {
  body.replaceChildren();
  document.getElementById("waiting").hidden = false;
}

function restart() {
  clear();
  cursor = "";
  delay = INTERVAL;
  proceed();
}

pause.addEventListener("click", () => setPaused(!isPaused));
document.getElementById("clear").addEventListener("click", clear);
document.addEventListener("visibilitychange", proceed);
filters.offerVersions();
proceed();
