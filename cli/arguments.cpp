// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdio>
#include <string_view>

#include "cli/command.h"
#include "cli/fleet.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

template <typename Value>
bool parse(std::string_view text, Value& number, int base = 10) {
  const char* const end = text.data() + text.size();
  if (text.starts_with('-')) return false;  // none of these numbers has a sign
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end;
}

bool parse_key(std::string_view text, uint32_t& key) {
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  return parse(text, key, 16);
}

bool parse_place(std::string_view text, Place& place) {
  const size_t colon = text.find(':');
  place.location = 1;
  if (colon != std::string_view::npos && !parse(text.substr(0, colon), place.location)) return false;
  return parse(text.substr(colon + 1), place.number) && place.location >= 0 && place.number >= 0;
}

bool parse_hex_pair(std::string_view text, HexPair& pair) {
  const size_t colon = text.find(':');
  return colon != std::string_view::npos && parse(text.substr(0, colon), pair.first, 16) &&
         parse(text.substr(colon + 1), pair.second, 16) && pair.first >= 0 && pair.second >= 0;
}

[[noreturn]] void refuse(const std::string& name, const std::string& text, const char* wanted) {
  throw CLI::ValidationError(name, printable(text, Escape::Terminal) + " is " + wanted);
}

// wanted names the expected value in the report of a text that cannot be parsed.
template <typename Value, typename Parse>
CLI::Option* add_parsed(CLI::App& app, const std::string& name, std::optional<Value>& value, Parse parse_text,
                        const char* wanted, const std::string& help) {
  const auto read = [&value, name, wanted, parse_text](const std::string& text) {
    Value parsed = {};
    if (!parse_text(text, parsed)) refuse(name, text, wanted);
    value = parsed;
  };
  return app.add_option_function<std::string>(name, read, help);
}

}  // namespace

CLI::Option* add_flag(CLI::App& app, const std::string& name, bool& value, const std::string& help) {
  return app.add_flag(name, value, help);
}

CLI::Option* add_text(CLI::App& app, const std::string& name, std::string& value, const std::string& type,
                      const std::string& help) {
  return app.add_option(name, value, help)->type_name(type);
}

CLI::Option* add_choice(CLI::App& app, const std::string& name, std::string& value,
                        const std::vector<std::string>& choices, const std::string& help) {
  std::string type;
  for (const std::string& choice : choices) type += (type.empty() ? "{" : ",") + choice;
  return app.add_option(name, value, help)
      ->type_name(type + "}")
      ->check(CLI::IsMember(choices).description(""));
}

CLI::Option* add_number(CLI::App& app, const std::string& name, Number& value, const std::string& type,
                        const std::string& help) {
  const auto parse_number = [](std::string_view text, uint32_t& number) { return parse(text, number); };
  return add_parsed(app, name, value, parse_number, "no number", help)->type_name(type);
}

CLI::Option* add_key(CLI::App& app, const std::string& name, Key& value, const std::string& help) {
  return add_parsed(app, name, value, parse_key, "no key in hexadecimal digits", help)
      ->type_name(name.starts_with("--") ? "KEY" : "");
}

CLI::Option* add_place(CLI::App& app, const std::string& name, std::optional<Place>& value,
                       const std::string& help) {
  return add_parsed(app, name, value, parse_place, "no LOCATION:NUMBER", help)->type_name("L:N");
}

CLI::Option* add_hex_pair(CLI::App& app, const std::string& name, std::optional<HexPair>& value,
                          const std::string& type, const std::string& help) {
  return add_parsed(app, name, value, parse_hex_pair, "no pair of hexadecimal numbers", help)
      ->type_name(type);
}

void add_snapshot(CLI::App& app, std::string& file) {
  const auto take = [&file](const std::vector<std::string>& files) {
    if (are_many(files))
      throw WrongUse("--from: takes one file, of one machine; listings and metrics take several");
    file = files.front();
  };
  app.add_option_function<std::vector<std::string>>("--from", take,
                                                    "Read a file that zeldb export has written")
      ->allow_extra_args(false)
      ->type_name("FILE");
}

void require(CLI::Option* option) {
  option->required();
}

void need(CLI::Option* option, CLI::Option* other) {
  option->needs(other);
}

void set_action(CLI::App& app, std::function<void()> action, const std::string& footer) {
  app.callback(std::move(action));
  app.footer(footer);
}

void exclude_each_other(const std::vector<CLI::Option*>& options) {
  for (CLI::Option* option : options) {
    for (CLI::Option* other : options) {
      if (option != other) option->excludes(other);
    }
  }
}

std::string key_text(uint32_t key) {
  char text[16];
  std::snprintf(text, sizeof(text), "%08x", static_cast<unsigned>(key));
  return text;
}

std::string place_text(const Place& place) {
  return std::to_string(place.location) + ":" + std::to_string(place.number);
}

std::optional<Place> place_of(const std::string& text) {
  Place place{};
  return parse_place(text, place) ? std::optional(place) : std::nullopt;
}

}  // namespace zeldb::cli
