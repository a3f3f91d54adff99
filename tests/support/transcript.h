// SPDX-License-Identifier: Apache-2.0
//
// Plays a family's transcripts. In each file of its folder the lines that begin with "$ " are commands ("> "
// goes on with the one before), those with "#" remarks, the others what the commands gave.
// With ZELDB_UPDATE_TRANSCRIPTS=1 ctest writes the files anew; read the difference before you keep it.
//   CALL ARGUMENT...: one of the family's calls: its status, what it asked, wrote and logged, its outputs
//   result CALL ARGUMENT...: its status and outputs alone
//   check CALL ARGUMENT...: its status and outputs without a database, and what it does with one
//   faults CALL ARGUMENT...: its status and outputs under each fault that a read can meet
//   fail RULE: a fault (zel_db_shim.h, as JSON) for the call that follows; memory N: its first allocation of
//   N bytes or more fails
//   sweep STATUS,... CALL ARGUMENT...: what is wrong after each allocation and each call of the platform that
//   fails (sweep.cpp); the statuses are those that tell of a failure
//   sample: fills the databases and the folder with the sample controller
//   sql STATEMENT, show SELECT; {MAKER} is the maker's subsystem vendor id
//   set FIELD VALUE ...: of every record that has it; fill: with x, so that no text ends
//   file NAME CONTENT: of the platform, none without content; trace: shows the platform's calls from now on
//   mark NAME: a marker file; pipe NAME: a pipe in its place
//   repeat N COMMAND: shows the last time
// Arguments: numbers, texts and null stand for themselves, "-" for the record, a list or a buffer, "new" for
// the record after it was cleared. What is given has the name of its parameter. Fields that are 0 or empty
// are not shown; <200 x> is a run of 200 x. In brackets: the columns of a query, the first time, the capacity
// of a raw query, the rows that were written; after an arrow: a status that is not 0.
#ifndef TESTS_SUPPORT_TRANSCRIPT_H
#define TESTS_SUPPORT_TRANSCRIPT_H

#include <cstdlib>
#include <cstring>
#include <functional>
#include <istream>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "db/field.h"
#include "db/read.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"

namespace zeldb_test {

using Fields = std::vector<zeldb::Field>;

// The record that the calls are given, and its fields.
template <typename T>
T given = {};
template <typename T>
extern const Fields kFields;
Fields listed(void* record, Fields fields);

#define ZELDB_AGAIN3(...) ZELDB_AGAIN2(ZELDB_AGAIN2(ZELDB_AGAIN2(ZELDB_AGAIN2(__VA_ARGS__))))
#define ZELDB_AGAIN2(...) ZELDB_AGAIN1(ZELDB_AGAIN1(ZELDB_AGAIN1(ZELDB_AGAIN1(__VA_ARGS__))))
#define ZELDB_AGAIN1(...) ZELDB_AGAIN0(ZELDB_AGAIN0(ZELDB_AGAIN0(ZELDB_AGAIN0(__VA_ARGS__))))
#define ZELDB_AGAIN0(...) __VA_ARGS__
#define ZELDB_NO_ARGUMENT ()
#define ZELDB_EACH_FIELD() ZELDB_FIELDS
#define ZELDB_FIELDS(Record, Member, ...) \
  ZELDB_FIELD(Record, Member) __VA_OPT__(, ZELDB_EACH_FIELD ZELDB_NO_ARGUMENT(Record, __VA_ARGS__))
// At most 63 fields.
#define ZELDB_RECORD(Record, ...) \
  template <>                     \
  const Fields kFields<Record> = listed(&given<Record>, {ZELDB_AGAIN3(ZELDB_FIELDS(Record, __VA_ARGS__))})

struct Seen {
  std::string line;     // the status, and the numbers and texts after it with their names
  std::string below{};  // records and lists
};
std::string text_of(const Fields& fields, const void* record);

using Buffer = char[400];

template <typename T>
constexpr bool kIsChar = std::is_same_v<std::remove_const_t<T>, char>;
template <typename T>
concept Text = kIsChar<T>;
template <typename T>
concept Number = std::is_integral_v<T> && !kIsChar<T>;
template <typename T>
concept List = requires(T list) {
  list.Items;
};

// The value of a word, as a parameter of that type.
template <typename T>
struct Argument {
  explicit Argument(std::string text) : word(std::move(text)) {}
  T get() const { return static_cast<T>(std::stoll(word, nullptr, 0)); }
  void show(Seen& /*seen*/, const std::string& /*name*/) const {}
  std::string word;
};

template <Text T>
struct Argument<T*> {
  explicit Argument(std::string text) : word(std::move(text)) {}
  T* get() { return word != "null" ? word.data() : nullptr; }
  void show(Seen& /*seen*/, const std::string& /*name*/) const {}
  std::string word;
};

template <Number T>
struct Argument<T*> {
  explicit Argument(const std::string& word)
      : is_null(word == "null"), value(is_null ? T{} : Argument<T>(word).get()) {}
  T* get() { return is_null ? nullptr : &value; }
  void show(Seen& seen, const std::string& name) const {
    if (!is_null) seen.line += " " + name + "=" + std::to_string(value);
  }
  bool is_null;
  T value;
};

template <>
struct Argument<Buffer*> {
  explicit Argument(const std::string& word) : is_null(word == "null") {
    std::memset(text, '.', sizeof(text));
  }
  Buffer* get() { return is_null ? nullptr : &text; }
  void show(Seen& seen, const std::string& name) const;
  bool is_null;
  Buffer text;
};

template <>
struct Argument<_zel_db_handle_t*> {
  explicit Argument(const std::string& word) : is_null(word == "null") {}
  _zel_db_handle_t* get() const { return is_null ? nullptr : zeldb::inventory(); }
  void show(Seen& /*seen*/, const std::string& /*name*/) const {}
  bool is_null;
};

template <typename T>
struct Argument<T*> {
  using Record = std::remove_const_t<T>;
  explicit Argument(const std::string& word) : is_null(word == "null") {
    if (word == "new") given<Record> = {};
  }
  T* get() const { return is_null ? nullptr : &given<Record>; }
  void show(Seen& seen, const std::string& /*name*/) const {
    if (!is_null && !std::is_const_v<T>) seen.below += "   " + text_of(kFields<Record>, get()) + "\n";
  }
  bool is_null;
};

template <List T>
struct Argument<T*> {
  using Item = std::remove_pointer_t<decltype(T::Items)>;
  explicit Argument(const std::string& word) : is_null(word == "null") {}
  T* get() { return is_null ? nullptr : &list; }
  void show(Seen& seen, const std::string& /*name*/) const {
    if (is_null) return;
    const bool untouched = list.Items == &given<Item>;
    seen.below += "   " + std::to_string(list.Count);
    seen.below += untouched ? " untouched" : list.Items != nullptr ? " at" : "";
    for (decltype(list.Count) i = 0; !untouched && i < list.Count; ++i) {
      if constexpr (Number<Item>) seen.below += " " + std::to_string(list.Items[i]);
      if constexpr (!Number<Item>) seen.below += "\n   " + text_of(kFields<Item>, &list.Items[i]);
    }
    seen.below += "\n";
    if (!untouched) std::free(list.Items);
  }
  bool is_null;
  T list{7, &given<Item>};
};

std::string next_word(std::istream& words);
// As the exported header or the family's own function has it.
std::string parameter_name(const std::string& function, size_t index);

using Player = std::function<Seen(std::istream&)>;
using Calls = std::map<std::string, Player>;

template <typename R, typename... A>
Calls::value_type call(const char* name, R (*function)(A...)) {
  return {name, [name, function](std::istream& words) {
            std::tuple<Argument<A>...> arguments{Argument<A>(next_word(words))...};
            Seen seen = {"="};
            const auto result = [&](auto&... argument) {
              const Side theirs(true);
              return function(argument.get()...);
            };
            if constexpr (std::is_void_v<R>) {
              std::apply(result, arguments);
            } else if constexpr (std::is_pointer_v<R>) {
              const char* const text = std::apply(result, arguments);
              seen.line += std::string(" ") + (text != nullptr ? text : "null");
            } else {
              seen.line += " " + std::to_string(std::apply(result, arguments));
            }
            size_t index = 0;
            std::apply([&](auto&... argument) { (argument.show(seen, parameter_name(name, index++)), ...); },
                       arguments);
            return seen;
          }};
}
#define ZELDB_CALL(function) ::zeldb_test::call(#function, function)
Calls calls(auto... list) {
  return {list...};
}

// A function that writes a text of at most so many bytes.
template <auto function, typename Key, typename Size>
auto into_buffer(Key key, Buffer* to, Size size) {
  return function(key, to != nullptr ? *to : nullptr, size);
}

// The transcripts of a test program.
struct Family {
  const char* folder;
  Calls calls;
  std::string others = "none";  // queries of tables that begin so belong to another family and are not shown
};
extern const Family kFamily;

std::string sweep(const std::string& command, const Database& database);

}  // namespace zeldb_test

#endif
