// SPDX-License-Identifier: Apache-2.0
#include "zel_db/sql/lifting.h"

#include <algorithm>
#include <charconv>

#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

using Kind = Token::Kind;

constexpr uint32_t kSigned = 2;
constexpr uint32_t kUnsigned = 3;

bool is_known(const _zel_db_param_t& parameter) {
  return parameter.Type == kSigned || parameter.Type == kUnsigned;
}

Value value_of(const _zel_db_param_t& parameter) {
  const auto low = static_cast<uint32_t>(parameter.Value);
  return Value::compared(parameter.Type == kSigned ? static_cast<int64_t>(static_cast<int32_t>(low)) : low);
}

class Lifter {
 public:
  Lifter(std::string_view text, Parameters parameters, Literals literals, SqlText& sql, Values& values)
      : end_(text.data() + text.size()),
        copied_(text.data()),
        tokens_(text),
        parameters_(parameters),
        lifts_(literals == Literals::Lift),
        sql_(sql),
        values_(values) {}

  LiftOutcome run();

 private:
  void take(const Token& token);
  void take_placeholder(const Token& placeholder);
  void end_statement(const Token& semicolon);

  void lift_number(const Token& number);
  Value unquoted(const Token& text);
  void put_placeholder(const char* from, const char* to, const Value& value);
  void leave_out(const Token& comment);
  void copy_until(const char* p) { sql_.append(copied_, static_cast<size_t>(p - copied_)); }
  void fail(const char* reason, int status = kSqlError) {
    outcome_.status = status;
    outcome_.reason = reason;
  }

  const char* const end_;
  const char* copied_;  // what stands before it is in the template
  Tokens tokens_;
  Parameters parameters_;
  size_t next_parameter_ = 0;
  const bool lifts_;
  SqlText& sql_;
  Values& values_;
  LiftOutcome outcome_;
};

LiftOutcome Lifter::run() {
  while (!tokens_.at_end()) {
    take(tokens_.next_mark());
    if (outcome_.status != kOk) return outcome_;
  }
  if (!outcome_.ended) copy_until(end_);
  if (next_parameter_ != parameters_.size()) {
    fail("the parameters are not as many as the placeholders", kInvalidArgument);
  }
  return outcome_;
}

void Lifter::take(const Token& token) {
  switch (token.kind) {
    case Kind::Text:
      if (lifts_) put_placeholder(token.begin(), token.end(), unquoted(token));
      break;
    case Kind::Number:
      if (lifts_) lift_number(token);
      break;
    case Kind::Placeholder:
      take_placeholder(token);
      break;
    case Kind::Comment:
      if (lifts_) leave_out(token);
      break;
    case Kind::Symbol:
      if (token.is(';')) {
        end_statement(token);
      } else if (lifts_) {
        fail("a symbol that not every engine knows");
      }
      break;
    case Kind::Open:
      fail(token.text().front() == '`'   ? "unterminated name"
           : token.text().front() == '/' ? "unterminated comment"
                                         : "unterminated text");
      break;
    default:
      break;
  }
}

// "007" stays in the template: a column of texts tells it from "7".
void Lifter::lift_number(const Token& number) {
  const bool is_signed = !is_digit(*number.begin());
  const char* const digits = number.begin() + (is_signed ? 1 : 0);
  if (*digits == '0' && number.end() - digits > 1) return;
  int64_t value = 0;
  const auto [end, error] =
      std::from_chars(*number.begin() == '-' ? number.begin() : digits, number.end(), value);
  if (error != std::errc() || end != number.end()) return;
  put_placeholder(number.begin(), number.end(), Value::compared(value));
}

void Lifter::take_placeholder(const Token& placeholder) {
  if (placeholder.end() < end_ && is_digit(*placeholder.end())) return fail("numbered placeholder");
  if (next_parameter_ == parameters_.size()) {
    return fail("the parameters are fewer than the placeholders", kInvalidArgument);
  }
  const _zel_db_param_t& parameter = parameters_[next_parameter_++];
  if (!is_known(parameter)) return fail("unknown parameter type", kInvalidArgument);
  const Value value = value_of(parameter);
  const char* const p = placeholder.begin();
  const bool is_apart = p != copied_ && !is_word(p[-1]) && p[-1] != '?' && (p + 1 == end_ || !is_word(p[1]));
  if (!is_apart) return put_placeholder(p, p + 1, value);
  values_.list.push_back(value);  // the placeholder is copied with the text around it
}

void Lifter::end_statement(const Token& semicolon) {
  copy_until(semicolon.begin());
  outcome_.ended = true;
  for (Token token = tokens_.next(); token.kind != Kind::End; token = tokens_.next()) {
    if (!token.is(';')) return fail("more than one statement");
  }
}

// A blank keeps "?" apart from a word, a digit or another placeholder: "?1" would be the first parameter.
void Lifter::put_placeholder(const char* from, const char* to, const Value& value) {
  copy_until(from);
  if (!sql_.empty() && (is_word(sql_.back()) || sql_.back() == '?')) sql_.push_back(' ');
  sql_.push_back('?');
  if (to < end_ && is_word(*to)) sql_.push_back(' ');
  copied_ = to;
  values_.list.push_back(value);
}

void Lifter::leave_out(const Token& comment) {
  copy_until(comment.begin());
  sql_.push_back(' ');
  copied_ = comment.end();
}

Value Lifter::unquoted(const Token& text) {
  const std::string_view inside = text.text().substr(1, text.size - 2);
  if (!text.has_doubled_quote) return Value::text_of(inside);

  if (values_.unquoted.empty()) {
    values_.unquoted.reserve_more(static_cast<size_t>(end_ - text.begin()));  // it never moves
  }
  const size_t start = values_.unquoted.size();
  for (const char* p = inside.begin(); p < inside.end(); ++p) {
    values_.unquoted.push_back(*p);
    if (*p == *text.begin()) ++p;
  }
  return Value::text_of(values_.unquoted.view(start));
}

}  // namespace

bool append_parameters(Parameters parameters, Values& values) {
  for (const _zel_db_param_t& parameter : parameters) {
    if (!is_known(parameter)) return false;
    values.list.push_back(value_of(parameter));
  }
  return true;
}

LiftOutcome lift_literals(std::string_view text, Parameters parameters, Literals literals, SqlText& sql,
                          Values& values) {
  return Lifter(text, parameters, literals, sql, values).run();
}

}  // namespace zel_db
