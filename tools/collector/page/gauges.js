import { bytes, number, percent, seconds } from "./format.js";

const PREFIX = "qel_collector_";
const DAY = 86_400;

/** An answer of the figure "system", and when it came. */
export class Sample {
  #values;
  time = performance.now() / 1000;

  constructor(rows) {
    this.rows = rows;
    this.#values = new Map(rows.map(({ name, labels, value }) => [keyOf(name, labels), Number(value)]));
  }

  /** A metric without the collector's prefix, null if there is none. */
  value(name, labels = "") {
    return this.#values.get(keyOf(name, labels)) ?? null;
  }

  /** The label's values and the metric's values. */
  all(name) {
    const rows = this.rows.filter((row) => keyOf(row.name, "") === name);
    return rows.map((row) => [labelOf(row.labels), Number(row.value)]);
  }

  /** The increase of a counter in a second. Null if the collector has restarted, or there is no earlier sample. */
  rate(before, name, labels = "") {
    const [now, then] = [this.value(name, labels), before?.value(name, labels) ?? null];
    return now === null || then === null || now < then ? null : (now - then) / (this.time - before.time);
  }
}

const keyOf = (name, labels) => `${name.replace(PREFIX, "")}${labels ? `{${labels}}` : ""}`;
const labelOf = (labels) => /"(.*)"/.exec(labels)?.[1] ?? "";
const perSecond = (value) => `${number(Math.round(10 * value) / 10)} /s`;

const rate = (title, name, shown = perSecond) => ({ title, shown, value: (now, before) => now.rate(before, name) });
const level = (title, name, shown = number) => ({ title, shown, value: (now) => now.value(name) });

/** The mean time of the answers since the last sample. */
function answerTime(now, before) {
  const count = now.rate(before, "answer_seconds_count");
  return count ? now.rate(before, "answer_seconds_sum") / count : null;
}

/** The part of the answers since the last sample that took at most 0.1 s. */
function quickAnswers(now, before) {
  const count = now.rate(before, "answer_seconds_count");
  return count ? now.rate(before, "answer_seconds_bucket", 'le="0.1"') / count : null;
}

function rows(now, before) {
  const kinds = ["event", "environment"].map((kind) => now.rate(before, "rows_total", `kind="${kind}"`));
  return kinds.includes(null) ? null : kinds[0] + kinds[1];
}

function certificateDays(now) {
  const end = now.value("certificate_end_timestamp_seconds");
  return end === null ? null : Math.floor((end - Date.now() / 1000) / DAY);
}

const daysText = (days) => (days === 1 ? "1 day" : `${number(days)} days`);

/**
 * What the page shows: a title, the value from a sample and the one before, its text, and whether it is bad. There is
 * no picture if `isStill`.
 */
export const GAUGES = [
  rate("Packages stored", "packages_total"),
  { title: "Rows stored", shown: perSecond, value: rows },
  rate("Bytes of packages", "package_bytes_total", (value) => `${bytes(Math.round(value))}/s`),
  rate("Refused texts", "refused_texts_total"),
  { title: "Mean time of an answer", shown: seconds, value: answerTime },
  { title: "Answers within 0.1 s", shown: percent, value: quickAnswers },
  level("Open connections", "connections"),
  level("Waiting packages", "queued_packages"),
  level("Bytes in flight", "in_flight_bytes", bytes),
  level("Size of the store", "store_bytes", bytes),
  level("Size of the store's log", "store_log_bytes", bytes),
  { ...level("Dropped log messages", "log_messages_dropped_total"), isBad: (value) => value > 0 },
  {
    title: "Certificate ends in", shown: daysText, value: certificateDays, isStill: true,
    isBad: (days) => days < 14,
  },
];
