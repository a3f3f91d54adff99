// SPDX-License-Identifier: Apache-2.0
#include <re2/re2.h>

#include <algorithm>
#include <charconv>

#include "cli/settings.h"

namespace zeldb::cli {

namespace {

using R = PCISetting_info;

constexpr char kSeparator = ';';  // between choices, and between the parts of a value with several

// Only the BIOS knows whether these hold.
constexpr struct {
  const char* consequence;
  size_t offset;
} kConditions[] = {{"hidden", offsetof(R, SuppressIf)},
                   {"fixed", offsetof(R, GrayIf)},
                   {"hidden", offsetof(R, GroupSuppressIf)},
                   {"fixed", offsetof(R, GroupGrayIf)}};

void judge_conditions(const R& setting, Verdict& verdict) {
  for (const auto& [consequence, offset] : kConditions) {
    const std::string condition = text_of(reinterpret_cast<const unsigned char*>(&setting) + offset);
    if (!condition.empty()) verdict.doubts.push_back(std::string("is ") + consequence + " if " + condition);
  }
}

std::string range(int64_t lowest, int64_t highest) {
  return std::to_string(lowest) + " to " + std::to_string(highest);
}

void judge_number(const R& setting, const std::string& value, Verdict& verdict) {
  int64_t number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc() || end != value.data() + value.size()) {
    verdict.objection = "is no number";
    return;
  }
  int64_t lowest = setting.Minim;
  int64_t highest = setting.Maxim;
  if (lowest > highest) {  // negative numbers
    lowest = static_cast<int32_t>(setting.Minim);
    highest = static_cast<int32_t>(setting.Maxim);
  }
  const bool is_bounded = setting.Minim != 0 || setting.Maxim != 0;
  if (is_bounded && (number < lowest || number > highest)) {
    verdict.objection = "is not from " + range(lowest, highest);
  } else if (setting.Step > 1 && (number - lowest) % setting.Step != 0) {
    verdict.objection = "is no step of " + std::to_string(setting.Step) + " from " + std::to_string(lowest);
  }
}

// The time depends on the text alone, not on the pattern, which is foreign input.
void judge_pattern(const std::string& pattern, const std::string& value, Verdict& verdict) {
  RE2::Options bytes(RE2::Latin1);
  bytes.set_log_errors(false);
  const RE2 expression(pattern, bytes);
  if (!expression.ok())
    verdict.objection = "cannot be checked against its pattern " + pattern + ": " + expression.error();
  else if (!RE2::PartialMatch(value, expression))
    verdict.objection = "does not match " + pattern;
}

void judge_text(const R& setting, const std::string& value, Verdict& verdict) {
  const std::string pattern = text_of(setting.Pattern);
  if (value.size() < setting.Mins || (setting.Maxs != 0 && value.size() > setting.Maxs)) {
    verdict.objection = "does not have " + range(setting.Mins, setting.Maxs) + " characters";
    return;
  }
  if (pattern.empty()) return;
  // A pattern that fills its column was cut.
  if (pattern.size() + 1 == sizeof(setting.Pattern))
    verdict.doubts.push_back("cannot be checked against its pattern " + pattern + ", which was cut");
  else
    judge_pattern(pattern, value, verdict);
}

std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> parts;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(kSeparator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::string listed(const std::vector<std::string>& choices) {
  std::string text;
  for (const std::string& choice : choices) text += (text.empty() ? "" : ", ") + choice;
  return text;
}

void judge_choice(const R& setting, const std::string& value, Verdict& verdict) {
  const std::string list = text_of(setting.Choices);
  const std::vector<std::string> choices = split(list);
  const bool is_whole =
      list.size() + 1 < sizeof(setting.Choices) && static_cast<int64_t>(choices.size()) == setting.Numchoices;
  const bool is_list = setting.Maxinstances > 1;
  std::vector<std::string> values = split(value);
  if (!is_list) values.assign(1, value);
  const auto is_choice = [&choices](const std::string& one) {
    return std::ranges::find(choices, one) != choices.end();
  };
  const auto other = std::ranges::find_if_not(values, is_choice);
  if (other != values.end()) {
    if (is_whole)
      verdict.objection = "is none of " + listed(choices);
    else
      verdict.doubts.emplace_back("cannot be checked: its choices are not all known");
    if (is_whole && is_list) verdict.objection.insert(0, "has " + *other + ", which ");
    return;
  }
  const auto count = static_cast<int64_t>(values.size());
  if (is_list && (count < setting.Mininstances || count > setting.Maxinstances))
    verdict.objection = "does not have " + range(setting.Mininstances, setting.Maxinstances) + " choices";
}

}  // namespace

Verdict judge(const PCISetting_info& setting, const std::string& value) {
  Verdict verdict;
  judge_conditions(setting, verdict);
  switch (setting.Type) {
    case kNumberType:
      judge_number(setting, value, verdict);
      break;
    case kTextType:
      judge_text(setting, value, verdict);
      break;
    case kPlainType:
      verdict.doubts.emplace_back("cannot be checked: nothing is known of its values");
      break;
    default:
      judge_choice(setting, value, verdict);
  }
  return verdict;
}

}  // namespace zeldb::cli
