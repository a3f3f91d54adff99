// SPDX-License-Identifier: Apache-2.0
#include "config/config.h"

#include <cstdlib>
#include <limits>
#include <utility>

#include "config/file.h"
#include "platform/vrel_log.h"

namespace zel_platform {
namespace {

// Writing a document recurses once per level.
constexpr int kDeepest = 64;
constexpr size_t kLongestReason = 300;
constexpr int kIndent = 2;

Json parse(const std::string& content) {
  const auto check_depth = [](int depth, Json::parse_event_t, const Json&) {
    if (depth > kDeepest) throw ConfigError("nested deeper than " + std::to_string(kDeepest) + " levels");
    return true;
  };
  try {
    return Json::parse(content, check_depth);
  } catch (const Json::parse_error& error) {
    std::string reason = error.what();
    reason.erase(0, reason.find("] ") + 2);  // the parser's own number of the error
    throw ConfigError("byte " + std::to_string(error.byte) + ": " + reason.substr(0, kLongestReason));
  }
}

Json load(const std::string& path, IfMissing missing) {
  const std::optional<std::string> content = read_file(path);
  if (!content && missing == IfMissing::Fail) {
    throw std::system_error(ENOENT, std::generic_category(), "cannot open");
  }
  Json json = content ? parse(*content) : Json::object();
  if (!json.is_object()) throw ConfigError("not a JSON object");
  return json;
}

template <class Work>
bool logged(const std::string& path, Work work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    vrel_log::logErr("%s: %s", path.c_str(), error.what());
    return false;
  }
}

const Json* member(const Json& object, const char* name) {
  if (!object.is_object()) throw ConfigError("not an object");
  const auto found = object.find(name);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

}  // namespace

std::string config_path(const char* file) {
  const char* directory = std::getenv("ZEL_PLATFORM_DIR");
  const bool given = directory != nullptr && *directory != '\0';
  return std::string(given ? directory : "/var/lib/zeldb") + "/" + file;
}

bool read_config(const char* file, IfMissing missing, const std::function<void(const Json&)>& read) {
  const std::string path = config_path(file);
  return logged(path, [&] { read(load(path, missing)); });
}

bool update_config(const char* file, IfMissing missing, const std::function<void(Json&)>& change) {
  const std::string path = config_path(file);
  return logged(path, [&] {
    Replacement replacement(path);
    Json json = load(replacement.path(), missing);
    change(json);
    replacement.write(json.dump(kIndent) + "\n");
  });
}

std::optional<std::string> text_member(const Json& object, const char* name) {
  const Json* value = member(object, name);
  if (value == nullptr) return std::nullopt;
  if (!value->is_string()) throw ConfigError(std::string(name) + ": not a text");
  const auto& text = value->get_ref<const std::string&>();
  return text.substr(0, text.find('\0'));
}

std::optional<uint32_t> word_member(const Json& object, const char* name) {
  const Json* value = member(object, name);
  if (value == nullptr) return std::nullopt;
  const bool fits = value->is_number_unsigned()
                        ? std::in_range<uint32_t>(value->get<uint64_t>())
                        : value->is_number_integer() && std::in_range<int32_t>(value->get<int64_t>());
  if (!fits) throw ConfigError(std::string(name) + ": not a 32-bit number");
  return static_cast<uint32_t>(value->get<int64_t>());
}

void each_element(const Json& object, const char* name, IfMissing missing,
                  const std::function<void(const Json&)>& visit) {
  const Json* array = member(object, name);
  if (array == nullptr && missing == IfMissing::Empty) return;
  if (array == nullptr || !array->is_array()) throw ConfigError(std::string(name) + ": not an array");
  for (size_t i = 0; i < array->size(); ++i) {
    try {
      visit((*array)[i]);
    } catch (const ConfigError& error) {
      throw ConfigError(std::string(name) + "[" + std::to_string(i) + "]: " + error.what());
    }
  }
}

}  // namespace zel_platform
