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

bool finds_nothing(Prepared& look, std::span<const Value> condition) {
  SmallVector<Value, 64> values;
  values.append(condition.data() + 1, condition.size() - 1);
  values.push_back(condition.front());
  Result rows;
  if (look.run({values.begin(), values.size()}, &rows, nullptr) != kOk) return false;
  uint64_t matches = 0;
  return rows.step() != kRow || (rows.number(0, &matches) == kOk && matches == 0);
}

}  // namespace

// Mostly nothing has changed. A query finds that out faster than an update, which takes locks before it finds
// nothing to write. The update is known to be valid, because it has been used before. Within a transaction a
// query would see the rows as they were when that began. If the look fails, the update is run.
bool row_is_unchanged(Session& session, const StatementKey& update, std::span<const Value> condition) {
  constexpr size_t kMany = 8;  // fewer cost too little
  if (condition.size() < kMany || session.connection->in_transaction()) return false;
  const StatementCache::Lease lease = session.cache.find(update);
  if (!lease || !lease.statement().facts().is_of_one_row) return false;
  if (lease.look() == nullptr) lease.look() = prepare_look(session, update);
  return lease.look() != nullptr && finds_nothing(*lease.look(), condition);
}

}  // namespace zel_db
