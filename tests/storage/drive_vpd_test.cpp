// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "tests/support/libc_shim.h"
#include "zeldb/storage.h"

namespace {

using namespace std::string_literals;
using std::string;
using Texts = std::vector<string>;

// "status Model|Manufacture|SerialNo|PartNo|FruNo|Capacity" of an image in a heap block of exactly len bytes,
// read into a record with a dash in each text.
string parsed(string image, size_t len) {
  image.resize(len);
  const std::vector<uint8_t> exact(image.begin(), image.end());
  aim_disk_info_t disk = {};
  disk.BayNo = 7;
  char* const texts[] = {disk.Model, disk.Manufacture, disk.SerialNo, disk.PartNo, disk.FruNo, disk.Capacity};
  for (char* text : texts) text[0] = '-';
  string seen = std::to_string(parse_nvme_drive_vpd(exact.data(), static_cast<uint32_t>(len), &disk)) + " ";
  for (const char* text : texts) seen.append(text).append(text != disk.Capacity ? "|" : "");
  return seen;
}

string makers(const string& id, string serial, string model) {
  serial.resize(20, ' ');
  model.resize(40, ' ');
  return "\2\10\1" + id + serial + model;
}

// The fields of the product area, separated by slashes.
string standard(const string& fields, uint8_t offset = 1, size_t start = 8) {
  string image(512, '\0');
  size_t at = start + 3;
  std::istringstream stream(fields);
  for (string field; std::getline(stream, field, '/'); at += field.size() + 1) {
    image.replace(at, field.size() + 1, static_cast<char>(0xC0 | field.size()) + field);
  }
  image[0] = 1;
  image[4] = static_cast<char>(offset);
  return image;
}

string record(uint64_t bytes) {
  string area = "\13" + string(63, '\0');
  for (size_t i = 0; i < 8; ++i) area[24 + i] = static_cast<char>(bytes >> 8 * i);
  return area;
}

string with_records(uint8_t offset, size_t start, const string& records) {
  string image = standard("");
  image[5] = static_cast<char>(offset);
  return image.replace(start, records.size(), records);
}

TEST(DriveVpd, Identity) {
  const string d10 = "0123456789", d40 = d10 + d10 + d10 + d10, d63 = d40 + d10 + d10 + "012",
               d16 = d10 + "012345";
  const string d32 = d10 + d10 + d10 + "01",
               wrapped = standard(d63 + "/" + d63 + "/" + d63 + "/" + d63.substr(4));
  const struct {
    string image, expected;
  } cases[] = {
      {makers("\x4D\x14", "S64FNE0R", "MZQL2960HCJR-00A07"),
       "0 MZQL2960HCJR-00A07|Samsung|S64FNE0R|MZQL2960HCJR-00A07|S64FNE0R|-"},
      {makers("\x14\x4D", "SN", "A B C"), "0 A B C|Unknown|SN|B C|SN|-"},
      {makers("\x86\x80", "ABCDEFGHIJKLMNOPQRS ", "ONE_TWO"),
       "0 ONE_TWO|Intel|ABCDEFGHIJKLMNOPQRS |TWO|ABCDEFGHIJKLMNOPQRS |-"},
      {makers("\x5F\x1C", "  S", "AB  CD"), "0 AB|Memblaze|  S|AB|  S|-"},
      {makers("\x3B\x1E", "   S", "\x80\xFF\x7F!"), "0 \x80\xFF|Dapu| |\x80\xFF| |-"},
      {makers("\0\0"s, "\x1F", d40), "0 " + d40 + "|Unknown||" + d32 + "||-"},
      {standard("MAKER/none/SSD MODEL_1/v1/SERIAL/TAG/FILE"), "0 SSD MODEL_1|MAKER|SERIAL|TAG|FILE|-"},
      {standard("//SSD MODEL_1"), "0 SSD MODEL_1|-|-|MODEL_1|-|-"},
      {standard("////S"), "0 -|-|S|-|S|-"},
      {standard("////" + d40), "0 -|-|" + d32 + "|-|" + d32 + "|-"},
      {standard(d40 + "//" + d63 + "//" + d40 + "/" + d40 + "/" + d40),
       "0 " + d63 + "|" + d16 + "|" + d32 + "|" + d32 + "|" + d32 + "|-"},
      {standard("\1M//A_B// \x80\xFF/\x7F/\x1F"), "0 A_B|| \x80\xFF|||-"},
      {standard("M//AB  CD//A B /   A/A"), "0 AB|M|A B | |A|-"},
      {standard("//A_B_C"), "0 A_B_C|-|-|C|-|-"},
      {standard("//A B_C D"), "0 A B_C D|-|-|B_C D|-|-"},
      {standard("// AB"), "0  AB|-|-|AB|-|-"},
      {standard("//AB "), "0 AB |-|-|AB |-|-"},
      {standard("//A_B_"), "0 A_B_|-|-|A_B_|-|-"},
      // Places wrap at 256 from the area's start: the serial number's length stands at 255, its text at 0.
      {string(wrapped).replace(8 + 255, 1, "\3").replace(8, 3, "WRA"),
       "0 " + d63 + "|" + d16 + "|WRA|" + d32 + "|" + d32 + "|-"},
      {"\3\xFE\5\x80", "-1 -|-|-|-|-|-"},
      {"\2\7\1", "-1 -|-|-|-|-|-"},
      {"\2\10\2\0\0\xAB\xCD\xEF"s, "-1 -|-|-|-|-|-"}};
  for (const auto& c : cases) EXPECT_EQ(parsed(c.image, 512), c.expected);
  for (const auto& [offset, start] :
       {std::pair(1, 8), {8, 8}, {33, 8}, {40, 64}, {31, 248}, {32, 0}, {224, 0}}) {
    // At byte 0, the offsets are the first field.
    string image = standard("MF//MODEL", static_cast<uint8_t>(offset), static_cast<size_t>(start));
    EXPECT_EQ(parsed(image, 512).substr(0, 8), "0 MODEL|") << offset;
  }
  EXPECT_EQ(parsed(standard("//MODEL"), 255), "-1 -|-|-|-|-|-");
  aim_disk_info_t disk = {};
  const uint8_t image[256] = {1, 0, 0, 0, 1};
  rm_invalid_chars(nullptr, 4);
  char text[] = "AB  ";
  rm_invalid_chars(text, 3);
  EXPECT_STREQ(text, "AB  ");
  EXPECT_EQ(parse_nvme_drive_vpd(nullptr, 256, &disk) + parse_nvme_drive_vpd(image, 256, nullptr), -2);
}

TEST(DriveVpd, Capacity) {
  const string one = record(1'000'000'000), two = record(2'000'000'000), port = "\14" + string(15, '\0');
  const struct {
    string image;
    size_t len;
    const char* capacity;
  } cases[] = {{with_records(16, 128, record(0)), 256, "0GB"},
               {with_records(16, 128, record(1'000'999'999'999)), 256, "1000GB"},
               {with_records(16, 128, record(1'001'000'000'000)), 256, "1.00TB"},
               {with_records(16, 128, record(3'840'000'000'000)), 256, "3.84TB"},
               {with_records(16, 128, record(UINT64_MAX)), 256, "18446744.07TB"},
               {with_records(16, 128, one + two), 256, "2GB"},
               {with_records(16, 128, port + port + one), 256, "1GB"},
               {with_records(16, 128, port + port + port + one), 256, "-"},
               {with_records(16, 128, one + string(64, '\1') + two), 512, "1GB"},
               {with_records(31, 248, one), 512, "1GB"},
               {with_records(32, 32, one), 256, "1GB"},
               {with_records(255, 255, port + one), 512, "1GB"},
               {with_records(0, 300, one), 512, "-"},
               {with_records(30, 240, one), 272, "1GB"},
               {with_records(30, 240, one), 271, "-"},
               {with_records(30, 240, one), 256, "-"},
               {with_records(24, 192, one + two), 256, "1GB"}};
  for (const auto& c : cases) EXPECT_EQ(parsed(c.image, c.len), "0 -|-|-|-|-|"s + c.capacity);
}

TEST(DriveVpd, Log) {
  const string images[] = {makers("", "", ""), standard("MAKER//MODEL//SERIAL"), "\3\xFE\5\x80",
                           "\2\10\2\0\0\xAB\xCD\xEF"s};
  for (const string& image : images) parsed(image, 256);
  EXPECT_EQ(zeldb_test::libc().syslogs,
            (Texts{"14 parse_nvme_drive_standard_vpd: NVMe drive 7. [Model] MODEL; [MFG] MAKER; [SN] SERIAL; "
                   "[PartNo] MODEL; [Capacity] -\n\n",
                   "14 parse_nvme_drive_vpd: Unknown VPD format. data [03 FE 05 80]\n\n",
                   "14 parse_nvme_drive_standard_vpd: NVMe drive 7. Invalid product info offset 0. "
                   "[02 08 02 00 00 AB CD EF]\n\n"}));
}

}  // namespace
