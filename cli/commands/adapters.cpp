// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/condition.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_PCI_Adapter;
using Ncsi = _ZELDB_NCSI_Id;

constexpr Column kColumns[] = {
    hex(ZELDB_COLUMN(R, PCIKey, "ADAPTER", "Key of the adapter")),
    ZELDB_COLUMN(R, Location, "LOC", "0 on the system board, 1 an add-in slot"),
    ZELDB_COLUMN(R, SlotNo, "SLOT", "Number of the slot"),
    ZELDB_COLUMN(R, CardName, "CARD", "Name of the adapter"),
    ZELDB_COLUMN(R, ConnectorTypeText, "CONNECTOR", "Connector or slot type in words"),
    health(ZELDB_COLUMN(R, HealthStatus, "HEALTH", "Health of the adapter")),
    ZELDB_COLUMN(R, AIMSupported, "AIM", "0 known without settings, 1 to 3 supported"),
    extra(ZELDB_COLUMN(R, ConnectorType, "CONNECTOR CODE", "Code of the connector or slot type")),
    extra(ZELDB_COLUMN(R, NodeNo, "NODE", "Node that it belongs to")),
    extra(ZELDB_COLUMN(R, SegNo, "SEGMENT", "PCI segment")),
    extra(ZELDB_COLUMN(R, BusNo, "BUS", "PCI bus")),
    extra(ZELDB_COLUMN(R, DeviceNo, "DEV", "PCI device")),
    extra(in_words(ZELDB_COLUMN(R, NCSIPresent, "NC-SI", "1 if the slot has NC-SI packages"), yes_or_no)),
    extra(without(ZELDB_COLUMN(R, PackageID1, "PACKAGE 1", "First NC-SI package; 255: none"), 255)),
    extra(without(ZELDB_COLUMN(R, PackageID2, "PACKAGE 2", "Second NC-SI package; 255: none"), 255)),
};

constexpr Column kNcsiColumns[] = {
    ZELDB_COLUMN(Ncsi, Location, "LOC", "0 on the system board, 1 an add-in slot"),
    ZELDB_COLUMN(Ncsi, SlotNo, "SLOT", "Number of the slot"),
    without(ZELDB_COLUMN(Ncsi, PackageID1, "PACKAGE 1", "First NC-SI package; 255: none"), 255),
    without(ZELDB_COLUMN(Ncsi, PackageID2, "PACKAGE 2", "Second NC-SI package; 255: none"), 255),
};

constexpr size_t kLongestCondition = 112;

struct Options {
  std::optional<Place> slot;
  std::string where;
  bool dpus = false;
};

std::vector<R> those_of(const std::vector<R>& adapters, const std::vector<uint32_t>& keys) {
  std::vector<R> chosen;
  std::ranges::copy_if(adapters, std::back_inserter(chosen), [&keys](const R& adapter) {
    return std::ranges::find(keys, adapter.PCIKey) != keys.end();
  });
  return chosen;
}

uint32_t key_of(const Place& slot) {
  const std::string what = "slot " + place_text(slot);
  require_inventory(what);
  uint32_t key = 0;
  const int status = zeldb_get_adapter_pcikey_by_slotNo(slot.location, slot.number, &key);
  check(status == ZELDB_NO_HANDLE ? ZELDB_NO_MATCH : status, what);
  return key;
}

std::vector<R> read_adapters(Options& options) {
  if (options.where.size() > kLongestCondition) throw WrongUse("--where: more than 112 characters");
  std::vector<R> adapters = all_adapters();
  if (options.slot) {
    auto chosen = those_of(adapters, {key_of(*options.slot)});
    if (chosen.empty()) fail_not_found("slot " + place_text(*options.slot));
    return chosen;
  }
  if (options.dpus) {
    return those_of(adapters, list_of<_ZELDB_PCI_FunKey_List>(
                                  "DPUs", [](auto* list) { return zeldb_get_dpu_keys(list); }));
  }
  if (options.where.empty()) return adapters;
  const auto read_keys = [&options] {
    return list_of<_ZELDB_PCI_FunKey_List>(
        "adapters", [&options](auto* list) { return zeldb_get_pci_keys(list, options.where.data()); });
  };
  return those_of(adapters, read_where(options.where, "PCIs", kColumns, read_keys));
}

std::vector<Ncsi> read_ncsi(const Options& options) {
  if (!options.slot)
    return list_of<_ZELDB_NCSI_Id_List>("NC-SI packages",
                                        [](auto* list) { return zeldb_get_ncsi_id_list(list); });
  const std::string what = "NC-SI packages of slot " + place_text(*options.slot);
  require_inventory(what);
  Ncsi row{.SlotNo = static_cast<uint16_t>(options.slot->number),
           .Location = static_cast<uint8_t>(options.slot->location),
           .Reserved = 0,
           .PackageID1 = 0xFF,
           .PackageID2 = 0xFF};
  const int status = zeldb_get_ncsi_id_by_slotNo(options.slot->location, options.slot->number,
                                                 &row.PackageID1, &row.PackageID2);
  check(status == ZELDB_NO_HANDLE ? ZELDB_NO_MATCH : status, what);
  return {row};
}

}  // namespace

void setup_adapters(CLI::App& app) {
  auto options = std::make_shared<Options>();
  const std::vector<CLI::Option*> choices{
      add_place(app, "--slot", options->slot, "The adapter in this slot"),
      add_flag(app, "--dpus", options->dpus, "Data processing units"),
      add_text(app, "--where", options->where, "CONDITION",
               "Adapters with a function that an SQL condition on PCIs selects"),
  };
  exclude_each_other(choices);
  Listing(app)
      .view(kColumns, [options] { return read_adapters(*options); })
      .order({"Location", "SlotNo"})
      .view("--ncsi", "NC-SI packages of slots", kNcsiColumns, [options] { return read_ncsi(*options); })
      .order({"Location", "SlotNo"})
      .without({choices.begin() + 1, choices.end()});
}

}  // namespace zeldb::cli
