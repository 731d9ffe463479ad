/** Invisible characters and those that change the direction of text. Joiners are part of words. */
const HIDDEN = /(?![\n\t\u200c\u200d])[\p{Cc}\p{Cf}\p{Cs}\u2028\u2029]/gu;

/** Makes an element. Texts among the children become text, never markup. */
export function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

/** A button with a text and what it does. */
export function makeButton(text, action, attributes = {}) {
  const button = make("button", { type: "button", ...attributes }, text);
  button.addEventListener("click", action);
  return button;
}

/** A foreign text, whose invisible characters are shown by their code. `most` characters are kept. */
export function foreign(text, most = 300) {
  const whole = String(text);
  const shown = whole.length > most ? `${whole.slice(0, most)}… (${whole.length} characters)` : whole;
  const fragment = document.createDocumentFragment();
  let end = 0;
  for (const match of shown.matchAll(HIDDEN)) {
    const code = match[0].codePointAt(0).toString(16).toUpperCase().padStart(4, "0");
    fragment.append(shown.slice(end, match.index), make("span", { class: "escape" }, `U+${code}`));
    end = match.index + match[0].length;
  }
  fragment.append(shown.slice(end));
  return fragment;
}

/** A foreign text on lines of its own; JSON is indented. */
export function payload(text) {
  let shown = text;
  try {
    shown = JSON.stringify(JSON.parse(text), null, 2);
  } catch {
    // Not JSON: shown as it is.
  }
  return make("pre", { tabindex: "0", "aria-label": "Payload" }, foreign(shown, 200_000));
}
