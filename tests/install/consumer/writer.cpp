// SPDX-License-Identifier: Apache-2.0
//
// Writes a row through the record helpers, with a handle of the platform's, and reads it back.
#include <platform/zel_db.h>
#include <zeldb/db.h>
#include <zeldb/pci.h>

int main() {
  constexpr int kLocation = 1;
  constexpr int kSlot = 77;
  constexpr unsigned char kHealth = 2;
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  zel_db_content_values_t* const values = zel_db_get_content_values(handle);
  if (values == nullptr) return 1;
  zel_db_content_put_int(values, "Location", kLocation);
  zel_db_content_put_int(values, "SlotNo", kSlot);
  zel_db_content_put_int(values, "HealthStatus", kHealth);
  const int64_t id = insert_db_record(handle, "PCIAdapter", values);
  zel_db_free_content_values(values);

  unsigned char health = 0;
  const int status = zeldb_get_adapter_health_status(kLocation, kSlot, &health);
  return id >= 1 && status == ZELDB_OK && health == kHealth ? 0 : 1;
}
