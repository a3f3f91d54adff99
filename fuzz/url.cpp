// SPDX-License-Identifier: Apache-2.0
#include <cctype>

#include "fuzz/input.h"
#include "zel_db/database_url.h"

using namespace zeldb_fuzz;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using zel_db::DatabaseUrl;
  std::string error;
  const auto url = zel_db::parse_database_url(Input(data, size).all(), &error);
  expect(url.has_value() == error.empty(), "a URL or what is wrong with it");
  if (!url) return 0;
  expect(url->scheme == DatabaseUrl::Scheme::Sqlite ? !url->path.empty() : !url->hosts.empty(), "a place");
  for (const char c : url->prefix)
    expect(std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_', "a prefix of word characters");
  return 0;
}
