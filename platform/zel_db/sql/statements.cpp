// SPDX-License-Identifier: Apache-2.0
#include "zel_db/sql/statements.h"

#include "zel_db/engine.h"
#include "zel_db/hash.h"

namespace zel_db {
namespace {

using Form = StatementKey::Form;

std::string insert_text(const StatementKey& key, const Dialect& dialect) {
  std::string sql("INSERT INTO ");
  sql.append(key.table);
  if (key.columns.empty()) return sql.append(dialect.insert_without_values);
  sql.append(" (").append(key.columns).back() = ')';  // in place of the last comma
  sql.append(" VALUES (");
  for (const char c : key.columns) {
    if (c == ',') sql.append("?,");
  }
  sql.back() = ')';
  return sql;
}

std::string update_text(const StatementKey& key) {
  std::string sql("UPDATE ");
  sql.append(key.table).append(" SET ");
  for (const char c : key.columns) {
    if (c == ',') sql.append("=?");
    sql.push_back(c);
  }
  sql.pop_back();
  if (!key.text.empty()) sql.append(" WHERE ").append(key.text);
  return sql;
}

std::string look_text(const StatementKey& key, const Dialect& dialect) {
  const std::string_view condition = key.text.substr(key.text.find('('));
  std::string sql("SELECT ");
  if (dialect.searches_conditions)
    return sql.append(condition).append(" IS TRUE FROM ").append(key.table).append(" WHERE _id=?");
  return sql.append("1 FROM ").append(key.table).append(" WHERE ").append(condition).append(" AND _id=?");
}

std::string template_of(const StatementKey& key, const Dialect& dialect) {
  switch (key.form) {
    case Form::Insert:
      return insert_text(key, dialect);
    case Form::Update:
      return update_text(key);
    case Form::Look:
      return look_text(key, dialect);
    default:
      return std::string(key.text);
  }
}

// A number beside a column of texts is compared as a text: to a server 5 would equal "05", and 12E45678 would
// be out of range.
void quote_numbers(Facts& facts, std::string& sql) {
  for (size_t i = facts.beside_texts.size(); i-- > 0;) {
    const auto& [begin, end] = facts.beside_texts[i];
    sql.insert(end, 1, '\'').insert(begin, 1, '\'');
    if (end <= facts.table_end) facts.table_end += 2;
  }
}

// The line may end in a comment.
void add_order(const Facts& facts, const Dialect& dialect, std::string& sql) {
  switch (facts.order) {
    case RowOrder::Natural:
      if (!dialect.pays_for_order) sql.append("\nORDER BY _id");
      break;
    case RowOrder::Open:
      sql.append("\nORDER BY _id");
      break;
    case RowOrder::Asked:
      sql.append("\n, _id");
      break;
    case RowOrder::Distinct:
      sql.insert(facts.table_end, dialect.without_indexes);
      break;
    default:
      break;
  }
}

}  // namespace

StatementKey text_key(std::string_view statement) {
  return {Form::Text, {}, {}, statement, hash_of(statement)};
}

StatementKey query_key(std::string_view statement, uint64_t hash) {
  return {Form::Query, {}, {}, statement, hash};
}

StatementKey insert_key(std::string_view table, std::string_view columns) {
  return {Form::Insert, table, columns, {}, hash_of(columns, hash_of(table))};
}

StatementKey update_key(std::string_view table, std::string_view columns, std::string_view where) {
  return {Form::Update, table, columns, where, hash_of(columns, hash_of(where, hash_of(table)))};
}

StatementKey look_key(const StatementKey& update) {
  StatementKey look = update;
  look.form = Form::Look;
  return look;
}

// "_id=?" is first in the update's condition and last in the look.
void append_look_values(std::span<const Value> condition, SmallVector<Value, 64>& values) {
  values.append(condition.data() + 1, condition.size() - 1);
  values.push_back(condition.front());
}

std::string select_text(std::string_view table, std::span<const char* const> columns) {
  std::string sql("SELECT ");
  for (const char* column : columns) sql.append(column).push_back(',');
  if (columns.empty()) sql.append("*,");
  sql.back() = ' ';
  return sql.append("FROM ").append(table);
}

StatementText statement_text(const StatementKey& key, const Dialect& dialect) {
  std::string sql = template_of(key, dialect);
  Facts facts = facts_of(sql);
  quote_numbers(facts, sql);
  if (key.form == Form::Query) add_order(facts, dialect, sql);
  return {std::move(sql), std::move(facts)};
}

}  // namespace zel_db
