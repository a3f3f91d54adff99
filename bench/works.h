// SPDX-License-Identifier: Apache-2.0
//
// The four works that are measured, as the library does them and as code written by hand for one engine does
// them.
#ifndef BENCH_WORKS_H
#define BENCH_WORKS_H

#include <cstdint>
#include <memory>
#include <string>

#include "zeldb/ucm.h"

namespace bench {

inline constexpr unsigned kSettings = 10'000;
inline constexpr unsigned kKeys = 1'000;

// Twenty-one columns of PCISetting.
struct ListRow {
  char SettingID[129];
  char SettingName[65];
  char PendingValue[257];
  char CurrentValue[257];
  uint32_t PfaKey;
  char GroupID[257];
  char GroupName[257];
  char Mriname[65];
  char ShortDesc[129];
  char FullDesc[257];
  char Defvalue[65];
  char RecordId[65];
  uint32_t Type;
  uint32_t Flags;
  uint32_t Minim;
  uint32_t Maxim;
  uint32_t Step;
  uint32_t Numchoices;
  char Choices[1025];
  uint32_t Mininstances;
  uint32_t Maxinstances;
};

class Works {
 public:
  Works() = default;
  Works(const Works&) = delete;
  Works& operator=(const Works&) = delete;
  virtual ~Works() = default;

  // Inserts the setting or updates it where it differs.
  virtual void store(const PCISetting_info& record) = 0;
  // The number of rows read into an array.
  virtual unsigned list() = 0;
  virtual unsigned aim_supported(uint32_t function_key) = 0;
};

std::unique_ptr<Works> library();
std::unique_ptr<Works> hand_sqlite(const std::string& path);
std::unique_ptr<Works> hand_mariadb(const std::string& socket);

PCISetting_info setting(unsigned number);
uint32_t function_key(unsigned number);

// The texts of a read and a store: the same for both.
std::string function_filter(uint32_t function_key);
std::string key_filter(const PCISetting_info& record);
std::string change_filter(const PCISetting_info& record);

[[noreturn]] void give_up(const std::string& what);

}  // namespace bench

#endif
