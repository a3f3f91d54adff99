// SPDX-License-Identifier: Apache-2.0
#include <set>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/condition.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"
#include "platform/zel_db.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_Memory;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, SlotNo, "SLOT", "Number of the slot"),
    ZELDB_COLUMN(R, DevLocator, "LOCATOR", "Name of the slot"),
    minor(ZELDB_COLUMN(R, BankLocator, "BANK", "Name of the bank")),
    summed(ZELDB_COLUMN(R, MemSize, "MIB", "Size in MiB")),
    without(ZELDB_COLUMN(R, ClockSpeed, "MT/S", "Configured speed in MT/s"), 0),
    ZELDB_COLUMN(R, Manufacturer, "MAKER", "Manufacturer"),
    ZELDB_COLUMN(R, PartNo, "PART", "Part number"),
    whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number")),
    extra(ZELDB_COLUMN(R, _id, "ID", "Row of the table")),
    extra(ZELDB_COLUMN(R, ArrayId, "ARRAY", "Array that the slot belongs to")),
    extra(without(ZELDB_COLUMN(R, TotalWidth, "TOTAL BITS", "Width with error correction, in bits"), 0)),
    extra(without(ZELDB_COLUMN(R, DataWidth, "DATA BITS", "Width of the data, in bits"), 0)),
    extra(ZELDB_COLUMN(R, FormFactor, "FORM", "SMBIOS form factor")),
    extra(in_words(ZELDB_COLUMN(R, MemType, "TYPE", "SMBIOS memory type"), memory_type_word)),
    extra(ZELDB_COLUMN(R, TypeDetail, "DETAIL", "SMBIOS type detail, bits; 4096 is non-volatile")),
    extra(without(ZELDB_COLUMN(R, MaxSpeed, "MAX MT/S", "Highest speed in MT/s"), 0)),
    extra(whole(ZELDB_COLUMN(R, AssetTag, "ASSET", "Asset tag"))),
    extra(ZELDB_COLUMN(R, Attributes, "ATTRIBUTES", "SMBIOS attributes: ranks")),
    extra(ZELDB_COLUMN(R, NodeIndex, "NODE", "Node that it belongs to")),
};

struct Persistent {
  R Module;
  char HealthStatusText[33];
  char SecurityStateText[33];
  char FIPSModeText[33];
};

#define MODULE_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Persistent, Module, Member, Heading, Help)
constexpr Column kPersistentColumns[] = {
    MODULE_COLUMN(SlotNo, "SLOT", "Number of the slot"),
    MODULE_COLUMN(DevLocator, "LOCATOR", "Name of the slot"),
    MODULE_COLUMN(PartNo, "PART", "Part number"),
    whole(MODULE_COLUMN(SerialNo, "SERIAL", "Serial number")),
    whole(MODULE_COLUMN(FirmwareVersion, "FIRMWARE", "Version of its firmware")),
    MODULE_COLUMN(Capacity, "BYTES", "Raw capacity in bytes"),
    MODULE_COLUMN(RemainingLife, "LIFE %", "Remaining life in percent"),
    health(ZELDB_COLUMN(Persistent, HealthStatusText, "HEALTH", "Health in words")),
    ZELDB_COLUMN(Persistent, SecurityStateText, "SECURITY", "Security state in words"),
    extra(ZELDB_COLUMN(Persistent, FIPSModeText, "FIPS", "FIPS mode in words")),
    extra(MODULE_COLUMN(_id, "ID", "Row of the table")),
    extra(MODULE_COLUMN(MemCapacity, "MEMORY", "Bytes in memory mode")),
    extra(MODULE_COLUMN(AppDirCap, "APP DIRECT", "Bytes in app-direct mode")),
    extra(MODULE_COLUMN(UnconfigCap, "UNCONFIGURED", "Bytes that are not configured")),
    extra(MODULE_COLUMN(InaccCap, "INACCESSIBLE", "Bytes that are not accessible")),
    extra(MODULE_COLUMN(ReservedCap, "RESERVED", "Bytes that are reserved")),
    extra(MODULE_COLUMN(Classification, "CLASS", "Classification")),
    extra(MODULE_COLUMN(SecurityState, "SECURITY CODE", "Security state, bits")),
    extra(MODULE_COLUMN(HealthStatus, "HEALTH CODE", "Health: 0 normal, 1 noncritical, 2 critical, 4 fatal")),
    extra(MODULE_COLUMN(HealthStatusReason, "REASON", "Reasons for the health status, bits")),
    extra(MODULE_COLUMN(AlarmTrips, "ALARMS", "Alarms that have tripped, bits")),
    extra(MODULE_COLUMN(LDShutdownCount, "DIRTY", "Dirty shutdowns")),
    extra(MODULE_COLUMN(LLShutdownStatus, "SHUTDOWN", "Status of the last shutdown, bits")),
    extra(MODULE_COLUMN(AITDRAMStatus, "AIT DRAM", "Status of the DRAM of the address table")),
    extra(MODULE_COLUMN(FIPSMode, "FIPS CODE", "FIPS mode")),
    extra(MODULE_COLUMN(InfoMask, "INFO", "Values that are known, bits")),
    extra(MODULE_COLUMN(CPUIndex, "CPU", "Processor")),
    extra(MODULE_COLUMN(iMCNum, "IMC", "Memory controller of the processor")),
    extra(MODULE_COLUMN(ChannelNum, "CHANNEL", "Channel of the controller")),
    extra(MODULE_COLUMN(DimmNum, "DIMM", "Position on the channel")),
    extra(MODULE_COLUMN(SoftwareID, "SOFTWARE", "Id of the firmware for updates")),
};
#undef MODULE_COLUMN

struct SlotHealth {
  uint16_t SlotNo;
  uint32_t MajorHealth;
  uint32_t MinorHealth;
  uint32_t RepairStatus;
};

constexpr Column kHealthColumns[] = {
    ZELDB_COLUMN(SlotHealth, SlotNo, "SLOT", "Number of the slot"),
    ZELDB_COLUMN(SlotHealth, MajorHealth, "MAJOR", "Major health code"),
    ZELDB_COLUMN(SlotHealth, MinorHealth, "MINOR", "Minor health code"),
    ZELDB_COLUMN(SlotHealth, RepairStatus, "REPAIR", "Status of a repair"),
};

struct Options {
  Number slot;
  std::string where;
  Number value;
};

template <typename Read>
std::vector<R> modules_of(Read read_ids) {
  std::vector<R> modules;
  for (const uint32_t id : list_of<_ZELDB_Id_List>("memory", read_ids)) {
    R module = {};
    if (check_found(zeldb_get_memory_by_id(&module, id), "memory " + std::to_string(id)))
      modules.push_back(module);
  }
  return modules;
}

std::vector<R> read_chosen(const Options& options) {
  R module = {};
  if (options.slot) {
    const std::string what = "memory slot " + std::to_string(*options.slot);
    check(zeldb_get_memory_by_slot(&module, static_cast<int32_t>(*options.slot)), what);
    return {module};
  }
  if (options.where.empty()) return read_memory();
  constexpr uint32_t kUnsigned = 3;
  const _zel_db_param_t value{
      .Type = kUnsigned, .Reserved = 0, .Count = 1, .Value = options.value.value_or(0)};
  return read_where(options.where, "Memory", kColumns, [&] {
    check(zeldb_get_memory_with_filter(&module, options.where.c_str(), &value), "memory");
    return std::vector<R>{module};
  });
}

std::vector<R> read_high_bandwidth() {
  return modules_of([](auto* list) { return zeldb_get_HBM_memory_list(list); });
}

std::vector<Persistent> read_persistent() {
  std::vector<Persistent> rows;
  for (const R& module : modules_of([](auto* list) { return zeldb_get_AEP_memory_list(list); })) {
    Persistent& row = rows.emplace_back();
    row.Module = module;
    bps_format_hstate_str(module.HealthStatus, row.HealthStatusText, sizeof(row.HealthStatusText));
    bps_format_security_str(module.SecurityState, row.SecurityStateText, sizeof(row.SecurityStateText));
    bps_format_fips_str(module.FIPSMode, row.FIPSModeText, sizeof(row.FIPSModeText));
  }
  return rows;
}

std::vector<SlotHealth> read_health(const Options& options) {
  std::vector<SlotHealth> rows;
  std::set<uint16_t> seen;
  for (const R& module : read_chosen(options)) {
    if (!seen.insert(module.SlotNo).second) continue;
    SlotHealth row{.SlotNo = module.SlotNo, .MajorHealth = 0, .MinorHealth = 0, .RepairStatus = 0};
    const int status =
        zeldb_get_mpfa_health_by_slot(row.SlotNo, &row.MajorHealth, &row.MinorHealth, &row.RepairStatus);
    if (check_found(status, "memory slot " + std::to_string(row.SlotNo))) rows.push_back(row);
  }
  return rows;
}

}  // namespace

std::vector<_ZELDB_Memory> read_memory() {
  static const auto modules = modules_of([](auto* list) { return zeldb_get_memory_list(list); });
  return modules;
}

void setup_memory(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* slot = add_number(app, "--slot", options->slot, "N", "The module in this slot");
  CLI::Option* where = add_text(app, "--where", options->where, "CONDITION",
                                "The first module for which an SQL condition with one ? holds");
  need(add_number(app, "--value", options->value, "N", "The value of the ?"), where);
  exclude_each_other({slot, where});
  Listing(app)
      .view(kColumns, [options] { return read_chosen(*options); })
      .order({"DevLocator"})
      .view("--hbm", "High-bandwidth memory of the processors", kColumns, read_high_bandwidth)
      .order({"DevLocator"})
      .without({slot, where})
      .view("--persistent", "Persistent memory", kPersistentColumns, read_persistent)
      .order({"DevLocator"})
      .without({slot, where})
      .view("--health", "Health codes by slot", kHealthColumns, [options] { return read_health(*options); })
      .order({"SlotNo"});
}

}  // namespace zeldb::cli
