// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/file.h"
#include "cli/library.h"
#include "cli/secrets.h"
#include "cli/settings.h"
#include "cli/snapshot.h"
#include "cli/snapshot_mask.h"
#include "cli/sqlite_file.h"
#include "cli/transaction.h"
#include "platform/zel_db.h"
#include "zeldb/status.h"

namespace zeldb::cli {

namespace {

constexpr const char* kProperties = "propertiesDCTbl";
constexpr const char* kSettings = "PCISetting";

Result rows_of(const InventoryTable& table, const Transaction& database) {
  std::vector<const char*> columns;
  for (const auto& column : table.columns) columns.push_back(column.name.c_str());
  Result rows;
  const int status = zel_db_query(database.get(), table.name.c_str(), columns.data(),
                                  static_cast<int>(columns.size()), nullptr, nullptr, 0, "_id", rows.out());
  check(status, "table " + table.name);
  return rows;
}

// A value of any length: read grows the buffer until the value does not fill it.
template <typename Read>
std::optional<std::string> whole(Read read) {
  std::string buffer(1024, '\0');
  while (true) {
    auto size = static_cast<unsigned>(buffer.size());
    if (read(buffer.data(), size) != 0) return std::nullopt;
    if (size + 1 < buffer.size()) {
      buffer.resize(size);
      return buffer;
    }
    buffer.resize(2 * buffer.size());
  }
}

std::optional<std::string> text_at(zel_db_result_t* row, int column) {
  return whole([=](char* buffer, unsigned& size) {
    const int status = zel_db_result_column_text(row, column, buffer, size);
    size = static_cast<unsigned>(std::strlen(buffer));
    return status;
  });
}

std::optional<std::string> bytes_at(zel_db_result_t* row, int column) {
  return whole([=](char* buffer, unsigned& size) {
    return zel_db_result_column_is_null(row, column) != 0
               ? 1
               : zel_db_result_column_blob(row, column, buffer, &size);
  });
}

// Copies one table, or collects its identifying values for a mask.
class TableCopy {
 public:
  TableCopy(const InventoryTable& table, SnapshotMask* mask) : table_(table), mask_(mask) {}

  void learn(const Transaction& source) {
    each_row(source, [this](zel_db_result_t* row) {
      for (size_t place = 0; place < table_.columns.size(); ++place) {
        if (table_.columns[place].type == "TEXT")
          mask_->learn(table_.columns[place].name, text_at(row, static_cast<int>(place)).value_or(""));
      }
      if (table_.name == kProperties) mask_->learn_property(property_name(row), property(row).value_or(""));
    });
  }

  void write(const Transaction& source, const SqliteFile& to) {
    std::string names;
    std::string values;
    for (const auto& column : table_.columns) {
      names += (names.empty() ? "" : ", ") + column.name;
      values += values.empty() ? "?" : ", ?";
    }
    SqliteStatement insert =
        to.prepare("INSERT INTO " + table_.name + " (" + names + ") VALUES (" + values + ")");
    each_row(source, [&](zel_db_result_t* row) {
      std::vector<std::string> kept(table_.columns.size());
      const RowFacts facts = table_.name == kSettings ? facts_of_setting(row) : RowFacts();
      for (size_t place = 0; place < kept.size(); ++place) bind(insert, row, place, facts, kept[place]);
      insert.step();
      insert.reset();
    });
  }

 private:
  template <typename Visit>
  void each_row(const Transaction& source, Visit visit) const {
    Result rows = rows_of(table_, source);
    std::optional<int> end;
    while (!(end = rows.no_row())) visit(rows.get());
    if (*end != ZELDB_NO_MORE_ROWS) check(*end, "table " + table_.name);
  }

  int place_of(const char* column) const {
    int place = 0;
    while (table_.columns[static_cast<size_t>(place)].name != column) ++place;
    return place;
  }
  std::string property_name(zel_db_result_t* row) const {
    return text_at(row, place_of("propName")).value_or("");
  }
  std::optional<std::string> property(zel_db_result_t* row) const {
    return bytes_at(row, place_of("propValue"));
  }

  // Properties of a row that decide how its values are masked.
  struct RowFacts {
    Holds holds = Holds::Choice;
    std::map<std::string, std::string> hidden;  // what stands for secrets, by column
  };

  RowFacts facts_of_setting(zel_db_result_t* row) const {
    const auto text = [&](const char* column) { return text_at(row, place_of(column)).value_or(""); };
    int64_t type = 0;
    zel_db_result_column_int64(row, place_of("Type"), &type);
    RowFacts facts{.holds = type == kTextType ? Holds::FreeText : Holds::Choice, .hidden = {}};
    const std::string speaking[] = {text("SettingID"), text("SettingName"), text("Mriname"),
                                    text("ShortDesc"), text("FullDesc")};
    if (!holds_secret(static_cast<uint32_t>(type), speaking)) return facts;
    const SecretValues shown = hidden(SecretValues{text("CurrentValue"), text("PendingValue")});
    facts.hidden = {{"CurrentValue", shown.current},
                    {"PendingValue", shown.pending},
                    {"Defvalue", hidden(text("Defvalue"))},
                    {"Mfg_default", hidden(text("Mfg_default"))}};
    return facts;
  }

  // Readers take a value that cannot be read for NULL, so it becomes NULL.
  void bind(SqliteStatement& insert, zel_db_result_t* row, size_t place, const RowFacts& facts,
            std::string& kept) const {
    const InventoryTable::Column& column = table_.columns[place];
    const int from = static_cast<int>(place);
    const int to = from + 1;
    if (column.type == "INTEGER") {
      // SQLite keeps all 64 bits of numbers from 2^63 on, as negative numbers.
      int64_t number = 0;
      if (zel_db_result_column_int64(row, from, &number) == 0)
        insert.bind(to, number);
      else
        insert.bind_null(to);
      return;
    }
    const bool is_text = column.type == "TEXT";
    const std::optional<std::string> value = is_text ? text_at(row, from) : bytes_at(row, from);
    if (!value) return insert.bind_null(to);
    const auto secret = facts.hidden.find(column.name);
    kept = secret != facts.hidden.end() ? secret->second : *value;
    if (mask_ != nullptr && secret == facts.hidden.end())
      kept =
          is_text ? mask_->column(column.name, kept, facts.holds) : mask_->property(property_name(row), kept);
    if (is_text)
      insert.bind_text(to, kept);
    else
      insert.bind_bytes(to, kept);
  }

  const InventoryTable& table_;
  SnapshotMask* mask_;
};

void write_header(const SqliteFile& file, bool masked) {
  file.run(
      "CREATE TABLE ZeldbExport (FormatVersion INTEGER, ZeldbVersion TEXT, Written TEXT, Masked INTEGER) "
      "STRICT");
  SqliteStatement insert = file.prepare("INSERT INTO ZeldbExport VALUES (?, ?, datetime('now'), ?)");
  insert.bind(1, kSnapshotVersion);
  insert.bind_text(2, ZELDB_VERSION);
  insert.bind(3, masked ? 1 : 0);
  insert.step();
}

std::filesystem::path platform_folder() {
  const char* const folder = std::getenv("ZEL_PLATFORM_DIR");
  return folder != nullptr && *folder != '\0' ? folder : "/var/lib/zeldb";
}

using Json = nlohmann::ordered_json;

// The values of one attribute; name is that of its collection.
void hide_secret(Json& attribute, const std::string& collection) {
  const auto text = [&attribute](const char* member) {
    const auto found = attribute.find(member);
    return found != attribute.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  std::vector<std::string> speaking{collection};
  for (const std::string_view member : kSpeaking) speaking.push_back(text(std::string(member).c_str()));
  const auto type = attribute.find("Type");
  if (type == attribute.end() || !type->is_number()) return;
  if (!holds_secret(type->get<uint32_t>(), speaking)) return;
  const auto replace = [&attribute](const char* member, const std::string& shown) {
    const auto found = attribute.find(member);
    if (found != attribute.end() && !found->is_null()) *found = shown;
  };
  const auto shown_of = [&attribute](const char* member) {
    const auto found = attribute.find(member);
    return found != attribute.end() && !found->is_null() ? found->dump() : std::string();
  };
  const SecretValues shown = hidden(SecretValues{shown_of("current"), shown_of("pending")});
  replace("current", shown.current);
  replace("pending", shown.pending);
  for (const char* fallback : {"Defvalue", "Mfg_default"}) replace(fallback, hidden(text(fallback)));
}

void hide_secrets(Json& content, const std::string& collection = {}) {
  if (content.is_object()) {
    const auto name = content.find("name");
    const std::string inner =
        name != content.end() && name->is_string() ? name->get<std::string>() : collection;
    hide_secret(content, collection);
    for (Json& member : content) hide_secrets(member, inner);
  } else if (content.is_array()) {
    for (Json& element : content) hide_secrets(element, collection);
  }
}

// The file without secrets, and masked if there is a mask. A file that is no JSON becomes empty: readers
// cannot use it, and it may hold secrets.
std::string fit_to_leave(const char* file, const std::string& content, SnapshotMask* mask) {
  const Json original = Json::parse(content, nullptr, false);
  if (original.is_discarded()) {
    if (mask != nullptr) throw Failure(std::string(file) + ": is no JSON and cannot be masked");
    return {};
  }
  Json fit = original;
  hide_secrets(fit);
  if (mask != nullptr) mask->json(fit);
  return fit == original ? content : fit.dump(2) + "\n";
}

void write_files(const SqliteFile& file, SnapshotMask* mask) {
  file.run("CREATE TABLE ZeldbFiles (Name TEXT PRIMARY KEY, Content BLOB) STRICT");
  for (const char* name : kPlatformFiles) {
    const std::filesystem::path path = platform_folder() / name;
    if (!std::filesystem::exists(path)) continue;
    const std::string content = fit_to_leave(name, read_file(path), mask);
    SqliteStatement insert = file.prepare("INSERT INTO ZeldbFiles VALUES (?, ?)");
    insert.bind_text(1, name);
    insert.bind_bytes(2, content);
    insert.step();
  }
}

}  // namespace

void write_snapshot(const std::string& path, const std::string& name, bool masked) {
  const Transaction inventory("dmdb");
  const Transaction properties("propertiesdb");
  const SqliteFile file = create_inventory(path, name);
  const std::vector<InventoryTable> tables = tables_of(file);
  const auto source_of = [&](const InventoryTable& table) -> const Transaction& {
    return table.name == kProperties ? properties : inventory;
  };
  SnapshotMask known;
  SnapshotMask* const mask = masked ? &known : nullptr;
  file.run("BEGIN");
  write_header(file, masked);
  if (mask != nullptr) {
    for (const InventoryTable& table : tables) TableCopy(table, mask).learn(source_of(table));
  }
  for (const InventoryTable& table : tables) TableCopy(table, mask).write(source_of(table), file);
  write_files(file, mask);
  file.run("COMMIT");
}

}  // namespace zeldb::cli
