// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_SNAPSHOT_MASK_H
#define CLI_SNAPSHOT_MASK_H

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <map>
#include <string>
#include <unordered_map>

#include "cli/mask.h"

namespace zeldb::cli {

// Hides in an export the values that Mask hides, and hides them also in settings, messages and properties. It
// has to see all identifying values first.
class SnapshotMask {
 public:
  void learn(const std::string& column, const std::string& value);
  void learn_property(const std::string& name, const std::string& bytes);

  std::string column(const std::string& column, const std::string& value, Holds holds = Holds::Choice);
  // The bytes of a property: a tag, and a text or a number.
  std::string property(const std::string& name, const std::string& bytes);
  // A file of the platform folder, which is JSON: every text in it.
  void json(nlohmann::ordered_json& content);

 private:
  void json(nlohmann::ordered_json& content, const std::string& name, Holds holds);
  std::string without_known(const std::string& text) const;

  Mask mask_;
  // By their first characters, in lower case: values, the longer ones first, and what replaces them.
  std::unordered_map<std::string, std::map<std::string, std::string, std::greater<>>> known_;
};

}  // namespace zeldb::cli

#endif
