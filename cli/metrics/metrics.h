// SPDX-License-Identifier: Apache-2.0
//
// The inventory as numbers for monitoring, in the text format that Prometheus and OpenMetrics share: gauges
// alone. docs/metrics.md says what they are for.
#ifndef CLI_METRICS_METRICS_H
#define CLI_METRICS_METRICS_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/mask.h"
#include "cli/parts.h"

namespace zeldb::cli::metrics {

// Bounds: a label value has so many characters at most, a family so many series.
constexpr size_t kLongestLabel = 64;
constexpr size_t kMostSeries = 2000;

using Labels = std::vector<std::pair<const char*, std::string>>;

class Metrics {
 public:
  // The family is one of the table of families. Empty labels are left out. A series beyond the bounds, or
  // that is there already, is only counted.
  void add(const std::string& family, const Labels& labels, double value);
  // Adds the text of other metrics as series of this machine. Their bounds have been checked.
  void add_machine(const std::string& machine, std::string_view text);
  // Families in the order of their table, each with what it means.
  std::string text() const;

 private:
  std::map<std::string, std::vector<std::string>> series_;
  std::set<std::string> known_;
  size_t left_out_ = 0;
};

struct Sources {
  Mask* mask = nullptr;
  const std::vector<Part>* baseline = nullptr;
};

// A section that cannot be read is reported on standard error and by zeldb_section_up. If none can, that is a
// Failure.
struct Read {
  Metrics metrics;
  bool is_whole = true;
};
Read read_metrics(const Sources& sources);

}  // namespace zeldb::cli::metrics

#endif
