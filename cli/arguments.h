// SPDX-License-Identifier: Apache-2.0
//
// Options and arguments of commands. Targets have to live until the command has run. Names that begin with
// "--" are options, others are arguments.
#ifndef CLI_ARGUMENTS_H
#define CLI_ARGUMENTS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zeldb::cli {

using Number = std::optional<uint32_t>;
// A function's key or an adapter's, in hexadecimal digits as it is shown, with or without 0x.
using Key = std::optional<uint32_t>;
// A slot or bay, as LOCATION:NUMBER; a number alone is of location 1.
struct Place {
  int location;
  int number;
};

// type is the name of the value in the help text; empty if the name says it.
CLI::Option* add_flag(CLI::App& app, const std::string& name, bool& value, const std::string& help);
CLI::Option* add_text(CLI::App& app, const std::string& name, std::string& value, const std::string& type,
                      const std::string& help);
CLI::Option* add_choice(CLI::App& app, const std::string& name, std::string& value,
                        const std::vector<std::string>& choices, const std::string& help);
CLI::Option* add_number(CLI::App& app, const std::string& name, Number& value, const std::string& type,
                        const std::string& help);
CLI::Option* add_key(CLI::App& app, const std::string& name, Key& value, const std::string& help);
CLI::Option* add_place(CLI::App& app, const std::string& name, std::optional<Place>& value,
                       const std::string& help);
// Two numbers in hexadecimal digits: the bus and the device of an address, or two PCI ids.
struct HexPair {
  int first;
  int second;
};
CLI::Option* add_hex_pair(CLI::App& app, const std::string& name, std::optional<HexPair>& value,
                          const std::string& type, const std::string& help);
// --from, of one machine.
void add_snapshot(CLI::App& app, std::string& file);

void require(CLI::Option* option);
// The first option needs the second one.
void need(CLI::Option* option, CLI::Option* other);
// The function that the command runs, and a text below its help.
void set_action(CLI::App& app, std::function<void()> action, const std::string& footer = {});

// At most one of them may be given.
void exclude_each_other(const std::vector<CLI::Option*>& options);

std::string key_text(uint32_t key);
std::string place_text(const Place& place);
// Nothing if the text is no place.
std::optional<Place> place_of(const std::string& text);

}  // namespace zeldb::cli

#endif
