import { ApiError, read } from "./api.js";
import { dayBefore } from "./format.js";

/** The days of a relative range, at most. */
const LONGEST = 36_500;

/**
 * The filter bar. The address bar holds what it asks for, so that a page can be kept and shared.
 *
 * The member `days` of the address is the page's own: the number of days up to today, or "all". The form's attribute
 * `data-days` is what applies if the address names neither days nor dates. The form's names, and those of `more`, are
 * parameters of the API. Other members are ignored.
 */
export class Filters {
  #form;
  #changed;
  #more;
  #state = {};

  /** `changed` is called when the address changes. */
  constructor(form, changed, more = []) {
    this.#form = form;
    this.#changed = changed;
    this.#more = more;
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      this.#apply(this.#entered());
    });
    form.addEventListener("input", () => this.#check());
    for (const select of form.querySelectorAll("select")) {
      select.addEventListener("change", () => form.requestSubmit());
    }
    for (const button of form.querySelectorAll("[data-days]")) {
      const range = { from: "", until: "", days: button.dataset.days };
      button.addEventListener("click", () => this.#apply({ ...this.#entered(), ...range }));
    }
    window.addEventListener("popstate", () => {
      this.#show();
      changed();
    });
    this.#show();
  }

  /** The parameters for the API. */
  get parameters() {
    const { days, ...parameters } = this.#state;
    return { ...parameters, ...this.#range(days) };
  }

  /** Asks for other days. */
  setRange(from, until) {
    this.#apply({ ...this.#entered(), days: "", from, until });
  }

  set(name, value) {
    this.#apply({ ...this.#entered(), [name]: value });
  }

  /** Offers the versions of the store. Returns its first and last day; nothing if the store cannot be read. */
  async offerVersions(signal) {
    const rows = await read("filters", {}, signal).catch((error) => {
      if (error instanceof ApiError || signal?.aborted) {
        return [];
      }
      throw error;
    });
    const select = this.#form.elements.namedItem("version");
    for (const { value } of select ? rows.filter((row) => row.kind === "version" && row.value) : []) {
      this.#offer(select, value);
    }
    const valueOf = (kind) => rows.find((row) => row.kind === kind)?.value ?? "";
    return { first: valueOf("first-day"), last: valueOf("last-day") };
  }

  /** The first and last day of the last `days` days, or of the address. */
  #range(days) {
    const { from = "", until = "" } = this.#state;
    return days && days !== "all" ? { from: dayBefore(days - 1), until: dayBefore() } : { from, until };
  }

  /** Reads the address, and shows it in the form. */
  #show() {
    const names = ["days", ...this.#controls().map((control) => control.name), ...this.#more];
    const given = [...new URLSearchParams(location.search)];
    this.#state = Object.fromEntries(given.filter(([name]) => names.includes(name)));
    const days = Math.floor(Number(this.#state.days));
    if (days > 0) {
      this.#state.days = String(Math.min(days, LONGEST));
    } else if (this.#state.days !== "all") {
      this.#state.days = this.#state.from || this.#state.until ? "" : this.#form.dataset.days;
    }
    for (const control of this.#controls()) {
      const value = this.parameters[control.name] ?? "";
      if (control.tagName === "SELECT" && value) {
        this.#offer(control, value);
      }
      control.value = value;
    }
    for (const button of this.#form.querySelectorAll("[data-days]")) {
      button.setAttribute("aria-pressed", String(button.dataset.days === this.#state.days));
    }
    this.#check();
  }

  /** What the form says. Days that were not edited stay relative to today. */
  #entered() {
    const entered = Object.fromEntries(this.#controls().map((control) => [control.name, control.value.trim()]));
    const { from = "", until = "" } = this.#range(this.#state.days);
    const isSame = (entered.from ?? "") === from && (entered.until ?? "") === until;
    return isSame && this.#state.days ? { ...entered, from: "", until: "", days: this.#state.days } : entered;
  }

  /** Marks a form that was edited, and a range that ends before it begins. */
  #check() {
    const shown = this.parameters;
    const isChanged = this.#controls().some((control) => control.value.trim() !== (shown[control.name] ?? ""));
    this.#form.classList.toggle("changed", isChanged);
    const from = this.#form.elements.namedItem("from");
    const until = this.#form.elements.namedItem("until");
    const isReversed = from?.value && until.value && until.value < from.value;
    until?.setCustomValidity(isReversed ? "The last day is before the first day." : "");
  }

  #apply(state) {
    const query = new URLSearchParams(Object.entries(state).filter(([, value]) => value !== ""));
    if (query.get("days") === this.#form.dataset.days) {
      query.delete("days");
    }
    const search = query.toString();
    history.pushState(null, "", `${location.origin}${location.pathname}${search && `?${search}`}`);
    this.#show();
    this.#changed();
  }

  #controls() {
    return [...this.#form.elements].filter((control) => control.name);
  }

  #offer(select, value) {
    if (![...select.options].some((option) => option.value === value)) {
      select.add(new Option(value, value));
    }
  }
}
