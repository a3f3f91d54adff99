// SPDX-License-Identifier: Apache-2.0
#include "cli/collect/fleet_tables.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <optional>
#include <utility>

#include "cli/packed_rows.h"
#include "cli/snapshot.h"
#include "cli/text.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"
#include "zel_db/status.h"

namespace zeldb::cli::collect {

namespace {

constexpr const char* kMachines = "FleetMachines";

// The settings are left out: there are thousands per machine.
constexpr struct {
  const char* listing;
  const char* table;
} kListings[] = {
    {"slots", "FleetSlots"},         {"processors", "FleetProcessors"}, {"memory", "FleetMemory"},
    {"functions", "FleetFunctions"}, {"adapters", "FleetAdapters"},     {"ports", "FleetPorts"},
    {"gpus", "FleetGpus"},           {"disks", "FleetDisks"},           {"backplanes", "FleetBackplanes"},
    {"firmware", "FleetFirmware"},   {"embedded", "FleetEmbedded"},     {"pending", "FleetPending"}};

std::string quoted(std::string_view text) {
  std::string literal = "'";
  for (const char c : printable(text, Escape::None)) literal.append(c == '\'' ? 2 : 1, c);
  return literal + "'";
}

std::string quoted_name(std::string_view name) {
  return "`" + std::string(name) + "`";
}

// Does not use time_t, which may have 32 bits.
std::string time_text(int64_t seconds) {
  using std::chrono::floor;
  const std::chrono::sys_time<std::chrono::duration<int64_t>> time{std::chrono::duration<int64_t>(seconds)};
  const std::chrono::year_month_day day(floor<std::chrono::days>(time));
  const std::chrono::hh_mm_ss clock(time - floor<std::chrono::days>(time));
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

// Tells whether rows have changed. FNV-1a.
std::string digest(std::string_view bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  char text[17];
  std::snprintf(text, sizeof(text), "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

// The word "LISTING=DIGEST" of a state.
std::string word_of(const std::string& state, const std::string& listing) {
  const size_t start = state.find(' ' + listing + '=');
  if (start == std::string::npos) return "";
  return state.substr(start, state.find(' ', start + 1) - start);
}

std::string type_of(const Column& column, bool is_server) {
  if (!is_server) return is_text(column.type) ? "TEXT" : "INTEGER";
  if (!is_text(column.type))
    return column.type != Type::Signed && column.size == sizeof(uint64_t) ? "BIGINT UNSIGNED" : "BIGINT";
  // All of a row's VARCHARs have to fit into 64 KiB.
  constexpr int kMost = 255;
  const int size = std::max({int{column.size}, int{column.digits}, 16});
  if (size > kMost) return "MEDIUMTEXT";
  return "VARCHAR(" + std::to_string(size) + ")";
}

std::string literal(const Value& value, bool is_server) {
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return quoted(*text);
  const auto* const number = std::get_if<uint64_t>(&value);
  if (number == nullptr) return "NULL";
  return is_server ? std::to_string(*number) : std::to_string(static_cast<int64_t>(*number));
}

void require_done(int status) {
  if (status == 0) return;
  char error[1024] = "";
  if (status == zel_db::kConnectionLost) zel_db_create_fleet(nullptr, error, sizeof(error));
  const std::string why = std::string("database fleet: ") + zel_db_get_error_str(status);
  if (status == zel_db::kConstraint) throw Refused(why);
  throw Failure(*error != '\0' ? why + ": " + error : why);
}

// A value that a table for people shows as "-" becomes NULL.
std::vector<Row> known_rows(const View& view) {
  std::vector<Row> rows = read_rows(view, nullptr);
  for (Row& row : rows) {
    const Row whole = row;
    for (size_t place = 0; place < row.size(); ++place) {
      const Column& column = view.columns[place];
      row[place] = shown_value(view, whole, column);
      const auto* const number = std::get_if<uint64_t>(&row[place]);
      if (number != nullptr && column.none == *number) row[place] = {};
    }
  }
  return rows;
}

}  // namespace

// Two rows: the state, and the time if the snapshot says it; the packed rows of each listing.
std::string read_snapshot_rows() {
  const std::optional<int64_t> time = time_of_snapshot();
  std::string state = "taken=";
  if (time) state += std::to_string(*time);
  Row listings;
  for (const auto& [listing, table] : kListings) {
    const View& view = view_called(listing);
    std::string rows = packed(known_rows(view));
    std::string columns;
    for (const Column& column : view.columns) columns += std::string(column.key) + ' ';
    state += ' ' + std::string(listing) + '=' + digest(columns + rows);
    listings.emplace_back(std::move(rows));
  }
  return packed({{state, time ? Value(*time) : Value()}, std::move(listings)});
}

FleetTables::FleetTables(const std::string& url) : is_server_(url.starts_with("mariadb:")) {
  setenv("ZEL_DB_URL", url.c_str(), 1);
  char error[1024] = "";
  if (zel_db_create_fleet(nullptr, error, sizeof(error)) != 0) throw Failure(error);
  if (!connection_.emplace("fleet")) throw Failure("database fleet: cannot be reached");
  const std::string time = is_server_ ? " DATETIME" : " TEXT";
  const std::string text = is_server_ ? " MEDIUMTEXT" : " TEXT";
  const std::string machine = is_server_ ? "Machine VARCHAR(255) NOT NULL" : "Machine TEXT NOT NULL";
  begin();
  make_table(kMachines, {machine + " PRIMARY KEY", "Taken" + time, "Collected" + time, "State" + text});
  for (const auto& [listing, table] : kListings) {
    std::vector<std::string> columns{machine, "Since" + time};
    for (const Column& column : view_called(listing).columns)
      columns.push_back(quoted_name(column.key) + " " + type_of(column, is_server_));
    make_table(table, columns);
    run(std::string("CREATE INDEX IF NOT EXISTS ") + table + "ByMachine ON " + table + " (Machine)");
  }
  commit();
}

// An older zeldb may have made it with fewer columns.
void FleetTables::make_table(const std::string& name, const std::vector<std::string>& columns) const {
  std::string definition;
  for (const std::string& column : columns) definition += (definition.empty() ? "" : ", ") + column;
  run("CREATE TABLE IF NOT EXISTS " + name + " (" + definition + ")" +
      (is_server_ ? " ENGINE=InnoDB DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin" : " STRICT"));
  const std::vector<std::string> known =
      texts(is_server_ ? "SELECT column_name FROM information_schema.columns WHERE table_schema=database() "
                         "AND table_name='" +
                             name + "'"
                       : "SELECT name FROM pragma_table_info('" + name + "')");
  for (const std::string& column : columns) {
    std::string key = column.substr(0, column.find(' '));
    std::erase(key, '`');
    if (std::ranges::find(known, key) == known.end()) run("ALTER TABLE " + name + " ADD COLUMN " + column);
  }
}

void FleetTables::run(const std::string& statement) const {
  require_done(connection_->run(statement));
}

// The texts of the first column.
std::vector<std::string> FleetTables::texts(const std::string& select) const {
  Result rows;
  require_done(connection_->run(select, rows));
  std::vector<std::string> found;
  while (rows.next()) {
    std::string text(4096, '\0');
    zel_db_result_column_text(rows.get(), 0, text.data(), static_cast<unsigned>(text.size()));
    found.push_back(text.substr(0, text.find('\0')));
  }
  return found;
}

// Only one process writes at a time, so that two never wait for each other.
void FleetTables::begin() {
  if (!is_server_) return run("BEGIN IMMEDIATE");
  run("SET NAMES utf8mb4 COLLATE utf8mb4_nopad_bin");
  if (texts("SELECT GET_LOCK(CONCAT('zeldb ', MD5(DATABASE())), 60)") != std::vector<std::string>{"1"})
    throw Failure("database fleet: another zeldb collect writes to it");
  run("BEGIN");
}

void FleetTables::commit() {
  run("COMMIT");
  if (is_server_) texts("SELECT RELEASE_LOCK(CONCAT('zeldb ', MD5(DATABASE())))");
}

Stored FleetTables::store(const std::string& machine, std::string_view snapshot_rows) {
  run("SAVEPOINT machine");
  try {
    return store_unguarded(machine, unpacked(snapshot_rows));
  } catch (const Refused&) {
    run("ROLLBACK TO SAVEPOINT machine");
    throw;
  }
}

Stored FleetTables::store_unguarded(const std::string& machine, const std::vector<Row>& snapshot) {
  const std::string where = " WHERE Machine=" + quoted(machine);
  const std::vector<std::string> known = texts(std::string("SELECT State FROM ") + kMachines + where);
  std::string before;
  if (!known.empty()) before = known.front();
  const auto& now = std::get<std::string>(snapshot.at(0).at(0));
  if (before == now) return Stored::Unchanged;

  const std::string collected = quoted(time_text(std::time(nullptr)));
  const auto* const seconds = std::get_if<int64_t>(&snapshot[0].at(1));
  std::string taken = "NULL";
  if (seconds != nullptr) taken = quoted(time_text(*seconds));
  for (size_t place = 0; place < std::size(kListings); ++place) {
    if (before.find(word_of(now, kListings[place].listing)) != std::string::npos) continue;
    if (!known.empty()) run(std::string("DELETE FROM ") + kListings[place].table + where);
    insert_rows(place, quoted(machine) + "," + (seconds != nullptr ? taken : collected),
                unpacked(std::get<std::string>(snapshot.at(1).at(place))));
  }
  if (known.empty())
    run(std::string("INSERT INTO ") + kMachines + " (Machine,Taken,Collected,State) VALUES (" +
        quoted(machine) + "," + taken + "," + collected + "," + quoted(now) + ")");
  else
    run(std::string("UPDATE ") + kMachines + " SET Taken=" + taken + ",Collected=" + collected +
        ",State=" + quoted(now) + where);
  return Stored::Changed;
}

void FleetTables::insert_rows(size_t listing, const std::string& start, const std::vector<Row>& rows) const {
  constexpr size_t kMost = size_t{1} << 17U;  // far below what a server takes in one statement
  std::string insert = std::string("INSERT INTO ") + kListings[listing].table + " (Machine,Since";
  for (const Column& column : view_called(kListings[listing].listing).columns)
    insert += "," + quoted_name(column.key);
  insert += ") VALUES ";
  std::string values;
  for (const Row& row : rows) {
    values += (values.empty() ? "(" : ",(") + start;
    for (const Value& value : row) values += "," + literal(value, is_server_);
    values += ")";
    if (values.size() > kMost) run(insert + std::exchange(values, {}));
  }
  if (!values.empty()) run(insert + values);
}

}  // namespace zeldb::cli::collect
