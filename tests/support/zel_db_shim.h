// SPDX-License-Identifier: Apache-2.0
//
// Stands between the code under test and the table-access library: records every call, counts what is alive
// and injects faults. It is part of the test executable (or preloaded): the dynamic linker finds its
// functions first.
#ifndef TESTS_SUPPORT_ZEL_DB_SHIM_H
#define TESTS_SUPPORT_ZEL_DB_SHIM_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeldb_test {

// A fault of the nth matching call (0: of each). The call is not made unless with_result says so; it returns
// status, or null. Status 0 stands for a query without a result and for an insert that yields the id 0.
// "step", "row_count" and "column" act on the result of the nth matching query instead.
struct Rule {
  std::string op{};     // the function's name without "zel_db_"; "put" for every put
  std::string table{};  // any when empty
  int nth{1};
  int status{0};
  bool with_result{false};
  unsigned after{0};   // step: so many rows come before the status
  unsigned fewer{0};   // row_count: so many less
  int column{-1};      // column: unreadable by its place ...
  std::string name{};  // ... or its name
};

// A null text reads "(null)".
struct Call {
  std::string op{};
  std::string table{};
  std::string columns{};  // separated by commas
  std::string where{};
  std::string params{};  // "2:-1,3:7": type and value
  std::string order{};
  std::string text{};  // a raw statement; the arguments of an open
  int capacity{0};     // of a raw statement
  int status{0};
  int64_t rows{0};                  // written by an update or a delete; the id of an insert
  unsigned steps{0};                // taken on the result
  std::vector<unsigned> sizes{};    // of the buffers for texts and blobs of the first row
  std::vector<std::string> puts{};  // "uint PfaKey=7", "null Pattern", in their order since the last clear
};

// "op|table|columns|where|params|order|status", or "op|text|status".
std::string to_text(const Call& call);

struct ZelDbShim {
  void reset();  // forgets rules and calls; what is alive stays known
  void fail(Rule rule);
  std::vector<Call> calls(std::string_view op = {});
  std::vector<std::string> texts(std::string_view op = {});
  std::string alive();  // what is not released or was released wrongly, in words

  // The nth call of that kind, of any interface of the platform, and, if so, all that follow are not made
  // and return kFailed, or null; 0: none. Returns how many there were since the last time. A read is one of
  // a column; calls that always succeed do not count.
  enum class Kind { Call, Read };
  static int fail_calls(Kind kind, int nth, bool and_after = false);
  static bool call_fails(Kind kind = Kind::Call);
  static constexpr int kFailed = 77;
};
inline ZelDbShim shim() {
  return {};
}

}  // namespace zeldb_test

#endif
