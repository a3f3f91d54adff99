// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "cli/settings.h"

namespace zeldb::cli {
namespace {

// The parts of a setting, under the names that its type has for them.
struct Case {
  uint32_t type;
  int64_t lowest;
  int64_t highest;
  uint32_t count;  // step, or number of choices
  std::string text;
  std::string value;
  std::string said;  // an objection, or doubts, of which each begins with "? "
};

const Case kCases[] = {
    {3, 0, 128, 8, "", "128", ""},
    {3, 0, 128, 8, "", "136", "is not from 0 to 128"},
    {3, 0, 128, 8, "", "12", "is no step of 8 from 0"},
    {3, 3, 20, 5, "", "13", ""},
    {3, 3, 20, 5, "", "10", "is no step of 5 from 3"},
    {3, 0, 128, 0, "", "-1", "is not from 0 to 128"},
    {3, 0, 128, 0, "", "12x", "is no number"},
    {3, 0, 128, 0, "", "99999999999999999999", "is no number"},
    {3, 0, 4294967295, 1, "", "4294967295", ""},
    {3, -10, 10, 5, "", "-5", ""},
    {3, -10, 10, 5, "", "-11", "is not from -10 to 10"},
    {3, 0, 0, 0, "", "70", ""},
    {4, 4, 8, 0, "", "four", ""},
    {4, 4, 8, 0, "", "one", "does not have 4 to 8 characters"},
    {4, 4, 8, 0, "", "much too long", "does not have 4 to 8 characters"},
    {4, 0, 0, 0, "^(iqn|eui)\\..+$", "iqn.x", ""},
    {4, 0, 0, 0, "^(iqn|eui)\\..+$", "iqnx", "does not match ^(iqn|eui)\\..+$"},
    {4, 0, 0, 0, "([", "x", "cannot be checked against its pattern ([: missing ]: ["},
    {4, 0, 0, 0, "^(?=a)", "a", "cannot be checked against its pattern ^(?=a): invalid perl operator: (?="},
    {4, 0, 0, 0, "^(a+)+$", std::string(60, 'a') + "b", "does not match ^(a+)+$"},
    {4, 0, 0, 0, std::string(200, 'a'), "x",
     "? cannot be checked against its pattern " + std::string(128, 'a') + ", which was cut"},
    {5, 0, 0, 0, "", "secret", "? cannot be checked: nothing is known of its values"},
    {1, 0, 0, 2, "Off;On", "On", ""},
    {1, 0, 0, 2, "Off;On", "on", "is none of Off, On"},
    {1, 0, 0, 2, "Off;On", "Off;On", "is none of Off, On"},
    {1, 0, 0, 3, "Off;On", "Auto", "? cannot be checked: its choices are not all known"},
    {1, 0, 0, 1, std::string(100000, 'a'), "b", "? cannot be checked: its choices are not all known"},
    {6, 2, 268435455, 3, "a;b;c", "c;a", ""},
    {6, 2, 268435455, 3, "a;b;c", "c", "does not have 2 to 268435455 choices"},
    {6, 1, 2, 3, "a;b;c", "a;b;c", "does not have 1 to 2 choices"},
    {6, 1, 2, 3, "a;b;c", "a;d", "has d, which is none of a, b, c"},
};

template <size_t N>
void put(unsigned char (&to)[N], const std::string& text) {
  std::snprintf(reinterpret_cast<char*>(to), N, "%s", text.c_str());
}

std::string said_of(const PCISetting_info& setting, const std::string& value) {
  const Verdict verdict = judge(setting, value);
  std::string said = verdict.objection;
  for (const std::string& doubt : verdict.doubts) said += "? " + doubt;
  return said;
}

TEST(SettingRules, AllowWhatTheSettingSays) {
  for (const Case& one : kCases) {
    PCISetting_info setting = {};
    setting.Type = one.type;
    setting.Minim = setting.Mins = static_cast<uint32_t>(one.lowest);
    setting.Maxim = setting.Maxs = static_cast<uint32_t>(one.highest);
    setting.Mininstances = static_cast<int32_t>(one.lowest);
    setting.Maxinstances = static_cast<int32_t>(one.highest);
    setting.Step = one.count;
    setting.Numchoices = static_cast<int32_t>(one.count);
    put(setting.Pattern, one.text);
    put(setting.Choices, one.text);
    EXPECT_EQ(said_of(setting, one.value), one.said) << one.value;
    put(setting.GrayIf, "Other == Off");
    put(setting.GroupSuppressIf, "Mode != 1");
    const std::string objection = one.said.starts_with("?") ? "" : one.said;
    const std::string doubt = objection.empty() ? one.said : "";
    EXPECT_EQ(said_of(setting, one.value),
              objection + "? is fixed if Other == Off? is hidden if Mode != 1" + doubt);
  }
}

}  // namespace
}  // namespace zeldb::cli
