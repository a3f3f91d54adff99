// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <optional>
#include <utility>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/condition.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

using R = aim_disk_info_t;
using List = aim_disk_list_t;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Location, "LOCATION", "Slot or bay"),
    minor(ZELDB_COLUMN(R, DriveType, "TYPE", "Type of drive")),
    minor(ZELDB_COLUMN(R, MediaType, "MEDIUM", "SSD or HDD")),
    ZELDB_COLUMN(R, Capacity, "SIZE", "Capacity"),
    ZELDB_COLUMN(R, Model, "MODEL", "Model"),
    whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number")),
    whole(ZELDB_COLUMN(R, FwVersion, "FIRMWARE", "Version of its firmware")),
    health(
        ZELDB_COLUMN(R, HealthStatus, "HEALTH",
                     "Health; 2 also without a sensor; of drives that a scan has found, their own report")),
    minor(without(ZELDB_COLUMN(R, Temperature, "CELSIUS", "Temperature in degrees Celsius"), 0)),
    minor(only_if(ZELDB_COLUMN(R, RemainLife, "LIFE %", "Remaining life in percent"), "!RotationRate")),
    extra(
        hex(ZELDB_COLUMN(R, PCIFuncKey, "FUNCTION", "Key of its function, or of its controller's function"))),
    extra(in_words(
        ZELDB_COLUMN(R, LocationId, "PLACE", "Kind of place: 1 slot, 2 backplane bay, 3 M.2 bay, 4 7 mm bay"),
        place_word)),
    extra(ZELDB_COLUMN(R, BayNo, "BAY", "Number of the place")),
    extra(ZELDB_COLUMN(R, SlotNo, "SLOT", "Slot of the controller")),
    extra(ZELDB_COLUMN(R, CtrlType, "CONTROLLER", "3: behind an on-board controller")),
    extra(ZELDB_COLUMN(R, DriveTypeId, "TYPE CODE", "Code of the type of drive")),
    extra(in_words(ZELDB_COLUMN(R, FormFactor, "FORM", "Form factor: 16 bay, 32 card, 48 M.2, 80 EDSFF"),
                   drive_form_word)),
    extra(without(ZELDB_COLUMN(R, RotationRate, "RPM", "Revolutions per minute; 0 for an SSD"), 0)),
    extra(ZELDB_COLUMN(R, Manufacture, "MAKER", "Manufacturer")),
    extra(ZELDB_COLUMN(R, PartNo, "PART", "Part number")),
    extra(ZELDB_COLUMN(R, FruNo, "FRU", "FRU number, for a replacement")),
    extra(whole(ZELDB_COLUMN(R, UUID, "UUID", "Universally unique id"))),
    extra(ZELDB_COLUMN(R, SFlags, "FLAGS", "Status flags, bits")),
    extra(ZELDB_COLUMN(R, Warning, "WARNING", "Warnings, bits")),
    extra(ZELDB_COLUMN(R, InfoMask, "INFO", "Values that are known, bits")),
};

struct Controller {
  uint8_t SlotNo;
  uint32_t FunKey;
};
constexpr Column kControllerColumns[] = {
    ZELDB_COLUMN(Controller, SlotNo, "SLOT", "Number of the slot"),
    hex(ZELDB_COLUMN(Controller, FunKey, "FUNCTION", "Key of the function")),
};
constexpr uint32_t kMostControllers = 255;

struct Options {
  std::string bay;
  std::string table;
  std::string where;
  bool present = false;
  bool unlisted = false;
  Number controller;
  std::optional<Place> place;
  std::optional<Place> slot;
  Key function;
};

// The library's lists, by the kind of bay.
constexpr struct {
  const char* bay;
  int (*read)(List* list, uint32_t exclude);
} kBays[] = {
    {"m2", zeldb_get_m2_disk_list},
    {"7mm", zeldb_get_7mm_disk_list},
    {"slot", [](List* list, uint32_t) { return zeldb_get_u2_aic_nvme_disk_list(list); }},
    {"sata", [](List* list, uint32_t) { return zeldb_get_onboard_sata_disk_list(list); }},
};

int read_bay(const Options& options, List* list) {
  for (const auto& [bay, read] : kBays) {
    if (options.bay == bay) return read(list, options.unlisted ? 1 : 0);
  }
  return ZELDB_INVALID_ARGUMENT;
}

std::vector<R> read_place(const Place& place) {
  R disk = {};
  const int status = zeldb_get_nvme_aim_disk(place.location, static_cast<uint32_t>(place.number), &disk);
  check(status == ZELDB_INVALID_ARGUMENT ? ZELDB_NO_MATCH : status, "drive " + place_text(place));
  return {disk};
}

std::vector<Controller> read_controllers() {
  uint8_t slots[kMostControllers] = {};
  uint32_t keys[kMostControllers] = {};
  uint32_t count = kMostControllers;
  check(zeldb_get_marvell_ctrl_slots(slots, keys, &count), "storage controllers");
  std::vector<Controller> rows;
  for (uint32_t row = 0; row < count; ++row) rows.push_back({slots[row], keys[row]});
  return rows;
}

std::vector<R> read_behind(uint32_t slot) {
  auto drives = list_of<List>(
      "drives", [&](List* list) { return zeldb_get_mv_disk_list(static_cast<int>(slot), list); });
  const auto is_it = [slot](const Controller& controller) { return controller.SlotNo == slot; };
  if (drives.empty() && std::ranges::none_of(read_controllers(), is_it))
    fail_not_found("controller in slot " + std::to_string(slot));
  return drives;
}

std::vector<R> read_table(const std::string& table, const char* where) {
  return list_of<List>("drives", [&](List* list) {
    return table == "aim" ? zeldb_get_disk_list_with_filter(list, where)
                          : zeldb_get_nvme_disk_list_from_mi_filter(list, where);
  });
}

// Reads the drives in a slot or bay, and those that its functions control.
std::vector<R> read_slot(const Place& slot) {
  const std::vector<uint32_t> functions = functions_in_slot(slot);
  std::vector<R> drives = read_drives();
  std::erase_if(drives, [&](const R& drive) {
    const bool is_here = drive.LocationId == slot.location && drive.BayNo == slot.number;
    return !is_here && std::ranges::find(functions, drive.PCIFuncKey) == functions.end();
  });
  if (drives.empty()) require_slot(slot);
  return drives;
}

// Nothing if all drives are asked for.
std::optional<std::vector<R>> read_chosen(const Options& options) {
  const char* const where = options.where.empty() ? nullptr : options.where.c_str();
  require_inventory("drives");
  if (options.place) return read_place(*options.place);
  if (options.slot) return read_slot(*options.slot);
  if (!options.bay.empty())
    return list_of<List>("drives", [&](List* list) { return read_bay(options, list); });
  if (where != nullptr)
    return read_where(options.where, options.table == "aim" ? "AimDisks" : "NVMeDrives", kColumns,
                      [&] { return read_table(options.table, where); });
  if (!options.table.empty()) return read_table(options.table, where);
  if (options.present) return list_of<List>("drives", [](List* list) { return zeldb_get_disk_list(list); });
  if (options.controller) return read_behind(*options.controller);
  if (options.function) {
    auto drives = list_of<List>(
        "drives", [&](List* list) { return zeldb_get_disk_list_funkey(*options.function, list); },
        {ZELDB_NO_MATCH});
    if (drives.empty()) read_function(*options.function);  // throws if it is not there
    return drives;
  }
  return std::nullopt;
}

std::vector<R> read_disks(const Options& options) {
  auto chosen = read_chosen(options);
  if (!chosen) return read_drives();
  settle_health(*chosen);
  return std::move(*chosen);
}

}  // namespace

void setup_disks(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* bay = add_choice(app, "--bay", options->bay, {"m2", "7mm", "slot", "sata"},
                                "Drives in M.2 or 7 mm bays; NVMe drives in backplane bays and slots; SATA "
                                "drives on the board");
  CLI::Option* table = add_choice(app, "--table", options->table, {"aim", "nvme"},
                                  "Drives in one table: of the agent (aim) or of the NVMe service (nvme)");
  const std::vector<CLI::Option*> choices{
      bay,
      table,
      add_flag(app, "--present", options->present, "Drives that the agent sees"),
      add_number(app, "--controller", options->controller, "SLOT",
                 "Drives behind the controller in this slot"),
      add_place(app, "--place", options->place,
                "The NVMe drive in a slot (1:N), backplane bay (2:N) or M.2 bay (3:N)"),
      add_place(app, "--slot", options->slot, "Drives in this slot or bay, or behind its functions"),
      add_key(app, "--key", options->function, "Drives with this function key"),
  };
  exclude_each_other(choices);
  need(add_text(app, "--where", options->where, "CONDITION",
                "With --table: drives for which an SQL condition holds"),
       table);
  need(add_flag(app, "--unlisted", options->unlisted,
                "With --bay: only drives that the product data does not list"),
       bay);
  Listing(app)
      .view(kColumns, [options] { return read_disks(*options); })
      .order({"Location"})
      .view("--controllers", "On-board storage controllers", kControllerColumns, read_controllers)
      .order({"SlotNo"})
      .without(choices);
}

}  // namespace zeldb::cli
