// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/tables.h"
#include "platform/aim_config.h"
#include "platform/peci.h"
#include "platform/ptables.h"
#include "zeldb/pci.h"

using namespace zeldb;

unsigned char is_amd_platform = 0xFF;

namespace {

constexpr const char* kConfigKey = "aim_pcie_seg_bits";
constexpr unsigned char kUndetermined = 0xFF;
constexpr unsigned char kUnreadable = 0xFF;
constexpr unsigned char kMostBits = 3;
constexpr unsigned kAmdFlag = 15;

unsigned char platform_is_amd() {
  ptables_platform platform = {};
  void* tables = nullptr;
  if (ptables_from_ram(&tables) != 0) return 0;
  if (ptables_lookup_platform_direct(tables, &platform) != 0) platform = {};
  ptables_free(tables);
  return static_cast<unsigned char>((platform.Flags >> kAmdFlag) & 1U);
}

unsigned char bits_of_segment(int segment) {
  if (segment >= 4) return kMostBits;
  if (segment >= 2) return 2;
  return segment == 1 ? 1 : 0;
}

unsigned char bits_from_inventory() {
  static constexpr const char* kColumns[] = {"SegNo"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return 0;
  const Filter<128> filter("SegNo != 0");
  Result result;
  if (query(handle, {.table = tables::kAdapters, .columns = kColumns, .where = filter}, result) != ZELDB_OK)
    return 0;
  unsigned char bits = 0;
  while (result.next()) {
    int segment = 0;
    if (result.row().read(0, segment) == ZELDB_OK) bits = std::max(bits, bits_of_segment(segment));
  }
  return bits;
}

// The processor may be busy while the host starts.
unsigned char read_segment_bits() {
  static constexpr uint8_t kFirstProcessor = 0x30;
  static constexpr uint16_t kRegister = 0x54C;
  static constexpr uint8_t kCompleted = 0x40;
  for (int loop = 2; loop >= 0; --loop) {
    uint8_t data[4] = {};
    uint8_t code = 0;
    const int status =
        peci_RdEndPointConfigPciLocal(kFirstProcessor, 0, 0, 0, 0, kRegister, sizeof(data), data, &code);
    if (status == 0 && code == kCompleted) return static_cast<unsigned char>((data[0] & 0x0F) >> 2);
    syslog_info("_get_segbit_from_pcie: Failed to get segbit from PECI, ret=%d, cc=0x%x, loop=%d\n", status,
                code, loop);
    sleep(1);
  }
  return kUnreadable;
}

}  // namespace

unsigned char zeldb_is_amd(void) {
  // Concurrent first calls may both determine it, with the same result.
  const std::atomic_ref<unsigned char> known(is_amd_platform);
  unsigned char amd = known.load(std::memory_order_relaxed);
  if (amd == kUndetermined) {
    amd = platform_is_amd();
    known.store(amd, std::memory_order_relaxed);
  }
  return amd;
}

unsigned char zeldb_get_pci_seg_bits(int probe) {
  if (zeldb_is_amd() != 0) return 0;
  int bits = 0;
  if (aim_config_get_int(kConfigKey, &bits) != 0) return static_cast<unsigned char>(bits);
  syslog_info("zeldb_get_pci_seg_bits: The multi segment bits is not available, default seg bits is 0.\n");
  return probe != 0 ? read_segment_bits() : 0;
}

unsigned char zeldb_set_pci_seg_bits(void) {
  if (zeldb_is_amd() != 0) {
    syslog_info("zeldb_set_pci_seg_bits: Genoa platform, not support multi segment currently.\n");
    return 0;
  }
  unsigned char bits = read_segment_bits();
  if (bits == kUnreadable) bits = bits_from_inventory();
  syslog_info("zeldb_set_pci_seg_bits: The segment bits is %d.\n", bits);
  aim_config_set_int(kConfigKey, bits, 0);
  return bits;
}
