// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "cmr/bios.h"

namespace zel_platform {
namespace {

// What leads to an attribute, level by level. Where there is a key, other keys lead elsewhere.
struct Level {
  const char* key;
  bool is_array;
};
constexpr Level kLevels[] = {{nullptr, false},     {"collections", true}, {nullptr, false},
                             {"attributes", true}, {nullptr, false},      {}};
enum { kDocument, kRoot, kCollections, kCollection, kAttributes, kAttribute };

const BiosMember* find_member(const std::string& key) {
  const auto* const found = std::find_if(kBiosMemberTable.begin(), kBiosMemberTable.end(),
                                         [&](const BiosMember& member) { return member.name == key; });
  return found != kBiosMemberTable.end() ? found : nullptr;
}

class Reader : public JsonVisitor {
 public:
  explicit Reader(Bios& bios) : bios_(bios) {}

  void key(const std::string& name) override { key_ = name; }
  void text(std::string& value, std::optional<size_t> at) override {
    value.resize(std::min(value.find('\0'), value.size()));
    const Place place = here();
    if (place == Place::OnTheWay) fail(expected());
    if (place == Place::Name) name_ = value;
    if (place != Place::Member) return;
    if (!member_->is_text) fail(expected());
    bios_.set_text(number(), value, at);
  }
  void value(Json value) override {
    const Place place = here();
    if (place == Place::Elsewhere) return;
    if (value.is_null() && place == Place::OnTheWay && kLevels[level_].key != nullptr) {
      leads_on_[level_] = false;
    } else if (value.is_null() && place == Place::Name) {
      name_.reset();
    } else if (value.is_null() && place == Place::Member) {
      bios_.set_nothing(number());
    } else {
      const std::optional<uint32_t> word = word_of(value);
      if (place != Place::Member || member_->is_text || !word) fail(expected());
      bios_.set_word(number(), *word);
    }
  }
  void open(Json empty) override {
    const Place place = here();
    const bool is_array = empty.as<Json::Array>() != nullptr;
    if (place == Place::Elsewhere) {
      ++elsewhere_;
      return;
    }
    if (place != Place::OnTheWay || is_array != kLevels[level_].is_array) fail(expected());
    leads_on_[level_++] = true;
    leads_on_[level_] = false;
    if (level_ == kCollections) bios_ = Bios();
    if (level_ == kCollection) name_.reset();
    if (level_ == kAttributes) bios_.forget_attributes();
    if (level_ == kAttributes) attributes_ = 0;
  }
  void close() override {
    if (elsewhere_ > 0) {
      --elsewhere_;
      return;
    }
    const char* const key = kLevels[level_].key;
    if (key != nullptr && !leads_on_[level_]) fail(std::string(key) + ": not an array");
    --level_;
    if (level_ == kCollections) bios_.end_collection(name_);
    if (level_ != kAttributes) return;
    bios_.end_attribute();
    ++attributes_;
  }

 private:
  enum class Place { OnTheWay, Name, Member, Elsewhere };

  // Where the value is that comes now.
  Place here() {
    if (elsewhere_ > 0) return Place::Elsewhere;
    if (level_ == kAttribute) {
      member_ = find_member(key_);
      return member_ != nullptr ? Place::Member : Place::Elsewhere;
    }
    if (kLevels[level_].key == nullptr || key_ == kLevels[level_].key) return Place::OnTheWay;
    return level_ == kCollection && key_ == "name" ? Place::Name : Place::Elsewhere;
  }
  size_t number() const { return static_cast<size_t>(member_ - kBiosMemberTable.data()); }

  std::string expected() const {
    if (level_ == kDocument) return "not a JSON object";
    if (level_ == kAttribute) return key_ + (member_->is_text ? ": not a text" : ": not a 32-bit number");
    const char* const key = kLevels[level_].key;
    if (key == nullptr) return "not an object";
    if (key_ == "name") return "name: not a text";
    return std::string(key) + ": not an array";
  }
  [[noreturn]] void fail(const std::string& reason) const {
    std::string place;
    if (level_ >= kCollections) place = "collections[" + std::to_string(bios_.collections().size()) + "]: ";
    if (level_ >= kAttributes) place += "attributes[" + std::to_string(attributes_) + "]: ";
    throw ConfigError(place + reason);
  }

  Bios& bios_;
  size_t level_ = kDocument;
  std::array<bool, kAttribute + 1> leads_on_ = {};  // from each level something leads to the next one
  size_t elsewhere_ = 0;                            // as deep in what is not kept
  std::string key_;
  const BiosMember* member_ = nullptr;
  std::optional<std::string> name_;  // of the collection
  size_t attributes_ = 0;            // those of the collection before
};

}  // namespace

bool read_bios(const char* file, Bios& bios) {
  Reader reader(bios);
  std::unique_ptr<FileReader> opened = visit_config(file, reader);
  const bool good = opened != nullptr;
  bios.keep(std::move(opened));
  return good;
}

}  // namespace zel_platform
