// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_Processor;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Socket, "SOCKET", "Place"),
    minor(ZELDB_COLUMN(R, Manufacturer, "MAKER", "Who made it")),
    ZELDB_COLUMN(R, Version, "MODEL", "Model and version, as the processor reports it"),
    summed(ZELDB_COLUMN(R, CoreCount, "CORES", "Number of cores")),
    summed(ZELDB_COLUMN(R, CoreEnabled, "ENABLED", "Cores that are enabled")),
    summed(ZELDB_COLUMN(R, ThreadCount, "THREADS", "Threads of all cores")),
    without(ZELDB_COLUMN(R, MaxSpeed, "MAX MHZ", "Highest clock rate in MHz"), 0),
    without(ZELDB_COLUMN(R, CurSpeed, "MHZ", "Clock rate in MHz"), 0),
    minor(ZELDB_COLUMN(R, NodeIndex, "NODE", "Node that it belongs to")),
    extra(ZELDB_COLUMN(R, _id, "ID", "Row of the table")),
    extra(ZELDB_COLUMN(R, ProcId, "CPUID", "Signature and features")),
    extra(ZELDB_COLUMN(R, ProcType, "TYPE", "SMBIOS processor type")),
    extra(ZELDB_COLUMN(R, Family, "FAMILY", "SMBIOS processor family")),
    extra(ZELDB_COLUMN(R, Voltage, "VOLTAGE", "SMBIOS voltage code")),
    extra(without(ZELDB_COLUMN(R, ExtClock, "EXT MHZ", "External clock rate in MHz"), 0)),
    extra(ZELDB_COLUMN(R, Status, "STATUS", "SMBIOS status: bit 6 populated, bits 0 to 2 the state")),
    extra(ZELDB_COLUMN(R, Upgrade, "UPGRADE", "SMBIOS processor upgrade")),
    extra(whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number"))),
    extra(whole(ZELDB_COLUMN(R, AssetTag, "ASSET", "Asset tag"))),
    extra(ZELDB_COLUMN(R, PartNo, "PART", "Part number")),
    extra(ZELDB_COLUMN(R, Characteristics, "CHARACTERISTICS", "SMBIOS characteristics, bits")),
    extra(ZELDB_COLUMN(R, L1CacheMaxSize, "L1 MAX",
                       "Largest size of the first cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L1CacheInstalled, "L1", "Size of the first cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L1CacheType, "L1 TYPE", "SMBIOS type of the first cache")),
    extra(ZELDB_COLUMN(R, L1CacheConfig, "L1 CONFIG", "SMBIOS configuration of the first cache")),
    extra(ZELDB_COLUMN(R, L2CacheMaxSize, "L2 MAX",
                       "Largest size of the second cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L2CacheInstalled, "L2", "Size of the second cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L2CacheType, "L2 TYPE", "SMBIOS type of the second cache")),
    extra(ZELDB_COLUMN(R, L2CacheConfig, "L2 CONFIG", "SMBIOS configuration of the second cache")),
    extra(ZELDB_COLUMN(R, L3CacheMaxSize, "L3 MAX",
                       "Largest size of the third cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L3CacheInstalled, "L3", "Size of the third cache in KiB, in 64 KiB with bit 15")),
    extra(ZELDB_COLUMN(R, L3CacheType, "L3 TYPE", "SMBIOS type of the third cache")),
    extra(ZELDB_COLUMN(R, L3CacheConfig, "L3 CONFIG", "SMBIOS configuration of the third cache")),
};

}  // namespace

std::vector<_ZELDB_Processor> read_processors() {
  std::vector<R> processors;
  for (const uint32_t id :
       list_of<_ZELDB_Id_List>("processors", [](auto* list) { return zeldb_get_processor_list(list); })) {
    R processor = {};
    processor._id = id;
    if (check_found(zeldb_get_processor(&processor), "processor " + std::to_string(id)))
      processors.push_back(processor);
  }
  return processors;
}

void setup_processors(CLI::App& app) {
  Listing(app).view(kColumns, read_processors).order({"NodeIndex", "Socket"});
}

}  // namespace zeldb::cli
