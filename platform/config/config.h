// SPDX-License-Identifier: Apache-2.0
//
// The JSON files of the platform directory (ZEL_PLATFORM_DIR, by default /var/lib/zeldb). A fault
// in a file is one line in the log, which names the file and the place in it.
#ifndef ZEL_PLATFORM_CONFIG_CONFIG_H
#define ZEL_PLATFORM_CONFIG_CONFIG_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "config/file.h"
#include "config/json.h"

namespace zel_platform {

enum class IfMissing { Fail, Empty };

std::string config_path(const char* file);

// Hands the file's content, an object, to read; a missing file is a failure or an empty object. False, and
// one line in the log, when the file cannot be read, is no JSON, or read throws. Only std::bad_alloc is
// thrown on: it says nothing about the file.
bool read_config(const char* file, IfMissing missing, const std::function<void(const Json&)>& read);

// Visits the file's content as it is read, where not all of it need be kept. The file, or null where the
// above is false; a missing file is a failure.
std::unique_ptr<FileReader> visit_config(const char* file, JsonVisitor& visitor);

// Reads the file as it is now, lets change have its way with it and replaces it; updates by other processes
// are neither lost nor torn. Nothing is written when change throws.
bool update_config(const char* file, IfMissing missing, const std::function<void(Json&)>& change);

// One member of an object; missing and null are the same. A text ends at its first NUL, a number is any that
// fits in 32 bits, signed or unsigned. Anything else throws a ConfigError that names the member.
std::optional<std::string> text_member(const Json& object, const char* name);
std::optional<uint32_t> word_member(const Json& object, const char* name);

// The number of such a member, if it is one.
std::optional<uint32_t> word_of(const Json& value);

// Visits the elements of an array member; a ConfigError thrown on the way gets the element's place before its
// text.
void each_element(Json& object, const char* name, const std::function<void(Json&)>& visit);
void each_element(const Json& object, const char* name, IfMissing missing,
                  const std::function<void(const Json&)>& visit);

}  // namespace zel_platform

#endif
