// SPDX-License-Identifier: Apache-2.0
//
// How the library's functions are called: statuses become failures, lists become vectors.
#ifndef CLI_LIBRARY_H
#define CLI_LIBRARY_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace zeldb::cli {

// Throws the Failure "what: why" unless the status is 0.
void check(int status, const std::string& what);

// Whether a status says that there is no such thing, or not any more.
bool is_absence(int status);
// False when it is not there; throws what check throws for any other status but 0.
bool check_found(int status, const std::string& what);
// One that was asked for by name.
[[noreturn]] void fail_not_found(const std::string& what);

// Throws if the inventory database cannot be reached: for functions that do not say so.
void require_inventory(const std::string& what);
// The same of the property store.
void require_properties(const std::string& what);

// A list that a function of the library fills. Statuses that mean "nothing there" are given in nothing.
template <typename List, typename Read>
auto list_of(const std::string& what, Read read, std::initializer_list<int> nothing = {}) {
  using Record = std::remove_reference_t<decltype(*List::Items)>;
  List list = {};
  const int status = read(&list);
  const std::unique_ptr<Record, void (*)(void*)> owner(list.Items, std::free);
  if (std::find(nothing.begin(), nothing.end(), status) != nothing.end()) return std::vector<Record>();
  check(status, what);
  return list.Items != nullptr ? std::vector<Record>(list.Items, list.Items + list.Count)
                               : std::vector<Record>();
}

template <size_t N>
void copy_text(char (&to)[N], const std::string& from) {
  std::snprintf(to, N, "%s", from.c_str());
}

}  // namespace zeldb::cli

#endif
