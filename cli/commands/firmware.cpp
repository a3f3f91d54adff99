// SPDX-License-Identifier: Apache-2.0
#include "zeldb/firmware.h"

#include <algorithm>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/condition.h"
#include "cli/firmware_rows.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_PldmFirmware;
using List = _ZELDB_PldmFirmware_List;

#define COMPONENT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(FirmwareRow, Component, Member, Heading, Help)
constexpr Column kColumns[] = {
    without(COMPONENT_COLUMN(Location, "LOC",
                             "0 on the system board, 1 in a slot, 2 to 4 in a bay as drives are; 255: none"),
            kNoLocation),
    without(COMPONENT_COLUMN(SlotNo, "SLOT", "Number of the slot or bay; 65535: none"), kNoSlot),
    minor(ZELDB_COLUMN(FirmwareRow, Kind, "KIND",
                       "component (updated by PLDM), adapter, drive, embedded or memory")),
    COMPONENT_COLUMN(DeviceName, "DEVICE", "Name of the device"),
    minor(whole(ZELDB_COLUMN(FirmwareRow, SoftwareID, "SOFTWARE", "Id of the component for updates"))),
    whole(COMPONENT_COLUMN(VersionString, "VERSION", "Running version")),
    whole(COMPONENT_COLUMN(PendingVersionString, "PENDING", "Version that waits for its activation")),
    COMPONENT_COLUMN(UpdateErrString, "ERROR", "Error text of a failed update"),
    extra(COMPONENT_COLUMN(DeviceType, "TYPE", "Kind of device")),
    extra(hex(COMPONENT_COLUMN(PCIKey, "ADAPTER", "Key of the adapter"))),
    extra(hex(COMPONENT_COLUMN(PCIFuncKey, "FUNCTION", "Key of the function"))),
    extra(COMPONENT_COLUMN(Manufacture, "MAKER", "Manufacturer")),
    extra(COMPONENT_COLUMN(PkgVersionString, "PACKAGE", "Version of the update package")),
    extra(COMPONENT_COLUMN(ReleaseDate, "RELEASED", "Release date of the running version")),
    extra(COMPONENT_COLUMN(PendingReleaseDate, "PENDING RELEASED", "Release date of the pending version")),
    extra(in_words(COMPONENT_COLUMN(UpdateSupport, "UPDATABLE", "0: cannot be updated"), yes_or_no)),
    extra(in_words(COMPONENT_COLUMN(Updated, "UPDATED", "Not 0 after an update"), yes_or_no)),
    extra(COMPONENT_COLUMN(UpdateMethod, "METHOD", "Update methods, bits")),
    extra(COMPONENT_COLUMN(UpdateAuxInfo, "AUX", "Further information from an update")),
    extra(without(COMPONENT_COLUMN(UpdateErrCode, "ERROR CODE", "0: no error"), 0)),
    extra(in_words(without(COMPONENT_COLUMN(Status, "STATUS", "2: an update waits for its activation"), 0),
                   update_status_word)),
};
#undef COMPONENT_COLUMN

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

R read_component(const Options& options) {
  R component = {};
  check(zeldb_get_pldm_firmware(options.slot->location, options.slot->number, &component,
                                options.device->first, options.device->second),
        "firmware of slot " + place_text(*options.slot));
  return component;
}

int read_list(const Options& options, List* list) {
  if (!options.where.empty()) return zeldb_get_filtered_pldm_firmware_list(list, options.where.c_str());
  for (size_t chosen = 0; chosen < std::size(kLists); ++chosen) {
    if (options.lists[chosen]) return kLists[chosen].read(list);
  }
  return zeldb_get_pldm_firmware_list(list);
}

std::vector<FirmwareRow> read_components(const Options& options) {
  std::vector<FirmwareRow> rows;
  for (const R& component : list_of<List>("firmware", [&](List* list) { return read_list(options, list); }))
    rows.push_back(firmware_of_component(component));
  return rows;
}

std::vector<FirmwareRow> read_place(const Place& place) {
  std::vector<FirmwareRow> rows = read_all_firmware();
  std::erase_if(rows, [&place](const FirmwareRow& row) {
    return row.Component.Location != place.location || row.Component.SlotNo != place.number;
  });
  if (rows.empty()) require_slot(place);
  return rows;
}

std::vector<FirmwareRow> read_firmware(const Options& options) {
  if (options.device) return {firmware_of_component(read_component(options))};
  if (options.slot) return read_place(*options.slot);
  if (!options.where.empty()) {
    return read_where(options.where, "PldmDeviceFirmware", kColumns,
                      [&options] { return read_components(options); });
  }
  const bool is_list = std::ranges::find(options.lists, true) != std::end(options.lists);
  return is_list ? read_components(options) : read_all_firmware();
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
  CLI::Option* slot = add_place(app, "--slot", options->slot, "All firmware in this slot or bay");
  std::vector<CLI::Option*> choices{slot, add_text(app, "--where", options->where, "CONDITION",
                                                   "Components that an SQL condition selects")};
  for (size_t list = 0; list < std::size(kLists); ++list)
    choices.push_back(add_flag(app, kLists[list].option, options->lists[list], kLists[list].help));
  exclude_each_other(choices);
  need(add_hex_pair(app, "--device", options->device, "BUS:DEV",
                    "With --slot: the component of this device (hexadecimal)"),
       slot);
  Listing(app)
      .view(kColumns, [options] { return read_firmware(*options); })
      .order({"Location", "SlotNo"})
      .view("--downstream", "Ids of the disks behind the RAID controller in --slot", kDownstreamColumns,
            [options] { return read_downstream(*options); })
      .without({choices.begin() + 1, choices.end()});
}

}  // namespace zeldb::cli
