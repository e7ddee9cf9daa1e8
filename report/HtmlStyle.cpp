#include "report/HtmlStyle.h"

namespace Tavrin {

// No character of it means anything to XML. What is not known has a broken outline in place of a
// colour: it is no fault.
const char* const kHtmlStyle = R"(
:root {
  color-scheme: light dark;
  --ink: #1c1c1c; --faint: #5c5c5c; --line: #b4b4b4; --paper: #ffffff; --box: #f4f4f4;
  --critical: #a3000f; --critical-box: #fde4e4; --warning: #7a4b00; --warning-box: #fff0cc;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ink: #ececec; --faint: #a8a8a8; --line: #5a5a5a; --paper: #161616; --box: #242424;
    --critical: #ff9c9c; --critical-box: #4a1116; --warning: #ffd27a; --warning-box: #42300a;
  }
}
body {
  margin: 0 auto; padding: 1rem; max-width: 72rem;
  font: 1rem/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper);
}
h1 { font-size: 1.5rem; margin: 0 0 0.5rem; overflow-wrap: anywhere; }
h2 { font-size: 1.2rem; margin: 1.5rem 0 0.5rem; overflow-wrap: anywhere; }
h3 { font-size: 1rem; margin: 1rem 0 0.25rem; }
p { margin: 0.25rem 0; overflow-wrap: anywhere; }
footer, figcaption { color: var(--faint); font-size: 0.85rem; }
table { border-collapse: collapse; font-size: 0.9rem; font-variant-numeric: tabular-nums; }
th, td { text-align: left; padding: 0.2rem 0.9rem 0.2rem 0; border-bottom: 1px solid var(--line); }
th { font-weight: 600; }
.parts { display: flex; flex-wrap: wrap; gap: 0 2.5rem; }
.part { min-width: 0; max-width: 100%; }
.scroll { overflow-x: auto; }
.badge { display: inline-block; padding: 0.05rem 0.5rem; border: 1px solid var(--line); border-radius: 0.4rem; }
.wall { display: grid; gap: 0.5rem; grid-template-columns: repeat(auto-fill, minmax(11rem, 1fr)); }
.tile {
  display: block; padding: 0.4rem 0.6rem; border: 1px solid var(--line); border-radius: 0.4rem;
  background: var(--box); color: inherit; text-decoration: none; overflow-wrap: anywhere;
}
.tile b, .tile .mark, .tile small { display: block; }
.badge.critical, .tile.critical { color: var(--critical); background: var(--critical-box); border-color: currentColor; }
.badge.warning, .tile.warning { color: var(--warning); background: var(--warning-box); border-color: currentColor; }
.badge.unknown, .tile.unknown { border-style: dashed; }
nav ~ article { border-top: 2px solid var(--line); margin-top: 2rem; }
figure { margin: 1rem 0; }
svg { font: 13px system-ui, sans-serif; }
svg.nodes { max-width: 100%; height: auto; display: block; }
.psus { display: flex; flex-wrap: wrap; gap: 8px; margin: 8px 0; }
rect { fill: var(--box); stroke: var(--line); }
text { fill: var(--ink); }
text.name { font-weight: 600; }
text.mark { text-anchor: end; }
g.critical rect { fill: var(--critical-box); stroke: var(--critical); }
g.critical text { fill: var(--critical); }
g.warning rect { fill: var(--warning-box); stroke: var(--warning); }
g.warning text { fill: var(--warning); }
g.unknown rect { stroke-dasharray: 5 3; }
@media (max-width: 30rem) {
  th, td { padding-right: 0.5rem; font-size: 0.8rem; }
}
@media print {
  :root {
    color-scheme: light;
    --ink: #000000; --faint: #333333; --line: #888888; --paper: #ffffff; --box: #ffffff;
    --critical: #a3000f; --critical-box: #ffffff; --warning: #7a4b00; --warning-box: #ffffff;
  }
  body { max-width: none; padding: 0; font-size: 10pt; }
  .scroll { overflow-x: visible; }
  .tile, figure, .part, tr { break-inside: avoid; }
  h2, h3 { break-after: avoid; }
}
)";

}  // namespace Tavrin
