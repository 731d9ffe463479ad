import { foreign, make } from "./dom.js";
import { showList } from "./list.js";

showList("Refused texts, newest first", [
  { title: "Received", kind: "time", value: (row) => row.received },
  { title: "User", value: (row) => row.user },
  { title: "Reason", kind: "reason", value: (row) => row.reason },
  { title: "Times", kind: "number", value: (row) => row.count },
  { title: "Text", cell: (row) => make("pre", { class: "refused", tabindex: "0" }, foreign(row.text, 20_000)) },
], ["text", "texts"]);
