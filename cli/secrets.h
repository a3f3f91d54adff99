// SPDX-License-Identifier: Apache-2.0
//
// Settings that hold secrets: those of type 5, whose content only the BIOS knows, and texts and numbers whose
// id, name or description speaks of a password, a passphrase, a passcode, a secret, a credential, or a
// private or pre-shared key. A choice is no secret: its values are known to everybody. Nothing that the
// command prints or writes shows a secret.
#ifndef CLI_SECRETS_H
#define CLI_SECRETS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "zeldb/ucm.h"

namespace zeldb::cli {

// The columns of a setting that speak of what it holds, and those with its values, by the names that tables
// and bios.json have for them.
constexpr std::string_view kSpeaking[] = {"SettingID", "AttributeName", "SettingName",
                                          "Mriname",   "ShortDesc",     "FullDesc"};
bool holds_secret(uint32_t type, std::span<const std::string> speaking);

// The replacements of the current value, the pending one and defaults. An empty value stays empty; a pending
// one that differs from the current one still does.
struct SecretValues {
  std::string current;
  std::string pending;
};
SecretValues hidden(const SecretValues& values);
std::string hidden(const std::string& value);

bool holds_secret(const PCISetting_info& setting);
void hide_secret(PCISetting_info& setting);

}  // namespace zeldb::cli

#endif
