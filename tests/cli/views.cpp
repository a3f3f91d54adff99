// SPDX-License-Identifier: Apache-2.0
#include "tests/cli/views.h"

#include <iomanip>
#include <sstream>

#include "tests/cli/sample.h"

namespace zeldb_test {

const nlohmann::ordered_json& schema() {
  static const auto whole = nlohmann::ordered_json::parse(content_of(ZELDB_SCHEMA));
  return whole;
}

std::vector<std::string> words_of(const std::string& command) {
  std::istringstream stream(command);
  std::vector<std::string> words;
  for (std::string word; stream >> std::quoted(word, '\'');) words.push_back(with_samples(word));
  return words;
}

std::string view_of(const std::string& command) {
  const std::vector<std::string> words = words_of(command);
  for (const std::string& word : words) {
    if (word.starts_with("--") && schema().at("$defs").contains(words[0] + word.substr(1)))
      return words[0] + word.substr(1);
  }
  return words[0];
}

Transcript transcript_of(const std::string& name) {
  const std::string file = name + ".txt";
  std::istringstream lines(content_of(std::string(ZELDB_GOLDEN "/") + file));
  Transcript transcript;
  std::getline(lines, transcript.databases);
  std::vector<Block>& blocks = transcript.blocks;
  int number = 1;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (line.starts_with(kPrompt)) {
      // The empty line before it belongs to neither.
      if (!blocks.empty() && !blocks.back().printed.empty()) blocks.back().printed.pop_back();
      blocks.push_back({file + ":" + std::to_string(number), line.substr(kPrompt.size()), {}});
    } else if (!blocks.empty()) {
      blocks.back().printed += line + "\n";
    }
  }
  return transcript;
}

}  // namespace zeldb_test
