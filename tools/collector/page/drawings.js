import { drawBars, drawLines, makeLegend, seriesCount } from "./charts.js";
import { make } from "./dom.js";
import { axisOf, longDay, number, percent, shortDay } from "./format.js";
import { codeText, sessionAddress } from "./names.js";
import { makeTable } from "./table.js";

const sum = (values) => values.reduce((total, value) => total + value, 0);
const most = (rows, column) => rows.reduce((largest, row) => Math.max(largest, row[column]), 1);
const nameOf = (text) => (text === "" || text === null ? "(none)" : text);

/** The values of a chart as a table, which is closed at first. */
function makeValues(caption, columns, rows) {
  const values = make("details", { class: "values" }, make("summary", {}, "Values as a table"));
  values.addEventListener("toggle", () => values.append(makeTable(caption, columns, rows)), { once: true });
  return values;
}

/** The categories with the most events, the others together as the last series. */
function categoriesOf(rows, days) {
  const place = new Map(days.map((day, i) => [day, i]));
  const all = new Map();
  for (const { day, category, events } of rows) {
    const name = nameOf(category);
    if (!all.has(name)) {
      all.set(name, { name, values: days.map(() => 0) });
    }
    all.get(name).values[place.get(day)] += events;
  }
  const sorted = [...all.values()].map((each) => ({ ...each, total: sum(each.values) }));
  sorted.sort((a, b) => b.total - a.total);
  if (sorted.length <= seriesCount) {
    return { sorted, shown: sorted };
  }
  const rest = sorted.slice(seriesCount - 1);
  const others = { name: `${rest.length} others`, values: days.map((_, i) => sum(rest.map((each) => each.values[i]))) };
  return { sorted, shown: [...sorted.slice(0, seriesCount - 1), { ...others, total: sum(others.values) }] };
}

export function drawEvents(body, rows, parameters) {
  const days = axisOf(rows.map((row) => row.day), parameters);
  const { sorted, shown } = categoriesOf(rows, days);
  const total = sum(sorted.map((each) => each.total));
  const description = `Stacked bars: ${number(total)} events on ${days.length} days, by category. A table follows.`;
  const chart = drawBars(body, description, days.map(shortDay), days.map(longDay), shown);
  body.prepend(makeLegend(chart, shown.map((each) => percent(each.total / total))));
  const columns = sorted.map(({ name, values }) => ({ title: name, kind: "number", value: (i) => values[i] }));
  columns.unshift({ title: "Day", value: (i) => days[i] });
  body.append(makeValues("Events a day by category", columns, days.map((_, i) => i)));
  return () => chart.destroy();
}

/** Bars of one value of each day, or of each week. */
function drawCounts(column, title, isWeekly) {
  return (body, rows, parameters) => {
    const values = new Map(rows.map((row) => [row[column], row.installations]));
    const days = axisOf(rows.map((row) => row[column]), parameters, isWeekly);
    const description = `Bars: ${title}, at most ${number(most(rows, "installations"))}. A table follows.`;
    const chart = drawBars(body, description, days.map(shortDay), days.map(longDay),
      [{ name: "Installations", values: days.map((day) => values.get(day) ?? 0) }]);
    body.append(makeValues(title, [{ title: isWeekly ? "Week from" : "Day", value: (row) => row[column] },
      { title: "Installations", kind: "number", value: (row) => row.installations }], rows));
    return () => chart.destroy();
  };
}

export const drawDays = drawCounts("day", "Active installations a day", false);
export const drawWeeks = drawCounts("week", "Active installations a week", true);

/** `crashesOf` are the crashes of a version, null while they are not known. */
export function drawVersions(crashesOf) {
  return (body, rows) => {
    body.append(makeTable("Versions in use", [
      { title: "Version", value: (row) => nameOf(row.version) },
      { title: "Installations", kind: "number", value: (row) => row.installations, most: most(rows, "installations") },
      { title: "Sessions", kind: "number", value: (row) => row.sessions },
      { title: "Crashes", kind: "number", value: (row) => crashesOf(row.version) },
      { title: "Per 1,000", kind: "number", value: (row) => rateOf(crashesOf(row.version), row.sessions) },
    ], rows));
  };
}

/** Crashes per 1,000 sessions, null if it is not known. */
export function rateOf(crashes, sessions) {
  return crashes === null || !sessions ? null : Math.round((10_000 * crashes) / sessions) / 10;
}

/** `sessionsOf(version)` is the address of the list of crashed sessions. */
export function drawCrashes(sessionsOf) {
  return (body, rows) => {
    body.append(makeTable("Crashes by version, code and command", [
      { title: "Version", value: (row) => nameOf(row.version), link: (row) => row.version && sessionsOf(row.version) },
      { title: "Code", kind: "code", value: (row) => codeText(row.code) },
      { title: "Last command", value: (row) => nameOf(row.command) },
      { title: "Crashes", kind: "number", value: (row) => row.crashes, most: most(rows, "crashes"), isWarm: true },
      { title: "Installations", kind: "number", value: (row) => row.installations },
      { title: "Latest session", kind: "code", value: (row) => row.latest_session?.slice(0, 8),
        link: (row) => row.latest_session && sessionAddress(row.latest_session) },
    ], rows));
  };
}

export function drawCommands(body, rows) {
  body.append(makeTable("Most used commands", [
    { title: "Command", value: (row) => nameOf(row.command) },
    { title: "Started", kind: "number", value: (row) => row.started, most: most(rows, "started") },
    { title: "Cancelled", kind: "share", value: (row) => row.share, most: 1, isWarm: true },
  ], rows));
}

export function drawMemory(body, rows, parameters) {
  const weeks = axisOf(rows.map((row) => row.week), parameters, true);
  const byWeek = new Map(rows.map((row) => [row.week, row]));
  const series = [["p50", "Median"], ["p90", "90th percentile"], ["p99", "99th percentile"]].map(([column, name]) => ({
    column, name, values: weeks.map((week) => byWeek.get(week)?.[column] ?? null) }));
  const chart = drawLines(body, "Lines: memory of sessions by week, in MB. A table follows.",
    weeks.map(shortDay), weeks.map(longDay), series);
  body.prepend(makeLegend(chart));
  body.append(makeValues("Memory of sessions in MB", [{ title: "Week from", value: (row) => row.week },
    { title: "Sessions", kind: "number", value: (row) => row.sessions },
    ...series.map(({ name, column }) => ({ title: name, kind: "number", value: (row) => row[column] }))], rows));
  return () => chart.destroy();
}
