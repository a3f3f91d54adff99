// SPDX-License-Identifier: Apache-2.0
#include "zeldb/firmware.h"

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_PldmFirmware;
using List = _ZELDB_PldmFirmware_List;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Location, "LOC", "0 on the system board, 1 in a slot"),
    ZELDB_COLUMN(R, SlotNo, "SLOT", "Number of the slot"),
    ZELDB_COLUMN(R, DeviceName, "DEVICE", "Name of the device"),
    minor(whole(ZELDB_COLUMN(R, SoftwareID, "SOFTWARE", "Id of the component for updates"))),
    whole(ZELDB_COLUMN(R, VersionString, "VERSION", "Running version")),
    whole(ZELDB_COLUMN(R, PendingVersionString, "PENDING", "Version that waits for its activation")),
    ZELDB_COLUMN(R, UpdateErrString, "ERROR", "Why an update failed"),
    extra(ZELDB_COLUMN(R, DeviceType, "TYPE", "Kind of device")),
    extra(hex(ZELDB_COLUMN(R, PCIKey, "ADAPTER", "Key of the adapter"))),
    extra(hex(ZELDB_COLUMN(R, PCIFuncKey, "FUNCTION", "Key of the function"))),
    extra(ZELDB_COLUMN(R, Manufacture, "MAKER", "Who made it")),
    extra(ZELDB_COLUMN(R, PkgVersionString, "PACKAGE", "Version of the update package")),
    extra(ZELDB_COLUMN(R, ReleaseDate, "RELEASED", "When the version was released")),
    extra(ZELDB_COLUMN(R, PendingReleaseDate, "PENDING RELEASED", "When the waiting version was released")),
    extra(in_words(ZELDB_COLUMN(R, UpdateSupport, "UPDATABLE", "0: cannot be updated"), yes_or_no)),
    extra(in_words(ZELDB_COLUMN(R, Updated, "UPDATED", "Not 0 after an update"), yes_or_no)),
    extra(ZELDB_COLUMN(R, UpdateMethod, "METHOD", "How it is updated, bits")),
    extra(ZELDB_COLUMN(R, UpdateAuxInfo, "AUX", "Further information from an update")),
    extra(without(ZELDB_COLUMN(R, UpdateErrCode, "ERROR CODE", "0: no error"), 0)),
    extra(in_words(without(ZELDB_COLUMN(R, Status, "STATUS", "2: an update waits for its activation"), 0),
                   update_status_word)),
};

// The part number of a disk that a controller has.
struct Downstream {
  char SoftwareID[32];
};
constexpr Column kDownstreamColumns[] = {
    ZELDB_COLUMN(Downstream, SoftwareID, "SOFTWARE", "Id of the device for updates: its part number"),
};
constexpr int kMostDownstream = 256;

// Options that choose one of the library's lists.
constexpr struct {
  const char* option;
  const char* help;
  int (*read)(List*);
} kLists[] = {
    {"--pending", "Components with an update that waits for its activation",
     zeldb_get_pldm_firmware_pending_list},
    {"--updated", "Components that have been through an update", zeldb_get_pldm_firmware_updated_list},
    {"--failed", "Components whose update failed", zeldb_get_pldm_firmware_update_failure_list},
    {"--succeeded", "Components whose update succeeded", zeldb_get_pldm_firmware_update_success_list},
    {"--onboard-raid", "Components of the on-board storage controllers",
     zeldb_get_pldm_firmware_marvell_ctrl_list},
};

struct Options {
  bool lists[std::size(kLists)] = {};
  std::optional<Place> slot;
  std::optional<HexPair> device;
  std::string where;
};

std::vector<R> read_component(const Options& options) {
  constexpr HexPair kAnyDevice{-1, -1};
  const auto [bus, device] = options.device.value_or(kAnyDevice);
  R component = {};
  const int status =
      zeldb_get_pldm_firmware(options.slot->location, options.slot->number, &component, bus, device);
  check(status, "firmware of slot " + place_text(*options.slot));
  return {component};
}

int read_list(const Options& options, List* list) {
  if (!options.where.empty()) return zeldb_get_filtered_pldm_firmware_list(list, options.where.c_str());
  for (size_t chosen = 0; chosen < std::size(kLists); ++chosen) {
    if (options.lists[chosen]) return kLists[chosen].read(list);
  }
  return zeldb_get_pldm_firmware_list(list);
}

std::vector<R> read_components(const Options& options) {
  if (options.slot) return read_component(options);
  return list_of<List>("firmware", [&](List* list) { return read_list(options, list); });
}

std::vector<Downstream> read_downstream(const Options& options) {
  if (!options.slot) throw WrongUse("--downstream: needs --slot");
  const std::string what = "devices behind slot " + place_text(*options.slot);
  require_inventory(what);
  char ids[kMostDownstream][32] = {};
  int count = kMostDownstream;
  check(zeldb_get_pldm_downstream_software_ids(options.slot->location, options.slot->number, ids, &count),
        what);
  if (count == 0) require_slot(*options.slot);
  std::vector<Downstream> rows(static_cast<size_t>(count));
  for (size_t row = 0; row < rows.size(); ++row) copy_text(rows[row].SoftwareID, ids[row]);
  return rows;
}

}  // namespace

void setup_firmware(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* slot =
      add_place(app, "--slot", options->slot, "The component of this slot that can be updated");
  std::vector<CLI::Option*> choices{slot, add_text(app, "--where", options->where, "CONDITION",
                                                   "Components that an SQL condition selects")};
  for (size_t list = 0; list < std::size(kLists); ++list)
    choices.push_back(add_flag(app, kLists[list].option, options->lists[list], kLists[list].help));
  exclude_each_other(choices);
  need(add_hex_pair(app, "--device", options->device, "BUS:DEV",
                    "With --slot: the component of this device (hexadecimal)"),
       slot);
  Listing(app)
      .view(kColumns, [options] { return read_components(*options); })
      .view("--downstream", "Ids of the disks behind the RAID controller in --slot", kDownstreamColumns,
            [options] { return read_downstream(*options); })
      .without({choices.begin() + 1, choices.end()});
}

}  // namespace zeldb::cli
