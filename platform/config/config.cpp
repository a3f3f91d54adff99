// SPDX-License-Identifier: Apache-2.0
#include "config/config.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <system_error>
#include <utility>

#include "platform/vrel_log.h"

namespace zel_platform {
namespace {

void fail_if_missing(const FileReader& file, IfMissing missing) {
  if (file.is_missing() && missing == IfMissing::Fail)
    throw std::system_error(ENOENT, std::generic_category(), "cannot open");
}

Json load(const std::string& path, IfMissing missing) {
  FileReader file(path);
  fail_if_missing(file, missing);
  Json json{Json::Object()};
  if (!file.is_missing()) json = parse_json([&] { return file.next(); });
  if (json.as<Json::Object>() == nullptr) throw ConfigError("not a JSON object");
  return json;
}

template <class Work>
bool logged(const std::string& path, Work work) {
  try {
    work();
    return true;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    vrel_log::logErr("%s: %s", path.c_str(), error.what());
    return false;
  }
}

const Json* member(const Json& object, const char* name) {
  if (object.as<Json::Object>() == nullptr) throw ConfigError("not an object");
  const Json* const found = object.find(name);
  return found == nullptr || found->is_null() ? nullptr : found;
}

}  // namespace

std::string config_path(const char* file) {
  const char* directory = secure_getenv("ZEL_PLATFORM_DIR");
  const bool given = directory != nullptr && *directory != '\0';
  return std::string(given ? directory : "/var/lib/zeldb") + "/" + file;
}

bool read_config(const char* file, IfMissing missing, const std::function<void(const Json&)>& read) {
  const std::string path = config_path(file);
  return logged(path, [&] { read(load(path, missing)); });
}

std::unique_ptr<FileReader> visit_config(const char* file, JsonVisitor& visitor) {
  const std::string path = config_path(file);
  std::unique_ptr<FileReader> reader;
  const bool good = logged(path, [&] {
    reader = std::make_unique<FileReader>(path);
    fail_if_missing(*reader, IfMissing::Fail);
    visit_json([&] { return reader->next(); }, visitor);
  });
  return good ? std::move(reader) : nullptr;
}

bool update_config(const char* file, IfMissing missing, const std::function<void(Json&)>& change) {
  const std::string path = config_path(file);
  return logged(path, [&] {
    Replacement replacement(path);
    Json json = load(replacement.path(), missing);
    change(json);
    replacement.write(json_text(json) + "\n");
  });
}

std::optional<std::string> text_member(const Json& object, const char* name) {
  const Json* value = member(object, name);
  if (value == nullptr) return std::nullopt;
  const auto* const text = value->as<std::string>();
  if (text == nullptr) throw ConfigError(std::string(name) + ": not a text");
  return text->substr(0, text->find('\0'));
}

std::optional<uint32_t> word_member(const Json& object, const char* name) {
  const Json* value = member(object, name);
  if (value == nullptr) return std::nullopt;
  const std::optional<uint32_t> word = word_of(*value);
  if (!word) throw ConfigError(std::string(name) + ": not a 32-bit number");
  return word;
}

std::optional<uint32_t> word_of(const Json& value) {
  if (const auto* number = value.as<uint64_t>(); number != nullptr && std::in_range<uint32_t>(*number)) {
    return static_cast<uint32_t>(*number);
  }
  if (const auto* negative = value.as<int64_t>(); negative != nullptr && std::in_range<int32_t>(*negative)) {
    return static_cast<uint32_t>(*negative);
  }
  return std::nullopt;
}

void each_element(Json& object, const char* name, const std::function<void(Json&)>& visit) {
  // What the object holds may be changed as it may. NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  const auto change = [&](const Json& element) { visit(const_cast<Json&>(element)); };
  each_element(object, name, IfMissing::Fail, change);
}

void each_element(const Json& object, const char* name, IfMissing missing,
                  const std::function<void(const Json&)>& visit) {
  const Json* const value = member(object, name);
  if (value == nullptr && missing == IfMissing::Empty) return;
  const auto* const array = value != nullptr ? value->as<Json::Array>() : nullptr;
  if (array == nullptr) throw ConfigError(std::string(name) + ": not an array");
  for (size_t i = 0; i < array->size(); ++i) {
    try {
      visit((*array)[i]);
    } catch (const ConfigError& error) {
      throw ConfigError(std::string(name) + "[" + std::to_string(i) + "]: " + error.what());
    }
  }
}

}  // namespace zel_platform
