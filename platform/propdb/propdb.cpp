// SPDX-License-Identifier: Apache-2.0
//
// The property store, read from the table of the property database. A value is a type tag and the bytes of
// the value; the tag is not looked at.
#include "platform/propdb.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "call/call.h"
#include "platform/zel_db.h"

using namespace zel_platform;

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;
constexpr size_t kTag = 1;

using Handle = std::unique_ptr<_zel_db_handle_t, decltype(&zel_db_close)>;
using Rows = std::unique_ptr<zel_db_result_t, decltype(&zel_db_free_result)>;

// As wide as the column; a longer value is cut.
struct Value {
  std::array<char, 1024> bytes;
  unsigned size;
  std::string_view content() const {
    return std::string_view(bytes.data(), size).substr(std::min<size_t>(kTag, size));
  }
};

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) result.append(c == '"' ? 2 : 1, c);
  return result + "\"";
}

bool find_property(const char* path, Value& value) {
  static constexpr const char* kColumns[] = {"propValue"};
  const Handle handle(zel_db_open("localhost", "root", "", "propertiesdb", 0), zel_db_close);
  if (handle == nullptr) return false;
  const std::string where = "propName=" + quoted(path);
  zel_db_result_t* out = nullptr;
  const int status =
      zel_db_query(handle.get(), "propertiesDCTbl", kColumns, 1, where.c_str(), nullptr, 0, nullptr, &out);
  const Rows rows(out, zel_db_free_result);
  if (status != 0 || rows == nullptr || zel_db_result_step(rows.get()) != 9) return false;
  value.size = static_cast<unsigned>(value.bytes.size());
  return zel_db_result_column_blob(rows.get(), 0, value.bytes.data(), &value.size) == 0 && value.size >= kTag;
}

// take gets the value without its tag and tells whether it is one of its kind.
template <class Take>
int get(const char* function, const char* path, const void* out, Take take) {
  const auto body = [&] {
    Value value;
    const bool good =
        path != nullptr && out != nullptr && find_property(path, value) && take(value.content());
    return good ? kDone : kFailed;
  };
  return run_call(function, kFailed, body, path);
}

}  // namespace

ZEL_PLATFORM_API int propdb_get_string(const char* path, char* buffer, unsigned size) {
  return get(__func__, path, buffer, [&](std::string_view content) {
    if (size == 0) return false;
    const size_t length = std::min<size_t>(content.substr(0, content.find('\0')).size(), size - 1);
    content.copy(buffer, length);
    buffer[length] = '\0';
    return true;
  });
}

ZEL_PLATFORM_API int propdb_get_dword(const char* path, uint32_t* value) {
  return get(__func__, path, value, [&](std::string_view content) {
    if (content.size() < sizeof(*value)) return false;
    *value = 0;
    for (size_t i = 0; i < sizeof(*value); ++i)
      *value |= uint32_t{static_cast<uint8_t>(content[i])} << (8 * i);
    return true;
  });
}

ZEL_PLATFORM_API int propdb_get_byte(const char* path, uint8_t* value) {
  return get(__func__, path, value, [&](std::string_view content) {
    if (content.empty()) return false;
    *value = static_cast<uint8_t>(content[0]);
    return true;
  });
}
