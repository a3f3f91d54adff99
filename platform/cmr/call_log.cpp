// SPDX-License-Identifier: Apache-2.0
#include "cmr/call_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

#include "config/file.h"

namespace zel_platform {
namespace {

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string text_cell(const char* text) {
  return text == nullptr ? "\\N" : escaped(text);
}

std::string value_cell(const cmr_bios_attribute_value& request, bool answered) {
  if (request.Operation == CMR_OPERATION_SET) return text_cell(request.Value);
  if (!answered) return "-";
  return escaped({request.ValueBuffer, strnlen(request.ValueBuffer, sizeof request.ValueBuffer)});
}

template <class T>
std::string number_cell(const std::optional<T>& number) {
  return number ? std::to_string(*number) : "-";
}

std::string line_of(std::initializer_list<std::string> cells) {
  std::string line;
  for (const std::string& cell : cells) line.append(line.empty() ? "" : "\t").append(cell);
  return line.append("\n");
}

std::string lines_of(const Call& call) {
  const std::string name = call.name ? text_cell(*call.name) : "-";
  const std::string count = number_cell(call.count);
  const std::string selector = number_cell(call.selector);
  const std::string rc = std::to_string(call.rc);
  if (call.requests.empty()) return line_of({call.function, name, count, selector, "-", "-", "-", "-", rc});
  std::string lines;
  for (const cmr_bios_attribute_value& request : call.requests) {
    lines += line_of({call.function, name, count, selector, std::to_string(request.Reserved),
                      std::to_string(request.Operation), text_cell(request.SettingID),
                      value_cell(request, call.rc == 0), rc});
  }
  return lines;
}

}  // namespace

void log_call(const Call& call) {
  const char* path = secure_getenv("CMR_CALL_LOG");
  if (path == nullptr || *path == '\0') return;
  const FileDescriptor file(
      open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR));
  const std::string lines = lines_of(call);
  [[maybe_unused]] const ssize_t written = write(file.get(), lines.data(), lines.size());
}

}  // namespace zel_platform
