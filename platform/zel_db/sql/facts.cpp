// SPDX-License-Identifier: Apache-2.0
#include "zel_db/sql/facts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "zel_db/schema.h"
#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

// A token of a statement, with the index of the parenthesis around it and that of its scope.
struct Term : Token {
  size_t opened = 0;
  size_t scope = 0;
  bool is_assigned = false;  // in "SET ..."
};

Verb verb_of(const Token& first) {
  static constexpr std::array<std::string_view, 7> kWords = {"select",  "insert", "update", "delete",
                                                             "replace", "with",   "values"};
  size_t i = 0;
  while (i < kWords.size() && !first.is(kWords[i])) ++i;
  return static_cast<Verb>(i);  // the words are in the order of the verbs
}

template <size_t N>
bool is_one_of(const Token& token, const std::array<std::string_view, N>& words) {
  return std::ranges::any_of(words, [&](std::string_view word) { return token.is(word); });
}

// Takes the tokens of a phrase one by one. The last token is the end.
class Phrase {
 public:
  explicit Phrase(std::span<const Term> tokens) : tokens_(tokens) {}

  const Token& token() const { return tokens_.front(); }
  bool at_end() const { return token().kind == Token::Kind::End; }
  Token take() {
    const Token token = tokens_.front();
    if (tokens_.size() > 1) tokens_ = tokens_.subspan(1);
    return token;
  }
  template <class Expected>
  bool takes(Expected expected) {
    const bool is_next = token().is(expected);
    if (is_next) take();
    return is_next;
  }
  bool takes_placeholder() { return take().kind == Token::Kind::Placeholder; }
  bool takes_column_of(std::string_view table) { return has_column(table, take().name()); }

 private:
  std::span<const Term> tokens_;
};

// Accepts columns that are compared with placeholders or NULL, and nothing else. In other conditions an
// update may refuse conversions of texts that a query accepts.
bool is_plain_condition(Phrase& phrase, std::string_view table, int deepest = 8) {
  if (phrase.takes('(')) {
    do {
      if (deepest == 0 || !is_plain_condition(phrase, table, deepest - 1)) return false;
    } while (phrase.takes("or") || phrase.takes("and"));
    return phrase.takes(')');
  }
  if (!phrase.takes_column_of(table)) return false;
  if (phrase.takes("is")) {
    phrase.takes("not");
    return phrase.takes("null");
  }
  bool is_compared = false;
  for (; phrase.token().is_comparison(); phrase.take()) is_compared = true;
  return is_compared && phrase.takes_placeholder();
}

// WHERE Column=? AND ...
bool are_equalities(Phrase where, std::string_view table) {
  for (const char* before = "where"; !where.at_end(); before = "and") {
    if (!where.takes(before) || !where.takes_column_of(table)) return false;
    if (!where.takes('=') || !where.takes_placeholder()) return false;
  }
  return true;
}

// An index covers one column, so two columns, or all of them, are read from the table.
bool are_in_no_index(Phrase columns, std::string_view table) {
  if (columns.takes('*')) return true;
  std::string_view first;
  do {
    const std::string_view name = columns.take().name();
    if (!has_column(table, name)) return false;
    if (equal_ignoring_case(name, "_id")) continue;
    if (!first.empty() && !equal_ignoring_case(first, name)) return true;
    first = name;
  } while (columns.takes(','));
  return false;
}

// The tokens of a statement, each with its surroundings.
class Statement {
 public:
  explicit Statement(std::string_view sql);

  Facts facts() const;

 private:
  static constexpr size_t kNone = SIZE_MAX;

  // A select or an update with the table that it names, if that is one.
  struct Scope {
    size_t outer = 0;
    std::string_view table;
    int tables = 0;
    bool names_tables = false;
    bool assigns = false;
  };

  void add(Term term);
  void take_table(const Term& term, Scope& scope) const;

  Phrase phrase(size_t from) const { return Phrase(std::span(terms_).subspan(from)); }
  // The end for a place before the first, too.
  const Term& at(size_t i) const { return i < terms_.size() ? terms_[i] : terms_.back(); }
  // The first token outside of parentheses that is this word; the end if there is none.
  size_t find(std::string_view word) const;

  bool is_of_one_row() const;
  RowOrder row_order(size_t from) const;

  // The column that an operand is compared with. A sign is part of the operand.
  size_t column_beside(size_t first, size_t last) const;
  size_t column_of_range(size_t first) const;
  size_t column_of_list(size_t parenthesis) const;
  size_t column_before(size_t i) const;
  size_t column_after(size_t i) const;
  size_t sign_before(size_t number) const;
  bool begins_operand(size_t i) const;
  bool ends_operand(size_t i) const;
  std::optional<Kind> kind_of(size_t column) const;
  void describe_operands(Facts& facts) const;

  const char* begin_;
  std::vector<Term> terms_;
  std::vector<Scope> scopes_ = std::vector<Scope>(1);
  std::vector<size_t> open_;  // parentheses
  size_t scope_ = 0;
};

Statement::Statement(std::string_view sql) : begin_(sql.data()) {
  Tokens tokens(sql);
  do add(Term{tokens.next()});
  while (terms_.back().kind != Token::Kind::End);
}

void Statement::add(Term term) {
  const bool is_inside = !terms_.empty() && terms_.back().is('(');
  if (is_inside) open_.push_back(terms_.size() - 1);
  if (is_inside && term.is("select")) {
    scopes_.emplace_back().outer = scope_;
    scope_ = scopes_.size() - 1;
  }
  if (term.is(')') && !open_.empty()) {
    scope_ = terms_[open_.back()].scope;
    open_.pop_back();
  }
  term.opened = open_.empty() ? kNone : open_.back();
  term.scope = scope_;
  take_table(term, scopes_[scope_]);
  term.is_assigned = scopes_[scope_].assigns;
  terms_.push_back(term);
}

void Statement::take_table(const Term& term, Scope& scope) const {
  const auto names_table = [](const Token& token) { return token.is("from") || token.is("update"); };
  if (!terms_.empty() && names_table(terms_.back())) scope.table = term.name();
  const bool is_further = scope.names_tables && term.is(',');
  if (names_table(term) || term.is("join") || is_further) ++scope.tables;
  if (term.is("from")) scope.names_tables = true;
  if (term.is("set")) scope.assigns = true;
  if (term.is("where")) scope.names_tables = scope.assigns = false;
}

size_t Statement::find(std::string_view word) const {
  size_t i = 0;
  while (i + 1 < terms_.size() && !(terms_[i].depth == 0 && terms_[i].is(word))) ++i;
  return i;
}

// UPDATE table SET ... WHERE _id=? AND (...)
bool Statement::is_of_one_row() const {
  Phrase where = phrase(find("where"));
  return where.takes("where") && where.takes("_id") && where.takes('=') && where.takes_placeholder() &&
         where.takes("and") && where.token().is('(') && is_plain_condition(where, at(1).name()) &&
         where.at_end();
}

// Rows come in the order of their ids without ORDER BY in two cases: if the condition only sets columns equal
// to values, because an index keeps the rows of one key in the order of the table; and if the whole table is
// read, unless an index has all that is selected.
RowOrder Statement::row_order(size_t from) const {
  static constexpr std::array<std::string_view, 9> kClosing = {
      "group", "having", "limit", "offset", "union", "except", "intersect", "for", "window"};
  const std::string_view table = at(from + 1).name();
  const Term& after = at(from + 2);
  const bool is_one_table = after.kind == Token::Kind::End || after.is("where") || after.is("order");
  const auto is_call = [](const Token& token) { return token.is('('); };
  if (!is_one_table || !has_row_ids(table)) return RowOrder::Fixed;
  if (std::any_of(terms_.begin(), terms_.begin() + static_cast<ptrdiff_t>(from), is_call))
    return RowOrder::Fixed;
  bool is_ordered = false;
  for (size_t i = from + 2; i < terms_.size(); ++i) {
    if (terms_[i].depth != 0) continue;
    if (is_one_of(terms_[i], kClosing)) return RowOrder::Fixed;
    is_ordered |= terms_[i].is("order");
  }
  if (at(1).is("distinct")) return RowOrder::Distinct;
  const bool is_natural = after.kind == Token::Kind::End ? are_in_no_index(phrase(1), table)
                                                         : are_equalities(phrase(from + 2), table);
  if (is_natural) return RowOrder::Natural;
  return is_ordered ? RowOrder::Asked : RowOrder::Open;
}

bool Statement::begins_operand(size_t i) const {
  static constexpr std::array<std::string_view, 9> kBefore = {"where",  "and",  "or",     "not",     "on",
                                                              "having", "when", "select", "distinct"};
  return at(i - 1).is('(') || at(i - 1).is(',') || is_one_of(at(i - 1), kBefore);
}

bool Statement::ends_operand(size_t i) const {
  const Term& after = at(i + 1);
  return after.kind == Token::Kind::End || after.kind == Token::Kind::Word || after.is(')') ||
         after.is(',') || after.is_comparison();
}

size_t Statement::column_before(size_t i) const {
  if (at(i - 1).is("not")) --i;
  return !at(i - 1).name().empty() && begins_operand(i - 1) ? i - 1 : kNone;
}

size_t Statement::column_after(size_t i) const {
  return !at(i).name().empty() && ends_operand(i) ? i : kNone;
}

// Column IN (1, 2)
size_t Statement::column_of_list(size_t parenthesis) const {
  return at(parenthesis - 1).is("in") ? column_before(parenthesis - 1) : kNone;
}

// Column BETWEEN 1 AND 2
size_t Statement::column_of_range(size_t first) const {
  if (at(first - 1).is("between")) return column_before(first - 1);
  if (!at(first - 1).is("and")) return kNone;
  const size_t other = sign_before(first - 2);
  return at(other - 1).is("between") ? column_before(other - 1) : kNone;
}

size_t Statement::column_beside(size_t first, size_t last) const {
  size_t left = first;
  while (at(left - 1).is_comparison()) --left;
  if (left != first) return column_before(left);
  size_t column = column_of_range(first);
  if (column == kNone && begins_operand(first)) column = column_of_list(at(first).opened);
  if (column != kNone) return column;
  size_t right = last + 1;
  while (at(right).is_comparison()) ++right;
  return right != last + 1 && begins_operand(first) ? column_after(right) : kNone;
}

// The place where a number begins, with its sign.
size_t Statement::sign_before(size_t number) const {
  const bool is_touched = at(number - 1).is('-') && at(number - 1).end() == at(number).begin();
  const Term& before = at(number - 2);
  const bool is_sign = is_touched && (before.is('(') || before.is(',') || before.is_comparison() ||
                                      before.kind == Token::Kind::Word);
  return is_sign ? number - 1 : number;
}

// If the table of a select does not have the name, it belongs to the select around it. If there are several
// tables, or an unknown one, the kind is not known.
std::optional<Kind> Statement::kind_of(size_t column) const {
  if (column == kNone || terms_[column].is_assigned) return {};
  const std::string_view name = terms_[column].name();
  for (size_t i = terms_[column].scope;; i = scopes_[i].outer) {
    const Scope& scope = scopes_[i];
    if (scope.tables != 1 || !has_row_ids(scope.table)) return {};
    const std::optional<Kind> kind = zel_db::kind_of(scope.table, name);
    if (kind || i == 0) return kind;
  }
}

void Statement::describe_operands(Facts& facts) const {
  for (size_t i = 0; i < terms_.size(); ++i) {
    const Term& term = terms_[i];
    if (term.kind == Token::Kind::Placeholder) {
      const std::optional<Kind> kind = kind_of(column_beside(i, i));
      facts.meets_number.push_back(kind == Kind::Integer || kind == Kind::Unsigned64);
    } else if (term.kind == Token::Kind::Number && ends_operand(i) && reads_as_number(term.text())) {
      const size_t first = sign_before(i);
      if (kind_of(column_beside(first, i)) != Kind::Text) continue;
      facts.beside_texts.push_back(
          {static_cast<size_t>(terms_[first].begin() - begin_), static_cast<size_t>(term.end() - begin_)});
    }
  }
}

Facts Statement::facts() const {
  Facts facts;
  facts.verb = verb_of(terms_.front());
  facts.has_sub_select = scopes_.size() > 1;
  if (takes_placeholders(facts.verb)) describe_operands(facts);
  if (facts.verb == Verb::Update) facts.is_of_one_row = is_of_one_row();
  if (facts.verb == Verb::Select) {
    const size_t from = find("from");
    facts.order = row_order(from);
    facts.table_end = static_cast<size_t>(at(from + 1).end() - begin_);
  }
  return facts;
}

}  // namespace

Facts facts_of(std::string_view sql) {
  return Statement(sql).facts();
}

Verb verb_of(std::string_view sql) {
  return verb_of(Tokens(sql).next());
}

}  // namespace zel_db
