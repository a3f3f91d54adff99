// SPDX-License-Identifier: Apache-2.0
#ifndef DB_FILTER_H
#define DB_FILTER_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace zeldb {

// A text of at most N - 1 characters. A longer one is cut, which the database usually refuses: callers see
// that status.
template <size_t N>
class Filter {
 public:
  __attribute__((format(printf, 2, 3))) explicit Filter(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text_, N, format, arguments);
    va_end(arguments);
  }

  operator const char*() const { return text_; }  // NOLINT(google-explicit-constructor): stands for its text
  char* text() { return text_; }
  static constexpr int capacity() { return N; }

 private:
  char text_[N] = {};
};

}  // namespace zeldb

#endif
