// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zeldb_test {

inline std::string content_of(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The names without the extension of the folder's files that have it, sorted.
inline std::vector<std::string> names_in(const std::filesystem::path& folder, const std::string& extension) {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (file.path().extension() == extension) names.push_back(file.path().stem());
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

}  // namespace zeldb_test

#endif
