// SPDX-License-Identifier: Apache-2.0
//
// Reports of persistent-memory modules: stored unchanged, and shown as text.
#include <cstdio>

#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using Module = _ZELDB_Memory;

constexpr auto kHealth =
    field_table(ZELDB_FIELD(Module, RemainingLife), ZELDB_FIELD(Module, HealthStatus),
                ZELDB_FIELD(Module, AlarmTrips), ZELDB_FIELD(Module, LDShutdownCount),
                ZELDB_FIELD(Module, AITDRAMStatus), ZELDB_FIELD(Module, HealthStatusReason),
                ZELDB_FIELD(Module, LLShutdownStatus), ZELDB_FIELD(Module, InfoMask));
constexpr auto kSecurity = field_table(ZELDB_FIELD(Module, SecurityState), ZELDB_FIELD(Module, InfoMask));
constexpr auto kFips = field_table(ZELDB_FIELD(Module, FIPSMode), ZELDB_FIELD(Module, InfoMask));

std::span<const Field> fields_of(int kind) {
  switch (kind) {
    case ZELDB_DCPMM_HEALTH:
      return kHealth.fields;
    case ZELDB_DCPMM_SECURITY:
      return kSecurity.fields;
    case ZELDB_DCPMM_FIPS:
      return kFips.fields;
    default:
      return {};
  }
}

constexpr CodeText kFipsModes[] = {{0, "Non-FIPS"}, {1, "Non-FIPS(1)"}, {2, "Non-FIPS(2)"}, {3, "Enabled"}};
static_assert(is_code_table(kFipsModes));

constexpr CodeText kHealthStates[] = {{0, "Normal"}, {1, "Noncritical"}, {2, "Critical"}, {4, "Fatal"}};
static_assert(is_code_table(kHealthStates));

// The first bit that is set decides.
constexpr CodeText kSecurityBits[] = {
    {0x20, "Not Supported"}, {0x08, "Frozen"}, {0x04, "Locked"}, {0x02, "Enabled"}};

void format_code(std::span<const CodeText> table, uint32_t code, char* buffer, uint32_t size) {
  if (buffer == nullptr || size == 0) return;
  if (const char* const text = text_of(table, code, nullptr)) {
    std::snprintf(buffer, size, "%s", text);
  } else {
    std::snprintf(buffer, size, "others(0x%x)", code);
  }
}

const char* security_text(uint32_t state) {
  for (const CodeText& bit : kSecurityBits) {
    if ((state & bit.code) != 0) return bit.text;
  }
  return "Disabled";
}

}  // namespace

int zeldb_update_dcpmm_smart_info(const _ZELDB_Memory* memory, int kind) {
  if (memory == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_update_dcpmm_smart_info");
  if (!values) return values.no_memory();
  values.put(fields_of(kind), memory, EmptyText::AsText);
  const Filter<16> filter("_id=%u", memory->_id);
  return values.update(tables::kModules, filter);
}

void bps_format_fips_str(uint32_t code, char* buffer, uint32_t size) {
  format_code(kFipsModes, code, buffer, size);
}

void bps_format_hstate_str(uint32_t code, char* buffer, uint32_t size) {
  format_code(kHealthStates, code, buffer, size);
}

void bps_format_security_str(uint32_t code, char* buffer, uint32_t size) {
  if (buffer == nullptr || size == 0) return;
  std::snprintf(buffer, size, "%s", security_text(code));
}
