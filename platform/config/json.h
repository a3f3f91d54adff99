// SPDX-License-Identifier: Apache-2.0
//
// A JSON document, read by the library's event parser into values of our own. The library's values take
// memory when they are destroyed, where nothing can be thrown: when it is short, they end the process. These
// take it while they are made, and throw std::bad_alloc.
#ifndef ZEL_PLATFORM_CONFIG_JSON_H
#define ZEL_PLATFORM_CONFIG_JSON_H

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zel_platform {

// The content of a file is not what its reader needs; the text names the place.
class ConfigError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Json {
 public:
  struct Member;
  using Array = std::vector<Json>;
  // In the order of the file, so that an updated file still looks like the one that was written by hand. Of
  // equal names the last value counts, in the place of the first.
  using Object = std::vector<Member>;
  struct Fraction {
    std::string digits;  // as they were read
  };

  Json() = default;  // null
  template <class T>
  explicit Json(T value) : value_(std::move(value)) {}

  // Null where it is of another kind. A number that is not negative is a uint64_t, another one an int64_t.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }
  template <class T>
  T* as() {
    return std::get_if<T>(&value_);
  }
  bool is_null() const { return value_.index() == 0; }

  // Of an object: null when it has no such member; the member's value, made when it is missing.
  const Json* find(std::string_view name) const;
  Json& member(std::string_view name);

 private:
  std::variant<std::monostate, bool, int64_t, uint64_t, Fraction, std::string, Array, Object> value_;
};

struct Json::Member {
  std::string name;
  Json value;
};

// Gets what a document consists of, in its order: for those who need not keep all of it.
class JsonVisitor {
 public:
  JsonVisitor() = default;
  JsonVisitor(const JsonVisitor&) = delete;
  JsonVisitor& operator=(const JsonVisitor&) = delete;
  virtual ~JsonVisitor() = default;

  virtual void key(const std::string& name) = 0;
  // The value may be taken. The place is where the document has it between quotes as it is, without an
  // escape.
  virtual void text(std::string& value, std::optional<size_t> place) = 0;
  virtual void value(Json value) = 0;  // without parts, and no text
  virtual void open(Json empty) = 0;   // an array or an object
  virtual void close() = 0;
};

// The next part of a document, empty at its end.
using JsonSource = std::function<std::string_view()>;

// Both throw a ConfigError that names the byte.
void visit_json(const JsonSource& source, JsonVisitor& visitor);
Json parse_json(const JsonSource& source);
// With line ends and two blanks for each level; throws where a text is no UTF-8.
std::string json_text(const Json& json);

}  // namespace zel_platform

#endif
