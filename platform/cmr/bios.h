// SPDX-License-Identifier: Apache-2.0
//
// What bios.json holds, checked. A BIOS has many attributes and a board little memory: of an attribute the
// members that are neither null nor 0 are kept, and of most texts the place in the file, where they are read
// when they are asked for. The file stays open: one that takes its place changes nothing.
#ifndef ZEL_PLATFORM_CMR_BIOS_H
#define ZEL_PLATFORM_CMR_BIOS_H

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/config.h"
#include "platform/cmr.h"

namespace zel_platform {

// The keys of an attribute: members of the record that is handed out, and the values.
struct BiosMember {
  std::string_view name;
  size_t offset;
  bool is_text;
};
inline constexpr size_t kBiosMembers = 33;
extern const std::array<BiosMember, kBiosMembers> kBiosMemberTable;

class Bios {
 public:
  struct Collection {
    char* name;  // may be null
    uint32_t first, end;
    uint32_t from, to;  // where the texts are that are left in the file
  };
  struct Attributes {
    std::vector<char> texts;
    std::vector<cmr_bios_attribute> records;
  };
  struct Value {
    const char* pending;  // may be null, as may the other
    const char* current;
  };

  const std::vector<Collection>& collections() const { return collections_; }
  // Throws where the file cannot be read. Texts stay where they are as long as both do.
  Attributes attributes(const Collection& collection) const;
  // Of an id: the collection's name, ".", the attribute's name. Of equal ids the first in the file counts.
  std::optional<Value> value(std::string_view id) const;

  // In the order of the file: a collection's attributes, member by member, then the collection.
  void set_text(size_t member, std::string_view text, std::optional<size_t> place);
  void set_word(size_t member, uint32_t word);
  void set_nothing(size_t member) { present_ &= ~(uint64_t{1} << member); }
  void end_attribute();
  void forget_attributes();
  void end_collection(const std::optional<std::string>& name);
  void keep(std::unique_ptr<FileReader> file) { file_ = std::move(file); }

 private:
  using Members = std::array<uint32_t, kBiosMembers>;  // words, and places of texts

  char* text_at(uint32_t place) const { return texts_[place >> 16U].get() + (place & 0xFFFFU); }
  uint32_t kept(std::string_view text);
  uint64_t unpack(uint32_t attribute, Members& members) const;
  const char* name_of(uint32_t attribute) const;

  std::vector<Collection> collections_;
  std::vector<uint32_t> starts_;   // of the attributes in what is packed
  std::vector<uint32_t> by_name_;  // the attributes of each collection
  std::deque<uint32_t> packed_;    // which members are present, in two words, and these
  std::vector<std::unique_ptr<char[]>> texts_;
  size_t used_ = 0, size_ = 0;  // of the last of them
  std::unique_ptr<FileReader> file_;
  // Of the attribute and the collection that are read.
  uint64_t present_ = 0;
  Members members_ = {};
  uint32_t from_ = UINT32_MAX, to_ = 0;
};

using PendingValues = std::map<std::string, std::string, std::less<>>;

// False, and one line in the log, where the file cannot be read or something in it is of another kind.
bool read_bios(const char* file, Bios& bios);
// Throws a ConfigError that names the place in the file.
void set_pending(Json& json, PendingValues pending);

}  // namespace zel_platform

#endif
