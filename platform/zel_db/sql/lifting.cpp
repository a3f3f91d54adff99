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

// These begin a comment, a variable, a name and a NULL for one engine and are an error for the other.
constexpr std::string_view kOfOneEngine = "#@[\\";

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
  // Takes a token and returns the next one to look at.
  Token take(const Token& token);
  Token take_symbol(const Token& symbol);
  Token take_operand();
  void take_text(const Token& text);
  void take_placeholder(const Token& placeholder);
  void end_statement(const Token& semicolon);

  void lift_number(const char* from, const char* digits, const char* to);
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
  Token token = tokens_.next_mark();
  while (token.kind != Kind::End && outcome_.status == kOk) token = take(token);
  if (outcome_.status != kOk) return outcome_;
  if (!outcome_.ended) copy_until(end_);
  if (next_parameter_ != parameters_.size()) {
    fail("the parameters are not as many as the placeholders", kInvalidArgument);
  }
  return outcome_;
}

Token Lifter::take(const Token& token) {
  switch (token.kind) {
    case Kind::Symbol:
      return take_symbol(token);
    case Kind::Text:
      take_text(token);
      break;
    case Kind::Placeholder:
      take_placeholder(token);
      break;
    case Kind::Comment:
      leave_out(token);
      break;
    case Kind::Open:
      fail(token.text().front() == '`'   ? "unterminated name"
           : token.text().front() == '/' ? "unterminated comment"
                                         : "unterminated text");
      break;
    default:
      break;
  }
  return tokens_.next_mark();
}

Token Lifter::take_symbol(const Token& symbol) {
  const char c = symbol.text().front();
  if (c == ';') end_statement(symbol);
  if (!lifts_) return tokens_.next_mark();
  if (kOfOneEngine.find(c) != std::string_view::npos) fail("a symbol that not every engine knows");
  return c == '=' || c == '<' || c == '>' ? take_operand() : tokens_.next_mark();
}

// What follows a comparison: a number with its sign, or anything else.
Token Lifter::take_operand() {
  const Token first = tokens_.next_or_comment();
  const bool is_signed = first.is('-') || first.is('+');
  const Token number = is_signed ? tokens_.next_or_comment() : first;
  if (number.kind != Kind::Number) return number;
  if (!is_signed || number.begin() == first.end()) lift_number(first.begin(), number.begin(), number.end());
  return tokens_.next_mark();
}

// "007" stays in the template: a column of texts tells it from "7".
void Lifter::lift_number(const char* from, const char* digits, const char* to) {
  if (*digits == '0' && to - digits > 1) return;
  int64_t value = 0;
  const auto [end, error] = std::from_chars(*from == '-' ? from : digits, to, value);
  if (error != std::errc() || end != to) return;
  put_placeholder(from, to, Value::compared(value));
}

void Lifter::take_text(const Token& text) {
  if (lifts_) put_placeholder(text.begin(), text.end(), unquoted(text));
}

void Lifter::take_placeholder(const Token& placeholder) {
  if (placeholder.end() < end_ && is_digit(*placeholder.end())) return fail("numbered placeholder");
  if (next_parameter_ == parameters_.size()) {
    return fail("the parameters are fewer than the placeholders", kInvalidArgument);
  }
  const _zel_db_param_t& parameter = parameters_[next_parameter_++];
  const auto low = static_cast<uint32_t>(parameter.Value);
  if (parameter.Type != kSigned && parameter.Type != kUnsigned) {
    return fail("unknown parameter type", kInvalidArgument);
  }
  const auto number = parameter.Type == kSigned ? static_cast<int64_t>(static_cast<int32_t>(low)) : low;
  put_placeholder(placeholder.begin(), placeholder.end(), Value::compared(number));
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
  if (!lifts_) return;
  copy_until(comment.begin());
  sql_.push_back(' ');
  copied_ = comment.end();
}

Value Lifter::unquoted(const Token& text) {
  const char quote = text.text().front();
  const std::string_view inside = text.text().substr(1, text.text().size() - 2);
  size_t doubled = inside.find(quote);
  if (doubled == std::string_view::npos) return Value::text_of(inside);

  if (values_.unquoted.empty()) {
    values_.unquoted.reserve_more(static_cast<size_t>(end_ - text.begin()));  // it never moves
  }
  const size_t start = values_.unquoted.size();
  size_t kept = 0;
  for (; doubled != std::string_view::npos; doubled = inside.find(quote, kept)) {
    values_.unquoted.append(inside.substr(kept, doubled + 1 - kept));
    kept = doubled + 2;
  }
  values_.unquoted.append(inside.substr(kept));
  return Value::text_of(values_.unquoted.view(start));
}

}  // namespace

LiftOutcome lift_literals(std::string_view text, Parameters parameters, Literals literals, SqlText& sql,
                          Values& values) {
  return Lifter(text, parameters, literals, sql, values).run();
}

}  // namespace zel_db
