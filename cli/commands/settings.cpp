// SPDX-License-Identifier: Apache-2.0
#include "cli/settings.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"

namespace zeldb::cli {

namespace {

using R = PCISetting_info;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, SettingID, "ID", "Id of the setting: its set, a dot, its name"),
    ZELDB_COLUMN(R, CurrentValue, "CURRENT", "Value in force"),
    ZELDB_COLUMN(R, PendingValue, "PENDING", "Value from the next start on"),
    ZELDB_COLUMN(R, Defvalue, "DEFAULT", "Default value"),
    ZELDB_COLUMN(R, ShortDesc, "DESCRIPTION", "Short description"),
    extra(hex(ZELDB_COLUMN(R, PfaKey, "FUNCTION", "Key of the function"))),
    extra(ZELDB_COLUMN(R, SettingName, "NAME", "Name of the setting")),
    extra(ZELDB_COLUMN(R, FullDesc, "FULL DESCRIPTION", "Full description")),
    extra(ZELDB_COLUMN(R, Type, "TYPE", "3 number, 4 text, 5 without fields of its own, others a choice")),
    extra(ZELDB_COLUMN(R, Flags, "FLAGS", "Flags, bits")),
    extra(ZELDB_COLUMN(R, Minim, "MIN", "Smallest number")),
    extra(ZELDB_COLUMN(R, Maxim, "MAX", "Largest number")),
    extra(ZELDB_COLUMN(R, Step, "STEP", "Step between numbers")),
    extra(ZELDB_COLUMN(R, Mins, "MIN LENGTH", "Shortest text")),
    extra(ZELDB_COLUMN(R, Maxs, "MAX LENGTH", "Longest text")),
    extra(ZELDB_COLUMN(R, Pattern, "PATTERN", "Regular expression of a text")),
    extra(ZELDB_COLUMN(R, Numchoices, "CHOICES", "Number of choices")),
    extra(ZELDB_COLUMN(R, Choices, "CHOICE LIST", "The choices")),
    extra(ZELDB_COLUMN(R, Mininstances, "MIN INSTANCES", "Fewest instances")),
    extra(ZELDB_COLUMN(R, Maxinstances, "MAX INSTANCES", "Most instances")),
    extra(ZELDB_COLUMN(R, Mfg_default, "MAKER'S DEFAULT", "Manufacturer's default value")),
    extra(ZELDB_COLUMN(R, Defaultaction, "ACTION", "Action on a reset to defaults")),
    extra(ZELDB_COLUMN(R, RecordId, "RECORD", "Id of the record")),
    extra(ZELDB_COLUMN(R, Mriname, "MRI NAME", "Name in the firmware's interface")),
    extra(ZELDB_COLUMN(R, GroupID, "GROUP", "Id of the group")),
    extra(ZELDB_COLUMN(R, GroupName, "GROUP NAME", "Name of the group")),
    extra(ZELDB_COLUMN(R, SuppressIf, "HIDDEN IF", "Condition that hides the setting")),
    extra(ZELDB_COLUMN(R, GrayIf, "FIXED IF", "Condition that makes the setting read-only")),
    extra(ZELDB_COLUMN(R, GroupSuppressIf, "GROUP HIDDEN IF", "Condition that hides the group")),
    extra(ZELDB_COLUMN(R, GroupGrayIf, "GROUP FIXED IF", "Condition that makes the group read-only")),
};

struct Set {
  char Name[129];
  uint16_t Settings;
};
constexpr Column kSetColumns[] = {
    ZELDB_COLUMN(Set, Name, "SET", "Name of the set"),
    ZELDB_COLUMN(Set, Settings, "SETTINGS", "Number of the function's settings in the set"),
};

struct Options {
  Key function;
  std::optional<Place> slot;
  std::string prefix;
  bool flagged = false;
};

// The settings of the chosen function, or of all.
std::vector<R> read_all(const Options& options) {
  if (options.function) return read_settings(*options.function, options.prefix, options.flagged);
  std::vector<R> all;
  for (const uint32_t function : chosen_functions({}, options.slot)) {
    if (find_function(function))
      std::ranges::copy(read_settings(function, options.prefix, options.flagged), std::back_inserter(all));
  }
  return all;
}

std::vector<Set> read_sets(const Options& options) {
  if (!options.function) throw WrongUse("--sets needs the KEY of a function");
  read_function(*options.function);  // throws if it is not there
  // The highest count, so that each setting is the only one of its set.
  std::string names(size_t{128} * 65536, '\0');
  check(zeldb_get_pci_configID(static_cast<int>(*options.function), names.data()),
        "settings of " + key_text(*options.function));
  std::vector<Set> sets;
  std::istringstream stream(names.c_str());
  for (std::string name; std::getline(stream, name, ':');) {
    Set& set = sets.emplace_back();
    copy_text(set.Name, name);
    set.Settings = count_settings(*options.function, name + ".");
  }
  return sets;
}

}  // namespace

void setup_settings(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* function =
      add_key(app, "KEY", options->function, "Key of a function; without it, all functions");
  CLI::Option* slot = add_place(app, "--slot", options->slot, "The functions in this slot");
  exclude_each_other({function, slot});
  CLI::Option* set = add_text(app, "--set", options->prefix, "PREFIX",
                              "Settings whose id begins with this text (_ and % are wildcards)");
  CLI::Option* flagged = add_flag(app, "--flagged", options->flagged, "Only settings with flag 2");
  Listing(app)
      .view(kColumns, [options] { return read_all(*options); })
      .view("--sets", "Names of the sets", kSetColumns, [options] { return read_sets(*options); })
      .without({slot, set, flagged});
}

}  // namespace zeldb::cli
