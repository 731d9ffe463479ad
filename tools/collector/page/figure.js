import { addressOf, ApiError, read } from "./api.js";
import { make, makeButton } from "./dom.js";

/**
 * A panel that shows a figure of the API: loading, empty, failed or drawn.
 *
 * The section's `data-figure` is the figure's name, `data-empty` what is said if there are no rows. `draw(body, rows,
 * parameters)` appends what is shown. It may return a function that releases it. `changed(figure)` is called when the
 * figure was read, or could not be read.
 */
export class Figure {
  /** What was read, null if it is not known. */
  rows = null;
  /** Why the last `load` failed, null if it did not. */
  failure = null;
  #parameters = {};
  #section;
  #body = make("div", { class: "body" }, make("div", { class: "skeleton" }));
  #links = make("div", { class: "links" });
  #draw;
  #changed;
  #release = null;

  constructor(section, draw, changed) {
    this.#section = section;
    this.#draw = draw;
    this.#changed = changed;
    const heading = section.querySelector("h2");
    heading.tabIndex = -1;  // so that a script can move the focus there
    heading.after(this.#links);
    section.append(this.#body);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.redraw());
  }

  get name() {
    return this.#section.dataset.figure;
  }

  /** What was shown before stays until the answer is there. After an abort the figure waits for its next `load`. */
  async load(parameters, signal) {
    this.rows = null;
    this.#section.setAttribute("aria-busy", "true");
    this.#showLinks(parameters);
    try {
      this.rows = await read(this.name, parameters, signal);
      this.failure = null;
      this.#parameters = parameters;
      this.redraw();
    } catch (error) {
      if (signal.aborted) {
        return;
      }
      this.failure = error;
      this.#showFailure(error, () => this.load(parameters, signal));
    }
    this.#section.removeAttribute("aria-busy");
    this.#changed(this);
  }

  /** Draws the rows again, for example in other colours. */
  redraw() {
    if (this.rows === null) {
      return;
    }
    this.#clear();
    if (this.rows.length === 0) {
      this.#body.append(make("p", { class: "state" }, this.#section.dataset.empty));
    } else {
      this.#release = this.#draw(this.#body, this.rows, this.#parameters) ?? null;
    }
  }

  /** Leaves the reason of the failure to the page. */
  hideReason() {
    this.#clear();
    this.#body.append(make("p", { class: "state" }, "Not read."));
  }

  #showFailure(error, again) {
    if (!(error instanceof ApiError)) {
      console.error(error);
    }
    const hadFocus = this.#body.contains(document.activeElement);
    this.#clear();
    const button = makeButton("Try again", () => again().then(() => this.#section.querySelector("h2").focus()));
    this.#body.append(make("div", { class: "state bad" }, make("p", {}, error.message),
      make("p", { class: "detail" }, error.detail ?? ""), button));
    if (hadFocus) {
      button.focus();
    }
  }

  #showLinks(parameters) {
    const title = this.#section.querySelector("h2").textContent;
    const links = { CSV: addressOf(this.name, parameters, ".csv"), JSON: addressOf(this.name, parameters) };
    this.#links.replaceChildren(...Object.entries(links).map(([name, address]) =>
      make("a", { href: address, "aria-label": `${title} as ${name}` }, name)));
  }

  #clear() {
    this.#release?.();
    this.#release = null;
    this.#body.replaceChildren();
  }
}
