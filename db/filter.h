// SPDX-License-Identifier: Apache-2.0
#ifndef DB_FILTER_H
#define DB_FILTER_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace zeldb {

// A condition is written as the SQL that is sent, with its values in it: Filter<128>("FunKey=%d", key). N is
// the room that controllers have always had for it. The text has at most N - 1 characters; a longer one is
// cut, which the database usually refuses, and callers see that status.
//
// Numbers are formatted into the text. A value is bound ("?") where one function is looked up by its key, or
// where the caller hands over the condition and the value. Only conditions without a bound, lists of values
// and whole records, are put together in a std::string. Names of columns and tables stand in the text, unless
// the same condition is used with several.
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
