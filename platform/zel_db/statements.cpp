// SPDX-License-Identifier: Apache-2.0
#include "zel_db/statements.h"

#include "zel_db/hash.h"
#include "zel_db/row_order.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

constexpr std::string_view kOneRow = "_id=? AND (";

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

bool can_be_asked(std::string_view where) {
  if (!where.starts_with(kOneRow)) return false;
  const char* const end = where.data() + where.size();
  int depth = 1;
  for (const char* p = where.data() + kOneRow.size(); p < end; ++p) {
    if (*p == '\'' || *p == '"' || *p == '`' || skip_comment(p, end) != p) return false;
    depth += *p == '(' ? 1 : *p == ')' ? -1 : 0;
    if (depth == 0) return p + 1 == end;
  }
  return false;
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
