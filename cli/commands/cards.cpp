// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_HC_Card;

constexpr Column kColumns[] = {
    hex(ZELDB_COLUMN(R, VendorId, "VENDOR", "PCI vendor id")),
    hex(ZELDB_COLUMN(R, DeviceId, "DEVICE", "PCI device id")),
    hex(ZELDB_COLUMN(R, SubVendorId, "SUBVENDOR", "PCI subsystem vendor id")),
    hex(ZELDB_COLUMN(R, SubDeviceId, "SUBDEVICE", "PCI subsystem id")),
    ZELDB_COLUMN(R, CardName, "CARD", "Name of the card"),
    ZELDB_COLUMN(R, ManufacturerName, "MAKER", "Manufacturer"),
    without(ZELDB_COLUMN(R, Rating, "WATTS", "Power of the board in watts; 0 if it is not known"), 0),
    extra(ZELDB_COLUMN(R, SecondaryText, "MORE", "Further text")),
};

struct PciIds {
  uint16_t vendor;
  uint16_t device;
  uint16_t sub_vendor;
  uint16_t sub_device;
};

struct Options {
  Key function;
  std::optional<Place> slot;
  std::string ids;
};

PciIds parse(const std::string& text) {
  unsigned id[4] = {};
  int end = 0;
  // NOLINTNEXTLINE(cert-err34-c): four digits each cannot overflow
  const int read = std::sscanf(text.c_str(), "%4x:%4x:%4x:%4x%n", &id[0], &id[1], &id[2], &id[3], &end);
  if (read != 4 || static_cast<size_t>(end) != text.size())
    throw WrongUse("--ids: " + text + " is no VENDOR:DEVICE:SUBVENDOR:SUBDEVICE");
  return {static_cast<uint16_t>(id[0]), static_cast<uint16_t>(id[1]), static_cast<uint16_t>(id[2]),
          static_cast<uint16_t>(id[3])};
}

PciIds ids_of(uint32_t function) {
  read_function(function);  // throws if it is not there; the lookup of the ids would not
  PciIds ids = {};
  check(zeldb_get_pci_id_by_funkey(static_cast<int>(function), &ids.vendor, &ids.device, &ids.sub_vendor,
                                   &ids.sub_device),
        "function " + key_text(function));
  return ids;
}

std::vector<R> cards_in_slot(const Place& slot) {
  std::set<const R*> cards;
  for (const uint32_t function : chosen_functions({}, slot)) {
    const PciIds ids = ids_of(function);
    cards.insert(zeldb_find_hc_card(ids.vendor, ids.device, ids.sub_vendor, ids.sub_device));
  }
  cards.erase(nullptr);
  std::vector<R> rows;
  std::ranges::transform(cards, std::back_inserter(rows), [](const R* card) { return *card; });
  return rows;
}

std::vector<R> read_cards(const Options& options) {
  if (options.slot) return cards_in_slot(*options.slot);
  if (!options.function && options.ids.empty())
    return {hc_card_table, hc_card_table + zeldb_get_hc_card_count()};
  const PciIds ids = options.function ? ids_of(*options.function) : parse(options.ids);
  const R* const card = zeldb_find_hc_card(ids.vendor, ids.device, ids.sub_vendor, ids.sub_device);
  if (card == nullptr)
    fail_not_found(options.function ? "card of function " + key_text(*options.function)
                                    : "card " + options.ids);
  return {*card};
}

}  // namespace

void setup_cards(CLI::App& app) {
  auto options = std::make_shared<Options>();
  exclude_each_other({
      add_key(app, "--key", options->function, "The card of the function with this key"),
      add_place(app, "--slot", options->slot, "The cards of the functions in this slot"),
      add_text(app, "--ids", options->ids, "V:D:SV:SD", "The card with these PCI ids, in hexadecimal digits"),
  });
  Listing(app).view(kColumns, [options] { return read_cards(*options); });
}

}  // namespace zeldb::cli
