// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zeldb/storage.h"

namespace {

using Texts = std::vector<const char*>;

TEST(DriveIdentity, Makers) {
  const std::pair<const char*, Texts> cases[] = {
      {"Hynix", {"HFS"}},
      {"Intel", {"SSD"}},
      {"KIOXIA", {"KHK61", "KPM6", "KCD8", "THNSN"}},
      {"Liteon", {"Liteon EPX", "LITEON"}},
      {"Micron", {"MTFD", "Micron_7450"}},
      {"SMART", {"SVE"}},
      {"SSSTC", {"CV8", "ER2", "SSSTC ER3"}},
      {"SWISSBIT", {"SFPC"}},
      {"Samsung", {"MZ7L3"}},
      {"Seagate", {"ST1200"}},
      {"Toshiba", {"AL15SEB", "MG08"}},
      {"WDC", {"HUS", "HMS", "WDS", "WUS"}},
      {"", {"LiTeO", "liteon", "MICRON", "M", "SS", "INTEL SSD", "XST", " ST", "", "\xC1L", "sST"}}};
  for (const auto& [maker, models] : cases) {
    for (const char* model : models) EXPECT_STREQ(driveModel2Manufacture(model), maker) << model;
  }
  EXPECT_EQ(driveModel2Manufacture(nullptr), nullptr);
}

TEST(DriveIdentity, TrimmedModels) {
  const std::pair<const char*, Texts> cases[] = {
      {"X", {"Intel 1234567 X", "_Intel X", "X"}},
      {"MZQL2960HCJR", {"  MZQL2960HCJR", "Sea MZQL2960HCJR", "W M MZQL2960HCJR", "Hynix  MZQL2960HCJR"}},
      {"SSDPE2KX010T8", {"INTEL SSDPE2KX010T8", "wdc_SSDPE2KX010T8"}},
      {"MTFDKCC1T9TFR", {"Micron_7450_MTFDKCC1T9TFR"}},
      {"12345678 X", {"Intel 12345678 X"}},
      {"960GB", {"Samsung MZQL2 960GB"}},
      {"", {"Intel SSD ", "Intel_", " ", ""}},
      {" ", {"   "}}};
  for (const auto& [trimmed, models] : cases) {
    for (std::string model : models) EXPECT_STREQ(trim_drive_model(model.data()), trimmed);
  }
  for (std::string whole :
       {"Seagates X", "WDX ABC", "WD1 ABC", "Foo Bar Baz", "Longvendor WD X", "HGST\xA0X Y"}) {
    EXPECT_EQ(trim_drive_model(whole.data()), whole.data()) << whole;
  }
  EXPECT_EQ(trim_drive_model(nullptr), nullptr);
}

class ManufactureDate : public testing::TestWithParam<const char*> {};

TEST_P(ManufactureDate, OfWeekAndYear) {
  setenv("TZ", GetParam(), 1);
  const std::pair<const char*, Texts> cases[] = {{"1996-01-01", {"0196", "01-9", "\xFF\xFF\xFF\xFF"}},
                                                 {"1996-12-23", {"5396"}},
                                                 {"1996-12-30", {"0197", "01-3"}},
                                                 {"1998-12-21", {"5298"}},
                                                 {"1998-12-28", {"5398", "9998"}},
                                                 {"2000-01-03", {"0100", "AB12", "", "1", "\xFF\xFF\xFF"}},
                                                 {"2000-03-06", {"10AB"}},
                                                 {"2005-01-03", {" 1 5", "+1+5"}},
                                                 {"2015-12-28", {"5315"}},
                                                 {"2019-12-30", {"0020", "-120", "01201"}},
                                                 {"2020-12-28", {"5320", "9920"}},
                                                 {"2021-12-27", {"5321", "5221"}},
                                                 {"2027-11-22", {"4727", "5227", "0130", "0195", "0028"}}};
  for (const auto& [expected, codes] : cases) {
    for (const char* code : codes) {
      // One of four characters need not be terminated.
      const std::vector<char> exact(code, code + std::min<size_t>(std::strlen(code) + 1, 4));
      char date[16] = {};
      vpd_manuf_date_to_ymd(exact.data(), date, sizeof(date));
      EXPECT_STREQ(date, expected) << code;
    }
  }
  char cut[8] = "1234567";
  vpd_manuf_date_to_ymd("0100", cut, 6);
  for (const char* code : {"0100", static_cast<const char*>(nullptr)}) vpd_manuf_date_to_ymd(code, cut, 0);
  EXPECT_STREQ(cut, "2000-");
  vpd_manuf_date_to_ymd("0100", nullptr, 8);
  unsetenv("TZ");
}
INSTANTIATE_TEST_SUITE_P(Zones, ManufactureDate, testing::Values("UTC0", "WEST12", "EAST-11:59"));

TEST(ManufactureMinutes, AreLocalTime) {
  const struct {
    const char* zone;
    uint8_t bytes[3];
    int date;
  } cases[] = {{"UTC0", {0, 0, 0}, 19960101},         {"WEST5", {0, 0, 0}, 19951231},
               {"EAST-9", {0, 0, 0}, 19960101},       {"UTC0", {0x9F, 5, 0}, 19960101},
               {"UTC0", {0xA0, 5, 0}, 19960102},      {"EAST-9", {0x84, 3, 0}, 19960102},
               {"UTC0", {0xFF, 0xFF, 0xFF}, 20271124}};
  for (const auto& c : cases) {
    setenv("TZ", c.zone, 1);
    int date[3] = {};
    get_manuf_date(c.bytes, &date[0], &date[1], &date[2]);
    EXPECT_EQ(date[0] * 10000 + date[1] * 100 + date[2], c.date) << c.zone;
    get_manuf_date(nullptr, &date[0], nullptr, nullptr);
    get_manuf_date(c.bytes, nullptr, nullptr, nullptr);
  }
  unsetenv("TZ");
}

}  // namespace
