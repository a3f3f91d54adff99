// SPDX-License-Identifier: Apache-2.0
//
// Decoders of data from devices and firmware, also of damaged data.
#include <gtest/gtest.h>

#include <string>

#include "scan/drive_answers.h"
#include "scan/drives.h"
#include "scan/pci_functions.h"
#include "scan/rows.h"
#include "scan/smbios.h"

namespace zeldb_test {
namespace {

using namespace std::string_literals;
using zeldb::scan::decode_smbios;
using zeldb::scan::decode_vpd;

std::string shown(const zeldb::scan::Value& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : "NULL";
}

TEST(ScanTexts, AreFitForAColumn) {
  const struct {
    std::string text;
    std::string shown;
    size_t limit = 255;
  } cases[] = {
      {"", "NULL"},
      {" \t\r\n", "NULL"},
      {"  A B  ", "A B"},
      {"A\x01\x7F B", "A   B"},
      {"A\0B"s, "A"},
      {"\xC3\xA9t\xC3", "\xC3\xA9t?"},
      {"\xC0\x80 \xED\xA0\x80 \xF5", "?? ??? ?"},
      {"\xC3( \xE0\x80\x80 \xF0\x80\x80\x80 \xF4\x90\x80\x80", "?( ??? ???? ????"},
      {"\xE0\xA0\x80\xE2\x82\xAC\xED\x80\x80\xF4\x80\x80\x80",
       "\xE0\xA0\x80\xE2\x82\xAC\xED\x80\x80\xF4\x80\x80\x80"},
      {"ab\xC3\xA9", "ab", 3},
      {"ab\xC3\xA9", "ab\xC3\xA9", 4},
      {"\xF0\x9F\x98\x80x", "\xF0\x9F\x98\x80", 4},
  };
  for (const auto& one : cases) EXPECT_EQ(shown(zeldb::scan::text_value(one.text, one.limit)), one.shown);
}

// A structure of the type, with as many bytes as length says, and no texts.
std::string structure(char type, size_t length) {
  return std::string{type, static_cast<char>(length), 1, 0} + std::string(length - 4, '\x11') + "\0\0"s;
}

TEST(ScanSmbios, EndsWhereItIsDamaged) {
  const std::string whole = structure(17, 0x28);
  const struct {
    std::string table;
    size_t rows;
  } cases[] = {
      {"", 0},
      {whole, 1},
      {whole + whole, 2},
      {whole.substr(0, whole.size() - 1), 0},    // no end of the texts
      {whole + whole.substr(0, 0x20), 1},        // the length leads out of the table
      {"\x11\x03\x01\x00\x00\x00"s + whole, 0},  // a length below that of the head
      {structure(127, 4) + whole, 0},
      {structure(4, 5) + whole, 2},  // shorter than any version has it
      {structure(9, 4) + whole, 1},
      {whole + "\xFF\xFF", 1},
      {structure(17, 4), 1},
      {structure(0, 4) + structure(9, 0x10), 1},
      {structure(0, 0x12) + whole, 2},                 // no room for an embedded controller
      {structure(0, 0x18) + structure(0, 0x18), 2},    // the second one is not asked
      {structure(16, 0x0F) + structure(17, 0x15), 1},  // of an array that is not there
      {"\x10\x06\x11\x11\x03\x05\0\0"s + whole, 0},    // flash
      {"\x10\x06\x11\x11\x03\x03\0\0"s + whole, 1},
  };
  std::string many;
  for (int nth = 0; nth < 16384; ++nth) many += structure(126, 4);
  EXPECT_EQ(decode_smbios(many + whole).rows.size(), 0U);
  for (const auto& one : cases) {
    EXPECT_EQ(decode_smbios(one.table).rows.size(), one.rows) << testing::PrintToString(one.table);
  }
}

TEST(ScanVpd, CountsWithItsChecksumAlone) {
  const std::string name = "\x82\x02\x00Nm"s;
  const auto list = [&](const std::string& keywords, int wrong = 0) {
    const std::string head = "\x90"s + static_cast<char>(keywords.size() + 4) + "\0"s + keywords + "RV\x01";
    unsigned sum = 0;
    for (const char byte : name + head) sum += static_cast<unsigned char>(byte);
    return name + head + static_cast<char>(0 - sum + static_cast<unsigned>(wrong)) + "\x78";
  };
  const std::string whole = list("MN\x01MPN\x02P1SN\x03S\0\x01"s);
  ASSERT_TRUE(decode_vpd(whole));
  EXPECT_EQ(decode_vpd(whole)->name, "Nm");
  EXPECT_EQ(decode_vpd(whole)->maker, "M");
  EXPECT_EQ(decode_vpd(whole)->part, "P1");
  EXPECT_EQ(decode_vpd(whole)->serial, "S\0\x01"s);
  EXPECT_FALSE(decode_vpd(list("PN\x02P1", 1)));
  EXPECT_FALSE(decode_vpd(list("PN\x7FP1")));
  EXPECT_FALSE(decode_vpd(name + "\x90\x05\x00PN\x02P1"s));  // no checksum
  EXPECT_FALSE(decode_vpd(name + "\x90\x03\x00RV\x00"s));
  EXPECT_FALSE(decode_vpd(std::string(64, '\0')));
  EXPECT_FALSE(decode_vpd(std::string(64, '\xFF')));
  for (size_t length = 0; length + 1 < whole.size(); ++length)
    EXPECT_FALSE(decode_vpd(whole.substr(0, length))) << length;
}

TEST(ScanDrives, WriteCapacitiesInDecimalUnits) {
  EXPECT_EQ(zeldb::scan::capacity_text(960'197'124'096), "960GB");
  EXPECT_EQ(zeldb::scan::capacity_text(1'000'204'886'016), "1000GB");
  EXPECT_EQ(zeldb::scan::capacity_text(3'840'755'982'336), "3.84TB");
}

TEST(ScanDrives, TellTheirHealthWhole) {
  std::string page(512, '\0');
  page.replace(0, 6, "\x04\x39\x01\x64\x0A\x03");  // 313 kelvin; 3 percent are used
  const auto health = zeldb::scan::decode_nvme_health(page);
  ASSERT_TRUE(health);
  EXPECT_EQ(health->warning, 4U);
  EXPECT_EQ(health->celsius, 40U);
  EXPECT_EQ(health->life_left, 97U);
  page[5] = '\xFF';
  EXPECT_EQ(zeldb::scan::decode_nvme_health(page)->life_left, 0U);
  EXPECT_FALSE(zeldb::scan::decode_nvme_health(page.substr(1)));
  EXPECT_FALSE(zeldb::scan::decode_nvme_health(std::string(512, '\x7F')));
  EXPECT_FALSE(zeldb::scan::decode_nvme_health(std::string(512, '\0')));
  EXPECT_EQ(zeldb::scan::without_escapes("\\x41 \\x4g\\x2"), "A \\x4g\\x2");
}

TEST(ScanPci, AddressesAreReadWhole) {
  const struct {
    std::string path;
    std::string address;
  } cases[] = {
      {"devices/pci0000:00/0000:00:01.0/0000:01:00.1/virtio0", "0000:01:00.1"},
      {"10000:e1:00.0", "10000:e1:00.0"},
      {"0000:00:20.0", "-"},
      {"0000:00", "-"},
      {"0000:00:1f.8", "-"},
      {"0000:00:1f.0x", "-"},
      {"virtual/net/lo", "-"},
  };
  for (const auto& one : cases) {
    const auto address = zeldb::scan::function_on_path(one.path);
    EXPECT_EQ(address ? zeldb::scan::text_of(*address) : "-", one.address) << one.path;
  }
}

}  // namespace
}  // namespace zeldb_test
