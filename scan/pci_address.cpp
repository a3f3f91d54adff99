// SPDX-License-Identifier: Apache-2.0
#include <charconv>
#include <cstdio>

#include "scan/pci_functions.h"

namespace zeldb::scan {

std::string text_of(const Address& address) {
  char text[32];
  std::snprintf(text, sizeof(text), "%04x:%02x:%02x.%x", address.segment, address.bus, address.device,
                address.function);
  return text;
}

std::optional<Address> address_of(std::string_view text) {
  Address address;
  const struct {
    unsigned* number;
    unsigned most;
    char after;
  } parts[] = {{&address.segment, 0xFFFFFFFF, ':'},
               {&address.bus, 0xFF, ':'},
               {&address.device, 0x1F, '.'},
               {&address.function, 0x7, '\0'}};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (const auto& part : parts) {
    const auto [stop, error] = std::from_chars(at, end, *part.number, 16);
    if (error != std::errc() || *part.number > part.most) return std::nullopt;
    at = stop;
    if (part.after == '\0') continue;
    if (at == end || *at != part.after) return std::nullopt;
    ++at;
  }
  return at == end ? std::optional(address) : std::nullopt;
}

std::optional<Address> function_on_path(const std::string& path) {
  std::string_view rest = path;
  while (!rest.empty()) {
    const size_t slash = rest.rfind('/');
    const std::string_view last = slash == std::string_view::npos ? rest : rest.substr(slash + 1);
    if (const auto address = address_of(last)) return address;
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(0, slash);
  }
  return std::nullopt;
}

std::optional<uint64_t> adapter_key(const Placement& placement) {
  if (!placement.slot) return std::nullopt;
  return uint64_t{placement.location} << 16U | *placement.slot;
}

}  // namespace zeldb::scan
