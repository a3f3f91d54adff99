// SPDX-License-Identifier: Apache-2.0
#include "zel_db/literals.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

constexpr uint32_t kSigned = 2;
constexpr uint32_t kUnsigned = 3;

enum class Mark : uint8_t { None, Quote, Backtick, Comparison, Placeholder, Comment, End };

constexpr std::array<Mark, 256> kMarks = [] {
  std::array<Mark, 256> marks{};
  marks['"'] = marks['\''] = Mark::Quote;
  marks['`'] = Mark::Backtick;
  marks['='] = marks['<'] = marks['>'] = Mark::Comparison;
  marks['?'] = Mark::Placeholder;
  marks['-'] = marks['/'] = Mark::Comment;
  marks[';'] = Mark::End;
  return marks;
}();

class Lifter {
 public:
  Lifter(std::string_view text, Parameters parameters, bool lift, SqlText& sql, Values& values)
      : begin_(text.data()),
        end_(text.data() + text.size()),
        copied_(begin_),
        parameters_(parameters),
        lift_(lift),
        sql_(sql),
        values_(values) {}

  LiftOutcome run();

 private:
  // Each takes a mark at p and returns where to go on; null when the statement cannot stand.
  const char* at_mark(Mark mark, const char* p);
  const char* quoted(const char* p);
  const char* comparison(const char* p);
  const char* placeholder(const char* p);
  const char* end_of_statement(const char* p);

  void copy_until(const char* p) { sql_.append(copied_, static_cast<size_t>(p - copied_)); }
  bool is_prefixed(const char* quote) const;
  void lift(const char* from, const char* to, const Value& value);
  Value unquote(const char* from, const char* to);
  const char* fail(const char* reason, int status = kSqlError) {
    outcome_.status = status;
    outcome_.reason = reason;
    return nullptr;
  }

  const char* const begin_;
  const char* const end_;
  const char* copied_;  // what stands before it is in the template
  Parameters parameters_;
  size_t next_parameter_ = 0;
  const bool lift_;
  SqlText& sql_;
  Values& values_;
  LiftOutcome outcome_;
};

// Where the next mark stands, or the end. Four at a time: most of a text is names and words.
const char* next_mark(const char* p, const char* end) {
  const auto mark = [](char c) { return static_cast<unsigned>(kMarks[static_cast<unsigned char>(c)]); };
  while (end - p >= 4 && (mark(p[0]) | mark(p[1]) | mark(p[2]) | mark(p[3])) == 0) p += 4;
  while (p < end && mark(*p) == 0) ++p;
  return p;
}

LiftOutcome Lifter::run() {
  for (const char* p = next_mark(begin_, end_); p < end_ && !outcome_.ended; p = next_mark(p, end_)) {
    p = at_mark(kMarks[static_cast<unsigned char>(*p)], p);
    if (p == nullptr) return outcome_;
  }
  if (!outcome_.ended) copy_until(end_);
  if (next_parameter_ != parameters_.size()) {
    fail("the parameters are not as many as the placeholders", kInvalidArgument);
  }
  return outcome_;
}

const char* Lifter::at_mark(Mark mark, const char* p) {
  switch (mark) {
    case Mark::Quote:
      return quoted(p);
    case Mark::Comparison:
      return comparison(p);
    case Mark::Placeholder:
      return placeholder(p);
    case Mark::End:
      return end_of_statement(p);
    case Mark::Backtick: {
      const char* behind = skip_quoted(p, end_);
      return behind != nullptr ? behind : fail("unterminated name");
    }
    case Mark::Comment: {
      const char* behind = skip_comment(p, end_);
      if (behind == nullptr) return fail("unterminated comment");
      return behind == p ? p + 1 : behind;
    }
    case Mark::None:
      break;
  }
  return p + 1;
}

const char* Lifter::quoted(const char* p) {
  const char* behind = skip_quoted(p, end_);
  if (behind == nullptr) return fail("unterminated text");
  if (lift_ && !is_prefixed(p)) lift(p, behind, unquote(p, behind));
  return behind;
}

// x'00' and its like are one token.
bool Lifter::is_prefixed(const char* quote) const {
  if (*quote != '\'' || quote == begin_) return false;
  const bool prefix = std::string_view("xXbBnN").find(quote[-1]) != std::string_view::npos;
  return prefix && (quote - 1 == begin_ || !is_word(quote[-2]));
}

const char* Lifter::comparison(const char* p) {
  const char* number = p + 1;
  while (number < end_ && kMarks[static_cast<unsigned char>(*number)] == Mark::Comparison) ++number;
  while (number < end_ && is_blank(*number)) ++number;
  const char* const digits = number < end_ && *number == '-' ? number + 1 : number;
  const char* behind = digits;
  while (behind < end_ && is_digit(*behind)) ++behind;
  if (!lift_ || behind == digits) return number;
  if (behind < end_ && (is_word(*behind) || *behind == '.')) return number;
  int64_t value = 0;
  if (std::from_chars(number, behind, value).ec == std::errc()) {
    lift(number, behind, Value::compared(value));
  }
  return behind;
}

const char* Lifter::placeholder(const char* p) {
  if (p + 1 < end_ && is_digit(p[1])) return fail("numbered placeholder");
  if (next_parameter_ == parameters_.size()) {
    return fail("the parameters are fewer than the placeholders", kInvalidArgument);
  }
  const _zel_db_param_t& parameter = parameters_[next_parameter_++];
  const auto low = static_cast<uint32_t>(parameter.Value);
  if (parameter.Type != kSigned && parameter.Type != kUnsigned) {
    return fail("unknown parameter type", kInvalidArgument);
  }
  const auto number = parameter.Type == kSigned ? static_cast<int64_t>(static_cast<int32_t>(low)) : low;
  values_.list.push_back(Value::compared(number));
  return p + 1;
}

const char* Lifter::end_of_statement(const char* p) {
  copy_until(p);
  outcome_.ended = true;
  while (p < end_ && *p == ';') p = skip_blanks(p + 1, end_);
  return p == end_ ? p : fail("more than one statement");
}

void Lifter::lift(const char* from, const char* to, const Value& value) {
  copy_until(from);
  sql_.push_back('?');
  copied_ = to;
  values_.list.push_back(value);
}

Value Lifter::unquote(const char* from, const char* to) {
  const char quote = *from;
  const std::string_view inside(from + 1, static_cast<size_t>(to - from - 2));
  size_t doubled = inside.find(quote);
  if (doubled == std::string_view::npos) return Value::text_of(inside);

  if (values_.unquoted.empty())
    values_.unquoted.reserve_more(static_cast<size_t>(end_ - begin_));  // it never moves
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

LiftOutcome lift_literals(std::string_view text, Parameters parameters, bool lift, SqlText& sql,
                          Values& values) {
  return Lifter(text, parameters, lift, sql, values).run();
}

bool takes_placeholders(std::string_view statement) {
  static constexpr std::array<std::string_view, 7> kWords = {"select", "update",  "insert", "delete",
                                                             "with",   "replace", "values"};
  const std::string_view word = first_word(statement);
  return std::any_of(kWords.begin(), kWords.end(),
                     [&](std::string_view known) { return equal_ignoring_case(word, known); });
}

}  // namespace zel_db
