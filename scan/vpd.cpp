// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "scan/pci_functions.h"

namespace zeldb::scan {

namespace {

constexpr size_t kKeywordHeader = 3;  // two letters and the length

unsigned byte_at(std::string_view bytes, size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

// The bytes from the image's first one to the one after the keyword RV add up to 0.
bool adds_up(std::string_view image, size_t checksum) {
  unsigned sum = 0;
  for (size_t at = 0; at <= checksum; ++at) sum += byte_at(image, at);
  return (sum & 0xFFU) == 0;
}

// The keywords of the list that is image[begin, end). False where it is damaged, or without a checksum.
bool read_keywords(std::string_view image, size_t begin, size_t end, Vpd& vpd) {
  bool is_checked = false;
  while (begin + kKeywordHeader <= end && !is_checked) {
    const std::string_view name = image.substr(begin, 2);
    const size_t length = byte_at(image, begin + 2);
    begin += kKeywordHeader;
    if (length > end - begin) return false;
    const std::string value(image.substr(begin, length));
    if (name == "PN") vpd.part = value;
    if (name == "SN") vpd.serial = value;
    if (name == "MN") vpd.maker = value;
    if (name == "RV") {
      if (length == 0 || !adds_up(image, begin)) return false;
      is_checked = true;
    }
    begin += length;
  }
  return is_checked;
}

}  // namespace

std::optional<Vpd> decode_vpd(std::string_view bytes) {
  constexpr unsigned kLarge = 0x80;
  constexpr unsigned kName = 0x82;
  constexpr unsigned kReadOnly = 0x90;
  Vpd vpd;
  size_t at = 0;
  while (at + 3 <= bytes.size() && (byte_at(bytes, at) & kLarge) != 0) {
    const unsigned tag = byte_at(bytes, at);
    const size_t length = byte_at(bytes, at + 1) | byte_at(bytes, at + 2) << 8U;
    at += 3;
    if (length > bytes.size() - at) return std::nullopt;
    if (tag == kName) vpd.name = std::string(bytes.substr(at, length));
    if (tag == kReadOnly)
      return read_keywords(bytes, at, at + length, vpd) ? std::optional(vpd) : std::nullopt;
    at += length;
  }
  return std::nullopt;
}

}  // namespace zeldb::scan
