// SPDX-License-Identifier: Apache-2.0
//
// Sets up the shims that are preloaded into a program, and writes down at its end what they saw.
// ZELDB_SHIM_RULES is a file {"rules":[...], "times":[[seconds, microseconds], ...]}, ZELDB_SHIM_RECORD the
// file to write, ZELDB_SHIM_TMP the folder of the marker files.
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <map>

#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"

namespace zeldb_test {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Rule, op, table, nth, status, with_result, after, fewer,
                                                column, name)

namespace {

__attribute__((constructor)) void set_up() {
  const char* folder = std::getenv("ZELDB_SHIM_TMP");
  libc().tmp = folder != nullptr ? folder : "";
  const char* file = std::getenv("ZELDB_SHIM_RULES");
  if (file == nullptr) return;
  std::ifstream stream(file);
  const auto json = nlohmann::json::parse(stream);
  for (const auto& rule : json.at("rules")) shim().fail(rule.get<Rule>());
  for (const auto& time : json.at("times")) libc().times.push_back({time.at(0), time.at(1)});
}

__attribute__((destructor)) void write_record() {
  const char* file = std::getenv("ZELDB_SHIM_RECORD");
  if (file == nullptr) return;
  nlohmann::json record = {{"logs", libc().logs}, {"syslogs", libc().syslogs}, {"alive", shim().alive()}};
  record["calls"] = shim().texts();
  std::map<std::string, int64_t> written;  // rows by operation and table
  for (const Call& call : shim().calls()) {
    const bool insert = call.op == "insert";
    if (!insert && call.op != "update" && call.op != "delete") continue;
    written[call.op + " " + call.table] += insert ? (call.rows > 0 ? 1 : 0) : call.rows;
  }
  record["written"] = written;
  std::ofstream(file) << record.dump(1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace
}  // namespace zeldb_test
