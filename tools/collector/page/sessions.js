import { make } from "./dom.js";
import { duration } from "./format.js";
import { showList } from "./list.js";
import { ENDS, sessionAddress } from "./names.js";

showList("Sessions, newest first", [
  { title: "Session", kind: "code", value: (row) => row.session, link: (row) => sessionAddress(row.session) },
  { title: "Installation", value: (row) => row.installation,
    link: (row) => row.installation && `/sessions?${new URLSearchParams({ installation: row.installation })}` },
  { title: "Version", value: (row) => row.version },
  { title: "First record", kind: "time", value: (row) => row.first },
  { title: "Last record", kind: "time", value: (row) => row.last },
  { title: "Length", kind: "number", cell: (row) => duration(Date.parse(row.last) - Date.parse(row.first) || 0) },
  { title: "Events", kind: "number", value: (row) => row.events },
  { title: "Ended", cell: (row) => make("span", { class: `end ${row.end}` }, ENDS[row.end]) },
], ["session", "sessions"]);
