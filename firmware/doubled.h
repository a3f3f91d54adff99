// SPDX-License-Identifier: Apache-2.0
#ifndef FIRMWARE_DOUBLED_H
#define FIRMWARE_DOUBLED_H

#include <cstddef>

namespace zeldb {

// A text from a device, for use between two quotes in SQL: each quote inside is doubled. The result is cut at
// N - 1 characters.
template <size_t N>
class Doubled {
 public:
  Doubled(const char* text, char quote) {
    for (size_t length = 0; *text != '\0' && length < N - 1; ++text) {
      text_[length++] = *text;
      if (*text == quote && length < N - 1) text_[length++] = quote;
    }
  }

  const char* text() const { return text_; }

 private:
  char text_[N] = {};
};

template <size_t N>
Doubled<2 * N> doubled(const char (&field)[N], char quote) {
  return {field, quote};
}

}  // namespace zeldb

#endif
