// SPDX-License-Identifier: Apache-2.0
#include "storage/drive_bays.h"

#include <algorithm>
#include <array>
#include <span>

#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "platform/propdb.h"
#include "storage/place.h"
#include "storage/property.h"

namespace zeldb {

namespace {

constexpr uint8_t kEdsffBay = 8;
constexpr uint8_t kNvmeBay = 3;
constexpr int kMostBays = 64;

constexpr uint8_t kNotWired = 0xFF;

// The form factors of the bays that backplanes begin with.
class BayForms {
 public:
  BayForms() {
    for (int backplane = 0; backplane < kBackplanes; ++backplane) {
      const Filter<64> first_bay("/dc/ovrc/dm/planar/0/bp/%d/bay_no_e", backplane);
      const Filter<64> type("/dc/ovrc/dm/planar/0/bp/%d/type", backplane);
      uint32_t bay = 0;
      uint8_t ignored = 0;
      if (propdb_get_dword(first_bay, &bay) != 0 || propdb_get_byte(type, &ignored) != 0) continue;
      forms_[count_++] = {bay, AimDiskFormBay};
    }
  }

  _AimDiskFormFactor of(uint32_t bay) const {
    const std::span<const Form> forms(forms_.data(), count_);
    const auto form = std::ranges::find(forms, bay, &Form::bay);
    return form != forms.end() ? form->factor : AimDiskFormBay;
  }

 private:
  struct Form {
    uint32_t bay;
    _AimDiskFormFactor factor;
  };
  static constexpr int kBackplanes = 9;
  std::array<Form, kBackplanes> forms_ = {};
  size_t count_ = 0;
};

Filter<64> wiring_of(uint32_t location) {
  return Filter<64>("propName like '%%mv/%d/slots'", location == kInM2Bay ? 0 : 1);
}

}  // namespace

int read_drive_bays(BayMode mode, std::vector<uint8_t>& bays) {
  bays.clear();
  const PropertyDatabase properties;
  if (!properties) return ZELDB_NO_HANDLE;
  Result result;
  const int status = query(properties.get(), properties_where("propName like \"%hdd%type\""), result);
  if (status != ZELDB_OK) return status;
  while (result.next()) {
    const Property property(result.row());
    const int number = property.number();
    if (number < 1 || number > kMostBays) continue;
    const uint8_t type = property.byte();
    if (type != kEdsffBay && (type != kNvmeBay || mode == BayMode::Edsff)) continue;
    bays.push_back(static_cast<uint8_t>(number - 1));
  }
  return ZELDB_OK;
}

BayWiring::BayWiring(uint32_t location) : location_(location) {
  const PropertyDatabase properties;
  if (!properties) return;
  asked_ = true;
  status_ = read_one(properties.get(), properties_where(wiring_of(location)), [this](const Row& row) {
    const Property property(row);
    size_ = property.size;
    std::ranges::copy(property.value, slots_);
  });
}

void BayWiring::find_slot(uint32_t bay, uint8_t& slot) const {
  static constexpr const char* kFunction = "zeldb_get_nvme_pcie_slots";  // the name in the log
  if (!asked_) return;
  if (status_ != ZELDB_OK) {
    syslog_info("%s: selection:%s, rc = %d\n\n", kFunction, wiring_of(location_).text(), status_);
    return;
  }
  const uint32_t place = 1 + bay;
  if (place < size_ && slots_[place] != 0 && slots_[place] != kNotWired) slot = slots_[place];
  syslog_info("%s: location=%d, baySlot=%d, pcieSlot=%d, rc = %d\n\n", kFunction, static_cast<int>(location_),
              static_cast<int>(bay), slot, status_);
}

_AimDiskFormFactor form_factor_of_bay(uint32_t bay) {
  static const BayForms forms;
  return forms.of(bay);
}

}  // namespace zeldb
