// SPDX-License-Identifier: Apache-2.0
#include "zel_db/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <list>
#include <mutex>

#include "platform/vrel_log.h"
#include "zel_db/session.h"

namespace zel_db {
namespace {

std::string parameter_texts(Parameters parameters) {
  std::string texts;
  for (const _zel_db_param_t& parameter : parameters) {
    if (!texts.empty()) texts.push_back(',');
    const auto low = static_cast<uint32_t>(parameter.Value);
    texts.append(parameter.Type == 2 ? std::to_string(static_cast<int32_t>(low)) : std::to_string(low));
  }
  return texts;
}

}  // namespace

const Trace* Trace::current() {
  const char* path = secure_getenv("ZEL_DB_TRACE");
  if (path == nullptr || *path == '\0') return nullptr;
  static auto& traces = *new std::list<Trace>;  // handles keep pointers into it until the very end
  const std::lock_guard lock(process_mutex());
  const auto known =
      std::find_if(traces.begin(), traces.end(), [&](const Trace& trace) { return trace.path_ == path; });
  return known != traces.end() ? &*known : &traces.emplace_back(path);
}

Trace::Trace(std::string path)
    : path_(std::move(path)),
      fd_(open(path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
               S_IRUSR | S_IWUSR)) {
  if (fd_ < 0) vrel_log::logErr("zel_db: no trace, cannot write %s", path_.c_str());
}

void Trace::write(const Call& call, int status) const {
  if (fd_ < 0) return;
  const std::string parameters = parameter_texts(call.parameters);
  const std::array<std::string_view, 6> fields = {call.operation, call.table, call.columns,
                                                  call.where,     parameters, call.order};
  std::string line;
  for (const std::string_view field : fields) line.append(field).push_back('|');
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  line.append(std::to_string(status)).push_back('\n');
  if (::write(fd_, line.data(), line.size()) < 0) {
    // A trace that cannot be written must not fail the call that it reports.
  }
}

}  // namespace zel_db
