// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <cstdio>
#include <map>
#include <memory>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/settings.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

using R = PCISetting_info;
using Entry = _ZELDB_PCI_ConfigSet_Entry;

constexpr Column kColumns[] = {
    whole(ZELDB_COLUMN(R, SettingID, "ID", "Id of the setting: its set, a dot, its name")),
    ZELDB_COLUMN(R, CurrentValue, "CURRENT", "Value in force"),
    ZELDB_COLUMN(R, PendingValue, "PENDING", "Value from the next start on"),
    ZELDB_COLUMN(R, ShortDesc, "DESCRIPTION", "What it is, in short"),
    extra(hex(ZELDB_COLUMN(R, PfaKey, "FUNCTION", "Key of the function"))),
    extra(ZELDB_COLUMN(R, SettingName, "NAME", "Name of the setting")),
    extra(ZELDB_COLUMN(R, Defvalue, "DEFAULT", "Default value")),
};

// The new value of each setting; without one, its current value.
using Changes = std::map<std::string, std::optional<std::string>>;

struct Options {
  std::vector<std::string> set;
  std::vector<std::string> cancelled;
  bool unchecked = false;
};

template <typename Visit>
void for_each_setting(Visit visit) {
  for (const uint32_t function : function_keys()) {
    for (const R& setting : read_settings(function)) visit(setting);
  }
}

std::vector<R> read_pending() {
  std::vector<R> rows;
  for_each_setting([&rows](const R& setting) {
    if (text_of(setting.CurrentValue) != text_of(setting.PendingValue)) rows.push_back(setting);
  });
  return rows;
}

Changes changes_of(const Options& options) {
  Changes changes;
  const auto add = [&changes](const std::string& id, const std::optional<std::string>& value) {
    if (!changes.emplace(id, value).second)
      throw WrongUse(printable(id, Escape::Terminal) + " is given twice");
  };
  for (const std::string& assignment : options.set) {
    const size_t end = assignment.find('=');
    if (end == std::string::npos || end == 0)
      throw WrongUse("--set: " + printable(assignment, Escape::Terminal) + " is no ID=VALUE");
    add(assignment.substr(0, end), assignment.substr(end + 1));
  }
  for (const std::string& id : options.cancelled) add(id, std::nullopt);
  return changes;
}

// The settings to be changed, each with its new value.
std::vector<std::pair<R, std::string>> find(Changes changes) {
  std::vector<std::pair<R, std::string>> found;
  for_each_setting([&](const R& setting) {
    const auto change = changes.find(text_of(setting.SettingID));
    if (change == changes.end()) return;
    const std::string current = text_of(setting.CurrentValue);
    if (!change->second && current.empty()) throw Failure(change->first + ": its current value is not known");
    found.emplace_back(setting, change->second.value_or(current));
    changes.erase(change);
  });
  if (!changes.empty())
    throw Failure(printable(changes.begin()->first, Escape::Terminal) + ": no such setting");
  return found;
}

// What the library can store at all.
Entry entry_of(const std::string& id, const std::string& value) {
  Entry entry = {};
  if (id.size() >= sizeof(entry.SettingID))
    throw Failure(id + ": cannot be changed, its id has more than 64 characters");
  if (value.size() >= sizeof(entry.PendingValue))
    throw Failure(id + ": a value of more than 68 characters cannot be stored");
  if ((id + value).find('\'') != std::string::npos) throw Failure(id + ": a single quote cannot be stored");
  copy_text(entry.SettingID, id);
  copy_text(entry.PendingValue, value);
  return entry;
}

// Throws for an objection unless it may be overruled; adds what is said of the value before it is written.
void consider(const R& setting, const std::string& value, bool unchecked,
              std::vector<std::string>& warnings) {
  const std::string id = text_of(setting.SettingID);
  const Verdict verdict = judge(setting, value);
  const std::string objection = id + ": " + printable(value + " " + verdict.objection, Escape::Terminal);
  if (!verdict.objection.empty()) {
    if (!unchecked) throw Failure(objection);
    warnings.push_back(objection);
  }
  for (const std::string& doubt : verdict.doubts)
    warnings.push_back(id + ": " + printable(doubt, Escape::Terminal));
}

// All of them, or none.
void change(const Options& options) {
  const Changes changes = changes_of(options);
  std::vector<Entry> entries;
  std::vector<std::string> warnings;
  for (const auto& [setting, value] : find(changes)) {
    const std::string id = text_of(setting.SettingID);
    entries.push_back(entry_of(id, value));
    if (changes.at(id)) consider(setting, value, options.unchecked, warnings);
  }
  for (const std::string& warning : warnings) std::fprintf(stderr, "zeldb: warning: %s\n", warning.c_str());
  const std::string what = entries.size() == 1 ? entries.front().SettingID : "settings";
  const int status = zeldb_save_pci_configSet_list(entries.data(), static_cast<int>(entries.size()));
  if (status == ZELDB_BIOS_WRITE_FAILED) {
    throw Failure(what +
                  ": refused by the BIOS configuration service; the inventory holds the new value until the "
                  "parser has run again");
  }
  check(status, what);
}

}  // namespace

void setup_pending(CLI::App& app) {
  auto options = std::make_shared<Options>();
  Listing listing(app);
  const std::vector<CLI::Option*> output = app.get_options();
  const std::vector<CLI::Option*> changing = {
      app.add_option("--set", options->set,
                     "Have this value from the next start on, if the setting's own rules allow it")
          ->type_name("ID=VALUE"),
      app.add_option("--cancel", options->cancelled, "Have the current value from the next start on")
          ->type_name("ID"),
  };
  for (CLI::Option* option : changing) {
    option->allow_extra_args(false);
    for (CLI::Option* other : output) {
      if (other->get_group() == "Output") option->excludes(other);
    }
  }
  need(add_flag(app, "--force", options->unchecked, "With --set: warn where the rules do not allow it"),
       changing.front());
  listing.view(kColumns, read_pending).around([options](const std::function<void()>& show) {
    if (options->set.empty() && options->cancelled.empty())
      show();
    else
      change(*options);
  });
}

}  // namespace zeldb::cli
