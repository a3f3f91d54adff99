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

// A source, character by character.
class Characters {
 public:
  explicit Characters(const JsonSource& source) : source_(source) {}

  bool at_end() {
    if (left_.empty()) next_part();
    return left_.empty();
  }
  char first() const { return left_.front(); }
  void skip() { left_.remove_prefix(1); }

  // Of the text that was read last. One that goes over the border of two parts has none.
  std::optional<size_t> place_of(std::string_view text) const {
    const size_t end = part_.size() - left_.size();  // behind the quote
    if (end <= text.size() || text.find('"') != std::string_view::npos) return std::nullopt;
    const size_t start = end - 1 - text.size();
    return part_.substr(start, text.size()) == text ? std::optional(before_ + start) : std::nullopt;
  }

 private:
  void next_part() {
    before_ += part_.size();
    part_ = left_ = source_();
  }

  const JsonSource& source_;
  std::string_view part_, left_;
  size_t before_ = 0;
};

// The parser compares it with the end alone.
struct Character {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  char operator*() const { return characters->first(); }
  Character& operator++() {
    characters->skip();
    return *this;
  }
  bool operator==(const Character& /*end*/) const { return characters->at_end(); }

  Characters* characters;
};

class Events : public nlohmann::json_sax<nlohmann::json> {
 public:
  Events(const Characters& characters, JsonVisitor& visitor) : characters_(characters), visitor_(visitor) {}

  bool null() override { return put(Json()); }
  bool boolean(bool value) override { return put(Json(value)); }
  bool number_integer(int64_t value) override { return put(Json(value)); }
  bool number_unsigned(uint64_t value) override { return put(Json(value)); }
  bool number_float(double /*value*/, const std::string& digits) override {
    return put(Json(Json::Fraction{digits}));
  }
  bool binary(nlohmann::json::binary_t& /*value*/) override { return false; }
  bool start_object(size_t /*elements*/) override { return open(Json(Json::Object())); }
  bool end_object() override { return close(); }
  bool start_array(size_t /*elements*/) override { return open(Json(Json::Array())); }
  bool end_array() override { return close(); }

  bool string(std::string& value) override {
    visitor_.text(value, characters_.place_of(value));
    return true;
  }
  bool key(std::string& name) override {
    visitor_.key(name);
    return true;
  }

  bool parse_error(size_t position, const std::string& /*token*/,
                   const nlohmann::json::exception& error) override {
    std::string reason = error.what();
    reason.erase(0, reason.find("] ") + 2);  // the parser's own number of the error
    throw ConfigError("byte " + std::to_string(position) + ": " + reason.substr(0, kLongestReason));
  }

 private:
  bool put(Json value) {
    visitor_.value(std::move(value));
    return true;
  }
  bool open(Json empty) {
    if (depth_ == kDeepest) throw ConfigError("nested deeper than " + std::to_string(kDeepest) + " levels");
    ++depth_;
    visitor_.open(std::move(empty));
    return true;
  }
  bool close() {
    --depth_;
    visitor_.close();
    return true;
  }

  const Characters& characters_;
  JsonVisitor& visitor_;
  size_t depth_ = 0;
};

class Builder : public JsonVisitor {
 public:
  void key(const std::string& name) override { member_ = &open_.back()->member(name); }
  void text(std::string& value, std::optional<size_t> /*place*/) override {
    place() = Json(std::move(value));
  }
  void value(Json value) override { place() = std::move(value); }
  void open(Json empty) override {
    Json& made = place() = std::move(empty);
    open_.push_back(&made);
  }
  void close() override { open_.pop_back(); }

  Json take() { return std::move(root_); }

 private:
  Json& place() {
    if (open_.empty()) return root_;
    auto* const array = open_.back()->as<Json::Array>();
    return array != nullptr ? array->emplace_back() : *member_;
  }

  Json root_;
  std::vector<Json*> open_;  // none of them moves before what is inside it is closed
  Json* member_ = nullptr;
};

template <class Members>
auto* find_in(Members& members, std::string_view name) {
  const auto found =
      std::find_if(members.begin(), members.end(), [&](const auto& member) { return member.name == name; });
  return found != members.end() ? &found->value : nullptr;
}

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
  return find_in(std::get<Object>(value_), name);
}

Json& Json::member(std::string_view name) {
  auto& members = std::get<Object>(value_);
  if (Json* const found = find_in(members, name)) return *found;
  return members.emplace_back(Member{std::string(name), Json()}).value;
}

void visit_json(const JsonSource& source, JsonVisitor& visitor) {
  Characters characters(source);
  Events events(characters, visitor);
  nlohmann::json::sax_parse(Character{&characters}, Character{nullptr}, &events);
}

Json parse_json(const JsonSource& source) {
  Builder builder;
  visit_json(source, builder);
  return builder.take();
}

std::string json_text(const Json& json) {
  std::string text;
  write(json, 0, text);
  return text;
}

}  // namespace zel_platform
