/** The code of a crash: the large ones, which Windows uses, in hexadecimal. */
export function codeText(code) {
  const value = Number(code);
  return code !== null && code !== "" && Number.isInteger(value) && value >= 0x80000000 && value <= 0xffffffff
    ? `0x${value.toString(16).toUpperCase()}`
    : code ?? "";
}

/** How a session ended. */
export const ENDS = { crashed: "✕ Crashed", stopped: "Stopped", unknown: "? Unknown" };

/** The address of a session's report. */
export function sessionAddress(id) {
  return `/session/${encodeURIComponent(id.replace(/\p{Surrogate}/gu, "\ufffd"))}`;
}
