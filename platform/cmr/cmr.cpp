// SPDX-License-Identifier: Apache-2.0
#include "platform/cmr.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

#include "cmr/bios.h"
#include "cmr/call_log.h"
#include "config/settings.h"
#include "platform/vrel_log.h"

namespace zel_platform {
namespace {

constexpr const char* kFile = "bios.json";

enum Status { kDone, kNotInitialized, kInvalidArgument, kUnknown, kNoValue, kFileFailed, kFailed };

// Everything that was handed out since the client was initialised.
struct Session {
  Bios bios;
  PendingValues pending;  // what has been set since
  std::vector<char*> names;
  std::map<const cmr_bios_attribute*, Bios::Attributes> arrays;
};

struct Client {
  std::mutex mutex;
  int users = 0;  // callers in several threads share one session
  std::optional<Session> session;
};

Client& client() {
  static Client instance;
  return instance;
}

// The frame of each call: one at a time, failure injection, nothing thrown, call log.
template <class Body>
int run(Call call, Body body) {
  Client& shared = client();
  const std::lock_guard lock(shared.mutex);
  try {
    const std::optional<int> injected = injected_failure(call.function);
    call.rc = injected ? *injected : body(shared, call);
    log_call(call);
  } catch (const std::exception& error) {
    vrel_log::logErr("%s: %s", call.function, error.what());
    call.rc = kFailed;
  }
  return call.rc;
}

template <class Body>
int run_in_session(const Call& call, Body body) {
  return run(call, [&](Client& shared, Call& running) -> int {
    return shared.session ? body(*shared.session, running) : kNotInitialized;
  });
}

int open_session(Client& shared) {
  if (!shared.session) {
    Session session;
    if (!read_bios(kFile, session.bios)) return kFileFailed;
    for (const auto& collection : session.bios.collections()) session.names.push_back(collection.name);
    shared.session = std::move(session);
  }
  ++shared.users;
  return kDone;
}

int close_session(Client& shared) {
  if (!shared.session) return kNotInitialized;
  if (--shared.users == 0) shared.session.reset();
  return kDone;
}

int get_attributes(const char* function, const char* name, cmr_bios_attribute** attributes, uint32_t* count) {
  return run_in_session({.function = function, .name = name}, [&](Session& session, Call& call) -> int {
    if (name == nullptr || attributes == nullptr || count == nullptr) return kInvalidArgument;
    const auto& all = session.bios.collections();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Bios::Collection& collection) {
      return collection.name != nullptr && std::strcmp(collection.name, name) == 0;
    });
    if (found == all.end()) return kUnknown;
    // A copy for each caller, so that use after release is found by the memory checkers.
    Bios::Attributes array = session.bios.attributes(*found);
    cmr_bios_attribute* const first = array.records.data();
    call.count = array.records.size();
    *count = static_cast<uint32_t>(array.records.size());
    if (first != nullptr) session.arrays.emplace(first, std::move(array));
    *attributes = first;
    return kDone;
  });
}

int get_value(const Session& session, cmr_bios_attribute_value& request, int selector) {
  if (request.Operation != CMR_OPERATION_GET || request.SettingID == nullptr) return kInvalidArgument;
  const std::optional<Bios::Value> found = session.bios.value(request.SettingID);
  if (!found) return kUnknown;
  const char* value = selector == CMR_SELECT_PENDING ? found->pending : found->current;
  const auto set = session.pending.find(std::string_view(request.SettingID));
  if (selector == CMR_SELECT_PENDING && set != session.pending.end()) value = set->second.c_str();
  if (value == nullptr) return kNoValue;
  // A value that fills the buffer has no terminator there.
  const size_t size = std::min(std::strlen(value) + 1, sizeof request.ValueBuffer);
  std::memcpy(request.ValueBuffer, value, size);
  return kDone;
}

int set_values(Session& session, std::span<const cmr_bios_attribute_value> requests) {
  PendingValues pending;
  for (const cmr_bios_attribute_value& request : requests) {
    const bool complete = request.SettingID != nullptr && request.Value != nullptr;
    if (request.Operation != CMR_OPERATION_SET || !complete) return kInvalidArgument;
    if (!session.bios.value(request.SettingID)) return kUnknown;
    pending.insert_or_assign(request.SettingID, request.Value);
  }
  if (pending.empty()) return kDone;
  const auto change = [&](Json& json) { set_pending(json, pending); };
  PendingValues all = pending;
  all.insert(session.pending.begin(), session.pending.end());
  if (!update_config(kFile, IfMissing::Fail, change)) return kFileFailed;
  session.pending.swap(all);
  return kDone;
}

bool valid(const cmr_bios_attribute_value* requests, int count) {
  return count >= 0 && (requests != nullptr || count == 0);
}

Call request_call(const char* function, const cmr_bios_attribute_value* requests, int count) {
  Call call{.function = function};
  if (!valid(requests, count)) return call;
  call.count = static_cast<size_t>(count);
  call.requests = {requests, static_cast<size_t>(count)};
  return call;
}

}  // namespace
}  // namespace zel_platform

using namespace zel_platform;

#define CMR_API [[gnu::visibility("default")]]

CMR_API int cmr_api_initialize() {
  return run({.function = __func__}, [](Client& shared, Call&) { return open_session(shared); });
}

CMR_API int cmr_api_uninitialize() {
  return run({.function = __func__}, [](Client& shared, Call&) { return close_session(shared); });
}

CMR_API int cmr_get_bios_collections(char*** names, uint32_t* count) {
  return run_in_session({.function = __func__}, [&](Session& session, Call& call) -> int {
    if (names == nullptr || count == nullptr) return kInvalidArgument;
    *names = session.names.data();
    *count = static_cast<uint32_t>(session.names.size());
    call.count = session.names.size();
    return kDone;
  });
}

CMR_API int cmr_get_bios_attributes(const char* name, cmr_bios_attribute** attributes, uint32_t* count) {
  return get_attributes(__func__, name, attributes, count);
}

CMR_API int cmr_get_bios_attributes_lite(const char* name, cmr_bios_attribute** attributes, uint32_t* count) {
  return get_attributes(__func__, name, attributes, count);
}

CMR_API int cmr_free_bios_attributes(const char* name, cmr_bios_attribute* attributes, int flags) {
  const Call free_call{.function = __func__, .name = name, .selector = flags};
  return run_in_session(free_call, [&](Session& session, Call& call) -> int {
    if (attributes == nullptr) return kDone;
    const auto found = session.arrays.find(attributes);
    if (found == session.arrays.end()) return kUnknown;
    call.count = found->second.records.size();
    session.arrays.erase(found);
    return kDone;
  });
}

CMR_API int cmr_get_bios_attribute_value(cmr_bios_attribute_value* requests, int count, int selector) {
  Call get_call = request_call(__func__, requests, count);
  get_call.selector = selector;
  return run_in_session(get_call, [&](Session& session, Call&) -> int {
    const bool known = selector == CMR_SELECT_PENDING || selector == CMR_SELECT_CURRENT;
    if (!known || !valid(requests, count)) return kInvalidArgument;
    int first_failure = kDone;
    for (int i = 0; i < count; ++i) {
      const int rc = get_value(session, requests[i], selector);
      if (first_failure == kDone) first_failure = rc;
    }
    return first_failure;
  });
}

CMR_API int cmr_set_bios_attribute_value(cmr_bios_attribute_value* requests, int count) {
  return run_in_session(request_call(__func__, requests, count), [&](Session& session, Call& call) -> int {
    return valid(requests, count) ? set_values(session, call.requests) : kInvalidArgument;
  });
}
