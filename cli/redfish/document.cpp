// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "cli/redfish/resource.h"

namespace zeldb::cli::redfish {

namespace {

constexpr const char* kHead =
    R"(<!-- Written by scripts/docs from the tables in cli/redfish: change it there. -->
# Redfish

`zeldb redfish FOLDER` writes the inventory as a tree of Redfish resources, a folder with an `index.json` for each. This
page lists the column of each property, for readers of the tree and for services that show the inventory themselves.
The columns are those of the records in `include/zeldb` and, with their meaning, of [tables.md](tables.md); the
properties are those of the DMTF's schemas, version 2025.4.

## How the tree is served

Any web server that returns `index.json` for a folder can serve it, as can the DMTF's mockup servers. It is read-only:
no session, no action, no event. A setting is changed with `zeldb pending --set`.

## Rules for all resources

- Unknown values are `null`: an empty text, `N/A`, `Unknown`, `None` and the like, and a number, code or text that the
  schema does not take. A record does not distinguish a NULL column from 0 or an empty text: if 0 is not a possible
  value, the table says "0: null".
- A property is left out if it does not apply to this kind of part, or if the schema knows no null.
- Four columns of a PCI function have fallbacks when they are NULL: `LanesInUse` 4, `MaxLanes` 16, `MaxPCIeType` 4,
  `PCIeType` 3. Such a value may be true or made up.
- Ids are made of keys or names: letters, digits and hyphens; of equal ones all but the first are numbered. They stay the
  same as long as the part keeps its name. The id stands for an unknown name.
- A drive without a sensor has the health 2, `OK`.
- With `--mask`, serial numbers are words such as `serial-0001`; addresses and UUIDs keep their form and are numbered.
- Settings that hold secrets have the type `Password` and no value.
- Every link leads to a resource of the tree, which links back if the schema has a property for it.
)";

// Escapes bars, which would end the cell.
std::string cell(const char* text) {
  std::string escaped;
  for (; *text != '\0'; ++text) escaped += *text == '|' ? std::string("\\|") : std::string(1, *text);
  return escaped;
}

// Columns, each as code.
std::string columns(const std::string& from) {
  std::string shown;
  for (size_t begin = 0; begin < from.size();) {
    const size_t end = std::min(from.find(", ", begin), from.size());
    const std::string column = from.substr(begin, end - begin);
    const bool is_plain = column.find(' ') == std::string::npos;
    shown += (shown.empty() ? "" : ", ") + (is_plain ? "`" + column + "`" : column);
    begin = end + 2;
  }
  return shown;
}

std::string column_of(const char* from) {
  // A path through a row ends with the column; a table may stand before a column.
  const std::string_view path = from;
  return path.find(' ') == std::string_view::npos && !path.empty() && path.front() >= 'a'
             ? std::string(last_step(path))
             : std::string(path);
}

std::string section(const Chapter& chapter) {
  const About& about = chapter.about;
  std::string text = std::string("\n## ") + about.type + "\n\n`/redfish/v1" +
                     (*about.place != '\0' ? "/" : "") + about.place + "`, " + about.version + ". " +
                     about.text + "\n\n| Property | From | Conversion |\n|---|---|---|\n";
  for (const Line& line : chapter.lines)
    text += std::string("| `") + line.name + "` | " + columns(column_of(line.from)) + " | " +
            cell(line.note) + " |\n";
  return text;
}

}  // namespace

std::string document() {
  std::string text = kHead;
  for (const Chapter& chapter : chapters()) text += section(chapter);
  return text;
}

}  // namespace zeldb::cli::redfish
