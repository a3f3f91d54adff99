// SPDX-License-Identifier: Apache-2.0
#ifndef FIRMWARE_RETIMER_CLIENT_H
#define FIRMWARE_RETIMER_CLIENT_H

#include <chrono>
#include <cstdint>

#include "zeldb/firmware.h"

namespace zeldb {

// The address of the retimer configuration proxy, and its time limits.
struct RetimerEndpoint {
  const char* socket_path;
  std::chrono::milliseconds reply_timeout;    // for the proxy to take the request, and for its reply to begin
  std::chrono::milliseconds receive_timeout;  // for each piece of the reply
  const char* state_path;
};

inline constexpr RetimerEndpoint kRetimerProxy = {"/tmp/rtcfgproxy.sock", std::chrono::hours(1),
                                                  std::chrono::seconds(5), "/tmp/.rt_upd_state"};

class RetimerClient {
 public:
  explicit RetimerClient(const RetimerEndpoint& endpoint) : endpoint_(endpoint) {}

  // The proxy's result code, or a negative local error, which is logged. SIGPIPE is ignored from then on.
  int update(const retimer_fw_req_t& request) const;

  // 0, or -1 and progress untouched.
  int progress(uint32_t slot, retimer_fw_progress_t& progress) const;

 private:
  // The step in which an exchange ended. A failed step is reported as its complement.
  enum class Step { Reply, Socket, Connect, Write, Wait, Timeout, Done };

  Step exchange(const retimer_fw_req_t& request, int32_t& result) const;

  RetimerEndpoint endpoint_;
};

}  // namespace zeldb

#endif
