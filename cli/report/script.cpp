// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

namespace zeldb::cli {

const char* const kReportScript = R"(
const label = document.getElementById("filter");
const field = label.querySelector("input");
function filter() {
  const words = field.value.toLowerCase().split(/\s+/);
  for (const shown of document.querySelectorAll(".place, main > section:not(.about) tbody tr")) {
    const text = shown.textContent.toLowerCase();
    shown.hidden = !words.every(word => text.includes(word));
  }
}
label.hidden = false;
field.addEventListener("input", filter);
filter();
)";

// This has to be computed again when the script changes: a browser runs no script with another hash.
const char* const kReportScriptHash = "'sha256-CjelIZcDUn0UBSqqYl1S89ag5cJYUr/tMkKRK/3GoiU='";

}  // namespace zeldb::cli
