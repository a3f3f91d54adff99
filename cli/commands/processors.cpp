// SPDX-License-Identifier: Apache-2.0
#include <iterator>

#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "db/owners.h"
#include "platform/zel_db.h"

namespace zeldb::cli {

namespace {

struct Shown {
  _ZELDB_Processor Record;
  uint32_t CoreCount;
  uint32_t CoreEnabled;
  uint32_t ThreadCount;
};

#define RECORD_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Shown, Record, Member, Heading, Help)
constexpr Column kColumns[] = {
    RECORD_COLUMN(Socket, "SOCKET", "Socket"),
    minor(RECORD_COLUMN(Manufacturer, "MAKER", "Manufacturer")),
    RECORD_COLUMN(Version, "MODEL", "Model and version, as the processor reports it"),
    summed(ZELDB_COLUMN(Shown, CoreCount, "CORES", "Number of cores")),
    summed(ZELDB_COLUMN(Shown, CoreEnabled, "ENABLED", "Cores that are enabled")),
    summed(ZELDB_COLUMN(Shown, ThreadCount, "THREADS", "Threads of all cores")),
    without(RECORD_COLUMN(MaxSpeed, "MAX MHZ", "Highest clock rate in MHz"), 0),
    without(RECORD_COLUMN(CurSpeed, "MHZ", "Clock rate in MHz"), 0),
    minor(RECORD_COLUMN(NodeIndex, "NODE", "Node that it belongs to")),
    extra(RECORD_COLUMN(_id, "ID", "Row of the table")),
    extra(RECORD_COLUMN(ProcId, "CPUID", "Signature and features")),
    extra(RECORD_COLUMN(ProcType, "TYPE", "SMBIOS processor type")),
    extra(RECORD_COLUMN(Family, "FAMILY", "SMBIOS processor family")),
    extra(RECORD_COLUMN(Voltage, "VOLTAGE", "SMBIOS voltage code")),
    extra(without(RECORD_COLUMN(ExtClock, "EXT MHZ", "External clock rate in MHz"), 0)),
    extra(RECORD_COLUMN(Status, "STATUS", "SMBIOS status: bit 6 populated, bits 0 to 2 the state")),
    extra(RECORD_COLUMN(Upgrade, "UPGRADE", "SMBIOS processor upgrade")),
    extra(whole(RECORD_COLUMN(SerialNo, "SERIAL", "Serial number"))),
    extra(whole(RECORD_COLUMN(AssetTag, "ASSET", "Asset tag"))),
    extra(RECORD_COLUMN(PartNo, "PART", "Part number")),
    extra(RECORD_COLUMN(Characteristics, "CHARACTERISTICS", "SMBIOS characteristics, bits")),
    extra(RECORD_COLUMN(L1CacheMaxSize, "L1 MAX",
                        "Largest size of the L1 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L1CacheInstalled, "L1",
                        "Size of the L1 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L1CacheType, "L1 TYPE", "SMBIOS type of the L1 cache")),
    extra(RECORD_COLUMN(L1CacheConfig, "L1 CONFIG", "SMBIOS configuration of the L1 cache")),
    extra(RECORD_COLUMN(L2CacheMaxSize, "L2 MAX",
                        "Largest size of the L2 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L2CacheInstalled, "L2",
                        "Size of the L2 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L2CacheType, "L2 TYPE", "SMBIOS type of the L2 cache")),
    extra(RECORD_COLUMN(L2CacheConfig, "L2 CONFIG", "SMBIOS configuration of the L2 cache")),
    extra(RECORD_COLUMN(L3CacheMaxSize, "L3 MAX",
                        "Largest size of the L3 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L3CacheInstalled, "L3",
                        "Size of the L3 cache in KiB; with bit 15 set, in units of 64 KiB")),
    extra(RECORD_COLUMN(L3CacheType, "L3 TYPE", "SMBIOS type of the L3 cache")),
    extra(RECORD_COLUMN(L3CacheConfig, "L3 CONFIG", "SMBIOS configuration of the L3 cache")),
};
#undef RECORD_COLUMN

std::vector<Shown> read_shown() {
  std::vector<Shown> rows;
  for (const CountedProcessor& processor : read_processors())
    rows.push_back({static_cast<const _ZELDB_Processor&>(processor), processor.CoreCount,
                    processor.CoreEnabled, processor.ThreadCount});
  return rows;
}

void count(CountedProcessor& processor) {
  const _ZELDB_Processor& narrow = processor;
  processor.CoreCount = narrow.CoreCount;
  processor.CoreEnabled = narrow.CoreEnabled;
  processor.ThreadCount = narrow.ThreadCount;
}

// The few that the record cannot hold. A failure is no reason to show no processors.
void count_many(std::vector<CountedProcessor>& processors) {
  constexpr const char* kCounts[] = {"_id", "CoreCount", "CoreEnabled", "ThreadCount"};
  Result rows;
  zel_db_query(get_dmdb_handle(0, nullptr, 0), "Processor", kCounts, std::size(kCounts),
               "CoreCount>255 OR CoreEnabled>255 OR ThreadCount>255", nullptr, 0, nullptr, rows.out());
  while (rows.next()) {
    const zeldb::Row row = rows.row();
    for (CountedProcessor& processor : processors) {
      if (processor._id != row.number(0)) continue;
      row.read(1, processor.CoreCount);
      row.read(2, processor.CoreEnabled);
      row.read(3, processor.ThreadCount);
    }
  }
}

}  // namespace

std::vector<CountedProcessor> read_processors() {
  std::vector<CountedProcessor> processors;
  for (const uint32_t id :
       list_of<_ZELDB_Id_List>("processors", [](auto* list) { return zeldb_get_processor_list(list); })) {
    CountedProcessor processor = {};
    processor._id = id;
    if (!check_found(zeldb_get_processor(&processor), "processor " + std::to_string(id))) continue;
    count(processor);
    processors.push_back(processor);
  }
  if (!processors.empty()) count_many(processors);
  return processors;
}

void setup_processors(CLI::App& app) {
  Listing(app).view(kColumns, read_shown).order({"NodeIndex", "Socket"});
}

}  // namespace zeldb::cli
