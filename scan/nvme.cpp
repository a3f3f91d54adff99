// SPDX-License-Identifier: Apache-2.0
extern "C" {
#include <libnvme.h>
}

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "scan/drive_answers.h"

namespace zeldb::scan {

bool can_ask_nvme() {
  return true;
}

NvmeAnswer ask_nvme(const std::string& controller) {
  const std::string path = "/dev/" + controller;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {std::nullopt, path + ": " + std::strerror(errno)};
  nvme_smart_log page = {};
  const int status = nvme_get_log_smart(file, NVME_NSID_ALL, false, &page);
  const int error = errno;
  close(file);
  if (status < 0) return {std::nullopt, path + ": " + std::strerror(error)};
  if (status > 0) return {std::nullopt, path + ": " + nvme_status_to_string(status, false)};
  return {decode_nvme_health({reinterpret_cast<const char*>(&page), sizeof(page)}), std::nullopt};
}

}  // namespace zeldb::scan
