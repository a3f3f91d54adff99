// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

namespace {

using R = aim_disk_info_t;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Manufacture, "MAKER", "Manufacturer"),
    ZELDB_COLUMN(R, Model, "MODEL", "Model"),
    ZELDB_COLUMN(R, PartNo, "PART", "Part number"),
    ZELDB_COLUMN(R, FruNo, "FRU", "FRU number, for a replacement"),
    whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number")),
    ZELDB_COLUMN(R, Capacity, "SIZE", "Capacity"),
};

struct Name {
  char Manufacture[33];
  char Model[129];
};
constexpr Column kNameColumns[] = {
    ZELDB_COLUMN(Name, Manufacture, "MAKER", "Manufacturer, from the beginning of the model"),
    ZELDB_COLUMN(Name, Model, "MODEL", "Model without the manufacturer"),
};

struct Day {
  char Date[11];
};
constexpr Column kDayColumns[] = {
    ZELDB_COLUMN(Day, Date, "DATE", "Year, month and day"),
};

constexpr size_t kLargestImage = 65536;

std::vector<R> read_image(const std::string& file) {
  const std::string image = read_input(file, kLargestImage);
  R drive = {};
  if (parse_nvme_drive_vpd(reinterpret_cast<const uint8_t*>(image.data()),
                           static_cast<uint32_t>(image.size()), &drive) != 0) {
    throw Failure(file + ": no vital product data of an NVMe drive");
  }
  return {drive};
}

std::vector<Name> read_name(const std::string& model) {
  Name name = {};
  char text[sizeof(name.Model)] = {};
  copy_text(text, model);
  rm_invalid_chars(text, sizeof(text));
  copy_text(name.Manufacture, driveModel2Manufacture(text));
  copy_text(name.Model, trim_drive_model(text));
  return {name};
}

// Four digits are a week and a year, six hexadecimal ones the three bytes of minutes since 1996.
std::vector<Day> read_day(const std::string& code) {
  constexpr size_t kWeekAndYear = 4, kMinutes = 6;
  Day day = {};
  const bool is_hexadecimal = code.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (code.size() == kWeekAndYear && code.find_first_not_of("0123456789") == std::string::npos) {
    vpd_manuf_date_to_ymd(code.c_str(), day.Date, sizeof(day.Date));
  } else if (code.size() == kMinutes && is_hexadecimal) {
    uint8_t bytes[kMinutes / 2];
    for (size_t place = 0; place < sizeof(bytes); ++place)
      bytes[place] = static_cast<uint8_t>(std::stoul(code.substr(2 * place, 2), nullptr, 16));
    int year = 0;
    int month = 0;
    int number = 0;
    get_manuf_date(bytes, &year, &month, &number);
    char date[48];
    std::snprintf(date, sizeof(date), "%04d-%02d-%02d", year, month, number);
    copy_text(day.Date, date);
  } else {
    throw WrongUse("--date: " + code + " is neither four digits nor six hexadecimal ones");
  }
  return {day};
}

}  // namespace

void setup_decode_vpd(CLI::App& app) {
  auto text = std::make_shared<std::string>();
  require(add_text(app, "FILE", *text, "",
                   "The image (- is standard input); with --model or --date, the text to decode"));
  Listing(app)
      .view(kColumns, [text] { return read_image(*text); })
      .view("--model", "Manufacturer and model from a drive's model text", kNameColumns,
            [text] { return read_name(*text); })
      .view("--date", "Date from a week-and-year code (WWYY) or from three bytes (hexadecimal)", kDayColumns,
            [text] { return read_day(*text); });
}

}  // namespace zeldb::cli
