// SPDX-License-Identifier: Apache-2.0
//
// A machine as one page: a drawing of its slots and bays, with the content of "zeldb show" for each, and
// tables. The content comes from the views of the listings; this folder only draws it.
#ifndef CLI_REPORT_REPORT_H
#define CLI_REPORT_REPORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "cli/column.h"
#include "cli/place_details.h"

namespace zeldb::cli {

struct ReportTable {
  std::string name;  // of the command that lists the same
  std::string title;
  std::string failure;  // why it cannot be read
  std::vector<Column> columns;
  std::vector<Row> rows;
};

// A slot or bay.
struct ReportPlace {
  std::string id;
  std::string label;
  std::string name;
  std::string health;  // in words; empty: the place is empty, or its health not known
  bool is_empty = false;
  uint64_t number = 0;
  std::vector<PlaceDetails> details{};
};

struct ReportGroup {
  const char* title;
  const char* shape;  // of its places: a class of the style sheet
  std::vector<ReportPlace> places;
};

// A component whose update failed or waits.
struct ReportNotice {
  std::string text;
  std::string place;  // its id; empty where it is not drawn
};

struct Report {
  std::string machine;  // its name; may be empty
  std::string time;
  std::vector<ReportTable> tables;
  std::vector<ReportGroup> groups;
  std::vector<ReportNotice> notices;
};

// Throws Failure when the inventory cannot be reached; a part of it that cannot be read is said in its table.
Report read_report(bool masked);
// Complete in itself: nothing is fetched from elsewhere. Its one script is that of the filter field, and the
// page lets no other run.
std::string as_html(const Report& report);

extern const char* const kReportStyle;
extern const char* const kReportScript;
extern const char* const kReportScriptHash;  // as a Content-Security-Policy names it

}  // namespace zeldb::cli

#endif
