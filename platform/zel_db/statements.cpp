// SPDX-License-Identifier: Apache-2.0
#include "zel_db/statements.h"

#include "zel_db/hash.h"
#include "zel_db/row_order.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

constexpr std::string_view kOneRow = "_id=? AND (";

// Columns that are compared with placeholders or NULL, and nothing else. An update refuses conversions of
// texts in other conditions that a query does not mind.
class Condition {
 public:
  Condition(std::string_view table, std::string_view text) : table_(table), cursor_(text) {}
  bool is_plain() { return is_term(kDeepest) && cursor_.at_end(); }

 private:
  static constexpr int kDeepest = 8;

  bool are_terms(int depth) {
    do {
      if (!is_term(depth)) return false;
    } while (cursor_.takes_word("or") || cursor_.takes_word("and"));
    return true;
  }
  bool is_term(int depth) {
    if (cursor_.takes('(')) return depth > 0 && are_terms(depth - 1) && cursor_.takes(')');
    if (!has_column(table_, cursor_.word())) return false;
    if (cursor_.takes_word("is")) {
      cursor_.takes_word("not");
      return cursor_.takes_word("null");
    }
    bool is_compared = false;
    while (cursor_.takes('=') || cursor_.takes('!') || cursor_.takes('<') || cursor_.takes('>'))
      is_compared = true;
    return is_compared && cursor_.takes('?');
  }

  std::string_view table_;
  Cursor cursor_;
};

void put_together_insert(const StatementKey& key, const Dialect& dialect, std::string& sql) {
  sql.append("INSERT INTO ").append(key.table);
  if (key.columns.empty()) {
    sql.append(dialect.insert_without_values);
    return;
  }
  sql.append(" (").append(key.columns).back() = ')';  // in place of the last comma
  sql.append(" VALUES (");
  for (const char c : key.columns) {
    if (c == ',') sql.append("?,");
  }
  sql.back() = ')';
}

void put_together_update(const StatementKey& key, std::string& sql) {
  sql.append("UPDATE ").append(key.table).append(" SET ");
  for (const char c : key.columns) {
    if (c == ',') sql.append("=?");
    sql.push_back(c);
  }
  sql.pop_back();
  if (!key.text.empty()) sql.append(" WHERE ").append(key.text);
}

void put_together_question(const StatementKey& key, const Dialect& dialect, std::string& sql) {
  const std::string_view condition = key.text.substr(kOneRow.size() - 1);
  if (dialect.searches_conditions) {
    sql.append("SELECT ").append(condition).append(" IS TRUE FROM ").append(key.table).append(" WHERE _id=?");
  } else {
    sql.append("SELECT 1 FROM ").append(key.table).append(" WHERE ").append(condition).append(" AND _id=?");
  }
}

}  // namespace

StatementKey text_key(std::string_view statement) {
  return {StatementKey::Form::Text, {}, {}, statement, hash_of(statement)};
}

StatementKey query_key(std::string_view statement, size_t table_end) {
  return {StatementKey::Form::Query, {}, {}, statement, hash_of(statement), table_end};
}

StatementKey insert_key(std::string_view table, std::string_view columns) {
  return {StatementKey::Form::Insert, table, columns, {}, hash_of(columns, hash_of(table))};
}

StatementKey question_key(std::string_view table, std::string_view where) {
  return {StatementKey::Form::Question, table, {}, where, hash_of(where, hash_of(table))};
}

bool can_be_asked(std::string_view table, std::string_view where) {
  return where.starts_with(kOneRow) && Condition(table, where.substr(kOneRow.size() - 1)).is_plain();
}

StatementKey update_key(const StatementKey& question, std::string_view columns) {
  return {StatementKey::Form::Update, question.table, columns, question.text,
          hash_of(columns, question.hash)};
}

std::string_view statement_text(const StatementKey& key, const Dialect& dialect, std::string& scratch) {
  if (key.form == StatementKey::Form::Text) return key.text;
  if (key.form == StatementKey::Form::Query) return in_row_order(key.text, key.table_end, dialect, scratch);
  scratch.clear();
  if (key.form == StatementKey::Form::Insert) put_together_insert(key, dialect, scratch);
  if (key.form == StatementKey::Form::Update) put_together_update(key, scratch);
  if (key.form == StatementKey::Form::Question) put_together_question(key, dialect, scratch);
  return scratch;
}

}  // namespace zel_db
