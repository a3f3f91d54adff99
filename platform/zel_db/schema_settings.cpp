// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr Column kPciSetting[] = {
    text("SettingID", "collection, a dot, attribute: what the BIOS knows the setting by", Index::Unique),
    text("SettingName", "name to show"),
    text("PendingValue", 512, "value after the next start of the host"),
    text("CurrentValue", 512, "value that is in force"),
    number("PfaKey", "key of the function that the setting belongs to (`PCIs.FunKey`)", Index::Plain),
    text("SuppressIf", 2048, "condition under which the setting is hidden"),
    text("GrayIf", 2048, "condition under which it cannot be changed"),
    text("GroupID", 512, "id of its group"),
    text("GroupName", 512, "name of its group"),
    text("GroupSuppressIf", 2048, "condition under which the group is hidden"),
    text("GroupGrayIf", 2048, "condition under which the group cannot be changed"),
    text("Mriname", "internal name"),
    text("ShortDesc", "what it is, in a few words"),
    text("FullDesc", 512, "what it does"),
    text("Defvalue", "default of the setting"),
    text("Mfg_default", "default of manufacturing"),
    text("Defaultaction", "what becomes of it when defaults are loaded"),
    text("RecordId", "id of its record in the BIOS"),
    number("Type", "3 number, 4 text, 5 without fields of its own, others a choice"),
    number("Flags", "bits; 2 is what `zeldb_get_pci_configSet_list` asks for with `onlyFlagged`"),
    number("Minim", "least value of a number"),
    number("Maxim", "greatest value of a number"),
    number("Step", "step of a number"),
    number("Mins", "least length of a text"),
    number("Maxs", "greatest length of a text"),
    text("Pattern", "what a text must look like"),
    number("Numchoices", "how many choices there are"),
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
