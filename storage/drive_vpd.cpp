// SPDX-License-Identifier: Apache-2.0
//
// Vital product data of NVMe drives, in two layouts: one of the drive vendors, and the FRU image of a
// management controller.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "db/code_text.h"
#include "db/syslog_info.h"
#include "storage/capacity_text.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

using Disk = aim_disk_info_t;

constexpr int32_t kRefused = -1;
constexpr uint32_t kShortestImage = 256;

// Access to the bytes of an image. Bytes past its end are 0.
class Image {
 public:
  Image(const uint8_t* bytes, uint32_t length) : bytes_(bytes), length_(length) {}

  uint8_t at(uint32_t index) const { return index < length_ ? bytes_[index] : uint8_t{0}; }

  bool holds(uint32_t first, uint32_t count) const { return first <= length_ && count <= length_ - first; }

  uint64_t number(uint32_t first, uint32_t count) const {
    uint64_t value = 0;
    while (count-- > 0) value = value << 8 | at(first + count);
    return value;
  }

  // Copies as much of a text as fits, and cleans it.
  template <size_t N>
  void text(uint32_t first, uint32_t length, char (&to)[N]) const {
    length = std::min<uint32_t>(length, N - 1);
    for (uint32_t i = 0; i < length; ++i) to[i] = static_cast<char>(at(first + i));
    to[length] = '\0';
    rm_invalid_chars(to, length);
  }

 private:
  const uint8_t* bytes_;
  uint32_t length_;
};

template <size_t N>
std::string_view view(const char (&field)[N]) {
  return {field, strnlen(field, N - 1)};
}

// The part of the model after the first blank, or else after the last underscore, or else the whole model. A
// blank or underscore at the end does not count.
std::string_view part_number(std::string_view model) {
  for (const size_t separator : {model.find(' '), model.rfind('_')}) {
    if (separator != std::string_view::npos && separator + 1 < model.size())
      return model.substr(separator + 1);
  }
  return model;
}

constexpr size_t kShortText = 32;

// The copy is padded with NULs, and not terminated if the text is longer.
void copy_short(char (&to)[kShortText + 1], std::string_view from) {
  std::memset(to, 0, kShortText);
  std::memcpy(to, from.data(), std::min(from.size(), kShortText));
}

// ---- The layout of the vendors ----

constexpr uint32_t kVendorId = 3;
constexpr uint32_t kVendorSerial = 5;
constexpr uint32_t kVendorSerialLength = 20;
constexpr uint32_t kVendorModel = 25;
constexpr uint32_t kVendorModelLength = 40;

constexpr CodeText kVendors[] = {
    {0x144D, "Samsung"}, {0x1C5F, "Memblaze"}, {0x1E3B, "Dapu"}, {0x8086, "Intel"}};
static_assert(is_code_table(kVendors));

bool has_vendor_signature(const Image& image) {
  return image.at(0) == 2 && image.at(1) == 8 && image.at(2) == 1;
}

void read_vendor_layout(const Image& image, Disk& disk) {
  image.text(kVendorSerial, kVendorSerialLength, disk.SerialNo);
  image.text(kVendorModel, kVendorModelLength, disk.Model);
  copy_short(disk.PartNo, part_number(view(disk.Model)));
  disk.PartNo[kShortText] = '\0';
  std::memcpy(disk.FruNo, disk.SerialNo, kShortText);
  disk.FruNo[kShortText] = '\0';
  copy_text(disk.Manufacture,
            text_of(kVendors, static_cast<uint32_t>(image.number(kVendorId, 2)), "Unknown"));
}

// ---- The FRU image ----

constexpr const char* kStandardReader = "parse_nvme_drive_standard_vpd";
constexpr uint32_t kProductOffset = 4;
constexpr uint32_t kRecordsOffset = 5;
constexpr uint32_t kOffsetUnit = 8;
constexpr uint8_t kAreaAtByte8 = 8;  // vendors write the byte offset here, where the format has units of 8

// The fields of the product area, in order. Positions are 8-bit numbers from its start.
class ProductArea {
 public:
  ProductArea(const Image& image, uint32_t start) : image_(image), start_(start) {}

  // False if the field is empty; the target then stays as it was.
  template <size_t N>
  bool take(char (&to)[N]) {
    const Bytes field = next();
    if (field.length > 0) image_.text(field.first, field.length, to);
    return field.length > 0;
  }
  void skip() { next(); }

 private:
  struct Bytes {
    uint32_t first, length;
  };

  Bytes next() {
    const uint32_t length = image_.at(start_ + position_) & 0x3Fu;
    const auto first = static_cast<uint8_t>(position_ + 1);
    position_ = static_cast<uint8_t>(first + length);
    return {start_ + first, length};
  }

  const Image& image_;
  uint32_t start_;
  uint8_t position_ = 3;
};

void read_product_area(const Image& image, uint32_t start, Disk& disk) {
  ProductArea area(image, start);
  area.take(disk.Manufacture);
  area.skip();
  if (area.take(disk.Model)) {
    copy_short(disk.PartNo, part_number(view(disk.Model)));
    disk.PartNo[kShortText] = '\0';
  }
  area.skip();
  area.take(disk.SerialNo);
  if (!area.take(disk.PartNo)) copy_short(disk.PartNo, part_number(view(disk.Model)));
  if (!area.take(disk.FruNo)) {
    copy_short(disk.FruNo, view(disk.SerialNo));
    disk.FruNo[kShortText] = '\0';
  }
}

// The last NVMe record counts. A record that the image does not hold completely ends the walk.
void read_capacity(const Image& image, Disk& disk) {
  static constexpr int kMostRecords = 3;
  static constexpr uint8_t kNvme = 11, kNvmePort = 12;
  static constexpr uint32_t kNvmeSize = 64, kNvmePortSize = 16, kCapacity = 24, kCapacitySize = 8;
  uint32_t record = image.at(kRecordsOffset);
  if (record * kOffsetUnit < kShortestImage) record *= kOffsetUnit;
  for (int i = 0; i < kMostRecords; ++i) {
    const uint8_t type = image.at(record);
    if (type == kNvmePort) {
      record += kNvmePortSize;
    } else if (type == kNvme && image.holds(record + kCapacity, kCapacitySize)) {
      format_capacity(disk.Capacity, image.number(record + kCapacity, kCapacitySize), Gigabytes::CutOff);
      record += kNvmeSize;
    } else {
      return;
    }
  }
}

int32_t read_standard_layout(const Image& image, Disk& disk) {
  const uint8_t offset = image.at(kProductOffset);
  if (offset == 0) {
    syslog_info(
        "%s: NVMe drive %d. Invalid product info offset %d. [%02X %02X %02X %02X %02X %02X %02X %02X]\n\n",
        kStandardReader, disk.BayNo, offset, image.at(0), image.at(1), image.at(2), image.at(3), image.at(4),
        image.at(5), image.at(6), image.at(7));
    return kRefused;
  }
  const uint32_t start = offset == kAreaAtByte8 ? offset : (offset & 0x1Fu) * kOffsetUnit;
  read_product_area(image, start, disk);
  read_capacity(image, disk);
  // Texts that were not written need not be terminated.
  syslog_info(
      "%s: NVMe drive %d. [Model] %.64s; [MFG] %.16s; [SN] %.32s; [PartNo] %.32s; [Capacity] %.16s\n\n",
      kStandardReader, disk.BayNo, disk.Model, disk.Manufacture, disk.SerialNo, disk.PartNo, disk.Capacity);
  return ZELDB_OK;
}

}  // namespace

int32_t parse_nvme_drive_vpd(const uint8_t* image, uint32_t len, aim_disk_info_t* out) {
  if (image == nullptr || out == nullptr || len < kShortestImage) return kRefused;
  const Image vpd(image, len);
  if (has_vendor_signature(vpd)) {
    read_vendor_layout(vpd, *out);
    return ZELDB_OK;
  }
  if (vpd.at(0) != 1 && vpd.at(0) != 2) {
    syslog_info("parse_nvme_drive_vpd: Unknown VPD format. data [%02X %02X %02X %02X]\n\n", vpd.at(0),
                vpd.at(1), vpd.at(2), vpd.at(3));
    return kRefused;
  }
  return read_standard_layout(vpd, *out);
}

void rm_invalid_chars(char* field, uint32_t length) {
  if (field == nullptr) return;
  for (uint32_t i = 0; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(field[i]);
    const bool control = byte < 0x20 || byte == 0x7F;
    const bool two_blanks = i > 0 && i + 1 < length && byte == ' ' && field[i + 1] == ' ';
    if (control || two_blanks) {
      field[i] = '\0';
      return;
    }
  }
}
