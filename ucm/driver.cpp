// SPDX-License-Identifier: Apache-2.0
#include "ucm/driver.h"

#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <span>
#include <stdexcept>
#include <unordered_set>

#include "platform/cmr.h"
#include "ucm/attribute_record.h"
#include "ucm/gathered_settings.h"
#include "ucm/trace.h"
#include "zeldb/status.h"
#include "zeldb/ucm.h"

namespace zeldb {

namespace {

constexpr const char* kFullRetrievalMarker = "/tmp/slowucm";
constexpr size_t kSettingIdSize = 100;

enum class Retrieval { Lite, Full };

bool allocate_values(ParserState& state, _zel_db_handle_t* handle) {
  state.Values = zel_db_get_content_values(handle);
  if (state.Values == nullptr) std::printf("no memory\n");
  return state.Values != nullptr;
}

long long elapsed_ms(const timeval& start, const timeval& end) {
  // Seconds and microseconds are rounded separately: the result may be a millisecond short.
  return (static_cast<long long>(end.tv_sec) - start.tv_sec) * 1000 +
         (static_cast<long long>(end.tv_usec) - start.tv_usec) / 1000;
}

template <size_t N>
void fetch_value(const char* id, int selector, unsigned char (&value)[N]) {
  cmr_bios_attribute_value request = {};
  request.Operation = CMR_OPERATION_GET;
  request.SettingID = id;
  request.Value = "";
  if (cmr_get_bios_attribute_value(&request, 1, selector) != 0) return;
  // The service need not terminate a value that fills its buffer.
  std::memcpy(value, request.ValueBuffer, strnlen(request.ValueBuffer, N - 1));
}

// Between the settings of a full run the service is asked for values, so each is stored before the next.
GatheredSettings::Mode mode_of(Retrieval retrieval) {
  using Mode = GatheredSettings::Mode;
  return retrieval == Retrieval::Full ? Mode::OneByOne : Mode::Together;
}

class Collections {
 public:
  Collections(_zel_db_handle_t* handle, Retrieval retrieval)
      : retrieval_(retrieval), settings_(handle, mode_of(retrieval)) {}

  bool store(const char* name, uint32_t index);

 private:
  bool skips(const char* name) const;
  int retrieve(const char* name, cmr_bios_attribute** attributes, uint32_t* count) const;
  bool store_attributes(const char* name, std::span<const cmr_bios_attribute> attributes);
  void fill(PCISetting_info& record, const char* name, const cmr_bios_attribute& attribute,
            uint32_t key) const;

  Retrieval retrieval_;
  GatheredSettings settings_;
  // Across all collections: a function has one row per run.
  std::unordered_set<uint32_t> seen_;
};

bool Collections::skips(const char* name) const {
  if (retrieval_ == Retrieval::Full) return false;
  if (name == nullptr) throw std::logic_error("a collection has no name");
  return std::strchr(name, '-') == nullptr;
}

int Collections::retrieve(const char* name, cmr_bios_attribute** attributes, uint32_t* count) const {
  return retrieval_ == Retrieval::Full ? cmr_get_bios_attributes(name, attributes, count)
                                       : cmr_get_bios_attributes_lite(name, attributes, count);
}

bool Collections::store(const char* name, uint32_t index) {
  cmr_bios_attribute* attributes = nullptr;
  uint32_t count = 0;
  timeval start = {};
  timeval end = {};
  gettimeofday(&start, nullptr);
  if (skips(name)) return true;
  const int status = retrieve(name, &attributes, &count);
  gettimeofday(&end, nullptr);
  ucm_parse_log("UCM Parser: get_bios_attributes consumes %lld ms\n", elapsed_ms(start, end));
  if (status != 0) return false;

  const char* const shown = name != nullptr ? name : "";
  ucm_parse_log("UCM Parser: i = %d, numattrs = %d. %s\n", static_cast<int>(index), static_cast<int>(count),
                shown);
  if (attributes == nullptr) count = 0;
  if (!store_attributes(shown, {attributes, count})) return false;
  cmr_free_bios_attributes(name, attributes, 0);
  return true;
}

// A repeated key ends the collection as the end mark does.
bool Collections::store_attributes(const char* name, std::span<const cmr_bios_attribute> attributes) {
  for (const cmr_bios_attribute& attribute : attributes) {
    if (ends_list(attribute)) break;
    const uint32_t key = function_key_of(attribute);
    if (seen_.contains(key)) break;
    fill(settings_.add(), name, attribute, key);
    if (settings_.is_full() && !settings_.store()) return false;
    seen_.insert(key);
  }
  return settings_.store();
}

void Collections::fill(PCISetting_info& record, const char* name, const cmr_bios_attribute& attribute,
                       uint32_t key) const {
  record.PfaKey = key;
  char id[kSettingIdSize];
  const char* const attribute_name = attribute.AttributeName != nullptr ? attribute.AttributeName : "";
  const int length = std::snprintf(id, sizeof(id), "%s.%s", name, attribute_name);
  static_assert(sizeof(id) <= sizeof(record.SettingID));
  if (length > 0) std::memcpy(record.SettingID, id, std::strlen(id));
  if (retrieval_ == Retrieval::Full) {
    fetch_value(id, CMR_SELECT_PENDING, record.PendingValue);
    fetch_value(id, CMR_SELECT_CURRENT, record.CurrentValue);
  }
  describe(attribute, record);
}

bool store_collections(_zel_db_handle_t* handle) {
  char** names = nullptr;
  uint32_t count = 0;
  if (cmr_get_bios_collections(&names, &count) != 0) return false;
  ucm_parse_log("UCM Parser: numcfg = %d\n", static_cast<int>(count));
  if (names == nullptr) count = 0;
  Collections collections(handle,
                          access(kFullRetrievalMarker, F_OK) == 0 ? Retrieval::Full : Retrieval::Lite);
  for (uint32_t index = 0; index < count; ++index) {
    if (!collections.store(names[index], index)) return false;
  }
  return true;
}

}  // namespace

ParserState::~ParserState() {
  if (Values == nullptr) return;
  zel_db_content_clear(Values);
  zel_db_free_content_values(Values);
}

int clear_pci_setting_table(_zel_db_handle_t* handle) {
  const int status = zel_db_delete(handle, "PCISetting", nullptr, nullptr, 0, nullptr);
  if (status == ZELDB_OK) return 1;
  std::printf("failed to delete PCI setting Table, rc=%d\n", status);
  return 0;
}

int ucm_parse(ParserState* state, _zel_db_handle_t* handle) {
  if (!allocate_values(*state, handle)) {
    std::printf("UCM PARSER: failed to initialize the parser\n");
    return 0;
  }
  if (state->ClearTable == 1) clear_pci_setting_table(handle);
  if (cmr_api_initialize() != 0) return 0;
  const bool stored = store_collections(handle);
  cmr_api_uninitialize();
  if (!stored) return 0;
  const int status = zeldb_merge_aim_ucm_pfa();
  if (status != ZELDB_OK) std::printf("UCM PARSER: failed to merge UCM & AIM, rc=%d", status);
  return 1;
}

}  // namespace zeldb
