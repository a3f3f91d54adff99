// SPDX-License-Identifier: Apache-2.0
#include <charconv>

#include "cli/redfish/attributes.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"
#include "cli/secrets.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Setting;

constexpr char kSeparator = ';';  // of choices

constexpr About kAbout = {"AttributeRegistry", "v1_4_0", "Registries/ZeldbBiosAttributeRegistry.v1_0_0",
                          "Each of `RegistryEntries.Attributes` is a setting: `PCISetting_info` of "
                          "`zeldb_get_pci_configSet_list`. The registry "
                          "is known by its id, which `Bios.AttributeRegistry` names."};

bool is(const Row& row, const char* type) {
  return std::string_view(attribute_type(row.record)) == type;
}

// A bound that is negative has its high bit set.
int64_t bound_of(const PCISetting_info& setting, uint32_t bound) {
  const bool are_negative = setting.Minim > setting.Maxim;
  return are_negative ? int64_t{static_cast<int32_t>(bound)} : int64_t{bound};
}

Json bound(const Row& row, uint32_t value) {
  const bool is_bounded = row.record.Minim != 0 || row.record.Maxim != 0;
  return only_if(is(row, "Integer") && is_bounded, bound_of(row.record, value));
}

Json values_of(const Machine& machine, const Row& row) {
  if (!is(row, "Enumeration")) return Json::left_out();
  Json values = Json::array();
  for (const std::string& choice : choices_of(row.record))
    values.push_back(Json::object({{"ValueName", machine.shown("Choices", choice)}}));
  return values;
}

Json help_of(const Machine& machine, const PCISetting_info& setting) {
  const Json whole = Text::of(machine, "FullDesc", text_of(setting.FullDesc));
  return whole.is_null() ? Text::of(machine, "ShortDesc", text_of(setting.ShortDesc)) : whole;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("AttributeName", "SettingID",
               "what is no letter or digit becomes `_`; `Attribute_` before one that begins with no letter; "
               "equal names are numbered",
               row.name),
    REDFISH_BY("Type", "Type, Maxinstances, Numchoices",
               "3 `Integer`, 4 `String`; a secret `Password`; one of choices that are all known "
               "`Enumeration`; others, "
               "lists among them, `String`",
               attribute_type(row.record)),
    REDFISH_BY("DisplayName", "SettingName", "",
               Text::of(machine, "SettingName", text_of(row.record.SettingName))),
    REDFISH_BY("HelpText", "FullDesc, ShortDesc", "the second if the first is empty",
               help_of(machine, row.record)),
    REDFISH_BY("DefaultValue", "Defvalue", "a number of an `Integer`; null of a `Password`",
               attribute_value(machine, row.record, "Defvalue", text_of(row.record.Defvalue))),
    REDFISH_BY("LowerBound", "Minim",
               "`Integer` only; left out if both bounds are 0; negative ones have bit 31 set",
               bound(row, row.record.Minim)),
    REDFISH_BY("UpperBound", "Maxim", "the same", bound(row, row.record.Maxim)),
    REDFISH_BY("ScalarIncrement", "Step", "`Integer` only; left out if it is 0",
               only_if(is(row, "Integer") && row.record.Step != 0, row.record.Step)),
    REDFISH_BY("MinLength", "Mins", "type 4 only", only_if(row.record.Type == kTextType, row.record.Mins)),
    REDFISH_BY("MaxLength", "Maxs", "type 4 only; left out if it is 0",
               only_if(row.record.Type == kTextType && row.record.Maxs != 0, row.record.Maxs)),
    REDFISH_BY("ValueExpression", "Pattern", "type 4 only; left out if it is empty",
               row.record.Type == kTextType ? TextIfKnown::of(machine, "Pattern", text_of(row.record.Pattern))
                                            : Json::left_out()),
    REDFISH_BY("Value", "Choices", "`Enumeration` only: `ValueName` of each choice, as `;` separates them",
               values_of(machine, row)),
    REDFISH_BY("ResetRequired", "", "true: a change is in force from the next start on", true),
    REDFISH_BY("Oem.Zeldb.SettingID", "SettingID", "as the BIOS knows it", text_of(row.record.SettingID)),
    REDFISH_BY("Oem.Zeldb.PCIeFunction", "PfaKey", "the key of its function",
               hexadecimal(row.record.PfaKey, 8)),
};

void add(const Machine& machine, Tree& tree) {
  Json attributes = Json::array();
  for (const Row& row : machine.settings) {
    Json attribute = Json::object();
    fill(attribute, kProperties, row, machine);
    attributes.push_back(attribute);
  }
  Json registry = bare_resource(kAbout, {kRegistry, kRoot + "/Registries/" + kRegistry});
  registry["Name"] = "BIOS settings of PCI functions";
  registry["Language"] = "en";
  registry["RegistryVersion"] = "1.0.0";
  registry["OwningEntity"] = "zeldb";
  put(registry, "RegistryEntries.Attributes", attributes);
  tree.add(registry);
}

}  // namespace

std::vector<std::string> choices_of(const PCISetting_info& setting) {
  const std::string text = text_of(setting.Choices);
  std::vector<std::string> choices;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(kSeparator, begin), text.size());
    choices.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return choices;
}

const char* attribute_type(const PCISetting_info& setting) {
  if (holds_secret(setting)) return "Password";
  if (setting.Type == kNumberType) return "Integer";
  const bool are_whole = text_of(setting.Choices).size() + 1 < sizeof(setting.Choices) &&
                         setting.Numchoices == static_cast<int64_t>(choices_of(setting).size());
  const bool is_choice =
      setting.Type != kTextType && setting.Type != kPlainType && setting.Maxinstances <= 1 && are_whole;
  return is_choice ? "Enumeration" : "String";
}

Json attribute_value(const Machine& machine, const PCISetting_info& setting, std::string_view column,
                     const std::string& value) {
  if (value.empty() || holds_secret(setting)) return nullptr;
  if (setting.Type != kNumberType) {
    const bool is_free = std::string_view(attribute_type(setting)) == "String";
    return machine.shown(column, value, is_free ? Holds::FreeText : Holds::Choice);
  }
  int64_t number = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, number);
  return error == std::errc() && stop == end ? Json(number) : Json();
}

Chapter attribute_registry() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
