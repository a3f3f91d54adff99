// SPDX-License-Identifier: Apache-2.0
//
// CMR_CALL_LOG=FILE records the calls of this interface, one line each, so that a test can see their order
// and what was not called. Columns, separated by tabs: function, name, count, selector, the request's first
// two words, its setting id, its value, status. "-" stands for a column that the call does not have, \N for a
// null text; tab, line end and backslash in texts are escaped. A call with several requests has a line for
// each.
#ifndef ZEL_PLATFORM_CMR_CALL_LOG_H
#define ZEL_PLATFORM_CMR_CALL_LOG_H

#include <optional>
#include <span>

#include "platform/cmr.h"

namespace zel_platform {

struct Call {
  const char* function;
  std::optional<const char*> name{};
  std::optional<size_t> count{};
  std::optional<int> selector{};
  std::span<const cmr_bios_attribute_value> requests{};
  int rc = 0;
};

void log_call(const Call& call);

}  // namespace zel_platform

#endif
