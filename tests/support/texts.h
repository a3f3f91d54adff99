// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
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

struct Export {
  std::string symbol;
  std::string name;  // of C++ as it is written
};
inline std::vector<Export> exports_of(const std::filesystem::path& map) {
  std::vector<Export> exports;
  const std::string list = content_of(map);
  const std::regex entry("\n +((?:_Z([0-9]+))?([A-Za-z_0-9]+));");
  for (std::sregex_iterator match(list.begin(), list.end(), entry), end; match != end; ++match) {
    const std::string length = (*match)[2];
    exports.push_back(
        {(*match)[1], (*match)[3].str().substr(0, length.empty() ? std::string::npos : std::stoul(length))});
  }
  return exports;
}

}  // namespace zeldb_test

#endif
