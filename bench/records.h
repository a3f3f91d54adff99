// SPDX-License-Identifier: Apache-2.0
//
// The records that the works read and write, and the texts of which a read and a store are made.
#ifndef BENCH_RECORDS_H
#define BENCH_RECORDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "zeldb/ucm.h"

namespace bench {

inline constexpr unsigned kSettings = 10'000;
inline constexpr unsigned kKeys = 1'000;
inline constexpr const char* kProperty = "/dc/ovrc/dm/disks/sep/0/max_drives";

PCISetting_info setting(unsigned number);
uint32_t function_key(unsigned number);

// Records that are there already: making one costs more than what is to be seen.
class Settings {
 public:
  Settings();
  const PCISetting_info& operator[](unsigned number);

 private:
  std::vector<PCISetting_info> records_;
};

// Statements that fill the tables with so many adapters, drives and components.
std::vector<std::string> adapter_rows(unsigned count);
std::vector<std::string> drive_rows(unsigned count);
std::vector<std::string> component_rows(unsigned count);

void function_filter(uint32_t function_key, std::string& filter);
void key_filter(const PCISetting_info& record, std::string& filter);
void change_filter(const PCISetting_info& record, std::string& filter);

[[noreturn]] void give_up(const std::string& what);

}  // namespace bench

#endif
