// SPDX-License-Identifier: Apache-2.0
#include "cli/similar.h"

#include <algorithm>
#include <cctype>

namespace zeldb::cli {

namespace {

std::string lower(std::string word) {
  std::ranges::transform(word, word.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return word;
}

// The number of characters that have to be inserted, removed, replaced or swapped with a neighbour.
size_t distance(const std::string& from, const std::string& to) {
  std::vector<size_t> before_last;
  std::vector<size_t> last(to.size() + 1);
  for (size_t place = 0; place < last.size(); ++place) last[place] = place;
  for (size_t row = 1; row <= from.size(); ++row) {
    std::vector<size_t> here(to.size() + 1, row);
    for (size_t place = 1; place <= to.size(); ++place) {
      const size_t other = from[row - 1] == to[place - 1] ? 0 : 1;
      here[place] = std::min({last[place] + 1, here[place - 1] + 1, last[place - 1] + other});
      const bool is_swap =
          row > 1 && place > 1 && from[row - 1] == to[place - 2] && from[row - 2] == to[place - 1];
      if (is_swap) here[place] = std::min(here[place], before_last[place - 2] + 1);
    }
    before_last = std::move(last);
    last = std::move(here);
  }
  return last.back();
}

}  // namespace

std::string did_you_mean(const std::string& given, const std::vector<std::string>& known) {
  constexpr size_t kLongest = 64;
  if (given.size() > kLongest) return {};
  const std::string word = lower(given);
  size_t least = std::min<size_t>(3, word.size() / 2 + 1);
  const std::string* found = nullptr;
  for (const std::string& candidate : known) {
    const size_t away = distance(word, lower(candidate));
    if (away >= least) continue;
    least = away;
    found = &candidate;
  }
  return found != nullptr ? ", did you mean " + *found + "?" : "";
}

}  // namespace zeldb::cli
