// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "db/tables.h"
#include "scan/smbios.h"

namespace zeldb::scan {

namespace {

struct Package {
  std::set<uint64_t> cores;
  uint64_t threads = 0;
  std::optional<uint64_t> max_khz;
};

// The first value of a line "name : value".
std::optional<std::string> line_of(const std::string& text, const std::string& name) {
  size_t at = text.find("\n" + name);
  if (at == std::string::npos) return std::nullopt;
  at = text.find(':', at);
  if (at == std::string::npos) return std::nullopt;
  return text.substr(at + 1, text.find('\n', at) - at - 1);
}

}  // namespace

std::vector<Row> read_processors(const Machine& machine) {
  const std::string folder = "sys/devices/system/cpu/";
  std::map<uint64_t, Package> packages;
  for (const std::string& name : machine.names(folder)) {
    if (!name.starts_with("cpu") || name.size() < 4 || std::isdigit(static_cast<unsigned char>(name[3])) == 0)
      continue;
    const auto core = machine.number(folder + name + "/topology/core_id");
    if (!core) continue;
    // The file has -1, which is no number here, if the firmware does not report it.
    Package& package = packages[machine.number(folder + name + "/topology/physical_package_id").value_or(0)];
    package.cores.insert(*core);
    ++package.threads;
    if (const auto khz = machine.number(folder + name + "/cpufreq/cpuinfo_max_freq"))
      package.max_khz = std::max(package.max_khz.value_or(0), *khz);
  }
  const std::string info = "\n" + machine.bytes("proc/cpuinfo", 65536).value_or("");
  std::vector<Row> rows;
  rows.reserve(packages.size());
  for (const auto& [number, package] : packages) {
    Row& row = rows.emplace_back(tables::kProcessors, kSmbios, "package/" + std::to_string(number));
    row.add("Manufacturer", value_of(line_of(info, "vendor_id")));
    row.add("Version", value_of(line_of(info, "model name")));
    row.add("MaxSpeed", package.max_khz ? Value(*package.max_khz / 1000) : Value());
    row.add("CoreCount", uint64_t{package.cores.size()});
    row.add("ThreadCount", package.threads);
  }
  return rows;
}

}  // namespace zeldb::scan
