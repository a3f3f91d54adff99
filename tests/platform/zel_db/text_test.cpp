// SPDX-License-Identifier: Apache-2.0
//
// SQL, scripts and URLs, without a database.
#include <gtest/gtest.h>

#include "zel_db/database_url.h"
#include "zel_db/engine.h"
#include "zel_db/sql/lifting.h"
#include "zel_db/sql/statements.h"
#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

// Each token with the letter of its kind and the parentheses around it: "w:A s:( n:5".
std::string tokens_of(std::string_view text) {
  std::string line;
  Tokens tokens(text);
  for (Token token = tokens.next_or_comment(); token.kind != Token::Kind::End;
       token = tokens.next_or_comment()) {
    line += line.empty() ? "" : " ";
    line += "EWNTPASQCO"[static_cast<size_t>(token.kind)];
    line += (token.depth != 0 ? std::to_string(token.depth) : "") + ":" + std::string(token.text());
  }
  return line;
}

TEST(Tokens, AreThoseOfBothEngines) {
  const char* const cases[][2] = {
      {"a_1$=B\xe9 AND(c)", "W:a_1$ S:= W:B\xe9 W:AND S:( W1:c S:)"},
      {"f((x),1) ) y", "W:f S:( S1:( W2:x S1:) S1:, N1:1 S:) S-1:) W-1:y"},
      {"'it''s' \"say \"\"hi\"\"\"'' `a``b`", "T:'it''s' T:\"say \"\"hi\"\"\" T:'' A:`a``b`"},
      {"'\\' '\"' \"'\"\"--\"", "T:'\\' T:'\"' T:\"'\"\"--\""},
      {"x'00'N'y' y'z' xx'z' x 'z' x\"z\"", "P:x'00' P:N'y' W:y T:'z' W:xx T:'z' W:x T:'z' W:x T:\"z\""},
      {"=<'x' <>=-", "S:= S:< T:'x' S:< S:> S:= S:-"},
      {"5 5.5 .5 5. 1e3 1e-3 1e 1e- 0x5e-1", "N:5 N:5.5 N:.5 N:5. N:1e3 N:1e-3 N:1e N:1e S:- N:0x5e S:- N:1"},
      {"1e+3 1e+x .", "N:1e+3 N:1e S:+ W:x S:."},
      {"15B3A2D4 a.5 1.2.3", "N:15B3A2D4 W:a N:.5 N:1.2.3"},
      {"''1 'x'y?2??", "T:'' N:1 T:'x' W:y Q:? N:2 Q:? Q:?"},
      {"a--b\n-c- -d/*'*/e/ *f", "W:a C:--b\n S:- W:c S:- S:- W:d C:/*'*/ W:e S:/ S:* W:f"},
      {"/*/ x */y/**/ --", "C:/*/ x */ W:y C:/**/ C:--"},
      {"a /* x", "W:a C:/* x"},
      {"a /*", "W:a O:/*"},
      {"a 'x\"", "W:a O:'x\""},
      {"a `x", "W:a O:`x"},
      {"x'0", "O:x'0"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(tokens_of(text), expected);
    // Skipping finds the same marks.
    Tokens all(text);
    Tokens marks(text);
    for (Token mark = marks.next_mark(); mark.kind != Token::Kind::End; mark = marks.next_mark()) {
      Token token = all.next_or_comment();
      while (token.begin() != mark.begin() && token.kind != Token::Kind::End) token = all.next_or_comment();
      EXPECT_EQ(token.text(), mark.text()) << text;
    }
  }
}

TEST(Numbers, AreReadWhole) {
  for (const char* number : {"5", "\t-5.5 ", "+.5", "1e3"}) EXPECT_TRUE(reads_as_number(number)) << number;
  for (const char* other : {"", " ", "-", "--5", "+inf", "5x"}) EXPECT_FALSE(reads_as_number(other)) << other;
}

std::string lifted(const char* text, Parameters parameters = {}, Literals literals = Literals::Lift) {
  SqlText sql;
  Values values;
  const LiftOutcome outcome = lift_literals(text, parameters, literals, sql, values);
  if (outcome.status != kOk) return outcome.reason;
  std::string line(sql.view());
  for (const Value& value : values.list) {
    line += value.kind == Value::Kind::Text ? " [" + std::string(value.text, value.size) + "]"
                                            : " " + std::to_string(value.number);
  }
  return line;
}

TEST(Literals, AreLiftedAsWholeTokens) {
  const char* const kForeign = "a symbol that not every engine knows";
  const char* const cases[][2] = {
      {"A!='x' OR B<>\"y\"", "A!=? OR B<>? [x] [y]"},
      {"A=\"say \"\"hi\"\"\" AND B='it''s'", "A=? AND B=? [say \"hi\"] [it's]"},
      {"A=\"\" AND B='' AND C=\"\"\"\"", "A=? AND B=? AND C=? [] [] [\"]"},
      {"A=\"it's;--?\" AND B='\"'", "A=? AND B=? [it's;--?] [\"]"},
      {"A='\\' AND B='\\n'", "A=? AND B=? [\\] [\\n]"},
      {"A=\"b\" \"c\"'d'", "A=? ? ? [b] [c] [d]"},  // no concatenation
      {"A=x'00ff' AND B=N'y' AND X'41'=\"z\"", "A=x'00ff' AND B=N'y' AND X'41'=? [z]"},
      {"A like\"x\"OR maxx'y'", "A like ? OR maxx ? [x] [y]"},
      {"A=''1 OR A=''2", "A=? 1 OR A=? 2 [] []"},  // not ?1
      {"A=1\"x\"2 OR A=5'x'", "A=? ? 2 OR A=? ? 1 [x] 5 [x]"},
      {"A=5 AND B!=0 AND(C < 7)", "A=? AND B!=? AND(C < ?) 5 0 7"},
      {"A=9223372036854775807 OR A=9223372036854775808", "A=? OR A=9223372036854775808 9223372036854775807"},
      {"A=15B3A2D4 OR A=0x5 OR A=5.5 OR A=5e3", "A=15B3A2D4 OR A=0x5 OR A=5.5 OR A=5e3"},
      {"A=007 OR A=00 OR A=-07", "A=007 OR A=00 OR A=-07"},
      {"A=-5 AND B IN (-5) AND C & 64 > - 0 OR D=+7", "A=? AND B IN (-5) AND C & 64 > - 0 OR D=? -5 7"},
      {"1 GROUP BY 1 ORDER BY 2", "1 GROUP BY 1 ORDER BY 2"},
      {"`a\"b`=1 -- it's\nAND B=2 /*! \" */OR D<--1", "`a\"b`=?  AND B=?  OR D<  1 2"},
      {"A=1 /* x", "A=?   1"},
      {"A=\"x\" ; \n;-- end", "A=?  [x]"},
      {"A=1; \"", "more than one statement"},
      {"A=\"x\"\"", "unterminated text"},
      {"A='x\"", "unterminated text"},
      {"A=1 /*", "unterminated comment"},
      {"A=`x", "unterminated name"},
      {"A=?1", "numbered placeholder"},
      {"A=1 # x", kForeign},
      {"A=\\N", kForeign},
      {"[A]=@B", kForeign},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(lifted(text), expected);
  const _zel_db_param_t five[] = {{3, 0, 1, 1}, {3, 0, 1, 2}, {3, 0, 1, 3}, {3, 0, 1, 4}, {3, 0, 1, 5}};
  EXPECT_EQ(lifted("?a?*??*?x /* ? */", five, Literals::Keep), "? a ?*? ?*? x /* ? */ 1 2 3 4 5");
}

// The facts of a query or an update, and its statement for an engine that must be told every order.
std::string facts_in(const StatementKey& key) {
  static const Dialect kDialect = [] {
    Dialect dialect{};
    dialect.without_indexes = " BARE";
    dialect.pays_for_order = true;
    return dialect;
  }();
  const auto [sql, facts] = statement_text(key, kDialect);
  std::string line = sql + " |";
  for (const bool meets_number : facts.meets_number) line += meets_number ? "#" : "?";
  return line + (facts.has_sub_select ? " sub" : "") + (facts.is_of_one_row ? " one row" : "");
}

TEST(Facts, OfQueries) {
  const std::string disks = "SELECT Location FROM AimDisks";
  const char* const by_id = "\nORDER BY _id";
  const std::tuple<std::string, std::string, const char*> cases[] = {
      // after the template, in the statement, facts
      {"", by_id, ""},
      {" WHERE SlotNo=?", "", "#"},
      {" WHERE SlotNo = ? AND Model=?", "", "#?"},
      {" WHERE SlotNo=? OR Model=?", by_id, "#?"},
      {" WHERE SlotNo>?", by_id, "#"},
      {" WHERE `SlotNo`=? AND NoColumn=?", by_id, "#?"},
      {" ORDER BY Model", "\n, _id", ""},
      {" WHERE 1=1 ORDER BY Model", "\n, _id", ""},
      {" WHERE 1 GROUP BY Model", "", ""},
      {" WHERE SlotNo IN (SELECT 1 LIMIT 1)", by_id, " sub"},
      {" WHERE SlotNo=1 LIMIT 1", "", ""},
      {" disk WHERE SlotNo=?", "", "#"},
      {", PCIs WHERE SlotNo=?", "", "?"},
      {" WHERE SlotNo IN (?,?) AND BayNo NOT BETWEEN ? AND ? AND ?=BayNo", by_id, "#####"},
      {" WHERE SlotNo+1=? AND x.SlotNo=? AND max(SlotNo)=? AND ?=SlotNo+1", by_id, "????"},
      {" WHERE Location=? AND SlotNo IN ( SELECT DevKey FROM PCIs WHERE Location=? AND BayNo=?)", by_id,
       "?## sub"},
      {" WHERE BayNo IN (SELECT 1 FROM (SELECT 8 DevKey) made WHERE Location=?)", by_id, "? sub"},
  };
  for (const auto& [rest, added, facts] : cases) {
    EXPECT_EQ(facts_in(query_key(disks + rest, 0)), disks + rest + added + " |" + facts);
  }
  const std::pair<std::string, std::string> others[] = {
      {"SELECT DISTINCT Model FROM AimDisks WHERE SlotNo=?", "AimDisks BARE WHERE SlotNo=? |#"},
      {"SELECT DISTINCT Model=5 FROM AimDisks", "AimDisks BARE |"},
      {"SELECT Model,model FROM AimDisks", "AimDisks\nORDER BY _id |"},
      {"SELECT * FROM Memory WHERE Capacity=?", "Memory WHERE Capacity=? |#"},
      {"SELECT count(*) FROM AimDisks", "AimDisks |"},
      {"SELECT * FROM AimDisks", "AimDisks |"},
      {"SELECT _id,Model, SlotNo FROM AimDisks", "AimDisks |"},
      {"SELECT _id,Model FROM AimDisks", "AimDisks\nORDER BY _id |"},
      {"SELECT 1,Model FROM NoTable", "NoTable |"},
      // A number beside a column of texts is a text.
      {"SELECT * FROM AimDisks WHERE Model IN (5, -05) OR Model=-12E4 OR 007 != Model",
       "AimDisks WHERE Model IN ('5', '-05') OR Model='-12E4' OR '007' != Model\nORDER BY _id |"},
      {"SELECT * FROM AimDisks WHERE Model NOT BETWEEN -1 AND -2 AND SlotNo IN (5) AND SlotNo=007",
       "AimDisks WHERE Model NOT BETWEEN '-1' AND '-2' AND SlotNo IN (5) AND SlotNo=007\nORDER BY _id |"},
      {"SELECT * FROM AimDisks WHERE Model IN (5+1,0x5,15B3) OR Model+05=05 OR Model=05-1 OR Model=- 5",
       "AimDisks WHERE Model IN (5+1,0x5,15B3) OR Model+05=05 OR Model=05-1 OR Model=- 5\nORDER BY _id |"},
  };
  for (const auto& [text, expected] : others) {
    const std::string seen = facts_in(query_key(text, 0));
    EXPECT_EQ(seen.substr(seen.find("FROM") + 5), expected);
  }
}

TEST(Facts, OfUpdates) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "|??"},
      {"SlotNo=?", "|??#"},
      {"_id=? AND (SlotNo!=? OR Model IS NOT NULL AND (Model<=? OR BayNo IS NULL))", "|??##? one row"},
      {"_id=? AND (SlotNo!=? OR BayNo=?", "|??###"},
      {"_id=? AND (SlotNo!=?) OR BayNo=?", "|??###"},
      {"_id=? AND (SlotNo!=? OR NoColumn=?)", "|??##?"},
      {"_id=? AND (SlotNo IN (?))", "|??##"},
      {"_id=? AND SlotNo=?", "|??##"},
      {"_id=? OR (SlotNo=?)", "|??##"},
      {"_id=5 AND (SlotNo=?)", "|??#"},
      {"_id=? AND ((((((((((SlotNo=?))))))))))", "|??##"},
      {"_id=? AND (SlotNo!=BayNo)", "|??#"},
  };
  for (const auto& [where, expected] : cases) {
    const std::string line = facts_in(update_key("AimDisks", "SlotNo,Model,", where));
    EXPECT_EQ(line.substr(line.rfind('|')), expected) << where;
  }
  EXPECT_EQ(facts_in(text_key("update AimDisks set Model=05 where Model=05")),
            "update AimDisks set Model=05 where Model='05' |");
}

TEST(Script, IsSplitOutsideQuotesAndComments) {
  const std::pair<const char*, std::vector<std::string_view>> cases[] = {
      {" ;; -- nothing\n/* ; */;", {}},
      {"a ; b;\n", {"a ", "b"}},
      {"-- first;\na /* ; */ x;", {"a /* ; */ x"}},
      {"i ';' \";\" `;`;j 'it''s;'; k '\\'; l", {"i ';' \";\" `;`", "j 'it''s;'", "k '\\'", "l"}},
      {"a; i 'open; b;", {"a", "i 'open; b;"}},
      {"a; b /* open; c", {"a", "b /* open; c"}},
  };
  for (const auto& [script, statements] : cases) EXPECT_EQ(split_statements(script), statements) << script;
}

std::string taken_apart(const char* text) {
  std::string line;
  const auto url = parse_database_url(text, &line);
  if (!url) return line.find("secret") == std::string::npos && !line.empty() ? "refused" : line;
  if (url->user) line += *url->user + (url->password ? ":" + *url->password : "") + "@";
  for (const DatabaseUrl::Host& host : url->hosts) line += host.name + ":" + std::to_string(host.port) + " ";
  line += url->path + url->socket + "|" + url->prefix;
  for (const DatabaseUrl::Host& host : url->hosts) line += url->uses_tls(host) ? " tls" : " -";
  for (const std::string& file :
       {url->tls_authority, url->tls_certificate, url->tls_key, url->password_file}) {
    line += file.empty() ? "" : " " + file;
  }
  return line + (url->verifies ? "" : " unverified");
}

TEST(Url, IsTakenApart) {
  const char* const cases[][2] = {
      {"sqlite:///with%20blank%3f", "/with blank?|"},
      {"mariadb://u@db/", "u@db:0 | tls"},
      {"mariadb://u:@db:3307", "u:@db:3307 | tls"},
      {"mariadb://u:p%40%3a@a,b:2,[::1]:3/?socket=/x%20y&prefix=T_1",
       "u:p@:@a:0 b:2 ::1:3 /x y|T_1 tls tls -"},
      {"mariadb:///?socket=/s", "localhost:0 /s| -"},
      {"mariadb://localhost,localhost:1,127.9.9.9,127.evil,[::2]/",
       "localhost:0 localhost:1 127.9.9.9:0 127.evil:0 ::2:0 | - - - tls tls"},
      {"mariadb://10.0.0.127,[1::1],[0:0:1::1],[0:0:0:0:1::1]/?prefix=",
       "10.0.0.127:0 1::1:0 0:0:1::1:0 0:0:0:0:1::1:0 | tls tls tls tls"},
      {"mariadb://127.0.0.1/?ssl-cert=/b", "127.0.0.1:0 | tls /b"},
      {"mariadb://localhost,127.0.0.1,db/?ssl=off", "localhost:0 127.0.0.1:0 db:0 | - - -"},
      {"mariadb://localhost,127.0.0.1/?ssl=on&ssl-verify=off", "localhost:0 127.0.0.1:0 | - tls unverified"},
      {"mariadb://[::1]/?ssl-ca=/a%26&ssl-cert=/b&ssl-key=/c&password-file=/d", "::1:0 | tls /a& /b /c /d"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(taken_apart(text), expected);
  std::istringstream refused(
      "other://x sqlite://relative sqlite:///bad%2 sqlite:///bad%00 sqlite:///bad%zz mariadb://db:3x/ "
      "mariadb://[::1]x/ mariadb://db/?other=1 mariadb://db/?prefix=a$b mariadb://db/?prefix=%e9 "
      "mariadb://u:secret@db:0/ mariadb://db:70000/ mariadb://a,,b/ mariadb://[::1/ u:secret@db "
      "mariadb://u:secret mariadb://u:secret@db/?ssl=maybe mariadb://u:secret@db/?password-file=/f "
      "mariadb://db/dmdb mariadb://db/?prefix=a`b mariadb://u:?secret@db/");
  EXPECT_EQ(taken_apart(""), "refused");
  for (std::string text; refused >> text;) {
    EXPECT_EQ(taken_apart(text.c_str()), "refused") << text;
  }
}

}  // namespace
}  // namespace zel_db
