// SPDX-License-Identifier: Apache-2.0
//
// The library as it was linked, read from its file, against the export list.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

using Sizes = std::map<std::string, std::size_t>;

// Programs that use exported data have its size compiled in.
const Sizes kData{{"hc_card_table", 61 * 226}, {"is_amd_platform", 1}};

class Library {
 public:
  Library() {
    const auto header = at<ElfW(Ehdr)>(0, 1)[0];
    sections_ = at<ElfW(Shdr)>(header.e_shoff, header.e_shnum);
    for (const auto& symbol : entries<ElfW(Sym)>(SHT_DYNSYM)) {
      if (symbol.st_shndx == SHN_UNDEF || ELF32_ST_BIND(symbol.st_info) == STB_LOCAL) continue;
      const bool function = ELF32_ST_TYPE(symbol.st_info) == STT_FUNC;
      (function ? functions : data)[text(SHT_DYNSYM, symbol.st_name)] = symbol.st_size;
    }
    for (const auto& entry : entries<ElfW(Dyn)>(SHT_DYNAMIC)) {
      if (entry.d_tag == DT_SONAME) soname = text(SHT_DYNAMIC, entry.d_un.d_val);
      if (entry.d_tag == DT_SYMBOLIC || (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_SYMBOLIC) != 0))
        symbolic = true;
    }
  }

  Sizes functions;
  Sizes data;
  std::string soname;
  bool symbolic = false;

 private:
  const auto& section(unsigned type) const {
    for (const auto& section : sections_)
      if (section.sh_type == type) return section;
    throw std::runtime_error("a section is missing");
  }
  template <typename T>
  std::vector<T> entries(unsigned type) const {
    return at<T>(section(type).sh_offset, section(type).sh_size / sizeof(T));
  }
  std::string text(unsigned type, std::size_t offset) const {
    return file_.c_str() + sections_.at(section(type).sh_link).sh_offset + offset;
  }
  template <typename T>
  std::vector<T> at(std::size_t offset, std::size_t count) const {
    const std::string bytes = file_.substr(offset, count * sizeof(T));
    std::vector<T> entries(bytes.size() / sizeof(T));
    std::memcpy(entries.data(), bytes.data(), entries.size() * sizeof(T));
    return entries;
  }

  const std::string file_ = content_of(ZELDB_LIBRARY);
  std::vector<ElfW(Shdr)> sections_;
};

// The names between "global:" and "local:" of a map that is one node.
std::set<std::string> export_list() {
  std::string text = content_of(ZELDB_EXPORT_LIST);
  for (auto begin = text.find("/*"); begin != std::string::npos; begin = text.find("/*", begin))
    text.erase(begin, text.find("*/", begin) + 2 - begin);
  for (const char* part : {"{", "global:", "local:\n    *;\n};"}) {
    const auto place = text.find(part);
    if (place == std::string::npos || place != text.rfind(part)) throw std::runtime_error(part);
  }
  text.erase(text.find("local:"));
  text.erase(0, text.find("global:") + std::strlen("global:"));
  std::istringstream names(text);
  std::set<std::string> list;
  for (std::string name; std::getline(names >> std::ws, name, ';');) list.insert(name);
  return list;
}

TEST(Exports, AreTheListAndNothingElse) {
  const std::set<std::string> list = export_list();
  const Library library;
  Sizes exported = library.functions;
  exported.insert(library.data.begin(), library.data.end());
  for (const auto& [name, size] : exported) EXPECT_TRUE(list.contains(name)) << "not in the list: " << name;
  for (const std::string& name : list) EXPECT_TRUE(exported.contains(name)) << "not exported: " << name;
  EXPECT_EQ(library.data, kData);
}

TEST(Exports, AreFoundByNameOnceEverythingIsBound) {
  void* const library = dlopen(ZELDB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const std::string& name : export_list()) EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name;
  dlclose(library);
}

// A function is called under faults: its name stands in a line of a transcript, before an "=" where its call
// has another name.
TEST(Exports, AreCalledUnderFaults) {
  std::set<std::string> swept;
  for (const char* folder : {"db", "ucm", "pci", "firmware", "cpumem", "storage"}) {
    std::ifstream transcript(std::string(ZELDB_TESTS "/") + folder + "/transcripts/sweep.txt");
    for (std::string verb, statuses, name; transcript >> verb;) {
      if (verb == "sweep" && transcript >> statuses >> name) swept.insert(name.substr(0, name.find('=')));
    }
  }
  for (const auto& [symbol, size] : Library().functions) {
    const std::string mangled = symbol.starts_with("_Z") ? symbol.substr(2) : "";
    const size_t length = mangled.empty() ? 0 : std::stoul(mangled);
    const std::string name = mangled.empty() ? symbol : mangled.substr(std::to_string(length).size(), length);
    EXPECT_TRUE(swept.contains(name)) << "no line for " << name;
  }
}

// The controller's own libraries, and the shims of the tests, take the place of functions by coming first.
TEST(Exports, AreOfTheRightNameAndCanBeInterposed) {
  const Library library;
  EXPECT_EQ(library.soname, "libzeldb.so.0");
  EXPECT_FALSE(library.symbolic);
}

}  // namespace
}  // namespace zeldb_test
