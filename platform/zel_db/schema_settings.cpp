// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr Column kPciSetting[] = {
    text("SettingID", "id in the BIOS: collection, a dot, attribute", Index::Unique),
    text("SettingName", "name to show"),
    text("PendingValue", 512, "value after the next start of the host"),
    text("CurrentValue", 512, "current value"),
    number("PfaKey", "key of the function that the setting belongs to (`PCIs.FunKey`)", Index::Plain),
    text("SuppressIf", 2048, "condition under which the setting is hidden"),
    text("GrayIf", 2048, "condition under which it cannot be changed"),
    text("GroupID", 512, "id of its group"),
    text("GroupName", 512, "name of its group"),
    text("GroupSuppressIf", 2048, "condition under which the group is hidden"),
    text("GroupGrayIf", 2048, "condition under which the group cannot be changed"),
    text("Mriname", "internal name"),
    text("ShortDesc", "short description"),
    text("FullDesc", 512, "full description"),
    text("Defvalue", "default value"),
    text("Mfg_default", "manufacturer's default value"),
    text("Defaultaction", "action on a reset to defaults"),
    text("RecordId", "id of its record in the BIOS"),
    number("Type", "3 number, 4 text, 5 without fields of its own, others a choice"),
    number("Flags", "bits; 2: listed by `zeldb_get_pci_configSet_list` with `onlyFlagged`"),
    number("Minim", "smallest number"),
    number("Maxim", "largest number"),
    number("Step", "step between numbers"),
    number("Mins", "shortest text"),
    number("Maxs", "longest text"),
    text("Pattern", "regular expression of a text"),
    number("Numchoices", "number of choices"),
    text("Choices", 2048, "the choices, in one text"),
    number("Mininstances", "fewest instances"),
    number("Maxinstances", "most instances; 268435455: no limit"),
};

constexpr Table kTables[] = {
    {"PCISetting",
     kPciSetting,
     {"The BIOS settings of PCI functions: a run of the parser stores the first one of each function, "
      "and the rows of earlier runs stay. A lite run leaves both values NULL; empty texts are NULL.",
      "`ucm_parser`, through `extract_PCISetting_info`; with `-c` it deletes all rows first. "
      "`zeldb_save_pci_configSet_list` (`PendingValue`)",
      "`zeldb_merge_aim_ucm_pfa`, `zeldb_get_pci_configID`, `zeldb_get_pci_configSet_count`, "
      "`zeldb_get_pci_configSet_list`"}},
};

}  // namespace

std::span<const Table> setting_tables() {
  return kTables;
}

}  // namespace zel_db
