// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"

namespace zeldb::cli::redfish {

void put(Json& resource, std::string_view path, Json value) {
  if (value.is_left_out()) return;
  const bool is_list_of_links = path.ends_with("[]");
  if (is_list_of_links) path.remove_suffix(2);
  Json* object = &resource;
  // Annotations have a dot of their own.
  for (size_t end = path.find('.'); end != std::string_view::npos && !path.starts_with('@');
       end = path.find('.')) {
    object = &(*object)[std::string(path.substr(0, end))];
    path.remove_prefix(end + 1);
  }
  const std::string name(path);
  if (is_list_of_links) (*object)[name + "@odata.count"] = value.size();
  (*object)[name] = std::move(value);
}

Json bare_resource(const About& about, const Entry& entry) {
  const std::string type = about.type;
  return Json::object({{"@odata.type", "#" + type + "." + about.version + "." + type},
                       {"@odata.id", entry.uri},
                       {"Id", entry.id},
                       {"Name", nullptr}});
}

void complete_name(Json& resource) {
  if (resource["Name"].is_null()) resource["Name"] = Json(resource["Id"]);
}

std::vector<Chapter> chapters() {
  return {service_root(),
          computer_system(),
          processor(),
          gpu(),
          memory(),
          memory_metrics(),
          storage(),
          storage_controller(),
          network_interface(),
          bios(),
          attribute_registry(),
          chassis(),
          pcie_slots(),
          pcie_device(),
          pcie_function(),
          network_adapter(),
          port(),
          network_device_function(),
          drive(),
          environment_metrics(),
          update_service(),
          software_inventory(),
          embedded_software(),
          manager()};
}

Tree tree_of(const Machine& machine) {
  Tree tree;
  for (const Chapter& chapter : chapters()) chapter.add(machine, tree);
  tree.check();
  return tree;
}

}  // namespace zeldb::cli::redfish
