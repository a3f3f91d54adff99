// SPDX-License-Identifier: Apache-2.0
#include <map>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"

namespace zeldb::cli {

namespace {

struct Product {
  uint32_t FunKey;
  _ZELDB_PCIVpdInfo Vpd;
};

#define VPD_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Product, Vpd, Member, Heading, Help)
constexpr Column kColumns[] = {
    hex(ZELDB_COLUMN(Product, FunKey, "FUNCTION", "Key of the function")),
    VPD_COLUMN(ProductName, "PRODUCT", "Name of the product"),
    minor(VPD_COLUMN(Manufacture, "MAKER", "Manufacturer")),
    VPD_COLUMN(Model, "MODEL", "Model"),
    VPD_COLUMN(PartNo, "PART", "Part number"),
    minor(VPD_COLUMN(FRUNo, "FRU", "FRU number, for a replacement")),
    whole(VPD_COLUMN(SerialNo, "SERIAL", "Serial number")),
    minor(whole(VPD_COLUMN(UUID, "UUID", "Universally unique id"))),
};
#undef VPD_COLUMN

constexpr std::span<const Column> kPublishedColumns = std::span(kColumns).subspan(1);

struct Options {
  Key function;
  std::optional<Place> slot;
};

std::vector<Product> read_products(const Options& options) {
  std::vector<Product> rows;
  for (const uint32_t key : chosen_functions(options.function, options.slot)) {
    if (const auto product = find_product(key)) rows.push_back({.FunKey = key, .Vpd = *product});
  }
  if (options.function && rows.empty()) fail_not_found("product data of " + key_text(*options.function));
  return rows;
}

std::vector<Product> read_published(const Options& options) {
  if (!options.slot) throw WrongUse("--published: needs --slot");
  const std::string what = "properties of the GPU in slot " + place_text(*options.slot);
  require_properties(what);
  Product row = {};
  std::map<std::string, std::string> changes;
  set_missing_gpu_vpd_info(&row.Vpd, static_cast<unsigned>(options.slot->number), changes);
  if (changes.empty()) fail_not_found(what);
  return {row};
}

}  // namespace

void setup_vpd(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* function =
      add_key(app, "KEY", options->function, "Key of a function; without it, all functions");
  CLI::Option* slot = add_place(app, "--slot", options->slot, "The functions in this slot");
  exclude_each_other({function, slot});
  Listing(app)
      .view(kColumns, [options] { return read_products(*options); })
      .view("--published", "Data of the GPU in --slot from the property store", kPublishedColumns,
            [options] { return read_published(*options); })
      .without({function});
}

}  // namespace zeldb::cli
