// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/tree.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/command.h"
#include "cli/file.h"

namespace zeldb::cli::redfish {

namespace fs = std::filesystem;

namespace {

constexpr const char* kRoot = "/redfish/v1";
constexpr int kIndent = 2;

[[noreturn]] void fail(const fs::path& path, int reason) {
  throw Failure(path.string() + ": " + std::strerror(reason));
}

void make_folder(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) fail(path, error.value());
}

using Written = nlohmann::ordered_json;

Written written(const Json& value);

struct Writer {
  Written operator()(Json::LeftOut) const { return nullptr; }
  Written operator()(const Json::Array& items) const {
    Written array = Written::array();
    for (const Json& item : items) array.push_back(written(item));
    return array;
  }
  Written operator()(const Json::Object& members) const {
    Written object = Written::object();
    for (const auto& [name, value] : members) object[name] = written(value);
    return object;
  }
  template <typename Scalar>
  Written operator()(const Scalar& scalar) const {
    return scalar;
  }
};

Written written(const Json& value) {
  return std::visit(Writer(), value.held());
}

// ASCII alone, whatever bytes the databases hold.
std::string text_of(const Json& resource) {
  return written(resource).dump(kIndent, ' ', true, Written::error_handler_t::replace) + "\n";
}

// A folder beside the tree, which is removed unless it has replaced the tree.
class NewFolder {
 public:
  explicit NewFolder(const fs::path& parent) : path_((parent / ".redfish.XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) fail(parent, errno);
  }
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  ~NewFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }

  // The old tree, if there is one, takes the name of the temporary folder.
  void take_place_of(const fs::path& place) {
    const unsigned how = fs::exists(place) ? RENAME_EXCHANGE : RENAME_NOREPLACE;
    if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, place.c_str(), how) != 0) fail(place, errno);
  }

 private:
  std::string path_;
};

}  // namespace

Json link(const std::string& uri) {
  return Json::object({{"@odata.id", uri}});
}

Json links(const std::vector<std::string>& uris) {
  Json all = Json::array();
  for (const std::string& uri : uris) all.push_back(link(uri));
  return all;
}

void Tree::add(Json resource) {
  const std::string uri = resource["@odata.id"].text();
  if (!resources_.emplace(uri, std::move(resource)).second)
    throw Failure("internal error: two Redfish resources at " + uri);
}

void Tree::add_collection(const std::string& uri, const std::string& type, const std::string& name,
                          const std::vector<std::string>& members) {
  const std::string collection = type + "Collection";
  add(Json::object({{"@odata.type", "#" + collection + "." + collection},
                    {"@odata.id", uri},
                    {"Name", name},
                    {"Members@odata.count", members.size()},
                    {"Members", links(members)}}));
}

bool Tree::holds(const std::string& target) const {
  const size_t end = target.find('#');
  std::string place = target.substr(0, end);
  while (place.ends_with('/')) place.pop_back();
  const auto resource = resources_.find(place);
  if (resource == resources_.end() || end == std::string::npos) return resource != resources_.end();
  const Json* value = &resource->second;
  for (size_t begin = end + 2; begin < target.size() && value != nullptr;) {
    const size_t next = std::min(target.find('/', begin), target.size());
    value = value->find(target.substr(begin, next - begin));
    begin = next + 1;
  }
  return value != nullptr;
}

void Tree::check_links(const std::string& place, const Json& value, bool is_root) const {
  if (const auto* items = std::get_if<Json::Array>(&value.held())) {
    for (const Json& item : *items) check_links(place, item, false);
  }
  if (const auto* members = std::get_if<Json::Object>(&value.held())) {
    for (const auto& [name, member] : *members) {
      if (name == "@odata.id" && !is_root && !holds(member.text()))
        throw Failure("internal error: a link of " + place + " leads nowhere: " + member.text());
      check_links(place, member, false);
    }
  }
}

void Tree::check() const {
  for (const auto& [place, resource] : resources_) check_links(place, resource, true);
}

void Tree::write(const std::string& folder, bool replace) const {
  const fs::path place = fs::path(folder) / "redfish";
  std::error_code error;
  if (fs::exists(place, error)) {
    if (!replace) throw Failure(place.string() + ": exists already (--force replaces it)");
    if (!fs::exists(place / "v1" / "index.json", error))
      throw Failure(place.string() + ": is no tree of Redfish resources");
  }
  make_folder(folder);
  NewFolder fresh(folder);
  write_file(fresh.path() + "/index.json", text_of(Json::object({{"v1", std::string(kRoot) + "/"}})));
  for (const auto& [uri, resource] : resources_) {
    const fs::path path = fresh.path() + uri.substr(std::strlen("/redfish"));
    make_folder(path);
    write_file(path / "index.json", text_of(resource));
  }
  fresh.take_place_of(place);
}

}  // namespace zeldb::cli::redfish
