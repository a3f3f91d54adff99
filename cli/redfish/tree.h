// SPDX-License-Identifier: Apache-2.0
//
// Resources as a tree of folders with an index.json each. Web servers, also the DMTF's mockup servers, serve
// it as a Redfish service.
#ifndef CLI_REDFISH_TREE_H
#define CLI_REDFISH_TREE_H

#include <map>
#include <string>
#include <vector>

#include "cli/redfish/json.h"

namespace zeldb::cli::redfish {

Json link(const std::string& uri);
Json links(const std::vector<std::string>& uris);

class Tree {
 public:
  void add(Json resource);
  void add_collection(const std::string& uri, const std::string& type, const std::string& name,
                      const std::vector<std::string>& members);

  // Throws Failure if a link leads nowhere.
  void check() const;
  // Writes redfish/ into a folder, which is created if it is missing. An existing tree is a Failure, or is
  // replaced as a whole.
  void write(const std::string& folder, bool replace) const;

 private:
  bool holds(const std::string& target) const;
  void check_links(const std::string& place, const Json& value, bool is_root) const;

  std::map<std::string, Json> resources_;
};

}  // namespace zeldb::cli::redfish

#endif
