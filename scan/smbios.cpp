// SPDX-License-Identifier: Apache-2.0
#include "scan/smbios.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>
#include <tuple>

#include "db/tables.h"

namespace zeldb::scan {

namespace {

constexpr unsigned kEnd = 127;  // the type of the last structure

class Structure {
 public:
  Structure(std::string_view formatted, std::string_view strings)
      : formatted_(formatted), strings_(strings) {}

  unsigned type() const { return static_cast<unsigned char>(formatted_[0]); }
  unsigned handle() const { return static_cast<unsigned>(number(2, 2).value_or(0)); }

  // Nothing if the structure ends before.
  std::optional<uint64_t> number(size_t offset, size_t width) const {
    if (offset + width > formatted_.size()) return std::nullopt;
    uint64_t value = 0;
    for (size_t at = width; at > 0; --at)
      value = value << 8U | static_cast<unsigned char>(formatted_[offset + at - 1]);
    return value;
  }
  // The string whose number is at the offset; 0 means none.
  std::optional<std::string> text(size_t offset) const {
    const uint64_t which = number(offset, 1).value_or(0);
    std::string_view rest = strings_;
    for (uint64_t nth = 1; which != 0 && !rest.empty(); ++nth) {
      const std::string_view one = rest.substr(0, rest.find('\0'));
      if (nth == which) return std::string(one);
      rest.remove_prefix(std::min(one.size() + 1, rest.size()));
    }
    return std::nullopt;
  }

 private:
  std::string_view formatted_;
  std::string_view strings_;
};

std::vector<Structure> structures_of(std::string_view table) {
  constexpr size_t kHeader = 4;
  constexpr size_t kMost = 16384;
  std::vector<Structure> found;
  while (table.size() >= kHeader && found.size() < kMost) {
    const size_t length = static_cast<unsigned char>(table[1]);
    if (length < kHeader || length > table.size()) break;
    const size_t end = table.find(std::string_view("\0\0", 2), length);
    if (end == std::string_view::npos) break;
    found.emplace_back(table.substr(0, length), table.substr(length, end - length));
    if (found.back().type() == kEnd) break;
    table.remove_prefix(end + 2);
  }
  return found;
}

enum class Kind { Number, Text, NotZero };

struct Field {
  const char* column;
  uint8_t offset;
  uint8_t width;
  Kind kind = Kind::Number;
  uint64_t unknown = ~uint64_t{0};  // the value that says so
};

constexpr Field kProcessor[] = {
    {"Socket", 0x04, 1, Kind::Text},
    {"ProcType", 0x05, 1},
    {"Manufacturer", 0x07, 1, Kind::Text},
    {"ProcId", 0x08, 8},
    {"Version", 0x10, 1, Kind::Text},
    {"Voltage", 0x11, 1, Kind::NotZero},
    {"ExtClock", 0x12, 2, Kind::NotZero},
    {"MaxSpeed", 0x14, 2, Kind::NotZero},
    {"CurSpeed", 0x16, 2, Kind::NotZero},
    {"Status", 0x18, 1},
    {"Upgrade", 0x19, 1},
    {"SerialNo", 0x20, 1, Kind::Text},
    {"AssetTag", 0x21, 1, Kind::Text},
    {"PartNo", 0x22, 1, Kind::Text},
    {"Characteristics", 0x26, 2},
};

// A byte; if it is 255, a word elsewhere, which the readers may narrow.
struct Count {
  const char* column;
  uint8_t offset;
  uint8_t wide_offset;
};
constexpr Count kCounts[] = {
    {"CoreCount", 0x23, 0x2A}, {"CoreEnabled", 0x24, 0x2C}, {"ThreadCount", 0x25, 0x2E}};

struct Cache {
  size_t handle_offset;
  const char* max_size;
  const char* installed;
  const char* type;
  const char* config;
};
constexpr Cache kCaches[] = {
    {0x1A, "L1CacheMaxSize", "L1CacheInstalled", "L1CacheType", "L1CacheConfig"},
    {0x1C, "L2CacheMaxSize", "L2CacheInstalled", "L2CacheType", "L2CacheConfig"},
    {0x1E, "L3CacheMaxSize", "L3CacheInstalled", "L3CacheType", "L3CacheConfig"},
};

constexpr Field kModule[] = {
    {"ArrayId", 0x04, 2},
    {"TotalWidth", 0x08, 2, Kind::Number, 0xFFFF},
    {"DataWidth", 0x0A, 2, Kind::Number, 0xFFFF},
    {"FormFactor", 0x0E, 1},
    {"DevLocator", 0x10, 1, Kind::Text},
    {"BankLocator", 0x11, 1, Kind::Text},
    {"MemType", 0x12, 1},
    {"TypeDetail", 0x13, 2},
    {"Manufacturer", 0x17, 1, Kind::Text},
    {"SerialNo", 0x18, 1, Kind::Text},
    {"AssetTag", 0x19, 1, Kind::Text},
    {"PartNo", 0x1A, 1, Kind::Text},
    {"Attributes", 0x1B, 1},
};

// A word; if it is 65535, a double word elsewhere.
constexpr struct Speed {
  const char* column;
  uint8_t offset;
  uint8_t wide_offset;
} kSpeeds[] = {{"MaxSpeed", 0x15, 0x54}, {"ClockSpeed", 0x20, 0x58}};

template <size_t N>
void add_fields(Row& row, const Structure& structure, const Field (&fields)[N]) {
  for (const Field& field : fields) {
    if (field.kind == Kind::Text) {
      row.add(field.column, value_of(structure.text(field.offset)));
      continue;
    }
    auto number = structure.number(field.offset, field.width);
    if (number == field.unknown || (field.kind == Kind::NotZero && number == uint64_t{0})) number.reset();
    row.add(field.column, value_of(number));
  }
}

std::optional<uint64_t> family_of(const Structure& structure) {
  constexpr uint64_t kElsewhere = 0xFE;
  const auto family = structure.number(0x06, 1);
  return family == kElsewhere ? structure.number(0x28, 2) : family;
}

std::optional<uint64_t> count_of(const Structure& structure, const Count& count) {
  constexpr uint64_t kElsewhere = 0xFF;
  constexpr uint64_t kReserved = 0xFFFF;
  auto number = structure.number(count.offset, 1);
  if (number == kElsewhere) {
    const auto wide = structure.number(count.wide_offset, 2);
    if (wide) number = wide;  // otherwise 255 is the number
  }
  if (number && (*number == 0 || *number == kReserved)) number.reset();
  return number;
}

// In the form of the table: KiB, or with bit 15 units of 64 KiB.
std::optional<uint64_t> cache_size(const Structure& cache, size_t offset, size_t wide_offset) {
  constexpr uint64_t kElsewhere = 0xFFFF;
  constexpr uint64_t kWideUnit = uint64_t{1} << 31U;
  constexpr uint64_t kUnit = 0x8000;
  const auto size = cache.number(offset, 2);
  const auto wide = cache.number(wide_offset, 4);
  if (size != kElsewhere) return size == uint64_t{0} ? std::nullopt : size;
  if (!wide) return std::nullopt;
  const uint64_t amount = *wide & (kWideUnit - 1);
  const uint64_t units = (*wide & kWideUnit) != 0 ? amount : amount / 64;
  return amount == 0 || units >= kUnit ? std::nullopt : std::optional(units | kUnit);
}

void add_caches(Row& row, const Structure& processor, const std::map<unsigned, Structure>& caches) {
  for (const Cache& names : kCaches) {
    const auto handle = processor.number(names.handle_offset, 2);
    const auto found = handle ? caches.find(static_cast<unsigned>(*handle)) : caches.end();
    const Structure* const cache = found != caches.end() ? &found->second : nullptr;
    row.add(names.max_size, cache ? value_of(cache_size(*cache, 0x07, 0x13)) : Value());
    row.add(names.installed, cache ? value_of(cache_size(*cache, 0x09, 0x17)) : Value());
    row.add(names.type, cache ? value_of(cache->number(0x11, 1)) : Value());
    row.add(names.config, cache ? value_of(cache->number(0x05, 2)) : Value());
  }
}

Row processor_row(const Structure& structure, size_t nth, const std::map<unsigned, Structure>& caches) {
  Row row(tables::kProcessors, kSmbios, "cpu/" + std::to_string(nth), {"Socket"});
  add_fields(row, structure, kProcessor);
  row.add("Family", value_of(family_of(structure)));
  for (const Count& count : kCounts) row.add(count.column, value_of(count_of(structure, count)));
  add_caches(row, structure, caches);
  return row;
}

// The size in MiB; nothing if it is not known, 0 for an empty slot.
std::optional<uint64_t> module_size(const Structure& module) {
  constexpr uint64_t kUnknown = 0xFFFF;
  constexpr uint64_t kElsewhere = 0x7FFF;
  constexpr uint64_t kInKib = 0x8000;
  const auto size = module.number(0x0C, 2);
  if (!size || *size == kUnknown) return std::nullopt;
  if (*size == kElsewhere) {
    const auto wide = module.number(0x1C, 4);
    return wide ? std::optional(*wide & 0x7FFFFFFFU) : std::nullopt;
  }
  if ((*size & kInKib) == 0) return size;
  const uint64_t kib = *size & (kInKib - 1);
  return kib == 0 || kib >= 1024 ? std::optional(kib / 1024) : std::nullopt;
}

std::optional<uint64_t> speed_of(const Structure& module, const Speed& speed) {
  constexpr uint64_t kElsewhere = 0xFFFF;
  auto number = module.number(speed.offset, 2);
  if (number == kElsewhere) {
    number = module.number(speed.wide_offset, 4);
    if (number) *number &= 0x7FFFFFFFU;
  }
  return number == uint64_t{0} ? std::nullopt : number;
}

// nth counts empty slots, too, so that a module keeps its number when another is removed.
std::optional<Row> module_row(const Structure& structure, size_t nth) {
  const auto size = module_size(structure);
  if (size == uint64_t{0}) return std::nullopt;
  Row row(tables::kModules, kSmbios, "dimm/" + std::to_string(nth), {"SlotNo"});
  row.add("SlotNo", uint64_t{nth});
  row.add("MemSize", value_of(size));
  add_fields(row, structure, kModule);
  for (const Speed& speed : kSpeeds) row.add(speed.column, value_of(speed_of(structure, speed)));
  return row;
}

Slot slot_of(const Structure& structure) {
  Slot slot;
  slot.designation = structure.text(0x04).value_or("");
  slot.type = structure.number(0x05, 1);
  slot.width = structure.number(0x06, 1);
  slot.number = structure.number(0x09, 2);
  if (const auto bits = structure.number(0x0C, 1)) slot.hotplug = (*bits & 2U) != 0;
  // Segment, bus, and device with function.
  const auto place = structure.number(0x0D, 4);
  constexpr uint64_t kNone = 0xFFFF;
  if (!place || (*place & 0xFFFFU) == kNone || *place >> 16U == kNone) return slot;
  slot.segment = *place & 0xFFFFU;
  slot.bus = *place >> 16U & 0xFFU;
  slot.device = *place >> 27U;
  return slot;
}

// "MM/DD/YYYY" as other dates of the tables are; anything else as it stands.
std::string date_of(const std::string& text) {
  constexpr std::string_view kForm = "00/00/0000";
  const bool is_date =
      std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char one, char form) {
        return form == '0' ? std::isdigit(static_cast<unsigned char>(one)) != 0 : one == form;
      });
  if (!is_date) return text;
  return text.substr(6) + "-" + text.substr(0, 2) + "-" + text.substr(3, 2);
}

Row firmware_row(const char* key, const char* kind, const char* name) {
  Row row(tables::kImages, kSmbios, key, {"Classification", "FirmwareName"});
  row.add("Classification", std::string(kind));
  row.add("FirmwareName", std::string(name));
  return row;
}

// The image of the system, and that of its embedded controller if there is one.
void add_bios(const Structure& structure, std::vector<Row>& rows) {
  constexpr uint64_t kNone = 0xFF;
  Row bios = firmware_row("bios", "11", "System BIOS");
  auto date = structure.text(0x08);
  if (date) date = date_of(*date);
  bios.add("Manufacture", value_of(structure.text(0x04)));
  bios.add("VersionString", value_of(structure.text(0x05)));
  bios.add("ReleaseDate", value_of(date));
  rows.push_back(std::move(bios));
  const auto release = structure.number(0x16, 2);
  if (!release) return;
  const uint64_t major = *release & 0xFFU;
  const uint64_t minor = *release >> 8U;
  if (major == kNone || minor == kNone) return;
  Row controller = firmware_row("ec", "10", "Embedded controller");
  controller.add("VersionString", std::to_string(major) + "." + std::to_string(minor));
  rows.push_back(std::move(controller));
}

// The use of each memory array, by its handle.
using Uses = std::map<unsigned, uint64_t>;

// Slots of video memory, flash chips and the like are in structures of the same kind.
bool is_system_memory(const Structure& module, const Uses& uses) {
  constexpr uint64_t kSystem = 3;
  const auto array = module.number(0x04, 2);
  const auto use = array ? uses.find(static_cast<unsigned>(*array)) : uses.end();
  return use == uses.end() || use->second == kSystem;
}

}  // namespace

Smbios decode_smbios(std::string_view table) {
  enum : unsigned {
    kBios = 0,
    kProcessorType = 4,
    kCacheType = 7,
    kSlotType = 9,
    kArray = 16,
    kModuleType = 17
  };
  const std::vector<Structure> structures = structures_of(table);
  std::map<unsigned, Structure> caches;
  Uses uses;
  for (const Structure& one : structures) {
    if (one.type() == kCacheType) caches.emplace(one.handle(), one);
    const auto use = one.type() == kArray ? one.number(0x05, 1) : std::nullopt;
    if (use) uses.emplace(one.handle(), *use);
  }
  bool has_bios = false;
  Smbios found;
  size_t processors = 0;
  size_t modules = 0;
  for (const Structure& one : structures) {
    if (one.type() == kProcessorType) found.rows.push_back(processor_row(one, ++processors, caches));
    if (one.type() == kSlotType) found.slots.push_back(slot_of(one));
    if (one.type() == kBios && !has_bios) {
      add_bios(one, found.rows);
      has_bios = true;
    }
    if (one.type() != kModuleType) continue;
    auto row = module_row(one, ++modules);
    if (row && is_system_memory(one, uses)) found.rows.push_back(std::move(*row));
  }
  return found;
}

SmbiosTable read_smbios(const Machine& machine) {
  constexpr size_t kLargest = 1U << 20U;
  const std::string whole = "sys/firmware/dmi/tables/DMI";
  if (auto bytes = machine.bytes(whole, kLargest)) return {std::move(bytes), std::nullopt};
  const std::string folder = "sys/firmware/dmi/entries";
  // The files are named TYPE-INSTANCE and sorted by their numbers.
  std::vector<std::tuple<unsigned, unsigned, std::string>> entries;
  for (const std::string& name : machine.names(folder)) {
    const char* const end = name.data() + name.size();
    unsigned type = 0;
    unsigned instance = 0;
    const auto dash = std::from_chars(name.data(), end, type).ptr;
    if (dash == end || *dash != '-' || std::from_chars(dash + 1, end, instance).ptr != end) continue;
    entries.emplace_back(type, instance, name);
  }
  std::sort(entries.begin(), entries.end());
  std::string table;
  for (const auto& [type, instance, name] : entries) {
    const std::string raw = folder + "/" + name + "/raw";
    const auto bytes = machine.bytes(raw, kLargest);
    if (!bytes) {
      const auto why = machine.trouble(raw);
      return {std::nullopt, why.value_or("cannot be read")};
    }
    if (type != kEnd) table += *bytes;
    table.resize(std::min(table.size(), kLargest));
  }
  if (!table.empty()) return {table, std::nullopt};
  return {std::nullopt, machine.trouble(whole)};
}

}  // namespace zeldb::scan
