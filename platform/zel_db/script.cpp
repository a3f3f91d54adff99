// SPDX-License-Identifier: Apache-2.0
#include "zel_db/script.h"

#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

// Behind the statement's text: at its ";" or at the end.
const char* skip_statement(const char* p, const char* end) {
  while (p != nullptr && p < end && *p != ';') {
    if (*p == '"' || *p == '\'' || *p == '`') {
      p = skip_quoted(p, end);
    } else {
      const char* behind = skip_comment(p, end);
      p = behind == p ? p + 1 : behind;
    }
  }
  return p != nullptr ? p : end;
}

}  // namespace

std::vector<std::string_view> split_statements(std::string_view script) {
  std::vector<std::string_view> statements;
  const char* const end = script.data() + script.size();
  const char* p = script.data();
  while ((p = skip_blanks(p, end)) < end) {
    const char* behind = skip_statement(p, end);
    if (behind != p) statements.emplace_back(p, static_cast<size_t>(behind - p));
    p = behind < end ? behind + 1 : end;
  }
  return statements;
}

}  // namespace zel_db
