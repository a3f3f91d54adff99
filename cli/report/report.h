// SPDX-License-Identifier: Apache-2.0
//
// A machine as one page: a drawing of its slots and bays, and tables. What is shown comes from the views of
// the listings; only how places are drawn is said here.
#ifndef CLI_REPORT_REPORT_H
#define CLI_REPORT_REPORT_H

#include <string>
#include <vector>

#include "cli/column.h"

namespace zeldb::cli {

struct ReportTable {
  std::string name;  // of the command that lists the same
  std::string title;
  std::string failure;  // why it cannot be read
  std::vector<Column> columns;
  std::vector<Row> rows;
};

// A slot or bay. Its details are all that the row says.
struct ReportPlace {
  std::string id;
  std::string label;
  std::string name;
  std::string health;  // in words; empty: nothing sits there, or nobody knows
  bool is_empty = false;
  const ReportTable* table = nullptr;
  const Row* row = nullptr;
};

struct ReportGroup {
  const char* title;
  const char* shape;  // of its places: a class of the style sheet
  std::vector<ReportPlace> places;
};

struct Report {
  std::vector<ReportTable> tables;
  std::vector<ReportGroup> groups;  // point into the tables
  std::string time;
};

// Throws Failure when the inventory cannot be reached; a part of it that cannot be read is said in its table.
Report read_report(bool masked);
// Complete in itself: no script, nothing that is fetched from elsewhere.
std::string as_html(const Report& report);

extern const char* const kReportStyle;

}  // namespace zeldb::cli

#endif
