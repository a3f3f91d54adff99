// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "bench/works.h"
#include "db/field.h"
#include "db/read.h"
#include "zeldb/pci.h"

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

struct List {
  uint32_t Count;
  ListRow* Items;
};

class Library : public Works {
 public:
  void store(const PCISetting_info& record) override {
    if (extract_PCISetting_info(&record) != ZELDB_OK) give_up("a setting was not stored");
  }

  unsigned list() override {
    List list = {};
    const int status =
        read_list(zeldb::inventory(), &list, {.table = "PCISetting", .columns = kFields.columns}, kFields);
    if (status != ZELDB_OK) give_up("the settings were not listed");
    std::free(list.Items);
    return list.Count;
  }

  unsigned aim_supported(uint32_t function_key) override {
    unsigned supported = 0;
    if (zeldb_get_pci_function_oob_type(function_key, &supported, nullptr) != ZELDB_OK)
      give_up("no such function");
    return supported;
  }
};

}  // namespace

std::unique_ptr<Works> library() {
  return std::make_unique<Library>();
}

}  // namespace bench
