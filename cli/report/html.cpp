// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

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

// Not by colour alone: each tone has a sign, too.
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

std::string place_details(const ReportPlace& place) {
  if (place.row == nullptr) return {};
  std::string html =
      "<section class=\"about\" id=\"about-" + place.id + "\"><h3>" + escaped(place.label) + "</h3><dl>\n";
  for (size_t i = 0; i < place.row->size(); ++i) {
    const Column& column = place.table->columns[i];
    html +=
        std::string("<dt>") + escaped(column.help) + "</dt><dd>" + cell(column, (*place.row)[i]) + "</dd>\n";
  }
  return html + "</dl><a class=\"close\" href=\"#machine\">Close</a></section>\n";
}

std::string table_rows(const ReportTable& table) {
  std::string html = "<div class=\"scroll\"><table><thead><tr>";
  for (const Column& column : table.columns) {
    if (!column.is_extra)
      html += std::string("<th title=\"") + escaped(column.help) + "\">" + escaped(column.heading) + "</th>";
  }
  html += "</tr></thead><tbody>\n";
  for (const Row& row : table.rows) {
    html += "<tr>";
    for (size_t i = 0; i < row.size(); ++i) {
      if (!table.columns[i].is_extra) html += "<td>" + cell(table.columns[i], row[i]) + "</td>";
    }
    html += "</tr>\n";
  }
  return html + "</tbody></table></div>\n";
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

// What an operator looks at first: how much there is, and where not all is well.
std::string summary(const Report& report) {
  std::string html = "<ul class=\"summary\">\n";
  for (const ReportTable& table : report.tables) {
    html += "<li><a href=\"#" + table.name + "\"><b>" +
            (table.failure.empty() ? std::to_string(table.rows.size()) : "?") + "</b> " +
            escaped(table.title) + "</a></li>\n";
  }
  html += "</ul>\n<p class=\"attention\">";
  std::string places;
  for (const ReportGroup& group : report.groups) {
    for (const ReportPlace& place : group.places) {
      const Tone tone = tone_of(place.health);
      if (tone != Tone::Warning && tone != Tone::Bad) continue;
      places += (places.empty() ? "Needs attention: " : ", ") + std::string("<a href=\"#about-") + place.id +
                "\">" + escaped(place.label) + "</a> (" + escaped(place.health) + ")";
    }
  }
  return html + (places.empty() ? "No slot or bay reports a fault." : places + ".") + "</p>\n";
}

}  // namespace

std::string as_html(const Report& report) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
      "img-src data:\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<link rel=\"icon\" href=\"data:,\"><title>Hardware inventory</title>\n<style>\n";
  html += kReportStyle;
  html += "</style></head><body>\n<header><h1>Hardware inventory</h1><p>As of " + report.time +
          "</p></header>\n<main>\n";
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
  return html + "</main></body></html>\n";
}

}  // namespace zeldb::cli
