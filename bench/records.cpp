// SPDX-License-Identifier: Apache-2.0
#include "bench/records.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/setting_columns.h"

namespace bench {

namespace {

template <size_t N>
void put(unsigned char (&field)[N], const std::string& text) {
  std::snprintf(reinterpret_cast<char*>(field), N, "%s", text.c_str());
}

}  // namespace

uint32_t function_key(unsigned number) {
  return 0x01000000U + number;
}

// Half of the texts are empty in turn, so that the filters take more than one shape.
PCISetting_info setting(unsigned number) {
  PCISetting_info record = {};
  const std::string text = std::to_string(number);
  put(record.SettingID, "Slot-" + std::to_string(number % 16) + ".Option" + text);
  put(record.SettingName, "Option " + text);
  record.PfaKey = function_key(number);
  put(record.CurrentValue, number % 2 == 0 ? "Enabled" : "Disabled");
  put(record.PendingValue, number % 3 == 0 ? "Enabled" : "");
  put(record.SuppressIf,
      number % 4 == 0 ? "Slot-1.Mode == \'Legacy\' AND Slot-1.OptionROM == \'Disabled\'" : "");
  put(record.GroupID, "Slot-" + std::to_string(number % 16));
  put(record.GroupName, "Adapter in slot " + std::to_string(number % 16));
  put(record.Mriname, "MRI" + text);
  put(record.ShortDesc, "Selects how option " + text + " behaves when the host starts");
  put(record.FullDesc,
      "Selects how the adapter treats option " + text +
          " when the host starts: enabled, disabled, or as the operating system asks for it");
  put(record.Defvalue, "Enabled");
  put(record.RecordId, text);
  record.Type = 1;
  record.Flags = number % 8;
  record.Numchoices = 2;
  put(record.Choices, "Enabled;Disabled");
  record.Mininstances = 1;
  record.Maxinstances = 1;
  return record;
}

namespace {

// Six digits, as all ids have.
template <size_t N>
void put_number(unsigned char (&field)[N], size_t at, unsigned number) {
  for (size_t i = 6; i-- > 0; number /= 10) field[at + i] = static_cast<unsigned char>('0' + number % 10);
}

std::string row(const char* table_and_columns, std::initializer_list<std::string> cells) {
  std::string sql = std::string("INSERT INTO ") + table_and_columns + " VALUES (";
  for (const std::string& cell : cells) sql.append(cell).append(",");
  sql.back() = ')';
  return sql;
}

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

void append(std::string& text, uint32_t number) {
  char digits[10];
  text.append(digits, std::to_chars(digits, digits + sizeof(digits), number).ptr);
}

}  // namespace

constexpr unsigned kShapes = 64;
constexpr unsigned kFirst = 100'000;

Settings::Settings() {
  for (unsigned i = 0; i < kShapes; ++i) records_.push_back(setting(kFirst + i));
}

const PCISetting_info& Settings::operator[](unsigned number) {
  PCISetting_info& record = records_[number % kShapes];
  put_number(record.SettingID, std::strlen(reinterpret_cast<const char*>(record.SettingID)) - 6,
             kFirst + number);
  record.PfaKey = function_key(number);
  return record;
}

std::vector<std::string> adapter_rows(unsigned count) {
  std::vector<std::string> rows;
  for (unsigned i = 0; i < count; ++i) {
    const std::string key = std::to_string(function_key(i)), slot = std::to_string(i % 250);
    // In turn one that the adapter inventory and one that the parser has found.
    rows.push_back(
        row("PCIAdapter (PCIFuncKey,PCIKey,NodeNo,SlotNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,"
            "HealthStatus,ConnectorType,CardName,AIMSupported,OOBSrc)",
            {key, std::to_string(i + 1), "0", slot, "0", std::to_string(i % 256), "0", "0", "1", "2",
             i % 2 == 0 ? "'0'" : "'165'", quoted("Ethernet adapter, 2 ports, number " + std::to_string(i)),
             i % 2 == 0 ? "1" : "3", "0"}));
    rows.push_back(
        row("PCIs (_id,FunKey,DevKey,NodeIndex,SlotNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,VendorId,"
            "DeviceId,SubVendorId,SubDeviceId,ClsCode,RevId,BridgeId,FunType,SlotDesignation,"
            "HardwareId,HardwareTypeId,LanesInUse,MaxLanes,MaxPCIeType,PCIeType)",
            {key,
             key,
             std::to_string(i + 1),
             "0",
             slot,
             "0",
             std::to_string(i % 256),
             "0",
             "0",
             "1",
             "5348",
             std::to_string(i % 4),
             "5348",
             "1",
             "131072",
             "1",
             "0",
             "1",
             "'PCIe slot'",
             key,
             "3",
             "8",
             "16",
             "4",
             "4"}));
    rows.push_back(
        row("VPDs (HardwareId,HardwareTypeId,Location,SlotNo,ProductName,Manufacture,SerialNo,PartNo)",
            {key, "3", "1", slot, "'Ethernet adapter'", "'Maker'", quoted("SN" + key), "'01PE123'"}));
    if (i < 250) {
      rows.push_back(row("NCSIPackageID (Location,SlotNo,Type,PackageID1,PackageID2)",
                         {"1", slot, "1", std::to_string(i % 8), "255"}));
    }
  }
  return rows;
}

// Of ten drives one in an M.2 bay, one in a 7 mm bay, two SATA drives and four NVMe drives in bays of the
// backplane are in AimDisks, two NVMe drives in NVMeDrives.
std::vector<std::string> drive_rows(unsigned count) {
  static constexpr struct {
    const char* type;
    unsigned place;
  } kKinds[] = {{"'5'", 3}, {"'6'", 4}, {"'1'", 2}, {"'1'", 2},
                {"'3'", 2}, {"'3'", 2}, {"'3'", 2}, {"'3'", 2}};
  static constexpr const char* kPlaces[] = {"Slot ", "Bay ", "M.2 Bay", "7MM Bay"};
  std::vector<std::string> rows;
  for (unsigned i = 0; i < count; ++i) {
    const unsigned kind = i % 10, bay = i / 2 % 256;
    const std::string number = std::to_string(bay), serial = quoted("S64HNE0R" + std::to_string(100000 + i));
    if (kind >= std::size(kKinds)) {
      rows.push_back(
          row("NVMeDrives (Location,SlotNo,CtrlSlot,Capacity,FruNo,PartNo,SupplierSN,Model,UUID,Manufacture,"
              "FwVer,SFlags,Warning,Temperature,RemainLife,InfoMask)",
              {std::to_string(1 + kind % 2), number, "NULL", "3840755982336", "'02JG601'", "'MZQL23T8HCLS'",
               serial, "'MODEL MZQL23T8HCLS'", "'0025385b21400456'", "'Maker'", "'GDC5902Q'", "0", "0", "41",
               "97", "31"}));
      continue;
    }
    const auto& [type, place] = kKinds[kind];
    rows.push_back(
        row("AimDisks (PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,DriveTypeId,MediaTypeId,FruNo,"
            "PartNo,SerialNo,Model,UUID,Manufacture,FwVersion,Capacity,SFlags,Warning,Temperature,RemainLife,"
            "InfoMask,Presence)",
            {"0",
             "6",
             "0",
             number,
             std::to_string(place),
             quoted(kPlaces[place - 1] + number),
             type,
             "'1'",
             "'02JG601'",
             "'MZQL23T8HCLS'",
             serial,
             "'MODEL MZQL23T8HCLS'",
             "'0025385b21400456'",
             "'Maker'",
             "'GDC5902Q'",
             "'3.84TB'",
             "0",
             "0",
             "41",
             "97",
             "31",
             "1"}));
  }
  return rows;
}

std::vector<std::string> component_rows(unsigned count) {
  std::vector<std::string> rows;
  for (unsigned i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    rows.push_back(row(
        "PldmDeviceFirmware (DeviceName,DeviceType,PCIKey,PCIFuncKey,Location,SlotNo,Manufacture,SoftwareID,"
        "VersionString,PkgVersionString,ReleaseDate,UpdateSupport,Updated,UpdateMethod,Status)",
        {quoted("Component " + number), "3", number, std::to_string(function_key(i)), "1",
         std::to_string(i % 250), "'Maker'", "'15B3A2D4'", "'22.31.1014'", "'22.31.1014'", "'2024-05-06'",
         "1", "0", "1", "0"}));
  }
  return rows;
}

void function_filter(uint32_t function_key, std::string& filter) {
  filter = "PCIFuncKey=";
  append(filter, function_key);
}

void key_filter(const PCISetting_info& record, std::string& filter) {
  filter = "SettingID=\"";
  filter.append(reinterpret_cast<const char*>(record.SettingID)).append("\"");
}

void change_filter(const PCISetting_info& record, std::string& filter) {
  filter.clear();
  for (const Column& column : kCompared) {
    if (!filter.empty()) filter += " OR ";
    if (!column.text) {
      filter.append(column.name).append("!=");
      append(filter, number_at(record, column));
    } else if (const char* text = text_at(record, column); *text == '\0') {
      filter.append(column.name).append(" IS NOT NULL");
    } else {
      filter.append("(").append(column.name).append(" IS NULL OR ").append(column.name).append("!=\"");
      filter.append(text).append("\")");
    }
  }
}

void give_up(const std::string& what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

}  // namespace bench
