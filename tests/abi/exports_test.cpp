// SPDX-License-Identifier: Apache-2.0
//
// The library as it was linked. Its symbols, their sizes and its name are compared with abi/ by scripts/abi.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <fstream>
#include <set>
#include <string>

#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

// The controller's own libraries, and the shims of the tests, take the place of functions by coming first.
TEST(Exports, AreFoundByNameAndCanBeInterposed) {
  void* const library = dlopen(ZELDB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const auto& [symbol, name] : exports_of(ZELDB_EXPORT_LIST))
    EXPECT_NE(dlsym(library, symbol.c_str()), nullptr) << symbol;
  const link_map* map = nullptr;
  ASSERT_EQ(dlinfo(library, RTLD_DI_LINKMAP, &map), 0);
  for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
    EXPECT_NE(entry->d_tag, DT_SYMBOLIC);
    EXPECT_FALSE(entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_SYMBOLIC) != 0);
  }
  dlclose(library);
}

// A function is called under faults: its name stands in a line of a transcript, before an "=" where its call
// has another name.
TEST(Exports, AreCalledUnderFaults) {
  std::set<std::string> swept{"hc_card_table", "is_amd_platform"};  // data
  for (const char* folder : {"db", "ucm", "pci", "firmware", "cpumem", "storage"}) {
    std::ifstream transcript(std::string(ZELDB_TESTS "/") + folder + "/transcripts/sweep.txt");
    for (std::string verb, statuses, name; transcript >> verb;) {
      if (verb == "sweep" && transcript >> statuses >> name) swept.insert(name.substr(0, name.find('=')));
    }
  }
  for (const auto& [symbol, name] : exports_of(ZELDB_EXPORT_LIST))
    EXPECT_TRUE(swept.contains(name)) << "no line for " << name;
}

}  // namespace
}  // namespace zeldb_test
