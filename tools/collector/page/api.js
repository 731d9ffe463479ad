const PATIENCE = 30_000;

const HEADLINES = {
  400: "The filters are wrong.",
  401: "You are not logged in.",
  403: "You may not read this.",
  404: "The collector does not know this.",
  429: "Too many failed log-ins from your address. Wait a minute.",
  503: "The store cannot be read.",
};

/** A question without an answer. `message` says what happened, `detail` what the collector says about it. */
export class ApiError extends Error {
  constructor(message, detail = "") {
    super(message);
    this.detail = detail;
  }
}

/** The address of a figure. `suffix` is ".csv" for CSV. The origin keeps a user name in the page's address out. */
export function addressOf(figure, parameters = {}, suffix = "") {
  const query = new URLSearchParams(Object.entries(parameters).filter(([, value]) => value !== "")).toString();
  return `${location.origin}/api/${figure}${suffix}${query && `?${query}`}`;
}

/**
 * Asks for a figure. The rows are objects whose members are the columns. The array has the member `cursor` if the answer
 * has one. Throws `ApiError`.
 */
export async function read(figure, parameters = {}, signal = undefined) {
  const limit = AbortSignal.timeout(PATIENCE);
  let response;
  let answer;
  try {
    response = await fetch(addressOf(figure, parameters), { signal: either(limit, signal) });
    answer = await response.json().catch((error) => rethrowUnlessSyntax(error));
  } catch {
    signal?.throwIfAborted();
    throw new ApiError(limit.aborted ? "The collector takes too long." : "The collector does not answer.");
  }
  if (!response.ok || answer === null) {
    throw new ApiError(HEADLINES[response.status] ?? `The collector answered ${response.status}.`, answer?.error);
  }
  const rows = answer.rows.map((row) => Object.fromEntries(answer.columns.map((column, i) => [column, row[i]])));
  return Object.assign(rows, { cursor: answer.cursor });
}

function rethrowUnlessSyntax(error) {
  if (!(error instanceof SyntaxError)) {
    throw error;
  }
  return null;
}

/** Aborts when one of both does. */
function either(limit, signal) {
  const controller = new AbortController();
  for (const each of [limit, signal]) {
    each?.addEventListener("abort", () => controller.abort(), { once: true });
  }
  if (signal?.aborted) {
    controller.abort();
  }
  return controller.signal;
}

/** Runs the tasks, at most three at once. */
export async function runAll(tasks) {
  const waiting = [...tasks];
  const work = async () => {
    while (waiting.length > 0) {
      await waiting.shift()();
    }
  };
  await Promise.all([work(), work(), work()]);
}
