const DAY = 86_400_000;
const whole = new Intl.NumberFormat("en", { maximumFractionDigits: 0 });
const precise = new Intl.NumberFormat("en", { maximumSignificantDigits: 3 });
const month = new Intl.DateTimeFormat("en", { month: "short", timeZone: "UTC" });
const weekday = new Intl.DateTimeFormat("en", { weekday: "short", timeZone: "UTC" });
const short = new Intl.NumberFormat("en", { notation: "compact", maximumSignificantDigits: 3 });

/** "1,234,567", and three digits of small fractions. */
export function number(value) {
  return Number.isInteger(value) || Math.abs(value) >= 1000 ? whole.format(value) : precise.format(value);
}

/** "1.23M", for axes. */
export function shortNumber(value) {
  return short.format(value);
}

export function percent(part) {
  return `${(100 * part).toFixed(part > 0 && part < 0.0995 ? 1 : 0)} %`;
}

/** "1.5 GB": powers of 1000. */
export function bytes(value) {
  const units = ["B", "kB", "MB", "GB", "TB"];
  let unit = 0;
  for (; value >= 1000 && unit + 1 < units.length; ++unit) {
    value /= 1000;
  }
  return `${number(value)} ${units[unit]}`;
}

/** "1.2 ms". */
export function seconds(value) {
  return value < 1 ? `${precise.format(1000 * value)} ms` : `${precise.format(value)} s`;
}

/** "2 h 05 min", "3 min", "12 s". */
export function duration(milliseconds) {
  const all = Math.round(milliseconds / 1000);
  if (all < 60) {
    return `${all} s`;
  }
  const minutes = Math.round(all / 60);
  return minutes < 60 ? `${minutes} min` : `${Math.floor(minutes / 60)} h ${String(minutes % 60).padStart(2, "0")} min`;
}

/** "2026-11-21T09:30:05.123Z" as "2026-11-21 09:30:05"; anything else stays. */
export function time(text) {
  return /^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d/.test(text) ? `${text.slice(0, 10)} ${text.slice(11, 19)}` : text;
}

/** "09:30:05", of now. */
export function clock() {
  return new Date().toISOString().slice(11, 19);
}

/** "2026-11-21": today, or so many days before. */
export function dayBefore(days = 0) {
  return new Date(Date.now() - days * DAY).toISOString().slice(0, 10);
}

/** "21 Nov", for axes. */
export function shortDay(day) {
  return `${Number(day.slice(8))} ${month.format(new Date(day))}`;
}

/** "Sat, 2026-11-21". */
export function longDay(day) {
  return `${weekday.format(new Date(day))}, ${day}`;
}

/** The Monday of the day's week. */
function mondayOf(day) {
  const moment = Date.parse(day);
  return new Date(moment - ((new Date(moment).getUTCDay() + 6) % 7) * DAY).toISOString().slice(0, 10);
}

/** The days, or weeks, of an axis: from the first to the last. Only the known ones if that is too many. */
export function axisOf(known, { from, until }, isWeekly = false) {
  const step = isWeekly ? 7 : 1;
  const limits = [from, until].filter(Boolean).map((day) => (isWeekly ? mondayOf(day) : day));
  return daysBetween([...known, ...limits], step) ?? [...new Set(known)].sort();
}

function daysBetween(days, step) {
  const known = [...days].sort();
  const first = Date.parse(known[0]);
  const last = Date.parse(known.at(-1));
  const count = Math.round((last - first) / DAY / step) + 1;
  if (!(count > 0 && count <= 800)) {
    return null;
  }
  return Array.from({ length: count }, (_, i) => new Date(first + i * step * DAY).toISOString().slice(0, 10));
}
