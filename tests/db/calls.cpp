// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include <memory>
#include <sstream>

#include "db/values.h"
#include "tests/support/transcript.h"
#include "zeldb/db.h"

namespace zeldb_test {

// A SlotNo of 5.
template <>
struct Argument<const zel_db_content_values_t*> {
  explicit Argument(const std::string& word) : is_null(word == "null") {
    zel_db_content_put_uint(values->get(), "SlotNo", 5);
  }
  const zel_db_content_values_t* get() const { return is_null ? nullptr : values->get(); }
  void show(Seen& /*seen*/, const std::string& /*name*/) const {}
  bool is_null;
  std::shared_ptr<zeldb::ContentValues> values = std::make_shared<zeldb::ContentValues>(zeldb::inventory());
};

namespace {

int remove(_zel_db_handle_t* handle, const char* table, const char* where, uint32_t* value) {
  const _zel_db_param_t param = zeldb::bound(value != nullptr ? *value : 0);
  return delete_db_record(handle, table, where, &param, value != nullptr ? 1 : 0);
}

// "NAME=VALUE NAME=VALUE"
void update_slot(const char* table, const char* columns, unsigned slot) {
  const Side ours(false);
  std::map<std::string, std::string> values;
  std::istringstream words(columns);
  for (std::string word; words >> word;)
    values[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
  under_test([&] { update_pci_table(table, values, slot); });
}

int64_t put_texts(const char* first, const char* second) {
  const zeldb::ContentValues values(zeldb::inventory());
  const auto put = [&](const char* column, const char* text) {
    return put_text_value(values.get(), column, reinterpret_cast<const unsigned char*>(text));
  };
  const int status = put("CardName", first) | put("ConnectorType", second);
  return status != 0 ? -status : insert_db_record(zeldb::inventory(), "PCIAdapter", values.get());
}

}  // namespace

#define F(function) ZELDB_CALL(function)
const Family kFamily = {ZELDB_TRANSCRIPTS,
                        calls(F(find_db_record), F(insert_db_record), F(remove), F(update_db_record),
                              F(insert_or_update_db_record), F(update_slot), F(put_texts))};

}  // namespace zeldb_test
