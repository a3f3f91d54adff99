// SPDX-License-Identifier: Apache-2.0
#include "scan/drive_answers.h"

#include <algorithm>
#include <charconv>

namespace zeldb::scan {

std::optional<NvmeHealth> decode_nvme_health(std::string_view page) {
  constexpr size_t kSize = 512;
  constexpr unsigned kZeroCelsius = 273;
  constexpr unsigned kHottest = 255;  // the largest value of its column
  constexpr unsigned kAll = 100;
  if (page.size() < kSize) return std::nullopt;
  const auto byte = [page](size_t at) { return static_cast<unsigned>(static_cast<unsigned char>(page[at])); };
  const unsigned kelvin = byte(1) | byte(2) << 8U;
  if (kelvin < kZeroCelsius || kelvin > kZeroCelsius + kHottest) return std::nullopt;
  return NvmeHealth{
      .warning = byte(0), .celsius = kelvin - kZeroCelsius, .life_left = kAll - std::min(byte(5), kAll)};
}

std::string without_escapes(const std::string& text) {
  constexpr size_t kEscape = 4;
  std::string plain;
  for (size_t at = 0; at < text.size();) {
    unsigned code = 0;
    const char* const end = text.data() + std::min(at + kEscape, text.size());
    if (text.compare(at, 2, "\\x") == 0 && text.size() - at >= kEscape &&
        std::from_chars(text.data() + at + 2, end, code, 16).ptr == end) {
      plain += static_cast<char>(code);
      at += kEscape;
    } else {
      plain += text[at++];
    }
  }
  return plain;
}

}  // namespace zeldb::scan
