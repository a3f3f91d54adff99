// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>

#include "cli/arguments.h"
#include "cli/bios_values.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/secret_input.h"
#include "cli/secrets.h"
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
    ZELDB_COLUMN(R, ShortDesc, "DESCRIPTION", "Short description"),
    extra(hex(ZELDB_COLUMN(R, PfaKey, "FUNCTION", "Key of the function"))),
    extra(ZELDB_COLUMN(R, SettingName, "NAME", "Name of the setting")),
    extra(ZELDB_COLUMN(R, Defvalue, "DEFAULT", "Default value")),
    extra(ZELDB_COLUMN(R, Type, "TYPE", "3 number, 4 text, 5 without fields of its own, others a choice")),
};

// The new value of each setting; without one, its current value.
using Changes = std::map<std::string, std::optional<std::string>>;

struct Options {
  std::vector<std::string> set;
  std::vector<std::string> cancelled;
  bool unchecked = false;
  std::optional<Place> slot;
};

// The settings of all functions; values that the inventory lacks are those of the BIOS.
std::vector<R> read_all_with_secrets(const std::optional<Place>& slot = {}) {
  std::vector<R> all;
  for (const uint32_t function : chosen_functions({}, slot)) {
    if (find_function(function))
      std::ranges::copy(read_settings_with_secrets(function), std::back_inserter(all));
  }
  complete_values(all);
  return all;
}

std::vector<R> read_pending(const std::optional<Place>& slot) {
  std::vector<R> rows = read_all_with_secrets(slot);
  std::erase_if(
      rows, [](const R& setting) { return text_of(setting.CurrentValue) == text_of(setting.PendingValue); });
  std::ranges::for_each(rows, hide_secret);
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
    if (end == std::string::npos)
      throw WrongUse("--set: " + printable(assignment, Escape::Terminal) + " is no ID=VALUE");
    if (end == 0) throw WrongUse("--set: ID=VALUE without an ID");
    add(assignment.substr(0, end), assignment.substr(end + 1));
  }
  for (const std::string& id : options.cancelled) add(id, std::nullopt);
  for (const std::string& assignment : options.set) {
    if (!assignment.ends_with("=-")) continue;
    const std::string id = assignment.substr(0, assignment.find('='));
    if (assignment.size() == id.size() + 2) changes[id] = read_value(printable(id, Escape::Terminal));
  }
  return changes;
}

// The settings to be changed, each with its new value.
std::vector<std::pair<R, std::string>> find(Changes changes) {
  std::vector<std::pair<R, std::string>> found;
  for (const R& setting : read_all_with_secrets()) {
    const auto change = changes.find(text_of(setting.SettingID));
    if (change == changes.end()) continue;
    const std::string current = text_of(setting.CurrentValue);
    // The current value of a secret is never known, so cancelling leaves no pending value.
    if (!change->second && current.empty() && !holds_secret(setting))
      throw Failure(change->first + ": its current value is not known");
    found.emplace_back(setting, change->second.value_or(current));
    changes.erase(change);
  }
  if (!changes.empty())
    throw Failure(printable(changes.begin()->first, Escape::Terminal) + ": no such setting");
  return found;
}

// Checks that the library can store the value.
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

// Throws for an objection unless unchecked; adds the remarks on the value.
void consider(const R& setting, const std::string& value, bool unchecked,
              std::vector<std::string>& warnings) {
  const std::string id = text_of(setting.SettingID);
  const Verdict verdict = judge(setting, value);
  const std::string shown = holds_secret(setting) ? "the value" : value;
  const std::string objection = id + ": " + printable(shown + " " + verdict.objection, Escape::Terminal);
  if (!verdict.objection.empty()) {
    if (!unchecked) throw Failure(objection);
    warnings.push_back(objection);
  }
  for (const std::string& doubt : verdict.doubts)
    warnings.push_back(id + ": " + printable(doubt, Escape::Terminal));
}

// Writes all of them or none. New values may be secrets, so they do not get into the traces.
void change(const Options& options) {
  for (const char* trace : {"ZEL_DB_TRACE", "ZEL_PLATFORM_TRACE", "CMR_CALL_LOG"}) unsetenv(trace);
  const Changes changes = changes_of(options);
  std::vector<Entry> entries;
  std::vector<std::string> warnings;
  bool are_secret = false;
  for (const auto& [setting, value] : find(changes)) {
    const std::string id = text_of(setting.SettingID);
    are_secret = are_secret || holds_secret(setting);
    entries.push_back(entry_of(id, value));
    if (changes.at(id)) consider(setting, value, options.unchecked, warnings);
  }
  for (const std::string& warning : warnings) std::fprintf(stderr, "zeldb: warning: %s\n", warning.c_str());
  const std::string what = entries.size() == 1 ? entries.front().SettingID : "settings";
  // A failing update is logged with its value; the command says that it failed.
  if (are_secret) setenv("VREL_LOG", "/dev/null", 1);
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
                     "Set the value for the next start, if the rules of the setting allow it; with - as the "
                     "value, it "
                     "is read from standard input, after a prompt on a terminal")
          ->type_name("ID=VALUE"),
      app.add_option(
             "--cancel", options->cancelled,
             "Keep the current value for the next start; for a secret whose value is not known, an empty one")
          ->type_name("ID"),
  };
  CLI::Option* slot = add_place(app, "--slot", options->slot, "Settings of the functions in this slot");
  for (CLI::Option* option : changing) {
    option->allow_extra_args(false);
    option->excludes(slot);
    for (CLI::Option* other : output) {
      if (other->get_group() == "Output") option->excludes(other);
    }
  }
  need(add_flag(app, "--force", options->unchecked,
                "With --set: only warn if the rules do not allow the value"),
       changing.front());
  listing.note(
      "Secrets are settings of type 5, and texts and numbers whose id, name or description says so "
      "(password, secret, credential, private key, ...). No command shows their values, and exports do "
      "not contain them: (secret) stands for them, (other secret) for a pending one that differs. Give "
      "them as ID=-, because other users can see a command line.");
  listing.view(kColumns, [options] { return read_pending(options->slot); })
      .around([options](const std::function<void()>& show) {
        if (options->set.empty() && options->cancelled.empty())
          show();
        else
          change(*options);
      });
}

}  // namespace zeldb::cli
