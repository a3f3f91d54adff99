// SPDX-License-Identifier: Apache-2.0
#include "bench/fixture.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/program.h"
#include "bench/records.h"
#include "platform/zel_db_admin.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

void load(const std::string& url, const char* database, const std::string& path) {
  char error[512] = "";
  if (zel_db_load(url.c_str(), database, path.c_str(), error, sizeof(error)) != 0) give_up(error);
}

}  // namespace

void load_rows(const std::string& url, const std::vector<std::string>& rows) {
  const std::string path = fs::temp_directory_path() / ("bench." + std::to_string(getpid()) + ".sql");
  std::ofstream script(path);
  for (const std::string& row : rows) script << row << ";\n";
  script.close();
  load(url, "dmdb", path);
  fs::remove(path);
}

void make_databases(const std::string& url, const std::vector<std::string>& rows) {
  char error[512] = "";
  if (zel_db_create(url.c_str(), error, sizeof(error)) != 0) give_up(error);
  load(url, "propertiesdb", ZELDB_SAMPLES "/properties.sql");
  load_rows(url, rows);
}

void make_sample(const std::string& url) {
  make_databases(url, {});
  for (const char* table : {"inventory", "adapters", "processors", "drives", "firmware"})
    load(url, "dmdb", std::string(ZELDB_SAMPLES "/") + table + ".sql");
}

void make_bios(const std::string& folder, unsigned functions) {
  constexpr unsigned kEach = 100;
  nlohmann::json collections = nlohmann::json::array();
  for (unsigned i = 0; i < functions; ++i) {
    if (i % kEach == 0)
      collections.push_back(
          {{"name", "Slot-" + std::to_string(i / kEach)}, {"attributes", nlohmann::json::array()}});
    const PCISetting_info record = setting(i);
    const auto text = [](const unsigned char* field) { return reinterpret_cast<const char*>(field); };
    collections.back()["attributes"].push_back({{"AttributeName", "Option" + std::to_string(i)},
                                                {"LocationByte1", record.PfaKey >> 24},
                                                {"Bus", record.PfaKey >> 16 & 0xFF},
                                                {"Device", record.PfaKey >> 8 & 0xFF},
                                                {"Function", record.PfaKey & 0xFF},
                                                {"SettingName", text(record.SettingName)},
                                                {"GroupID", text(record.GroupID)},
                                                {"GroupName", text(record.GroupName)},
                                                {"Mriname", text(record.Mriname)},
                                                {"ShortDesc", text(record.ShortDesc)},
                                                {"FullDesc", text(record.FullDesc)},
                                                {"Defvalue", text(record.Defvalue)},
                                                {"RecordId", text(record.RecordId)},
                                                {"Type", record.Type},
                                                {"Numchoices", record.Numchoices},
                                                {"Choices", text(record.Choices)}});
  }
  std::ofstream(folder + "/bios.json") << nlohmann::json({{"collections", collections}});
}

void trace_program(const std::string& trace, std::vector<std::string> words) {
  setenv("ZEL_DB_TRACE", trace.c_str(), 1);
  run_program(std::move(words));
  unsetenv("ZEL_DB_TRACE");
}

std::string built_program(const std::string& name) {
  return fs::read_symlink("/proc/self/exe").parent_path() / name;
}

}  // namespace bench
