// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_STATEMENT_CACHE_H
#define ZEL_DB_STATEMENT_CACHE_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "zel_db/engine.h"
#include "zel_db/sql/statements.h"

namespace zel_db {

// Prepared statements of one connection; the least recently used one is dropped first. They are found through
// a small index. It is rebuilt when a statement is dropped, which happens only when another is prepared: that
// costs a hundred times as much.
class StatementCache {
 public:
  StatementCache() { index_.fill(kNoEntry); }

  // The parser alone uses some 70 statements.
  static constexpr size_t kCapacity = 128;

 private:
  struct Entry {
    std::string key;
    uint64_t hash = 0;
    StatementKey::Form form{};
    std::unique_ptr<Prepared> statement;
    std::unique_ptr<Prepared> look;
    uint64_t last_use = 0;
    bool busy = false;
  };

 public:
  // A statement while it runs: a cached one, or one of its own where the cached one is busy.
  class Lease {
   public:
    Lease() = default;
    explicit Lease(Entry& entry) : entry_(&entry) { entry.busy = true; }
    explicit Lease(std::unique_ptr<Prepared> owned) : owned_(std::move(owned)) {}
    Lease(Lease&& other) noexcept : entry_(other.entry_), owned_(std::move(other.owned_)) {
      other.entry_ = nullptr;
    }
    Lease& operator=(Lease&&) = delete;
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() {
      if (entry_ != nullptr) entry_->busy = false;
    }

    explicit operator bool() const { return entry_ != nullptr || owned_ != nullptr; }
    Prepared& statement() const { return entry_ != nullptr ? *entry_->statement : *owned_; }
    // The query that a cached update runs first; null until it has been prepared.
    std::unique_ptr<Prepared>& look() const { return entry_->look; }

   private:
    Entry* entry_ = nullptr;
    std::unique_ptr<Prepared> owned_;
  };

  // False when there is none, or it is busy.
  Lease find(const StatementKey& key);
  Lease add(const StatementKey& key, std::unique_ptr<Prepared> statement);

 private:
  static constexpr size_t kIndexSize = 2 * kCapacity;
  static constexpr uint8_t kNoEntry = 0xFF;
  static_assert(kCapacity < kNoEntry);

  Entry* entry_of(const StatementKey& key);
  size_t free_place();
  void put_into_index(size_t place);

  std::array<uint8_t, kIndexSize> index_;  // places of entries, found from their hash on
  std::array<Entry, kCapacity> entries_;
  size_t size_ = 0;
  uint64_t clock_ = 0;
};

}  // namespace zel_db

#endif
