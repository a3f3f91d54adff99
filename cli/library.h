// SPDX-License-Identifier: Apache-2.0
//
// Calls of the library's functions: statuses become failures, lists become vectors.
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

// Whether a status means that the object does not exist, or no longer.
bool is_absence(int status);
// False if the object is not there; otherwise as check.
bool check_found(int status, const std::string& what);
// For an object that the user named.
[[noreturn]] void fail_not_found(const std::string& what);

// Throws if the inventory database cannot be reached, for functions that do not report it.
void require_inventory(const std::string& what);
// The same for the property store.
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
