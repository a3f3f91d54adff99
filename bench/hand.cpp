// SPDX-License-Identifier: Apache-2.0
#include "bench/hand.h"

namespace bench {

std::string read_sql() {
  std::string names;
  for (const Column& column : kStored) names += std::string(column.name) + ",";
  return "SELECT " + names + "_id FROM PCISetting WHERE SettingID=?";
}

std::string insert_sql() {
  std::string names;
  std::string places;
  for (const Column& column : kStored) {
    names += (names.empty() ? "" : ",") + std::string(column.name);
    places += places.empty() ? "?" : ",?";
  }
  return "INSERT INTO PCISetting (" + names + ") VALUES (" + places + ")";
}

std::string update_sql(const PCISetting_info& record) {
  std::string sets;
  for (const Column& column : kStored) sets += (sets.empty() ? "" : ",") + std::string(column.name) + "=?";
  std::string terms;
  for (const Column& column : kCompared) {
    if (!terms.empty()) terms += " OR ";
    const std::string name = column.name;
    if (!column.text) {
      terms += name + "!=?";
    } else if (*text_at(record, column) == '\0') {
      terms += name + " IS NOT NULL";
    } else {
      terms += "(" + name + " IS NULL OR " + name + "!=?)";
    }
  }
  return "UPDATE PCISetting SET " + sets + " WHERE _id=? AND (" + terms + ")";
}

uint32_t shape_of(const PCISetting_info& record) {
  uint32_t shape = 0;
  for (const Column& column : kCompared) {
    shape = shape << 1 | (column.text && *text_at(record, column) == '\0' ? 1U : 0U);
  }
  return shape;
}

}  // namespace bench
