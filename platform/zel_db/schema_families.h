// SPDX-License-Identifier: Apache-2.0
//
// The families of tables, one file each, and how a column is declared there.
#ifndef ZEL_DB_SCHEMA_FAMILIES_H
#define ZEL_DB_SCHEMA_FAMILIES_H

#include "zel_db/schema.h"

namespace zel_db {

std::span<const Table> setting_tables();
std::span<const Table> pci_tables();
std::span<const Table> firmware_tables();
std::span<const Table> cpumem_tables();
std::span<const Table> storage_tables();

inline constexpr uint16_t kUsualText = 255;

constexpr Column number(const char* name, const char* meaning, Index index = Index::None) {
  return {name, meaning, 0, Kind::Integer, index};
}
constexpr Column number_or_zero(const char* name, const char* meaning) {
  return {name, meaning, 0, Kind::Integer, Index::None, Default::Zero};
}
constexpr Column unsigned64(const char* name, const char* meaning) {
  return {name, meaning, 0, Kind::Unsigned64};
}
constexpr Column text(const char* name, uint16_t size, const char* meaning, Index index = Index::None) {
  return {name, meaning, size, Kind::Text, index};
}
constexpr Column text(const char* name, const char* meaning, Index index = Index::None) {
  return text(name, kUsualText, meaning, index);
}
constexpr Column blob(const char* name, uint16_t size, const char* meaning) {
  return {name, meaning, size, Kind::Blob};
}

}  // namespace zel_db

#endif
