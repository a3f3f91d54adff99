// SPDX-License-Identifier: Apache-2.0
#include "db/codes.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/tables.h"
#include "db/values.h"
#include "firmware/doubled.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"
#include "zeldb/pci.h"

using namespace zeldb;
using vrel_log::logDbg;
using vrel_log::logErr;
using vrel_log::logInfo;

namespace {

using Image = _ZELDB_AdapterFirmware;

constexpr const char* kListFunction = "zeldb_update_adapter_firmware_list";
constexpr const char* kImageFunction = "zeldb_insert_or_update_firmware_info";
constexpr uint8_t kNoHardwareType = 255;

constexpr Field as_signed(Field field) {
  field.kind = Kind::Signed;
  return field;
}

constexpr auto kRefreshed = field_table(ZELDB_FIELD(Image, ReleaseDate), ZELDB_FIELD(Image, VersionString));
constexpr auto kInserted = field_table(ZELDB_FIELD(Image, FirmwareName), ZELDB_FIELD(Image, Manufacture),
                                       ZELDB_FIELD(Image, ReleaseDate), ZELDB_FIELD(Image, Description),
                                       as_signed(ZELDB_FIELD(Image, Classification)),
                                       ZELDB_FIELD(Image, VersionString), ZELDB_FIELD(Image, SoftwareID));
constexpr auto kStored = field_table(ZELDB_FIELD(Image, FirmwareName), ZELDB_FIELD(Image, VersionString),
                                     ZELDB_FIELD(Image, Description), ZELDB_FIELD(Image, ReleaseDate),
                                     ZELDB_FIELD(Image, Classification), ZELDB_FIELD(Image, Manufacture),
                                     ZELDB_FIELD(Image, SoftwareID));

struct Hardware {
  int id;
  int type;
};

Filter<128> image_filter(const Image& image, const Hardware& hardware) {
  return Filter<128>("HardwareTypeId=%d AND HardwareId=%d AND SoftwareID=\"%s\" AND Classification=%d",
                     hardware.type, hardware.id, doubled(image.SoftwareID, '"').text(), image.Classification);
}

int refresh(ContentValues& values, const Image& image, const char* filter) {
  values.put(kRefreshed.fields, &image, EmptyText::AsText);
  const int status = values.update(tables::kImages, filter);
  if (status != ZELDB_OK) {
    logDbg("%s  zel_db_update failed, update SQL: UPDATE %s SET %s = %s, %s = %s WHERE %s", kListFunction,
           tables::kImages, "ReleaseDate", image.ReleaseDate, "VersionString", image.VersionString, filter);
  }
  return status;
}

int insert(ContentValues& values, const Image& image, const Hardware& hardware) {
  values.put(kInserted.fields, &image, EmptyText::AsText);
  values.put_int("HardwareTypeId", hardware.type);
  values.put_int("HardwareId", hardware.id);
  logInfo("%s: insert new firmware row, softerwareID %s classfication %x hwtype %x hwid %x", kListFunction,
          image.SoftwareID, image.Classification, static_cast<unsigned>(hardware.type),
          static_cast<unsigned>(hardware.id));
  int64_t row = 0;
  const int status = values.insert(tables::kImages, &row);
  if (status != ZELDB_OK) {
    logDbg(
        "%s  zel_db_insert failed, insert SQL: INSERT INTO %s (%s, %s, %s, %s, %s, %s, %s, %s, %s) VALUES "
        "(%s, %s, %s, %s, %d, %s, %s, %d, %d)",
        kListFunction, tables::kImages, "FirmwareName", "Manufacture", "ReleaseDate", "Description",
        "Classification", "VersionString", "SoftwareID", "HardwareTypeId", "HardwareId", image.FirmwareName,
        image.Manufacture, image.ReleaseDate, image.Description, image.Classification, image.VersionString,
        image.SoftwareID, hardware.type, hardware.id);
  }
  return status;
}

int store_image(_zel_db_handle_t* handle, ContentValues& values, Image& image, const Hardware& hardware,
                int onlyUpdate) {
  values.clear();
  terminate_texts(kInserted.fields, &image);
  const Filter<128> filter = image_filter(image, hardware);
  const int64_t row = find_db_record(handle, tables::kImages, filter);
  logDbg("%s  find SQL: SELECT _id FROM %s WHERE %s    rowId: %x", kListFunction, tables::kImages,
         static_cast<const char*>(filter), static_cast<unsigned>(row));
  if (row >= 1) return refresh(values, image, filter);
  if (row == 0 && onlyUpdate == 0) return insert(values, image, hardware);
  logErr(
      "%s: query firmwares table failed, softerwareID %s classfication %x hwtype %x hwid %x, onlyUpdate %d",
      kListFunction, image.SoftwareID, image.Classification, static_cast<unsigned>(hardware.type),
      static_cast<unsigned>(hardware.id), onlyUpdate);
  return ZELDB_OK;
}

// Returns the status of the lookup.
int find_hardware(uint32_t function_key, Hardware& hardware) {
  unsigned int id = function_key;
  unsigned char type = kNoHardwareType;
  const int status = zeldb_get_pci_hardwareidtype_by_funkey(function_key, &id, &type);
  hardware = {static_cast<int>(id), type};
  if (status != ZELDB_OK) {
    // The log has always shown the name of the list function.
    logDbg("%s: zeldb_get_pci_funkey_list failed, funKey: %d", kListFunction, static_cast<int>(function_key));
  }
  return status;
}

}  // namespace

int zeldb_update_adapter_firmware_list(int adapterKey, _ZELDB_AdapterFirmware_List* list, int onlyUpdate) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr || (list->Items == nullptr && list->Count > 0)) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, kListFunction);
  if (!values) return values.no_memory();
  LocalList<_ZELDB_PCI_FunKey_List> functions;
  int status = zeldb_get_pci_funkey_list(adapterKey, functions.out());
  if (status != ZELDB_OK) return status;
  for (const uint32_t function_key : functions.items()) {
    Hardware hardware = {};
    status = find_hardware(function_key, hardware);
    if (status != ZELDB_OK) continue;  // the result if no other function follows
    for (Image& image : std::span(list->Items, list->Count)) {
      status = store_image(handle, values, image, hardware, onlyUpdate);
      if (status != ZELDB_OK) return status;
    }
  }
  return status;
}

int zeldb_insert_or_update_firmware_info(uint32_t functionKey, const _ZELDB_AdapterFirmware* image) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (image == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, kImageFunction);
  if (!values) return values.no_memory();
  Image stored = *image;
  terminate_texts(kStored.fields, &stored);
  values.put(kStored.fields, &stored, EmptyText::AsText);
  values.put_uint("HardwareId", functionKey);
  values.put_uint("HardwareTypeId", kPciFunction);
  if (!values.is_complete()) return values.no_memory();
  // Neither type nor software id: another image of this class and number is taken over.
  const Filter<64> selector("HardwareId=%u and Classification=%u", functionKey,
                            unsigned{stored.Classification});
  if (insert_or_update_db_record(handle, tables::kImages, selector, values.get(), nullptr) >= 1)
    return ZELDB_OK;
  syslog_info("%s: Failed to insert/update PCI FW info, where:%s\n\n", kImageFunction,
              static_cast<const char*>(selector));
  return ZELDB_FAILED;
}
