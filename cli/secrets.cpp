// SPDX-License-Identifier: Apache-2.0
#include "cli/secrets.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "cli/settings.h"

namespace zeldb::cli {

namespace {

constexpr const char* kWords[] = {"password",   "passwd",     "passphrase",        "passcode",
                                  "secret",     "credential", "private key",       "privatekey",
                                  "shared key", "pre-shared", "authentication key"};
constexpr const char* kHidden = "(secret)";
constexpr const char* kHiddenToo = "(other secret)";

template <size_t N>
void replace(unsigned char (&text)[N], const std::string& value) {
  std::snprintf(reinterpret_cast<char*>(text), N, "%s", value.c_str());
}

}  // namespace

bool holds_secret(uint32_t type, std::span<const std::string> speaking) {
  if (type == kPlainType) return true;
  if (type != kNumberType && type != kTextType) return false;
  return std::ranges::any_of(speaking, [](const std::string& text) {
    return std::ranges::any_of(
        kWords, [&text](const char* word) { return strcasestr(text.c_str(), word) != nullptr; });
  });
}

std::string hidden(const std::string& value) {
  return value.empty() ? "" : kHidden;
}

SecretValues hidden(const SecretValues& values) {
  const bool is_other = !values.pending.empty() && values.pending != values.current;
  return {hidden(values.current), is_other ? kHiddenToo : hidden(values.pending)};
}

bool holds_secret(const PCISetting_info& setting) {
  const std::string speaking[] = {text_of(setting.SettingID), text_of(setting.SettingName),
                                  text_of(setting.Mriname), text_of(setting.ShortDesc),
                                  text_of(setting.FullDesc)};
  return holds_secret(setting.Type, speaking);
}

void hide_secret(PCISetting_info& setting) {
  if (!holds_secret(setting)) return;
  const SecretValues shown = hidden({text_of(setting.CurrentValue), text_of(setting.PendingValue)});
  replace(setting.CurrentValue, shown.current);
  replace(setting.PendingValue, shown.pending);
  replace(setting.Defvalue, hidden(text_of(setting.Defvalue)));
  replace(setting.Mfg_default, hidden(text_of(setting.Mfg_default)));
}

}  // namespace zeldb::cli
