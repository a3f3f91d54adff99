// SPDX-License-Identifier: Apache-2.0
//
// All rows of the listings for one slot or bay.
#ifndef CLI_PLACE_DETAILS_H
#define CLI_PLACE_DETAILS_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/listing.h"
#include "cli/output.h"
#include "cli/settings.h"

namespace zeldb::cli {

// The rows of a listing, or why it cannot be read.
struct Listed {
  std::vector<Row> rows{};
  std::string trouble{};
};

struct PlaceDetails {
  const View* view;
  std::string title;
  std::string columns;  // keys of the columns; empty for those of the listing, or "all"
  std::string nothing;  // shown if there are no rows; empty: the part is left out
  Listed found{};

  bool is_shown() const { return !found.rows.empty() || !found.trouble.empty() || !nothing.empty(); }
};

// The details of one place.
Table table_of(const PlaceDetails& details);

// Functions and adapters are named by the digits of their keys.
struct WantedPlace {
  Place place;
  std::set<std::string> functions;
  std::string adapter{};  // only this one of several in a slot; empty: all of them
};

// Reads each listing once, however many places are asked for.
class PlaceReader {
 public:
  explicit PlaceReader(Mask* mask) : mask_(mask) {}

  // Has to be called before details_of reads settings.
  void read_settings_of(const std::set<std::string>& functions);
  // "settings" and "pending" cover these functions only; use dpu_log for "dpu-log".
  const Listed& listed(std::string_view name);
  std::vector<PlaceDetails> details_of(const WantedPlace& wanted);
  Listed dpu_log(int slot);

 private:
  Listed read(const View& view);

  Mask* mask_;
  std::vector<PCISetting_info> settings_;  // without secrets
  bool are_values_known_ = false;
  std::string settings_trouble_;
  std::map<std::string, Listed, std::less<>> listed_;
};

// A cell as a text to be compared; empty if it is not known.
std::string text_at(const View& view, const Row& row, std::string_view key);

}  // namespace zeldb::cli

#endif
