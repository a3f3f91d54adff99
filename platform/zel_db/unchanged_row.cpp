// SPDX-License-Identifier: Apache-2.0
#include "zel_db/unchanged_row.h"

#include "zel_db/small_vector.h"

namespace zel_db {
namespace {

std::unique_ptr<Prepared> prepare_look(const Session& session, const StatementKey& update) {
  auto [sql, facts] = statement_text(look_key(update), *session.dialect);
  int status = kOk;
  return session.connection->prepare(sql, std::move(facts), Use::Often, &status);
}

Look look(Prepared& query, std::span<const Value> condition) {
  SmallVector<Value, 64> values;
  append_look_values(condition, values);
  Result rows;
  if (query.run({values.begin(), values.size()}, &rows, nullptr) != kOk) return Look::Failed;
  uint64_t matches = 0;
  const bool finds_nothing = rows.step() != kRow || (rows.number(0, &matches) == kOk && matches == 0);
  return finds_nothing ? Look::Unchanged : Look::Unknown;
}

}  // namespace

// Mostly nothing has changed. A query finds that out faster than an update, which takes locks before it finds
// nothing to write. The update is known to be valid, because it has been used before.
Look look_at_row(Session& session, const StatementKey& update, std::span<const Value> condition) {
  constexpr size_t kMany = 8;  // fewer cost too little
  if (condition.size() < kMany) return Look::Unknown;
  const StatementCache::Lease lease = session.cache.find(update);
  if (!lease || !lease.statement().facts().is_of_one_row) return Look::Unknown;
  if (lease.look() == nullptr) lease.look() = prepare_look(session, update);
  return lease.look() != nullptr ? look(*lease.look(), condition) : Look::Failed;
}

}  // namespace zel_db
