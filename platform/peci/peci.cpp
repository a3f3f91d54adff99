// SPDX-License-Identifier: Apache-2.0
//
// A processor that answers by a script: the list "peci" of platform.json, one entry per call, the last one
// for ever.
#include "platform/peci.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "call/call.h"

using namespace zel_platform;

namespace {

constexpr int kFailed = -1;

struct Answer {
  int ret = kFailed;
  uint8_t code = 0;
  std::vector<uint8_t> data;
};

uint8_t byte_of(const Json& json) {
  const auto* const number = json.as<uint64_t>();
  if (number == nullptr || *number > UINT8_MAX) throw ConfigError("not a byte");
  return static_cast<uint8_t>(*number);
}

Answer answer_of(const Json& json) {
  Answer answer;
  if (const auto ret = word_member(json, "ret")) answer.ret = static_cast<int>(*ret);
  answer.code = static_cast<uint8_t>(word_member(json, "cc").value_or(0));
  each_element(json, "data", IfMissing::Empty,
               [&](const Json& byte) { answer.data.push_back(byte_of(byte)); });
  return answer;
}

Answer next_answer() {
  static std::atomic<size_t> calls = 0;
  std::vector<Answer> script;
  each_element(*platform_settings(), "peci", IfMissing::Empty,
               [&](const Json& entry) { script.push_back(answer_of(entry)); });
  return script.empty() ? Answer() : script[std::min(calls++, script.size() - 1)];
}

}  // namespace

ZEL_PLATFORM_API int peci_RdEndPointConfigPciLocal(uint8_t target, uint8_t segment, uint8_t bus,
                                                   uint8_t device, uint8_t function, uint16_t reg,
                                                   uint8_t length, uint8_t* data, uint8_t* completionCode) {
  const auto body = [&] {
    if (data == nullptr || completionCode == nullptr) return kFailed;
    Answer answer = next_answer();
    answer.data.resize(length);
    std::copy(answer.data.begin(), answer.data.end(), data);
    *completionCode = answer.code;
    return answer.ret;
  };
  return run_call(__func__, kFailed, body, target, segment, bus, device, function, reg, length);
}
