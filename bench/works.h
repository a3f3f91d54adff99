// SPDX-License-Identifier: Apache-2.0
//
// The works that are measured: as the library does them, as code tuned by hand for one engine does them, and
// as somebody would write them with another library.
#ifndef BENCH_WORKS_H
#define BENCH_WORKS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/calls.h"
#include "zeldb/pci.h"
#include "zeldb/storage.h"
#include "zeldb/ucm.h"

namespace bench {

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

class Replayer {
 public:
  Replayer() = default;
  Replayer(const Replayer&) = delete;
  Replayer& operator=(const Replayer&) = delete;
  virtual ~Replayer() = default;

  // Reads all rows of calls that the library was seen to make.
  virtual void replay(const Calls& calls) = 0;
};

class Works : public Replayer {
 public:
  virtual void clear_settings() = 0;
  // Inserts the setting or updates it if it differs.
  virtual void store(const PCISetting_info& record) = 0;
  // The same by code that reads the row and compares it first. The library has one way.
  virtual void store_compared(const PCISetting_info& record) { store(record); }
  // The number of rows read into an array.
  virtual unsigned list_settings() = 0;
  virtual unsigned list_drives() = 0;
  // Two columns of a row, and 27.
  virtual unsigned aim_supported(uint32_t function_key) = 0;
  virtual unsigned device_id(uint32_t function_key) = 0;
  // Reads in read() share a transaction, as those of a list do.
  virtual void hold_reads(const std::function<void()>& read) { read(); }
  // Opens the property database, reads a value, closes it.
  virtual unsigned property() = 0;
};

// where is a folder for SQLite; for MariaDB it is the path of the server's socket, a # and the prefix of the
// names of the databases.
using Factory = std::unique_ptr<Works>(const std::string& where);
Factory library, tuned_sqlite, columns_sqlite, sqlitecpp, soci_sqlite, tuned_mariadb, soci_mariadb;
std::unique_ptr<Replayer> replayer_sqlite(const std::string& where);
std::unique_ptr<Replayer> replayer_mariadb(const std::string& where);

}  // namespace bench

#endif
