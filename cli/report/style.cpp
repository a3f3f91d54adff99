// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

namespace zeldb::cli {

const char* const kReportStyle = R"(
:root { --ink: #1c2126; --paper: #fff; --line: #c4ccd4; --steel: #e9edf1; --good: #1a7f37; --warning: #9a6700;
  --bad: #c62828; --unknown: #57606a; color-scheme: light dark; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e6e9ec; --paper: #14181c; --line: #3d454d; --steel: #20262c; --good: #57c46f; --warning: #e3b341;
    --bad: #ff7b72; --unknown: #9aa4ae; }
}
* { box-sizing: border-box; }
[hidden] { display: none !important; }
body { margin: 0; font: 16px/1.45 system-ui, sans-serif; color: var(--ink); background: var(--paper); }
header, main { max-width: 75rem; margin: 0 auto; padding: 0 1rem; }
h1 { margin: 1rem 0 0; font-size: 1.6rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; }
header p { margin: 0 0 1rem; color: var(--unknown); }
a { color: inherit; }
.summary { display: flex; flex-wrap: wrap; gap: .3rem 1.2rem; list-style: none; margin: 0; padding: 0; }
#filter { display: block; margin-bottom: 1rem; } #filter input { font: inherit; max-width: 100%; }
.attention ul { margin: 0; padding-left: 1.2rem; } .attention p { margin: 1rem 0 .2rem; }
.about h4 { margin: 1rem 0 .2rem; }
main > section:not(.about) { content-visibility: auto; contain-intrinsic-size: auto 30rem; }
.summary a { text-decoration: none; border-bottom: 1px dotted; }
figure { margin: 1rem 0; padding: .8rem; border: 3px solid var(--line); border-radius: .6rem;
  background: var(--steel); display: flex; flex-wrap: wrap; gap: .5rem; }
figcaption { flex-basis: 100%; font-weight: 600; }
.place { display: flex; flex-direction: column; min-width: 0; padding: .45rem .6rem; text-decoration: none;
  background: var(--paper); border: 1px solid var(--line); border-left: .45rem solid var(--unknown);
  border-radius: .25rem; }
.place.good { border-left-color: var(--good); } .place.warning { border-left-color: var(--warning); }
.place.bad { border-left-color: var(--bad); }
.place.empty { border-left-color: transparent; border-style: dashed; background: repeating-linear-gradient(
  45deg, transparent 0 .4rem, var(--line) .4rem .5rem); color: var(--unknown); }
a.place:hover, a.place:focus { outline: 2px solid currentColor; outline-offset: 1px; }
.slots .place { flex: 1 1 100%; flex-direction: row; gap: .8rem; align-items: baseline; }
.slots .label { flex: 0 0 5.5rem; } .slots .name { flex: 1 1 auto; }
.bays .place { flex: 0 0 8.2rem; min-height: 6rem; } .m2s .place { flex: 0 0 14rem; border-radius: .25rem 1rem 1rem .25rem; }
.label { font-weight: 600; } .name { overflow-wrap: anywhere; font-size: .9rem; }
.health { white-space: nowrap; font-size: .9rem; }
.bays .health { margin-top: auto; }
.good b, .health.good { color: var(--good); } .health.warning { color: var(--warning); }
.health.bad { color: var(--bad); } .health.unknown { color: var(--unknown); }
.about { display: none; border: 2px solid var(--ink); border-radius: .5rem; padding: .2rem 1rem 1rem; margin: 1rem 0; }
.about:target { display: block; position: fixed; inset: auto 0 0 0; max-height: 60vh; overflow: auto; margin: 0;
  background: var(--paper); }
dl { display: grid; grid-template-columns: minmax(8rem, 22rem) 1fr; gap: .15rem 1rem; margin: 0 0 1rem; }
dt { color: var(--unknown); } dd { margin: 0; overflow-wrap: anywhere; }
.scroll { overflow-x: auto; } table { border-collapse: collapse; font-size: .9rem; }
th, td { text-align: left; padding: .25rem .7rem .25rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }
th { white-space: nowrap; } .failure { color: var(--bad); }
@media (max-width: 40rem) {
  .slots .place { flex-wrap: wrap; gap: 0 .8rem; } .slots .name { flex: 1 1 60%; } .bays .place { flex: 1 1 8rem; }
  dl { grid-template-columns: 1fr; } dd { margin-bottom: .4rem; }
}
@media print { #filter { display: none; } main > section:not(.about) { content-visibility: visible; }
  .about, .about:target { display: block; position: static; max-height: none; break-inside: avoid; }
  .close { display: none; } }
)";

}  // namespace zeldb::cli
