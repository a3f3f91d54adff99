// SPDX-License-Identifier: Apache-2.0
#include "cli/inventory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/library.h"

namespace zeldb::cli {

namespace {

using Drive = aim_disk_info_t;

uint8_t told_health(const Drive& drive) {
  enum : uint8_t { kUnknown = 0, kOk = 2, kDegraded = 3 };
  if (drive.InfoMask == 0) return kUnknown;
  return drive.Warning != 0 ? kDegraded : kOk;
}

}  // namespace

void settle_health([[maybe_unused]] std::vector<Drive>& drives) {
#ifdef ZELDB_CLI_ADMIN  // else nothing here scans
  if (drives.empty()) return;
  const auto scanned = list_of<aim_disk_list_t>("drives", [](auto* list) {
    zeldb_get_disk_list_with_filter(list,
                                    "_id IN (SELECT RowId FROM ScannedRows WHERE TableName='AimDisks')");
    return ZELDB_OK;  // an inventory of another version has no scans
  });
  const auto is_scanned = [&scanned](const Drive& drive) {
    return std::ranges::any_of(scanned, [&drive](const Drive& other) {
      return std::strcmp(drive.SerialNo, other.SerialNo) == 0 && std::strcmp(drive.Model, other.Model) == 0 &&
             std::strcmp(drive.UUID, other.UUID) == 0 && drive.LocationId == other.LocationId &&
             drive.BayNo == other.BayNo;
    });
  };
  for (Drive& drive : drives) {
    if (is_scanned(drive)) drive.HealthStatus = told_health(drive);
  }
#endif
}

namespace {

std::vector<Drive> merged_drives() {
  require_inventory("drives");
  auto drives = list_of<aim_disk_list_t>("drives", [](auto* list) {
    zeldb_get_merged_disk_list(list);
    return ZELDB_OK;
  });
  settle_health(drives);
  return drives;
}

}  // namespace

std::vector<Drive> read_drives() {
  static const std::vector<Drive> drives = merged_drives();
  return drives;
}

std::vector<_ZELDB_PCI_Adapter> all_adapters() {
  static const auto adapters = list_of<_ZELDB_PCI_Adapter_List>(
      "adapters", [](auto* list) { return zeldb_get_pci_adapter_list(list); });
  return adapters;
}

std::vector<_ZELDB_PCI_GPU> all_gpus() {
  static const auto gpus =
      list_of<_ZELDB_PCI_GPU_List>("GPUs", [](auto* list) { return zeldb_get_pci_gpu_list(list); });
  return gpus;
}

std::vector<uint32_t> function_keys(std::string condition) {
  std::string order = "FunKey";
  return list_of<_ZELDB_PCI_FunKey_List>("functions", [&](auto* list) {
    return zeldb_get_pci_funkey_list_by_filter(condition.data(), order.data(), list);
  });
}

std::vector<uint32_t> function_keys() {
  static const auto keys = function_keys("1=1");
  return keys;
}

std::vector<uint32_t> functions_of_adapter(uint32_t adapter) {
  return list_of<_ZELDB_PCI_FunKey_List>("adapter " + key_text(adapter), [&](auto* list) {
    return zeldb_get_pci_funkey_list(static_cast<int>(adapter), list);
  });
}

std::vector<uint32_t> functions_in_slot(const Place& slot) {
  return list_of<_ZELDB_PCI_FunKey_List>("slot " + place_text(slot), [&](auto* list) {
    return zeldb_get_pci_funkey_list_by_slot(slot.location, slot.number, list);
  });
}

std::vector<uint32_t> chosen_functions(const Key& function, const std::optional<Place>& slot) {
  if (function) {
    read_function(*function);
    return {*function};
  }
  if (!slot) return function_keys();
  require_slot(*slot);
  return functions_in_slot(*slot);
}

_ZELDB_PCI_Generic_Info read_function(uint32_t key) {
  const auto function = find_function(key);
  if (!function) fail_not_found("function " + key_text(key));
  return *function;
}

std::optional<_ZELDB_PCI_Generic_Info> find_function(uint32_t key) {
  static std::map<uint32_t, std::optional<_ZELDB_PCI_Generic_Info>> known;
  const auto found = known.find(key);
  if (found != known.end()) return found->second;
  _ZELDB_PCI_Generic_Info function = {};
  const int status = zeldb_get_pci_generic_info(key, &function);
  const bool is_there = check_found(status, "function " + key_text(key));
  return known[key] = is_there ? std::optional(function) : std::nullopt;
}

void require_slot(const Place& slot) {
  if (!functions_in_slot(slot).empty()) return;
  uint32_t adapter = 0;
  if (zeldb_get_adapter_pcikey_by_slotNo(slot.location, slot.number, &adapter) != ZELDB_OK)
    fail_not_found("slot " + place_text(slot));
}

namespace {

// The functions that a condition selects, to answer many questions about single ones with one query.
class Selected {
 public:
  explicit Selected(const char* condition) : condition_(condition) {}

  // True for selected functions; before the list is read, also for others.
  bool may_include(uint32_t function) { return !knows_all() || keys_->contains(function); }
  bool includes(uint32_t function) { return knows_all() && keys_->contains(function); }

 private:
  bool knows_all() {
    constexpr int kFew = 2;  // a command about one function needs no list
    if (++asked_ == kFew) read();
    return keys_.has_value();
  }

  // An inventory of another version may lack the table; each function is then asked for.
  void read() {
    try {
      const auto keys = function_keys(condition_);
      keys_.emplace(keys.begin(), keys.end());
    } catch (const Failure&) {
      keys_.reset();
    }
  }

  const char* condition_;
  int asked_ = 0;
  std::optional<std::set<uint32_t>> keys_;
};

std::optional<_ZELDB_PCIVpdInfo> ask_for_product(uint32_t function) {
  static Selected with_product(
      "coalesce(HardwareId,0) IN (SELECT HardwareId FROM VPDs WHERE HardwareTypeId=3)");
  if (!with_product.may_include(function)) return std::nullopt;
  _ZELDB_PCIVpdInfo product = {};
  const int status = zeldb_get_pci_vpd_info(function, &product);
  if (status == ZELDB_INVALID_ARGUMENT || !check_found(status, "product data of " + key_text(function)))
    return std::nullopt;
  return product;
}

using Products = std::map<uint32_t, std::optional<_ZELDB_PCIVpdInfo>>;

Products gpu_products() {
  Products products;
  for (const _ZELDB_PCI_GPU& gpu : all_gpus()) products.emplace(gpu.FunKey, ask_for_product(gpu.FunKey));
  return products;
}

// GPUs are asked for first: only the property store has their data, and the library gives it up after a
// number of failures, which a few cards or components without data cause.
const Products& products_of_gpus() {
  static const Products products = gpu_products();
  return products;
}

}  // namespace

void prepare_products() {
  products_of_gpus();
}

std::optional<_ZELDB_PCIVpdInfo> find_product(uint32_t function) {
  static Products products = products_of_gpus();
  const auto known = products.find(function);
  return known != products.end() ? known->second
                                 : products.emplace(function, ask_for_product(function)).first->second;
}

bool may_have_adapter_row(uint32_t function) {
  static Selected with_row("FunKey IN (SELECT PCIFuncKey FROM PCIAdapter)");
  return with_row.may_include(function);
}

bool may_have_settings(uint32_t function) {
  static Selected with_settings("FunKey IN (SELECT PfaKey FROM PCISetting)");
  return with_settings.may_include(function);
}

bool may_have_network_row(uint32_t function) {
  static Selected with_row("FunKey IN (SELECT PCIFuncKey FROM PCINetwork)");
  return with_row.may_include(function);
}

std::string card_name(uint32_t function) {
  static std::map<uint32_t, std::string> names;
  const auto [name, is_new] = names.try_emplace(function);
  if (is_new && may_have_adapter_row(function)) {
    char text[129] = {};
    zeldb_get_pci_cardname_by_funkey(function, text, sizeof(text));
    name->second = text;
  }
  return name->second;
}

Hardware hardware_of(uint32_t function) {
  constexpr uint8_t kPciFunction = 3;
  static Selected with_its_key("HardwareId=FunKey AND HardwareTypeId=3");
  if (with_its_key.includes(function)) return {function, kPciFunction};
  Hardware hardware = {};
  zeldb_get_pci_hardwareidtype_by_funkey(function, &hardware.id, &hardware.type);
  return hardware;
}

std::string pci_address(unsigned segment, unsigned bus, unsigned device, unsigned function) {
  char address[32];
  std::snprintf(address, sizeof(address), "%04x:%02x:%02x.%x", segment, bus, device, function);
  return address;
}

}  // namespace zeldb::cli
