// SPDX-License-Identifier: Apache-2.0
#include "ucm/gathered_settings.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "platform/zel_db_batch.h"
#include "zeldb/status.h"

namespace zeldb {

namespace {

constexpr size_t kMost = 64;

std::array<PCISetting_info, kMost> records;  // too much for the stack, and memory must not run out here

// A handle of another library has no batches, even if this one offers them.
bool has_batches(_zel_db_handle_t* handle) {
  return zel_db_begin_batch != nullptr && zel_db_end_batch != nullptr &&
         zel_db_begin_batch(handle) == ZELDB_OK && zel_db_end_batch(handle) == ZELDB_OK;
}

// Returns how many could be stored before the first that could not.
size_t store_each(std::span<const PCISetting_info> settings) {
  const auto fails = [](const PCISetting_info& setting) {
    return extract_PCISetting_info(&setting) != ZELDB_OK;
  };
  return static_cast<size_t>(std::find_if(settings.begin(), settings.end(), fails) - settings.begin());
}

}  // namespace

GatheredSettings::GatheredSettings(_zel_db_handle_t* handle, Mode mode)
    : handle_(handle), most_(mode == Mode::Together && has_batches(handle) ? kMost : 1) {}

PCISetting_info& GatheredSettings::add() {
  return records[count_++] = {};
}

bool GatheredSettings::store() {
  const std::span<const PCISetting_info> gathered(records.data(), std::exchange(count_, 0));
  if (gathered.size() < 2 || zel_db_begin_batch(handle_) != ZELDB_OK)
    return store_each(gathered) == gathered.size();
  const size_t stored = store_each(gathered);
  const bool is_kept = zel_db_end_batch(handle_) == ZELDB_OK;
  // One that failed within a batch would fail again, and has said so.
  return (is_kept || store_each(gathered.first(stored)) == stored) && stored == gathered.size();
}

}  // namespace zeldb
