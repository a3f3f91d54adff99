// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "cli/arguments.h"
#include "cli/column.h"
#include "cli/command.h"
#include "cli/components.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/metrics/metrics.h"
#include "cli/parts_diff.h"
#include "cli/settings.h"
#include "cli/slots.h"
#include "cli/snapshot.h"
#include "db/owners.h"
#include "zeldb/firmware.h"
#include "zeldb/status.h"

namespace zeldb::cli::metrics {

namespace {

// The states of a part.
constexpr const char* kStates[] = {"ok", "warning", "critical", "unknown"};

const char* state_of(uint64_t health) {
  switch (tone_of(health_text(health))) {
    case Tone::Good:
      return "ok";
    case Tone::Warning:
      return "warning";
    case Tone::Bad:
      return "critical";
    default:
      return "unknown";
  }
}

class Reader {
 public:
  explicit Reader(const Sources& sources) : sources_(sources) {}

  void parts() {
    const std::vector<Part> parts = read_parts();
    const std::vector<SlotRow> slots = read_slots();
    for (const Part& part : parts) {
      add_info(part, slots);
      add_sizes(part);
    }
    for (const SlotRow& slot : slots) {
      if (slot.Functions != 0)
        add_health("adapter", place_text({slot.Location, slot.SlotNo}), state_of(slot.HealthStatus));
    }
    if (sources_.baseline != nullptr) add_changes(parts);
  }

  void drives() {
    for (const aim_disk_info_t& drive : read_present_drives()) {
      add_health("drive", drive.Location, state_of(drive.HealthStatus));
      if (drive.InfoMask == 0) continue;
      const Labels labels{{"place", drive.Location}};
      metrics_.add("zeldb_drive_temperature_celsius", labels, drive.Temperature);
      if (std::strcmp(drive.MediaType, "HDD") != 0)
        metrics_.add("zeldb_drive_life_left_ratio", labels, drive.RemainLife / 100.0);
    }
  }

  void memory() {
    for (const uint32_t id :
         list_of<_ZELDB_Id_List>("memory", [](auto* list) { return zeldb_get_AEP_memory_list(list); })) {
      _ZELDB_Memory module = {};
      check(zeldb_get_memory_by_id(&module, id), "memory " + std::to_string(id));
      constexpr const char* kHealth[] = {"ok", "warning", "critical", "unknown", "critical"};
      const bool is_known = module.HealthStatus < std::size(kHealth);
      add_health("memory", module.DevLocator, is_known ? kHealth[module.HealthStatus] : "unknown");
    }
  }

  void ports() {
    constexpr double kBytes = 1e6 / 8;  // in a Mbit
    for (const uint32_t key : function_keys()) {
      const auto function = find_function(key);
      if (!function) continue;
      for (const _ZELDB_PhysicalPort& port : list_of<_ZELDB_PhysicalPort_List>(
               "ports of " + key_text(key),
               [&](auto* list) { return zeldb_get_network_physical_port_list(key, list); },
               {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS})) {
        const Labels labels{{"place", place_text({function->Location, function->SlotNo})},
                            {"function", key_text(key)},
                            {"port", std::to_string(port.Idx)}};
        metrics_.add("zeldb_port_up", labels, port.LinkStatus == 1 ? 1 : 0);
        metrics_.add("zeldb_port_speed_bytes_per_second", labels, port.LinkSpeed * kBytes);
      }
    }
  }

  void firmware() {
    for (const _ZELDB_PldmFirmware& component : read_components()) {
      const Labels labels{{"place", place_text({component.Location, component.SlotNo})},
                          {"device", component.DeviceName},
                          {"software", component.SoftwareID}};
      metrics_.add("zeldb_firmware_update_failed", labels, has_failed(component) ? 1 : 0);
      metrics_.add("zeldb_firmware_update_pending", labels, waits(component) ? 1 : 0);
    }
  }

  void settings() {
    size_t count = 0;
    for (const uint32_t key : function_keys()) {
      for (const PCISetting_info& setting : read_settings(key)) {
        if (text_of(setting.CurrentValue) != text_of(setting.PendingValue)) ++count;
      }
    }
    metrics_.add("zeldb_pending_settings", {}, static_cast<double>(count));
  }

  void databases();

  // A section that fails is reported; the others are still read.
  bool section(const char* name, void (Reader::*read)()) {
    bool is_read = true;
    try {
      (this->*read)();
    } catch (const Failure& failure) {
      std::fprintf(stderr, "zeldb: metrics: %s\n", failure.what());
      is_read = false;
    }
    metrics_.add("zeldb_section_up", {{"section", name}}, is_read ? 1 : 0);
    return is_read;
  }

  Metrics take() { return std::move(metrics_); }

 private:
  std::string shown(const char* column, const std::string& text) const {
    return sources_.mask != nullptr ? (*sources_.mask)(column, text) : text;
  }

  void add_info(const Part& part, const std::vector<SlotRow>& slots) {
    const auto slot = std::ranges::find_if(slots, [&](const SlotRow& row) {
      return place_text({row.Location, row.SlotNo}) == part.place;
    });
    const bool is_adapter = part.kind == "adapter" && slot != slots.end();
    metrics_.add("zeldb_part_info",
                 {{"kind", part.kind},
                  {"place", part.place},
                  {"on", part.on},
                  {"pci", is_adapter ? slot->Address : ""},
                  {"card", part.name},
                  {"model", part.model},
                  {"part", part.part_number},
                  {"serial", shown("SerialNo", part.serial_number)},
                  {"firmware", part.firmware},
                  {"mac", shown("PermanentAddress", part.address)}},
                 1);
  }

  void add_sizes(const Part& part) {
    constexpr struct {
      const char* kind;
      const char* size;
      const char* family;
      double factor;
    } kSizes[] = {{"processor", "cores", "zeldb_processor_cores", 1},
                  {"memory", "MiB", "zeldb_memory_size_bytes", 1048576},
                  {"drive", "GB", "zeldb_drive_size_bytes", 1e9}};
    for (const auto& [kind, size, family, factor] : kSizes) {
      const auto known = part.sizes.find(size);
      if (part.kind == kind && known != part.sizes.end())
        metrics_.add(family, {{"place", part.place}}, static_cast<double>(known->second) * factor);
    }
  }

  void add_health(const char* kind, const std::string& place, const char* state) {
    for (const char* other : kStates) {
      metrics_.add("zeldb_part_health", {{"kind", kind}, {"place", place}, {"state", other}},
                   std::strcmp(state, other) == 0 ? 1 : 0);
    }
  }

  void add_changes(const std::vector<Part>& parts) {
    const std::vector<Difference> changes = differences(*sources_.baseline, parts);
    metrics_.add("zeldb_baseline_differences", {}, static_cast<double>(changes.size()));
    for (const Difference& change : changes) {
      metrics_.add("zeldb_part_change",
                   {{"change", change.Change},
                    {"kind", change.Kind},
                    {"place", change.Place},
                    {"serial", shown("SerialNo", change.SerialNo)},
                    {"was", shown("SerialNo", change.PreviousSerialNo)}},
                   1);
    }
  }

  Sources sources_;
  Metrics metrics_;
};

// The tables that zeldb makes; a controller may have more.
constexpr struct {
  const char* database;
  std::initializer_list<const char*> tables;
} kTables[] = {
    {"dmdb",
     {"PCISetting",
      "PCIAdapter",
      "PCIs",
      "PCIMisc",
      "NCSIPackageID",
      "PCINetwork",
      "PCILogicalPort",
      "PCIPhysicalPort",
      "PCIPhysicalPortStat",
      "PCIGPU",
      "PCIGPUChip",
      "VPDs",
      "PldmDeviceFirmware",
      "Firmwares",
      "EmbeddedDeviceFirmware",
      "DPUEvents",
      "Processor",
      "Memory",
      "Disks",
      "RAIDControllers",
      "AimDisks",
      "NVMeDrives",
      "SensorSlotMap"}},
    {"propertiesdb", {"propertiesDCTbl"}},
};

// The one number that a query gives; false without one.
bool ask(const Connection& connection, const std::string& statement, int64_t* number) {
  Result rows;
  return connection.run(statement, rows) == ZELDB_OK && rows.next() &&
         rows.row().read(0, *number) == ZELDB_OK;
}

// The time of the last write to the file, or the files in the folder, that ZEL_DB_URL names; 0 if none.
int64_t newest_file() {
  const char* const url = std::getenv("ZEL_DB_URL");
  const std::string scheme = "sqlite://";
  const std::string known = url != nullptr && *url != '\0' ? url : scheme + "/var/lib/zeldb";
  if (!known.starts_with(scheme)) return 0;
  int64_t newest = 0;
  for (const char* file : {"", "-wal", "/dmdb.sqlite", "/dmdb.sqlite-wal"}) {
    struct stat status = {};
    const bool is_file =
        stat((known.substr(scheme.size()) + file).c_str(), &status) == 0 && S_ISREG(status.st_mode);
    if (is_file) newest = std::max<int64_t>(newest, status.st_mtime);
  }
  return newest;
}

void Reader::databases() {
  for (const auto& [database, tables] : kTables) {
    const Connection connection(database);
    if (!connection) throw Failure(std::string("database ") + database + ": cannot be reached");
    int64_t number = 0;
    for (const char* table : tables) {
      if (!ask(connection, std::string("SELECT count(*) FROM ") + table, &number))
        throw Failure(std::string("table ") + table + ": cannot be read");
      metrics_.add("zeldb_table_rows", {{"table", table}}, static_cast<double>(number));
    }
    if (database != kTables->database) continue;
    if (ask(connection, "SELECT Version FROM ZeldbSchema", &number))
      metrics_.add("zeldb_schema_version", {}, static_cast<double>(number));
    // An export says when it was written; a server knows when a table was changed, as long as it runs.
    number = time_of_snapshot().value_or(0);
    const bool is_told =
        number != 0 || ask(connection,
                           "SELECT UNIX_TIMESTAMP(MAX(UPDATE_TIME)) FROM information_schema.TABLES WHERE "
                           "TABLE_SCHEMA=DATABASE()",
                           &number);
    if (!is_told) number = newest_file();
    if (number != 0)
      metrics_.add("zeldb_inventory_changed_timestamp_seconds", {}, static_cast<double>(number));
  }
}

}  // namespace

Read read_metrics(const Sources& sources) {
  require_inventory("metrics");
  constexpr struct {
    const char* name;
    void (Reader::*read)();
  } kSections[] = {{"parts", &Reader::parts},        {"drives", &Reader::drives},
                   {"memory", &Reader::memory},      {"ports", &Reader::ports},
                   {"firmware", &Reader::firmware},  {"settings", &Reader::settings},
                   {"databases", &Reader::databases}};
  Reader reader(sources);
  bool is_whole = true;
  for (const auto& [name, read] : kSections) is_whole = reader.section(name, read) && is_whole;
  return {reader.take(), is_whole};
}

}  // namespace zeldb::cli::metrics
