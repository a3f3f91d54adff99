// SPDX-License-Identifier: Apache-2.0
#include "config/json.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace zel_platform {
namespace {

// Writing and destroying a document recurse once per level.
constexpr size_t kDeepest = 64;
constexpr size_t kLongestReason = 300;
constexpr size_t kIndent = 2;

class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  bool null() override { return put(Json()); }
  bool boolean(bool value) override { return put(Json(value)); }
  bool number_integer(int64_t value) override { return put(Json(value)); }
  bool number_unsigned(uint64_t value) override { return put(Json(value)); }
  bool number_float(double /*value*/, const std::string& digits) override {
    return put(Json(Json::Fraction{digits}));
  }
  bool string(std::string& value) override { return put(Json(std::move(value))); }
  bool binary(nlohmann::json::binary_t& /*value*/) override { return false; }
  bool start_object(size_t /*elements*/) override { return open(Json(Json::Object())); }
  bool end_object() override { return close(); }
  bool start_array(size_t /*elements*/) override { return open(Json(Json::Array())); }
  bool end_array() override { return close(); }

  bool key(std::string& name) override {
    member_ = &open_.back()->member(name);
    return true;
  }

  bool parse_error(size_t position, const std::string& /*token*/,
                   const nlohmann::json::exception& error) override {
    std::string reason = error.what();
    reason.erase(0, reason.find("] ") + 2);  // the parser's own number of the error
    throw ConfigError("byte " + std::to_string(position) + ": " + reason.substr(0, kLongestReason));
  }

  Json take() { return std::move(root_); }

 private:
  Json& place() {
    if (open_.empty()) return root_;
    auto* const array = open_.back()->as<Json::Array>();
    return array != nullptr ? array->emplace_back() : *member_;
  }
  bool put(Json value) {
    place() = std::move(value);
    return true;
  }
  bool open(Json value) {
    if (open_.size() == kDeepest) {
      throw ConfigError("nested deeper than " + std::to_string(kDeepest) + " levels");
    }
    Json& made = place() = std::move(value);
    open_.push_back(&made);
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  Json root_;
  std::vector<Json*> open_;  // none of them moves before what is inside it is closed
  Json* member_ = nullptr;
};

// The library's value of a text takes no memory when it is destroyed.
std::string quoted(const std::string& text) {
  return nlohmann::json(text).dump();
}

void write(const Json& json, size_t indent, std::string& out);

template <class Elements, class WriteElement>
void write_all(const Elements& elements, const char* brackets, size_t indent, std::string& out,
               WriteElement write_element) {
  out += brackets[0];
  const char* separator = "\n";
  for (const auto& element : elements) {
    out.append(separator).append(indent + kIndent, ' ');
    write_element(element);
    separator = ",\n";
  }
  if (!elements.empty()) out.append("\n").append(indent, ' ');
  out += brackets[1];
}

void write(const Json& json, size_t indent, std::string& out) {
  const size_t inner = indent + kIndent;
  if (const auto* array = json.as<Json::Array>()) {
    write_all(*array, "[]", indent, out, [&](const Json& element) { write(element, inner, out); });
  } else if (const auto* object = json.as<Json::Object>()) {
    write_all(*object, "{}", indent, out, [&](const Json::Member& member) {
      out.append(quoted(member.name)).append(": ");
      write(member.value, inner, out);
    });
  } else if (const auto* text = json.as<std::string>()) {
    out += quoted(*text);
  } else if (const auto* fraction = json.as<Json::Fraction>()) {
    out += fraction->digits;
  } else if (const auto* number = json.as<uint64_t>()) {
    out += std::to_string(*number);
  } else if (const auto* negative = json.as<int64_t>()) {
    out += std::to_string(*negative);
  } else if (const auto* truth = json.as<bool>()) {
    out += *truth ? "true" : "false";
  } else {
    out += "null";
  }
}

}  // namespace

const Json* Json::find(std::string_view name) const {
  const auto& members = std::get<Object>(value_);
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const Member& candidate) { return candidate.name == name; });
  return found != members.end() ? &found->value : nullptr;
}

Json& Json::member(std::string_view name) {
  auto& members = std::get<Object>(value_);
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const Member& candidate) { return candidate.name == name; });
  if (found != members.end()) return found->value;
  return members.emplace_back(Member{std::string(name), Json()}).value;
}

Json parse_json(const std::string& text) {
  Builder builder;
  nlohmann::json::sax_parse(text, &builder);
  return builder.take();
}

std::string json_text(const Json& json) {
  std::string text;
  write(json, 0, text);
  return text;
}

}  // namespace zel_platform
