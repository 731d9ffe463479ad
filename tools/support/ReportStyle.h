#pragma once

namespace qel::support {

/// How a report looks, on light screens, on dark ones and on paper.
inline constexpr const char* reportStyle = R"(
:root { color-scheme: light dark; --back: #fff; --text: #1d2430; --faint: #5d6778; --line: #d9dee7;
  --accent: #1f6fb2; --band: #8fbfe6; --bad: #b3261e; }
@media (prefers-color-scheme: dark) { :root { --back: #14181f; --text: #e4e8ef; --faint: #9aa5b8;
  --line: #323a48; --accent: #6cb2f0; --band: #2f5d86; --bad: #ff8a80; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem; max-width: 72rem; background: var(--back);
  color: var(--text); font: 15px/1.5 system-ui, sans-serif; }
h1 { font-size: 1.6rem; margin: 0 0 .25rem; } h2 { font-size: 1.2rem; margin: 2.2rem 0 .6rem; }
h3 { font-size: 1rem; margin: 1.2rem 0 .3rem; }
p { margin: .3rem 0; } .faint { color: var(--faint); } .bad { color: var(--bad); }
nav a { margin-right: 1rem; color: var(--accent); }
code { font-family: ui-monospace, monospace; overflow-wrap: anywhere; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .1rem 1.2rem; margin: .8rem 0; }
dt { color: var(--faint); } dd { margin: 0; overflow-wrap: anywhere; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: .25rem .8rem .25rem 0;
  border-bottom: 1px solid var(--line); overflow-wrap: break-word; }
td:last-child { overflow-wrap: anywhere; } td:not(:last-child) { max-width: 16rem; }
th { color: var(--faint); font-weight: 600; } th.number, td.number { text-align: right; }
td.number, td.time { white-space: nowrap; font-variant-numeric: tabular-nums; }
svg { display: block; width: 100%; height: auto; overflow: visible;
  font: 12px system-ui, sans-serif; }
svg text { fill: var(--text); } svg .mark { fill: var(--faint); text-anchor: middle; }
svg .amount { text-anchor: end; }
svg .grid { stroke: var(--line); stroke-width: 1; } svg .stroke { fill: var(--accent); }
svg .band { fill: var(--band); } svg .reading { fill: none; stroke: var(--accent); stroke-width: 2; }
svg .dot { fill: var(--accent); }
svg line.crash { stroke: var(--bad); stroke-width: 2; stroke-dasharray: 5 3; }
svg text.crash { fill: var(--bad); font-weight: 600; } svg .before { text-anchor: end; }
@media print { :root { color-scheme: light; --back: #fff; --text: #000; --faint: #444; --line: #bbb;
  --accent: #1f6fb2; --band: #8fbfe6; --bad: #b3261e; } body { font-size: 9pt; }
  svg, tr { break-inside: avoid; } h2, h3 { break-after: avoid; } nav { display: none; } }
)";

}  // namespace qel::support
