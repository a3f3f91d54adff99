// SPDX-License-Identifier: Apache-2.0
#include "zel_db/statement_cache.h"

#include <algorithm>

namespace zel_db {
namespace {

bool matches(const std::string& stored, const StatementKey& key) {
  std::string_view rest = stored;
  const auto takes = [&](std::string_view part) {
    if (!rest.starts_with(part)) return false;
    rest.remove_prefix(part.size());
    return true;
  };
  return stored.size() == key.table.size() + key.columns.size() + key.text.size() && takes(key.table) &&
         takes(key.columns) && takes(key.text);
}

}  // namespace

StatementCache::Entry* StatementCache::entry_of(const StatementKey& key) {
  for (size_t i = key.hash % kIndexSize; index_[i] != kNoEntry; i = (i + 1) % kIndexSize) {
    Entry& entry = entries_[index_[i]];
    if (entry.hash == key.hash && entry.form == key.form && matches(entry.key, key)) return &entry;
  }
  return nullptr;
}

void StatementCache::put_into_index(size_t place) {
  size_t i = entries_[place].hash % kIndexSize;
  while (index_[i] != kNoEntry) i = (i + 1) % kIndexSize;
  index_[i] = static_cast<uint8_t>(place);
}

// kCapacity when all are busy.
size_t StatementCache::free_place() {
  if (size_ < kCapacity) return size_;
  const auto drop_first = [](const Entry& a, const Entry& b) {
    return a.busy != b.busy ? b.busy : a.last_use < b.last_use;
  };
  const auto oldest = std::min_element(entries_.begin(), entries_.end(), drop_first);
  return oldest->busy ? kCapacity : static_cast<size_t>(oldest - entries_.begin());
}

StatementCache::Lease StatementCache::find(const StatementKey& key) {
  Entry* entry = entry_of(key);
  if (entry == nullptr || entry->busy) return {};
  entry->last_use = ++clock_;
  return Lease(*entry);
}

StatementCache::Lease StatementCache::add(const StatementKey& key, std::unique_ptr<Prepared> statement) {
  const size_t place = free_place();
  if (place == kCapacity || entry_of(key) != nullptr) return Lease(std::move(statement));
  std::string joined;
  joined.reserve(key.table.size() + key.columns.size() + key.text.size());
  joined.append(key.table).append(key.columns).append(key.text);

  Entry& entry = entries_[place];
  entry.key = std::move(joined);
  entry.hash = key.hash;
  entry.form = key.form;
  entry.statement = std::move(statement);
  entry.look.reset();
  entry.last_use = ++clock_;
  if (place == size_) {
    ++size_;
    put_into_index(place);
  } else {
    index_.fill(kNoEntry);
    for (size_t i = 0; i < size_; ++i) put_into_index(i);
  }
  return Lease(entry);
}

}  // namespace zel_db
