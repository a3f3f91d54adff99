// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_EmbeddedFirmware;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, DeviceName, "DEVICE", "Name of the device"),
    ZELDB_COLUMN(R, DeviceIndex, "INDEX", "Index among devices of the same name"),
    whole(ZELDB_COLUMN(R, SoftwareID, "SOFTWARE", "Id of the device for updates")),
    ZELDB_COLUMN(R, Version, "VERSION", "Version of the firmware"),
    ZELDB_COLUMN(R, Class, "CLASS", "Class of the device"),
    ZELDB_COLUMN(R, Category, "CATEGORY", "Category of the device"),
    ZELDB_COLUMN(R, SubCategory, "SUBCATEGORY", "Subcategory of the device"),
    extra(ZELDB_COLUMN(R, StructRev, "REVISION", "Revision of the device's report")),
    extra(ZELDB_COLUMN(R, Checksum, "CHECKSUM", "Checksum of the device's report")),
};

std::vector<R> read_devices() {
  return list_of<_ZELDB_EmbeddedFirmware_List>(
      "embedded devices", [](auto* list) { return zeldb_get_embedded_firmware_list(list); });
}

}  // namespace

void setup_embedded(CLI::App& app) {
  Listing(app).view(kColumns, read_devices);
}

}  // namespace zeldb::cli
