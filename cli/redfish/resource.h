// SPDX-License-Identifier: Apache-2.0
//
// The inventory as Redfish resources. Each resource is one file with one table: its properties, the columns
// that they come from, and how these are converted. The tree and docs/redfish.md are made of these tables.
#ifndef CLI_REDFISH_RESOURCE_H
#define CLI_REDFISH_RESOURCE_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/redfish/machine.h"
#include "cli/redfish/tree.h"

namespace zeldb::cli::redfish {

struct About {
  const char* type;
  const char* version;
  const char* place;  // below /redfish/v1
  const char* text;   // for the document, Markdown
};

template <typename Row>
struct Property {
  const char*
      name;  // a path, as "Status.Health"; with "[]" at its end a list of links, which is counted, too
  const char* from;  // columns, as the document names them
  const char* note;
  Json (*value)(const Row& row, const Machine& machine);
};

// The columns of a path, as "record.SerialNo".
constexpr std::string_view last_step(std::string_view path) {
  return path.substr(path.rfind('.') + 1);
}

// FROM: one column and a conversion of values.h. BY: a function of the row and the machine.
#define REDFISH_FROM(Name, Member, Conversion)                                               \
  {                                                                                          \
    Name, #Member, Conversion::kNote, [](const Row& row, const Machine& machine) -> Json {   \
      return Conversion::of(machine, ::zeldb::cli::redfish::last_step(#Member), row.Member); \
    }                                                                                        \
  }
#define REDFISH_BY(Name, From, Note, Value)                                                                  \
  {                                                                                                          \
    Name, From, Note, []([[maybe_unused]] const Row& row, [[maybe_unused]] const Machine& machine) -> Json { \
      return Value;                                                                                          \
    }                                                                                                        \
  }

// Puts a value at a path; a value that is left out changes nothing.
void put(Json& resource, std::string_view path, Json value);

template <typename Row, size_t N>
void fill(Json& resource, const Property<Row> (&properties)[N], const Row& row, const Machine& machine) {
  for (const Property<Row>& property : properties) put(resource, property.name, property.value(row, machine));
}

// A resource with only the properties that every resource has.
Json bare_resource(const About& about, const Entry& entry);
// If the name is not known, the id stands for it.
void complete_name(Json& resource);

template <typename Row, size_t N>
Json resource_of(const About& about, const Property<Row> (&properties)[N], const Row& row,
                 const Machine& machine) {
  Json resource = bare_resource(about, row);
  fill(resource, properties, row, machine);
  complete_name(resource);
  return resource;
}

struct Line {
  const char* name;
  const char* from;
  const char* note;
};

struct Chapter {
  About about;
  std::vector<Line> lines;
  void (*add)(const Machine& machine, Tree& tree);
};

template <typename Row, size_t N>
Chapter chapter_of(const About& about, const Property<Row> (&properties)[N],
                   void (*add)(const Machine& machine, Tree& tree)) {
  Chapter chapter{about, {}, add};
  for (const Property<Row>& property : properties)
    chapter.lines.push_back({property.name, property.from, property.note});
  return chapter;
}

Chapter service_root();
Chapter computer_system();
Chapter processor();
Chapter gpu();
Chapter memory();
Chapter memory_metrics();
Chapter storage();
Chapter storage_controller();
Chapter network_interface();
Chapter bios();
Chapter attribute_registry();
Chapter chassis();
Chapter pcie_slots();
Chapter pcie_device();
Chapter pcie_function();
Chapter network_adapter();
Chapter port();
Chapter network_device_function();
Chapter drive();
Chapter environment_metrics();
Chapter update_service();
Chapter software_inventory();
Chapter embedded_software();
Chapter manager();

// All of them, in the order of the document.
std::vector<Chapter> chapters();

Tree tree_of(const Machine& machine);
// The document that lists the column of each property, in Markdown.
std::string document();

}  // namespace zeldb::cli::redfish

#endif
