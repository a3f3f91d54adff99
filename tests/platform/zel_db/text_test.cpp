// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "zel_db/database_url.h"
#include "zel_db/literals.h"
#include "zel_db/script.h"

namespace zel_db {
namespace {

std::string lifted(const char* text) {
  SqlText sql;
  Values values;
  const LiftOutcome outcome = lift_literals(text, {}, true, sql, values);
  if (outcome.status != kOk) return outcome.reason;
  std::string line(sql.view());
  for (const Value& value : values.list) {
    line += value.kind == Value::Kind::Text ? " [" + std::string(value.text, value.size) + "]"
                                            : " " + std::to_string(value.number);
  }
  return line;
}

TEST(Literals, AreLiftedAsWholeTokens) {
  const char* const cases[][2] = {
      {"A!='x' OR B<>\"y\"", "A!=? OR B<>? [x] [y]"},
      {"A=\"say \"\"hi\"\"\" AND B='it''s'", "A=? AND B=? [say \"hi\"] [it's]"},
      {"A=\"\" AND B='' AND C=\"\"\"\"", "A=? AND B=? AND C=? [] [] [\"]"},
      {"A=\"it's;--?\" AND B='\"'", "A=? AND B=? [it's;--?] [\"]"},
      {"A='\\' AND B='\\n'", "A=? AND B=? [\\] [\\n]"},
      {"A=\"b\" \"c\"", "A=? ? [b] [c]"},  // no concatenation
      {"A=x'00ff' AND B=N'y' AND X'41'=\"z\"", "A=x'00ff' AND B=N'y' AND X'41'=? [z]"},
      {"A like\"x\" OR maxx'y'", "A like? OR maxx? [x] [y]"},
      {"A=5 AND B!=0 AND(C < 7)", "A=? AND B!=? AND(C < ?) 5 0 7"},
      {"A=9223372036854775807 OR A=9223372036854775808", "A=? OR A=9223372036854775808 9223372036854775807"},
      {"A=15B3A2D4 OR A=0x5 OR A=5.5 OR A=5e3", "A=15B3A2D4 OR A=0x5 OR A=5.5 OR A=5e3"},
      {"A=-5 AND B IN (-5) AND C & 64 > - 0 OR D<--1", "A=? AND B IN (-5) AND C & 64 > - 0 OR D<--1 -5"},
      {"1 GROUP BY 1 ORDER BY 2", "1 GROUP BY 1 ORDER BY 2"},
      {"`a\"b`=1 -- it's\nAND B=2 /* \" */", "`a\"b`=? -- it's\nAND B=? /* \" */ 1 2"},
      {"A=\"x\" ; \n;-- end", "A=?  [x]"},
      {"A=1; \"", "more than one statement"},
      {"A=\"x\"\"", "unterminated text"},
      {"A='x\"", "unterminated text"},
      {"A=1 /* x", "unterminated comment"},
      {"A=`x", "unterminated name"},
      {"A=?1", "numbered placeholder"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(lifted(text), expected);
}

TEST(Script, IsSplitOutsideQuotesAndComments) {
  const std::pair<const char*, std::vector<std::string_view>> cases[] = {
      {" ;; -- nothing\n/* ; */;", {}},
      {"a ; b;\n", {"a ", "b"}},
      {"-- first;\na /* ; */ x;", {"a /* ; */ x"}},
      {"i ';' \";\" `;`;j 'it''s;'; k '\\'; l", {"i ';' \";\" `;`", "j 'it''s;'", "k '\\'", "l"}},
      {"a; i 'open; b;", {"a", "i 'open; b;"}},
      {"a; /* open; b", {"a", "/* open; b"}},
  };
  for (const auto& [script, statements] : cases) EXPECT_EQ(split_statements(script), statements) << script;
}

std::string taken_apart(const char* text) {
  std::string line;
  const auto url = parse_database_url(text, &line);
  if (!url) return line.find("secret") == std::string::npos && !line.empty() ? "refused" : line;
  if (url->user) line += *url->user + (url->password ? ":" + *url->password : "") + "@";
  for (const DatabaseUrl::Host& host : url->hosts) line += host.name + ":" + std::to_string(host.port) + " ";
  return line + url->path + url->socket + "|" + url->prefix;
}

TEST(Url, IsTakenApart) {
  const char* const cases[][2] = {
      {"sqlite:///with%20blank%3f", "/with blank?|"},
      {"mariadb://u@db/", "u@db:0 |"},
      {"mariadb://u:@db:3307", "u:@db:3307 |"},
      {"mariadb://u:p%40%3a@a,b:2,[::1]:3/?socket=/x%20y&prefix=T_1", "u:p@:@a:0 b:2 ::1:3 /x y|T_1"},
      {"mariadb:///?socket=/s", "localhost:0 /s|"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(taken_apart(text), expected);
  for (const char* text :
       {"", "other://x", "sqlite://relative", "sqlite:///bad%2", "sqlite:///bad%00",
        "mariadb://u:secret@db:0/", "mariadb://db:70000/", "mariadb://a,,b/", "mariadb://[::1/",
        "mariadb://db/dmdb", "mariadb://db/?prefix=a`b", "mariadb://u:?secret@db/"}) {
    EXPECT_EQ(taken_apart(text), "refused") << text;
  }
}

}  // namespace
}  // namespace zel_db
