// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>
#include <set>

#include "cli/output.h"
#include "cli/report/report.h"

namespace zeldb::cli {

namespace {

// Texts of the databases are shown, never run.
std::string escaped(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      case '\'':
        safe += "&#39;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

// Each tone has a sign beside its colour.
struct Look {
  const char* name;
  const char* sign;
};
constexpr Look kLooks[] = {{"unknown", "?"}, {"good", "&#10003;"}, {"warning", "!"}, {"bad", "&#10007;"}};
const Look& look_of(const std::string& health) {
  return kLooks[static_cast<size_t>(tone_of(health))];
}

std::string health_mark(const std::string& health) {
  const Look& look = look_of(health);
  return std::string("<span class=\"health ") + look.name + "\"><b>" + look.sign + "</b> " + escaped(health) +
         "</span>";
}

std::string place_box(const ReportPlace& place) {
  const std::string inside = "<span class=\"label\">" + escaped(place.label) +
                             "</span><span class=\"name\">" + escaped(place.name) + "</span>";
  if (place.is_empty) return "<span class=\"place empty\" id=\"" + place.id + "\">" + inside + "</span>\n";
  return "<a class=\"place " + std::string(look_of(place.health).name) + "\" href=\"#about-" + place.id +
         "\" id=\"" + place.id + "\">" + inside + health_mark(place.health) + "</a>\n";
}

std::string group_figure(const ReportGroup& group) {
  std::string html =
      "<figure class=\"" + std::string(group.shape) + "s\"><figcaption>" + group.title + "</figcaption>\n";
  for (const ReportPlace& place : group.places) html += place_box(place);
  return html + "</figure>\n";
}

std::string cell(const Column& column, const Value& value) {
  const std::string text = cell_of(column, value);
  const bool is_health = column.type == Type::Health || column.type == Type::HealthText;
  return is_health ? health_mark(text) : escaped(text);
}

std::string rows_html(const std::vector<Column>& columns, const std::vector<Row>& rows) {
  std::string html = "<div class=\"scroll\"><table><thead><tr>";
  for (const Column& column : columns)
    html += std::string("<th title=\"") + escaped(column.help) + "\">" + escaped(column.heading) + "</th>";
  html += "</tr></thead><tbody>\n";
  for (const Row& row : rows) {
    html += "<tr>";
    for (size_t i = 0; i < row.size(); ++i) html += "<td>" + cell(columns[i], row[i]) + "</td>";
    html += "</tr>\n";
  }
  return html + "</tbody></table></div>\n";
}

// A line for each thing that is known.
std::string lines_html(const std::vector<Column>& columns, const Row& row) {
  std::string html = "<dl>\n";
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string value = cell(columns[i], row[i]);
    if (value != "-")
      html += std::string("<dt title=\"") + escaped(columns[i].help) + "\">" + escaped(columns[i].heading) +
              "</dt><dd>" + value + "</dd>\n";
  }
  return html + "</dl>\n";
}

std::string place_details(const ReportPlace& place) {
  if (place.is_empty) return {};
  std::string html =
      "<section class=\"about\" id=\"about-" + place.id + "\"><h3>" + escaped(place.label) + "</h3>\n";
  for (const PlaceDetails& details : place.details) {
    if (!details.is_shown()) continue;
    const Table table = table_of(details);
    html += "<h4>" + escaped(details.title) + "</h4>\n";
    if (!details.found.trouble.empty())
      html += "<p class=\"failure\">Cannot be read: " + escaped(details.found.trouble) + "</p>\n";
    else if (table.rows.empty())
      html += "<p>" + escaped(details.nothing) + "</p>\n";
    else
      html += table.rows.size() == 1 ? lines_html(table.columns, table.rows.front())
                                     : rows_html(table.columns, table.rows);
  }
  return html + "<a class=\"close\" href=\"#machine\">Close</a></section>\n";
}

// The rows, with the columns that a listing shows by default.
std::string table_rows(const ReportTable& table) {
  std::vector<Column> columns;
  std::ranges::copy_if(table.columns, std::back_inserter(columns),
                       [](const Column& column) { return !column.is_extra; });
  std::vector<Row> rows;
  for (const Row& row : table.rows) {
    Row& shown = rows.emplace_back();
    for (size_t i = 0; i < row.size(); ++i) {
      if (!table.columns[i].is_extra) shown.push_back(row[i]);
    }
  }
  return rows_html(columns, rows);
}

std::string table_section(const ReportTable& table) {
  std::string html = "<section id=\"" + table.name + "\"><h2>" + escaped(table.title) + "</h2>\n";
  if (!table.failure.empty()) {
    html += "<p class=\"failure\">Cannot be read: " + escaped(table.failure) + "</p>\n";
  } else if (table.rows.empty()) {
    html += "<p>None.</p>\n";
  } else {
    html += table_rows(table);
  }
  return html + "</section>\n";
}

std::string link_to(const std::string& place, const std::string& text) {
  return "<a href=\"#about-" + place + "\">" + escaped(text) + "</a>";
}

// The places with problems.
std::string attention(const Report& report) {
  std::string items;
  std::set<std::string> drawn;
  for (const ReportGroup& group : report.groups) {
    for (const ReportPlace& place : group.places) {
      drawn.insert(place.id);
      const Tone tone = tone_of(place.health);
      if (tone == Tone::Warning || tone == Tone::Bad)
        items += "<li>" + link_to(place.id, place.label) + " (" + escaped(place.health) + ")</li>\n";
    }
  }
  for (const ReportNotice& notice : report.notices)
    items += "<li>" +
             (drawn.contains(notice.place) ? link_to(notice.place, notice.text) : escaped(notice.text)) +
             "</li>\n";
  if (items.empty()) return "<p class=\"attention\">No slot or bay reports a fault.</p>\n";
  return "<div class=\"attention\"><p>Needs attention:</p><ul>\n" + items + "</ul></div>\n";
}

// The summary for an operator: counts, and places with problems.
std::string summary(const Report& report) {
  std::string html = "<ul class=\"summary\">\n";
  for (const ReportTable& table : report.tables) {
    html += "<li><a href=\"#" + table.name + "\"><b>" +
            (table.failure.empty() ? std::to_string(table.rows.size()) : "?") + "</b> " +
            escaped(table.title) + "</a></li>\n";
  }
  return html + "</ul>\n" + attention(report);
}

std::string head(const std::string& title) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
      "img-src data:; script-src ";
  html.append(kReportScriptHash).append("\">\n");
  html +=
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<link rel=\"icon\" href=\"data:,\"><title>" +
      title + "</title>\n<style>\n";
  return html.append(kReportStyle).append("</style></head>");
}

}  // namespace

std::string as_html(const Report& report) {
  const std::string title =
      escaped((report.machine.empty() ? "" : report.machine + ": ") + "hardware inventory");
  std::string html = head(title) + "<body>\n<header><h1>" + title + "</h1><p>As of " + report.time +
                     "</p>\n<label id=\"filter\" hidden>Show only what has the words <input "
                     "type=\"search\"></label></header>\n<main>\n";
  html += summary(report);
  html += "<div id=\"machine\">\n";
  for (const ReportGroup& group : report.groups) {
    if (!group.places.empty()) html += group_figure(group);
  }
  html += "</div>\n";
  for (const ReportGroup& group : report.groups) {
    for (const ReportPlace& place : group.places) html += place_details(place);
  }
  for (const ReportTable& table : report.tables) html += table_section(table);
  return html.append("</main>\n<script>").append(kReportScript).append("</script></body></html>\n");
}

}  // namespace zeldb::cli
