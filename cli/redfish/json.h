// SPDX-License-Identifier: Apache-2.0
//
// A JSON value for resources. Every resource includes this header, so it is small; tree.cpp passes
// the value to the library that writes it.
#ifndef CLI_REDFISH_JSON_H
#define CLI_REDFISH_JSON_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace zeldb::cli::redfish {

class Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>;  // in the order in which they were added
  struct LeftOut {};
  using Held =
      std::variant<std::nullptr_t, LeftOut, bool, uint64_t, int64_t, double, std::string, Array, Object>;

  Json() = default;
  Json(std::nullptr_t) {}
  Json(double number) : held_(number) {}
  Json(const char* text) : held_(std::string(text)) {}
  Json(std::string text) : held_(std::move(text)) {}
  Json(Array array) : held_(std::move(array)) {}
  template <typename Number>
  requires std::is_integral_v<Number> Json(Number number) {
    if constexpr (std::is_same_v<Number, bool>)
      held_ = number;
    else if constexpr (std::is_signed_v<Number>)
      held_ = int64_t{number};
    else
      held_ = uint64_t{number};
  }

  static Json left_out();
  static Json array(std::initializer_list<Json> items = {});
  static Json object(std::initializer_list<std::pair<const char*, Json>> members = {});

  const Held& held() const { return held_; }
  bool is_null() const { return std::holds_alternative<std::nullptr_t>(held_); }
  bool is_left_out() const { return std::holds_alternative<LeftOut>(held_); }
  // Empty unless it is a text.
  std::string text() const;
  size_t size() const;  // of an array

  void push_back(Json item);  // to an array
  // The member of an object, which is added if it is missing; null becomes an object.
  Json& operator[](const std::string& name);
  // The member of an object; nothing if it is missing.
  const Json* find(const std::string& name) const;

 private:
  Held held_ = nullptr;
};

}  // namespace zeldb::cli::redfish

#endif
