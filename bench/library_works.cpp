// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "bench/records.h"
#include "bench/works.h"
#include "db/field.h"
#include "db/read.h"
#include "platform/propdb.h"

namespace bench {

namespace {

using R = ListRow;

constexpr auto kFields = zeldb::field_table(
    ZELDB_FIELD(R, SettingID), ZELDB_FIELD(R, SettingName), ZELDB_FIELD(R, PendingValue),
    ZELDB_FIELD(R, CurrentValue), ZELDB_FIELD(R, PfaKey), ZELDB_FIELD(R, GroupID), ZELDB_FIELD(R, GroupName),
    ZELDB_FIELD(R, Mriname), ZELDB_FIELD(R, ShortDesc), ZELDB_FIELD(R, FullDesc), ZELDB_FIELD(R, Defvalue),
    ZELDB_FIELD(R, RecordId), ZELDB_FIELD(R, Type), ZELDB_FIELD(R, Flags), ZELDB_FIELD(R, Minim),
    ZELDB_FIELD(R, Maxim), ZELDB_FIELD(R, Step), ZELDB_FIELD(R, Numchoices), ZELDB_FIELD(R, Choices),
    ZELDB_FIELD(R, Mininstances), ZELDB_FIELD(R, Maxinstances));
static_assert(kFields.columns.size() == 21);

using D = aim_disk_info_t;

constexpr auto kDriveFields = zeldb::field_table(
    ZELDB_FIELD(D, PCIFuncKey), ZELDB_FIELD(D, SlotNo), ZELDB_FIELD(D, CtrlType), ZELDB_FIELD(D, BayNo),
    ZELDB_FIELD(D, LocationId), ZELDB_FIELD(D, Location), ZELDB_FIELD_AS(D, DriveType, "DriveTypeId"),
    ZELDB_FIELD_AS(D, MediaType, "MediaTypeId"), ZELDB_FIELD(D, FruNo), ZELDB_FIELD(D, PartNo),
    ZELDB_FIELD(D, SerialNo), ZELDB_FIELD(D, Model), ZELDB_FIELD(D, UUID), ZELDB_FIELD(D, Manufacture),
    ZELDB_FIELD(D, FwVersion), ZELDB_FIELD(D, Capacity), ZELDB_FIELD(D, SFlags), ZELDB_FIELD(D, Warning),
    ZELDB_FIELD(D, Temperature), ZELDB_FIELD(D, RemainLife), ZELDB_FIELD(D, InfoMask));

template <class Record>
struct List {
  uint32_t Count;
  Record* Items;
};

template <class Record, class Fields>
unsigned listed(const char* table, const Fields& fields) {
  List<Record> list = {};
  if (read_list(zeldb::inventory(), &list, {.table = table, .columns = fields.columns}, fields) != ZELDB_OK)
    give_up("no list");
  std::free(list.Items);
  return list.Count;
}

class Library : public Works {
 public:
  void clear_settings() override {
    zel_db_delete(zeldb::inventory(), "PCISetting", nullptr, nullptr, 0, nullptr);
  }
  void store(const PCISetting_info& record) override {
    if (extract_PCISetting_info(&record) != ZELDB_OK) give_up("a setting was not stored");
  }
  unsigned list_settings() override { return listed<R>("PCISetting", kFields); }
  unsigned list_drives() override { return listed<D>("AimDisks", kDriveFields); }
  unsigned aim_supported(uint32_t function_key) override {
    unsigned supported = 0;
    if (zeldb_get_pci_function_oob_type(function_key, &supported, nullptr) != ZELDB_OK)
      give_up("no such function");
    return supported;
  }
  unsigned device_id(uint32_t function_key) override {
    _ZELDB_PCI_Generic_Info record;
    if (zeldb_get_pci_generic_info(function_key, &record) != ZELDB_OK) give_up("no such function");
    return record.DeviceId;
  }
  void hold_reads(const std::function<void()>& read) override {
    const zeldb::Reads held(zeldb::inventory());
    read();
  }
  unsigned property() override {
    uint8_t value = 0;
    if (propdb_get_byte(kProperty, &value) != 0) give_up("no such property");
    return value;
  }
  void replay(const Calls& /*calls*/) override { give_up("only what was written by hand repeats calls"); }
};

}  // namespace

std::unique_ptr<Works> library(const std::string& /*where*/) {
  return std::make_unique<Library>();
}

}  // namespace bench
