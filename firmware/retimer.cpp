// SPDX-License-Identifier: Apache-2.0
#include "firmware/retimer_client.h"
#include "zeldb/firmware.h"

using namespace zeldb;

int retimer_update_fw(const retimer_fw_req_t* request) {
  return request != nullptr ? RetimerClient(kRetimerProxy).update(*request) : -1;
}

int retimer_get_fw_update_progress(uint32_t slot, retimer_fw_progress_t* progress) {
  return progress != nullptr ? RetimerClient(kRetimerProxy).progress(slot, *progress) : -1;
}
