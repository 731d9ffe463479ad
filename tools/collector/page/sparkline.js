const NAMESPACE = "http://www.w3.org/2000/svg";
const HEIGHT = 40;

/** The newest values of a measurement, and their picture. */
export class Sparkline {
  element = document.createElementNS(NAMESPACE, "svg");
  #line = document.createElementNS(NAMESPACE, "polyline");
  #values = [];
  #most;

  /** The picture has place for `most` values. The newest is at its right edge. */
  constructor(most) {
    this.#most = most;
    const base = document.createElementNS(NAMESPACE, "line");
    for (const [name, value] of Object.entries({ x1: 0, x2: most - 1, y1: HEIGHT, y2: HEIGHT })) {
      base.setAttribute(name, String(value));
    }
    this.element.setAttribute("viewBox", `0 -2 ${most - 1} ${HEIGHT + 3}`);
    this.element.setAttribute("preserveAspectRatio", "none");
    this.element.setAttribute("aria-hidden", "true");
    this.element.append(base, this.#line);
  }

  /** Adds a value, null if it is not known. Returns the largest one that is shown. */
  add(value) {
    this.#values = [...this.#values, value].slice(-this.#most);
    const highest = Math.max(0, ...this.#values);
    const first = this.#most - this.#values.length;
    const heightOf = (each) => HEIGHT * (1 - each / (highest || 1));
    const points = this.#values.map((each, i) => (each === null ? "" : `${first + i},${heightOf(each)}`));
    this.#line.setAttribute("points", points.filter(Boolean).join(" "));
    return highest;
  }
}
