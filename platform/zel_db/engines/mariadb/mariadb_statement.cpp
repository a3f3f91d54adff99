// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/mariadb/mariadb_statement.h"

#include <errmsg.h>
#include <mysqld_error.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

// A text that is no number is sent as this beside a column of numbers: the server would take "five" for 0.
constexpr double kAboveAllNumbers = 1e300;

constexpr size_t kDigits = 24;  // room for a number

constexpr unsigned kBinary = 63;  // the character set of columns that are no text

CellType type_of(const MYSQL_FIELD& field) {
  switch (field.type) {
    case MYSQL_TYPE_NULL:
      return CellType::Null;
    case MYSQL_TYPE_TINY:
    case MYSQL_TYPE_SHORT:
    case MYSQL_TYPE_INT24:
    case MYSQL_TYPE_LONG:
    case MYSQL_TYPE_LONGLONG:
    case MYSQL_TYPE_YEAR:
      return (field.flags & UNSIGNED_FLAG) != 0 ? CellType::Unsigned : CellType::Integer;
    case MYSQL_TYPE_FLOAT:
    case MYSQL_TYPE_DOUBLE:
      return CellType::Real;
    case MYSQL_TYPE_BIT:
    case MYSQL_TYPE_GEOMETRY:
    case MYSQL_TYPE_VARCHAR:
    case MYSQL_TYPE_VAR_STRING:
    case MYSQL_TYPE_STRING:
    case MYSQL_TYPE_TINY_BLOB:
    case MYSQL_TYPE_BLOB:
    case MYSQL_TYPE_MEDIUM_BLOB:
    case MYSQL_TYPE_LONG_BLOB:
      return field.charsetnr == kBinary ? CellType::Blob : CellType::Text;
    default:
      return CellType::Text;  // decimals, dates and times in their written form
  }
}

// The server no longer knows the statement, or the client library cannot follow its new columns.
bool is_outdated(unsigned code) {
  return code == ER_UNKNOWN_STMT_HANDLER || code == ER_NEED_REPREPARE || code == CR_NEW_STMT_METADATA;
}

template <class Number>
std::string_view bytes_of(const Number& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

// A value as the server gets it.
struct Sent {
  enum_field_types type;
  my_bool is_unsigned;
  std::string_view bytes;
};

// A number that may be compared with a column of texts is sent as its digits. If the server got a number, it
// would take the text "five" for 0 and read the whole table. It understands digits everywhere, but more
// slowly.
Sent sent(const Value& value, bool meets_number, char (&digits)[kDigits]) {
  if (value.kind == Value::Kind::Text) {
    const std::string_view text(value.text, value.size);
    if (meets_number && !reads_as_number(text)) return {MYSQL_TYPE_DOUBLE, 0, bytes_of(kAboveAllNumbers)};
    return {MYSQL_TYPE_STRING, 0, text};
  }
  if (value.is_compared && !meets_number) {
    const char* const end = std::to_chars(digits, digits + kDigits, value.number).ptr;
    return {MYSQL_TYPE_STRING, 0, {digits, static_cast<size_t>(end - digits)}};
  }
  const my_bool is_unsigned = value.kind == Value::Kind::Unsigned ? 1 : 0;
  return {MYSQL_TYPE_LONGLONG, is_unsigned, bytes_of(value.number)};
}

}  // namespace

MariadbStatement::MariadbStatement(MariadbConnection& connection, std::string_view sql, Facts facts)
    : Prepared(std::move(facts)), connection_(connection), sql_(sql) {
  connection_.add(this);
}

int MariadbStatement::fail(MYSQL_STMT* statement) {
  return connection_.fail(api.mysql_stmt_errno(statement), api.mysql_stmt_error(statement));
}

// A server limits the statements of all its clients together. At the limit this connection releases one.
int MariadbStatement::prepare() {
  int status = kOk;
  unsigned code = 0;
  do {
    std::unique_ptr<MYSQL_STMT, CloseStatement> statement(api.mysql_stmt_init(connection_.client()));
    if (statement == nullptr) {
      return connection_.fail(api.mysql_errno(connection_.client()), api.mysql_error(connection_.client()));
    }
    if (api.mysql_stmt_prepare(statement.get(), sql_.data(), sql_.size()) == 0) {
      begin_binding(api.mysql_stmt_param_count(statement.get()));
      statement_ = std::move(statement);
      return kOk;
    }
    code = api.mysql_stmt_errno(statement.get());
    status = fail(statement.get());
  } while (code == ER_MAX_PREPARED_STMT_COUNT_REACHED && connection_.release_oldest(this));
  return status;
}

void MariadbStatement::begin_binding(size_t count) {
  is_bound_ = false;
  bound_.assign(count, {});
  parameters_.assign(count, {});
  for (size_t i = 0; i < count; ++i) {
    bound_[i].bytes.resize(kDigits);
    parameters_[i].buffer_type = MYSQL_TYPE_STRING;
    parameters_[i].buffer = bound_[i].bytes.data();
    parameters_[i].length = &bound_[i].size;
    parameters_[i].is_null = &bound_[i].is_null;
  }
}

// The client library remembers the addresses of parameters, the server their types. They are bound again only
// if one of these changes, because binding costs more than copying the values.
bool MariadbStatement::bind(std::span<const Value> values) {
  const std::vector<bool>& meets_number = facts().meets_number;
  for (size_t i = 0; i < values.size(); ++i) {
    const Value& value = values[i];
    MYSQL_BIND& bind = parameters_[i];
    Parameter& parameter = bound_[i];
    parameter.is_null = value.kind == Value::Kind::Null ? 1 : 0;
    if (parameter.is_null != 0) continue;
    char digits[kDigits];
    const auto [type, is_unsigned, bytes] = sent(value, i < meets_number.size() && meets_number[i], digits);
    if (bind.buffer_type != type || bind.is_unsigned != is_unsigned) {
      bind.buffer_type = type;
      bind.is_unsigned = is_unsigned;
      is_bound_ = false;
    }
    parameter.size = static_cast<unsigned long>(bytes.size());
    if (parameter.size > parameter.bytes.size()) {
      parameter.bytes.resize(2 * parameter.size);
      bind.buffer = parameter.bytes.data();
      is_bound_ = false;
    }
    if (parameter.size != 0) std::memcpy(bind.buffer, bytes.data(), bytes.size());
  }
  is_bound_ =
      is_bound_ || values.empty() || api.mysql_stmt_bind_param(statement_.get(), parameters_.data()) == 0;
  return is_bound_;
}

int MariadbStatement::execute(std::span<const Value> values) {
  for (bool again = false;; again = true) {
    if (statement_ == nullptr) {
      const int status = prepare();
      if (status != kOk) return status;
    }
    if (parameters_.size() != values.size())
      return connection_.refuse("placeholders of another kind than \"?\"");
    if (bind(values) && api.mysql_stmt_execute(statement_.get()) == 0) return kOk;
    if (again || !is_outdated(api.mysql_stmt_errno(statement_.get()))) return fail(statement_.get());
    release();
  }
}

// A column's type may differ from the last run: its table was altered, or the column is a parameter.
bool MariadbStatement::bind_columns() {
  const std::span fields(api.mariadb_stmt_fetch_fields(statement_.get()),
                         api.mysql_stmt_field_count(statement_.get()));
  const auto fits = [](const FetchedCell& from, const MYSQL_FIELD& field) {
    return from.type == type_of(field);
  };
  if (std::equal(fetched_.begin(), fetched_.end(), fields.begin(), fields.end(), fits)) return true;

  auto names = std::make_shared<std::vector<std::string>>();
  std::vector<MYSQL_BIND> cells(fields.size());
  fetched_.clear();  // not known until the end
  std::vector<FetchedCell> fetched(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    FetchedCell& from = fetched[i];
    MYSQL_BIND& cell = cells[i];
    names->emplace_back(fields[i].name, fields[i].name_length);
    from.type = type_of(fields[i]);
    cell.is_null = &from.is_null;
    cell.error = &from.is_cut;
    cell.length = &from.size;
    cell.buffer_type = MYSQL_TYPE_STRING;
    cell.buffer = from.bytes;
    cell.buffer_length = sizeof from.bytes;
    if (from.type == CellType::Integer || from.type == CellType::Unsigned) {
      cell.buffer_type = MYSQL_TYPE_LONGLONG;
      cell.buffer = &from.integer;
      cell.is_unsigned = from.type == CellType::Unsigned ? 1 : 0;
    } else if (from.type == CellType::Real) {
      cell.buffer_type = MYSQL_TYPE_DOUBLE;
      cell.buffer = &from.real;
    }
  }
  if (api.mysql_stmt_bind_result(statement_.get(), cells.data()) != 0) return false;
  columns_ = std::move(names);
  fetched_ = std::move(fetched);
  return true;
}

// Copying a short text once more costs less than another call of the client library.
void MariadbStatement::append_text(size_t column, Result& rows) {
  const FetchedCell& from = fetched_[column];
  char* const text = rows.put_bytes(column, from.type, from.size);
  if (from.size <= sizeof from.bytes) {
    std::memcpy(text, from.bytes, from.size);
    return;
  }
  MYSQL_BIND cell{};
  cell.buffer_type = MYSQL_TYPE_STRING;
  cell.buffer = text;
  cell.buffer_length = from.size;
  api.mysql_stmt_fetch_column(statement_.get(), &cell, static_cast<unsigned>(column), 0);
}

void MariadbStatement::append_row(Result& rows) {
  rows.begin_row();
  for (size_t i = 0; i < fetched_.size(); ++i) {
    const FetchedCell& from = fetched_[i];
    if (from.is_null != 0) {
      rows.put_null(i);
      continue;
    }
    switch (from.type) {
      case CellType::Null:
        rows.put_null(i);
        break;
      case CellType::Integer:
        rows.put_integer(i, from.integer);
        break;
      case CellType::Unsigned:
        rows.put_unsigned(i, static_cast<uint64_t>(from.integer));
        break;
      case CellType::Real:
        rows.put_real(i, from.real);
        break;
      case CellType::Text:
      case CellType::Blob:
        append_text(i, rows);
        break;
    }
  }
}

int MariadbStatement::fetch(Result* rows) {
  const auto free_result = [](MYSQL_STMT* statement) { api.mysql_stmt_free_result(statement); };
  const std::unique_ptr<MYSQL_STMT, decltype(free_result)> release(statement_.get());
  if (rows == nullptr) return kOk;
  if (!bind_columns()) return fail(statement_.get());
  rows->set_columns(columns_);
  int code = api.mysql_stmt_fetch(statement_.get());
  while (code == 0 || code == MYSQL_DATA_TRUNCATED) {
    append_row(*rows);
    code = api.mysql_stmt_fetch(statement_.get());
  }
  return code == MYSQL_NO_DATA ? static_cast<int>(kOk) : fail(statement_.get());
}

int MariadbStatement::complete(Result* rows, Outcome* outcome) {
  if (api.mysql_stmt_field_count(statement_.get()) != 0) return fetch(rows);
  if (outcome != nullptr) {
    outcome->row_id = static_cast<int64_t>(api.mysql_stmt_insert_id(statement_.get()));
    outcome->changed = static_cast<int64_t>(api.mysql_stmt_affected_rows(statement_.get()));
  }
  return kOk;
}

// The server keeps with a prepared statement whether a sub-select gave a NULL, even if the rows change later.
// A statement with a sub-select is therefore prepared for each run.
int MariadbStatement::run(std::span<const Value> values, Result* rows, Outcome* outcome) {
  last_use_ = connection_.tick();
  int status = execute(values);
  if (status == kOk) status = complete(rows, outcome);
  if (facts().has_sub_select) release();
  return status;
}

void MariadbStatement::release() {
  statement_.reset();
  fetched_.clear();
}

}  // namespace zel_db
