import { foreign, make } from "./dom.js";
import { number, percent, time } from "./format.js";

/** Longer texts may be broken anywhere. */
const LONG = 36;

/**
 * A table with a caption, in a region that scrolls.
 *
 * A column has a `title`, and `value(row)`; a value that is null stays empty. Its `kind` is "number", "share", "time",
 * "code", or a text if there is none. `most` is the value that fills the column's bars; without it there are none.
 * `link(row)` is an address or null. `cell(row)` makes the content itself. The first column names the row.
 */
export function makeTable(caption, columns, rows, { isStacked = false } = {}) {
  const titles = columns.map(({ title, kind }) => make("th", { scope: "col", class: classOf(kind) }, foreign(title)));
  const table = make("table", isStacked ? { class: "stacked" } : {}, make("caption", {}, caption),
    make("thead", {}, make("tr", {}, ...titles)), make("tbody", {}, ...rows.map((row) => makeRow(columns, row))));
  return make("div", { class: "scroll", role: "region", "aria-label": caption, tabindex: "0" }, table);
}

/** A row of such a table. */
export function makeRow(columns, row) {
  const cells = columns.map((column, place) => {
    const attributes = { class: classOf(column.kind), "data-label": column.title };
    return place === 0
      ? make("th", { scope: "row", ...attributes }, contentOf(column, row))
      : make("td", attributes, contentOf(column, row));
  });
  return make("tr", {}, ...cells);
}

function classOf(kind = "") {
  return kind === "share" ? "number" : kind;
}

function contentOf(column, row) {
  const content = column.cell ? column.cell(row) : shown(column, column.value(row));
  const address = column.link?.(row);
  const linked = address ? make("a", { href: address }, content) : content;
  return column.most === undefined ? linked : withBar(linked, column.value(row) / column.most, column.isWarm);
}

function shown({ kind }, value) {
  if (value === null || value === undefined) {
    return "–";
  }
  switch (kind) {
    case "number":
      return number(value);
    case "share":
      return percent(value);
    case "time":
      return textOf(time(value));
    default:
      return textOf(value);
  }
}

function textOf(value) {
  return make("span", { class: String(value).length > LONG ? "text long" : "text" }, foreign(value));
}

function withBar(content, part, isWarm = false) {
  const fill = make("span", { class: isWarm ? "fill warm" : "fill" });
  fill.style.width = `${100 * Math.min(Math.max(part || 0, 0), 1)}%`;
  const track = make("span", { class: "track", "aria-hidden": "true" }, fill);
  return make("div", { class: "measure" }, track, make("span", {}, content));
}
