import { make, makeButton } from "./dom.js";
import { Figure } from "./figure.js";
import { Filters } from "./filters.js";
import { number } from "./format.js";
import { makeTable } from "./table.js";

const USUAL = 200;
const LARGEST = 1000;

/**
 * A page with a filter bar and one long table of a figure. `columns` are those of `makeTable`,
 * `nouns` the words for one and for more rows.
 */
export function showList(caption, columns, nouns) {
  const status = document.getElementById("status");
  const filters = new Filters(document.getElementById("filters"), load, ["limit"]);
  const figure = new Figure(document.querySelector("[data-figure]"), draw, changed);
  let loading = new AbortController();

  function draw(body, rows) {
    body.append(makeTable(caption, columns, rows, { isStacked: true }));
    const limit = Number(filters.parameters.limit ?? USUAL);
    if (rows.length >= limit) {
      const text = `Only the newest ${number(rows.length)} are shown. Narrow the filters to see older ones. `;
      const button = makeButton(`Show ${number(LARGEST)}`, () => filters.set("limit", String(LARGEST)));
      body.append(make("p", { class: "more" }, text, limit < LARGEST ? button : ""));
    }
  }

  function changed({ rows }) {
    status.textContent = rows ? `${number(rows.length)} ${nouns[rows.length === 1 ? 0 : 1]}` : "Failed.";
  }

  function load() {
    loading.abort();
    loading = new AbortController();
    status.textContent = "Loading …";
    filters.offerVersions(loading.signal);
    figure.load(filters.parameters, loading.signal);
  }

  document.getElementById("refresh").addEventListener("click", load);
  load();
}
