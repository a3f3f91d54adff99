// SPDX-License-Identifier: Apache-2.0
#include <syslog.h>

#include <cctype>
#include <cstring>
#include <vector>

#include "fuzz/input.h"
#include "zeldb/storage.h"

using namespace zeldb_fuzz;

extern "C" __attribute__((visibility("default"))) void syslog(int, const char*, ...) {}

namespace {

template <size_t N>
void expect_text(const char (&field)[N], const char* name) {
  expect(std::memchr(field, 0, N) != nullptr, std::string(name) + " is terminated");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  aim_disk_info_t disk = {};
  parse_nvme_drive_vpd(data, static_cast<uint32_t>(size), &disk);
  expect_text(disk.FruNo, "FruNo");
  expect_text(disk.PartNo, "PartNo");
  expect_text(disk.SerialNo, "SerialNo");
  expect_text(disk.Model, "Model");
  expect_text(disk.Manufacture, "Manufacture");
  expect_text(disk.Capacity, "Capacity");

  std::string field(Input(data, size).all());
  rm_invalid_chars(field.data(), static_cast<uint32_t>(size));
  for (const char* c = field.c_str(); *c != '\0'; ++c)
    expect(std::iscntrl(static_cast<unsigned char>(*c)) == 0, "no control character stays");

  std::string model(reinterpret_cast<const char*>(data), size);
  expect(driveModel2Manufacture(model.c_str()) != nullptr, "a maker, or an empty text");
  const char* const trimmed = trim_drive_model(model.data());
  expect(trimmed >= model.c_str() && trimmed <= model.c_str() + std::strlen(model.c_str()),
         "within the model");
  if (size < 4) return 0;
  int year = 0, month = 0, day = 0;
  get_manuf_date(data, &year, &month, &day);
  expect(year >= 1995 && year <= 2028 && month >= 1 && month <= 12 && day >= 1 && day <= 31, "a day");
  std::vector<char> date(data[0] % 16);
  vpd_manuf_date_to_ymd(std::string(model, 0, 4).c_str(), date.data(), static_cast<uint32_t>(date.size()));
  expect(date.empty() || std::memchr(date.data(), 0, date.size()) != nullptr, "the date is terminated");
  return 0;
}
