// SPDX-License-Identifier: Apache-2.0
extern "C" {
#include <libnvme.h>
}

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "scan/drive_answers.h"

namespace {

// libnvme is loaded with the first question, since it brings OpenSSL along, which all commands would pay for.
struct Library {
  Library() {
    void* const library = dlopen(ZELDB_NVME_LIBRARY, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library != nullptr) {
      get_log_page = reinterpret_cast<decltype(get_log_page)>(dlsym(library, "nvme_get_log_page"));
      status_text = reinterpret_cast<decltype(status_text)>(dlsym(library, "nvme_status_to_string"));
    }
    const bool is_whole = get_log_page != nullptr && status_text != nullptr;
    if (!is_whole) reason = dlerror();
  }

  decltype(&nvme_get_log_page) get_log_page = nullptr;
  decltype(&nvme_status_to_string) status_text = nullptr;
  std::string reason;
};

const Library& library() {
  static const Library loaded;
  return loaded;
}

}  // namespace

// The inline functions of the library call these.
int nvme_get_log_page(int fd, __u32 xfer_len, struct nvme_get_log_args* args) {
  return library().get_log_page(fd, xfer_len, args);
}

namespace zeldb::scan {

bool can_ask_nvme() {
  return true;
}

NvmeAnswer ask_nvme(const std::string& controller) {
  if (!library().reason.empty()) return {std::nullopt, library().reason};
  const std::string path = "/dev/" + controller;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {std::nullopt, path + ": " + std::strerror(errno)};
  nvme_smart_log page = {};
  const int status = nvme_get_log_smart(file, NVME_NSID_ALL, false, &page);
  const int error = errno;
  close(file);
  if (status < 0) return {std::nullopt, path + ": " + std::strerror(error)};
  if (status > 0) return {std::nullopt, path + ": " + library().status_text(status, false)};
  return {decode_nvme_health({reinterpret_cast<const char*>(&page), sizeof(page)}), std::nullopt};
}

}  // namespace zeldb::scan
