// SPDX-License-Identifier: Apache-2.0
#include "scan/store.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"

namespace zeldb::scan {

namespace {

constexpr const char* kEntries = "ScannedRows";
constexpr const char* kTaken = "AIMSupported";

constexpr size_t kLongestText = 2049;

struct Stored {
  bool is_null = true;
  std::string text;
  std::optional<uint64_t> number;
};

Stored stored_at(const zeldb::Row& row, int column) {
  Stored cell;
  cell.is_null = row.is_null(column);
  if (cell.is_null) return cell;
  char text[kLongestText] = {};
  row.text(column, text);
  cell.text = text;
  uint64_t number = 0;
  if (row.read(column, number) == ZELDB_OK) cell.number = number;
  return cell;
}

bool holds(const Stored& stored, const Value& value) {
  if (std::holds_alternative<Kept>(value)) return true;
  if (const auto* const gone = std::get_if<Withdrawn>(&value)) return stored.number != gone->number;
  if (const auto* const near = std::get_if<Near>(&value))
    return stored.number &&
           std::max(*stored.number, near->number) - std::min(*stored.number, near->number) <= near->tolerance;
  if (std::holds_alternative<std::monostate>(value)) return stored.is_null;
  if (const auto* const number = std::get_if<uint64_t>(&value)) return stored.number == *number;
  return !stored.is_null && stored.text == std::get<std::string>(value);
}

std::string shown(const Value& value) {
  if (std::holds_alternative<Withdrawn>(value)) return "0";
  if (const auto* const near = std::get_if<Near>(&value)) return std::to_string(near->number);
  if (const auto* const number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  if (const auto* const text = std::get_if<std::string>(&value)) return *text;
  return "-";
}

const Value* value_in(const Row& row, const char* column) {
  const auto found = std::find_if(row.cells.begin(), row.cells.end(), [column](const Cell& cell) {
    return std::strcmp(cell.column, column) == 0;
  });
  return found != row.cells.end() ? &found->value : nullptr;
}

void put(ContentValues& values, const Cell& cell) {
  if (const auto* const number = std::get_if<uint64_t>(&cell.value))
    values.put_uint64(cell.column, *number);
  else if (const auto* const text = std::get_if<std::string>(&cell.value))
    values.put_text(cell.column, text->c_str());
  else if (std::holds_alternative<Withdrawn>(cell.value))
    values.put_uint64(cell.column, 0);
  else if (const auto* const near = std::get_if<Near>(&cell.value))
    values.put_uint64(cell.column, near->number);
  else
    values.put_null(cell.column);
}

std::string where_id(uint32_t id) {
  return "_id=" + std::to_string(id);
}

}  // namespace

struct Store::Held {
  std::vector<std::string> columns;
  std::map<uint32_t, std::vector<Stored>> rows;

  const Stored& cell(uint32_t id, const char* column) const {
    const auto name = std::find(columns.begin(), columns.end(), column);
    return rows.at(id).at(static_cast<size_t>(name - columns.begin()));
  }
};

Store::Store() {
  if (!connection_) throw std::runtime_error("the inventory cannot be opened (see syslog)");
  read_owned();
}

void Store::check(int status, const std::string& what) const {
  if (status != ZELDB_OK) throw std::runtime_error(what + ": " + zel_db_get_error_str(status));
}

void Store::read_owned() {
  static constexpr const char* kColumns[] = {"_id", "TableName", "RowKey", "Source", "RowId"};
  owned_.clear();
  Result result;
  const int status = query(connection_.get(), {.table = kEntries, .columns = kColumns}, result);
  check(status, std::string("table ") + kEntries + " (is there one? zeldb init makes it)");
  const auto ended = walk(result, SIZE_MAX, [&](const zeldb::Row& row) {
    char table[65] = {};
    char key[256] = {};
    char source[17] = {};
    row.text(1, table);
    row.text(2, key);
    row.text(3, source);
    owned_[{table, key}] = {source, row.number(4), row.number(0)};
  });
  check(ended.value_or(ZELDB_OK), kEntries);
}

std::map<Address, Placement> Store::placements() {
  static constexpr const char* kColumns[] = {"_id",      "Location",         "SlotNo", "SlotDesignation",
                                             "SlotType", "SlotDataBusWidth", "Hotplug"};
  std::map<uint32_t, Address> addresses;
  for (const auto& [key, owned] : owned_) {
    const auto address = key.first == tables::kFunctions ? address_of(key.second) : std::nullopt;
    if (address) addresses.emplace(owned.id, *address);
  }
  std::map<Address, Placement> found;
  if (addresses.empty()) return found;
  Result result;
  check(query(connection_.get(), {.table = tables::kFunctions, .columns = kColumns}, result),
        tables::kFunctions);
  const auto ended = walk(result, SIZE_MAX, [&](const zeldb::Row& row) {
    const auto address = addresses.find(row.number(0));
    if (address == addresses.end()) return;
    const auto number = [&row](int column) {
      uint32_t value = 0;
      return row.read(column, value) == ZELDB_OK ? std::optional(value) : std::nullopt;
    };
    char designation[256] = {};
    row.text(3, designation);
    found[address->second] = {.location = number(1).value_or(0),
                              .slot = number(2),
                              .designation = text_value(designation),
                              .type = value_of(number(4)),
                              .width = value_of(number(5)),
                              .hotplug = value_of(number(6))};
  });
  check(ended.value_or(ZELDB_OK), tables::kFunctions);
  return found;
}

Store::Held Store::read_table(const std::string& table, const std::vector<const Row*>& rows) {
  Held held;
  const auto add = [&held](const char* column) {
    if (std::find(held.columns.begin(), held.columns.end(), column) == held.columns.end())
      held.columns.emplace_back(column);
  };
  add("_id");
  if (table == tables::kAdapters) add(kTaken);
  for (const Row* const row : rows) {
    for (const Cell& cell : row->cells) add(cell.column);
  }
  std::vector<const char*> columns;
  columns.reserve(held.columns.size());
  for (const std::string& column : held.columns) columns.push_back(column.c_str());
  Result result;
  check(query(connection_.get(), {.table = table.c_str(), .columns = columns}, result), "table " + table);
  const auto ended = walk(result, SIZE_MAX, [&](const zeldb::Row& row) {
    std::vector<Stored> cells;
    cells.reserve(columns.size());
    for (size_t column = 0; column < columns.size(); ++column)
      cells.push_back(stored_at(row, static_cast<int>(column)));
    held.rows.emplace(row.number(0), std::move(cells));
  });
  check(ended.value_or(ZELDB_OK), "table " + table);
  return held;
}

void Store::compare(const std::string& table, const std::vector<const Row*>& rows, const Findings& findings,
                    std::vector<Change>& changes) {
  const Held held = read_table(table, rows);
  // If a merge has taken over an adapter, the row belongs to the merge from then on.
  const auto is_taken = [&](uint32_t id) {
    return table == tables::kAdapters && held.cell(id, kTaken).number.value_or(0) != 0;
  };
  std::set<uint32_t> own;
  for (const auto& [key, owned] : owned_) {
    if (key.first == table) own.insert(owned.id);
  }
  const auto stands_elsewhere = [&](const Row& row) {
    const auto is_told = [&row](const char* column) {
      const Value* const value = value_in(row, column);
      return value != nullptr && !std::holds_alternative<std::monostate>(*value);
    };
    if (std::none_of(row.identity.begin(), row.identity.end(), is_told)) return false;
    return std::any_of(held.rows.begin(), held.rows.end(), [&](const auto& other) {
      return !own.contains(other.first) &&
             std::all_of(row.identity.begin(), row.identity.end(), [&](const char* column) {
               const Value* const value = value_in(row, column);
               return value != nullptr && holds(held.cell(other.first, column), *value);
             });
    });
  };

  std::set<std::string> found;
  for (const Row* const row : rows) {
    found.insert(row->key);
    const auto owned = owned_.find({table, row->key});
    if (owned == owned_.end() || !held.rows.contains(owned->second.id)) {
      if (!stands_elsewhere(*row)) changes.push_back({Change::Added, table, row->key, {}, {}, row});
      continue;
    }
    const uint32_t id = owned->second.id;
    if (is_taken(id)) continue;
    Change change{Change::Changed, table, row->key, {}, id, row};
    for (size_t cell = 0; cell < row->cells.size(); ++cell) {
      const auto& [column, value] = row->cells[cell];
      const Stored& before = held.cell(id, column);
      if (holds(before, value)) continue;
      change.detail += (change.detail.empty() ? "" : ", ") + std::string(column) + " " +
                       (before.is_null ? "-" : before.text) + " -> " + shown(value);
      change.cells.push_back(cell);
    }
    if (!change.cells.empty()) changes.push_back(std::move(change));
  }
  for (const auto& [key, owned] : owned_) {
    if (key.first != table || found.contains(key.second) || !findings.complete.contains(owned.source) ||
        findings.unread.contains(key))
      continue;
    // A row that another writer has removed is dropped from the list.
    if (!held.rows.contains(owned.id) || !is_taken(owned.id))
      changes.push_back({Change::Removed, table, key.second, {}, owned.id});
  }
}

std::vector<Change> Store::changes(const Findings& findings) {
  std::map<std::string, std::vector<const Row*>> rows_of;
  std::vector<std::string> order;
  const auto note = [&](const std::string& table) -> std::vector<const Row*>& {
    if (!rows_of.contains(table)) order.push_back(table);
    return rows_of[table];
  };
  for (const Row& row : findings.rows) note(row.table).push_back(&row);
  for (const auto& [key, owned] : owned_) note(key.first);
  std::vector<Change> all;
  for (const std::string& table : order) compare(table, rows_of[table], findings, all);
  return all;
}

void Store::apply(const Change& change) {
  const std::string what = "table " + change.table + ", " + change.key;
  const auto owned = owned_.find({change.table, change.key});
  const auto remove = [&](const char* table, uint32_t id) {
    check(zel_db_delete(connection_.get(), table, where_id(id).c_str(), nullptr, 0, nullptr), what);
  };
  if (change.what != Change::Changed && owned != owned_.end()) {
    if (change.what == Change::Removed) remove(change.table.c_str(), owned->second.id);
    remove(kEntries, owned->second.entry);
  }
  if (change.what == Change::Removed) return;
  ContentValues values(connection_.get());
  check(values ? ZELDB_OK : ZEL_DB_STATUS_NO_MEMORY, what);
  const std::vector<Cell>& cells = change.row->cells;
  if (change.what == Change::Changed) {
    for (const size_t cell : change.cells) put(values, cells[cell]);
    check(values.update(change.table.c_str(), where_id(*change.id).c_str()), what);
    return;
  }
  for (const Cell& cell : cells) {
    if (!std::holds_alternative<Kept>(cell.value) && !std::holds_alternative<Withdrawn>(cell.value))
      put(values, cell);
  }
  int64_t id = 0;
  check(values.insert(change.table.c_str(), &id), what);
  values.clear();
  values.put_text("TableName", change.table.c_str());
  values.put_text("RowKey", change.key.c_str());
  values.put_text("Source", change.row->source);
  values.put_uint64("RowId", static_cast<uint64_t>(id));
  check(values.insert(kEntries, nullptr), what);
}

std::vector<Change> Store::write(const Findings& findings) {
  if (changes(findings).empty()) return {};
  check(connection_.run("BEGIN"), "the inventory");
  try {
    // No row has this number; the statement only takes the lock that keeps other scans from writing.
    check(zel_db_delete(connection_.get(), kEntries, "_id=0", nullptr, 0, nullptr), kEntries);
    read_owned();
    std::vector<Change> all = changes(findings);
    for (const Change& change : all) apply(change);
    check(connection_.run("COMMIT"), "the inventory");
    return all;
  } catch (...) {
    connection_.run("ROLLBACK");
    throw;
  }
}

}  // namespace zeldb::scan
