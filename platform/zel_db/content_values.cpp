// SPDX-License-Identifier: Apache-2.0
#include "zel_db/content_values.h"

#include <algorithm>

#include "zel_db/hash.h"

using namespace zel_db;  // NOLINT(google-build-using-namespace): exported C functions stand outside

zel_db_content_values_t::Entry& zel_db_content_values_t::entry_of(std::string_view column) {
  const uint64_t hash = hash_of_name(column);
  const uint64_t bit = uint64_t{1} << (hash >> 58U);
  if ((seen_ & bit) != 0) {
    for (Entry& entry : entries_) {
      if (entry.name_hash == hash && column == names_.view(entry.name_start).substr(0, entry.name_size))
        return entry;
    }
  }
  Entry entry{};
  entry.name_hash = hash;
  entry.name_start = static_cast<uint32_t>(names_.size());
  entry.name_size = static_cast<uint32_t>(column.size());
  names_.reserve_more(column.size() + 1);  // names and entries grow together or not at all
  entries_.push_back(entry);
  names_.append(column);
  names_.push_back(',');
  seen_ |= bit;
  return entries_.back();
}

void zel_db_content_values_t::put(std::string_view column, Value value) {
  Entry& entry = entry_of(column);
  if (value.kind == Value::Kind::Text) {
    // The new text takes the place of the old one if it fits.
    if (value.size > entry.text_size || entry.kind != Value::Kind::Text) {
      entry.text_start = static_cast<uint32_t>(texts_.size());
      texts_.append(value.text, value.size);
    } else {
      std::copy_n(value.text, value.size, &texts_[entry.text_start]);
    }
    entry.text_size = static_cast<uint32_t>(value.size);
  }
  entry.number = value.number;
  entry.kind = value.kind;
}

void zel_db_content_values_t::clear() {
  entries_.clear();
  names_.clear();
  texts_.clear();
  seen_ = 0;
}

namespace {

int put(ContentValues* values, const char* column, const Value& value) {
  if (values == nullptr || column == nullptr || *column == '\0') return kInvalidArgument;
  return guarded([&] {
    values->put(column, value);
    return static_cast<int>(kOk);
  });
}

}  // namespace

zel_db_content_values_t* zel_db_get_content_values(_zel_db_handle_t* /*handle*/) {
  ContentValues* values = nullptr;
  guarded([&] {
    values = new ContentValues;
    return static_cast<int>(kOk);
  });
  return values;
}

int zel_db_content_put_text(zel_db_content_values_t* values, const char* column, const char* value) {
  return put(values, column, value != nullptr ? Value::text_of(value) : Value::null());
}

int zel_db_content_put_int(zel_db_content_values_t* values, const char* column, int32_t value) {
  return put(values, column, Value::integer(value));
}

int zel_db_content_put_uint(zel_db_content_values_t* values, const char* column, uint32_t value) {
  return put(values, column, Value::integer(value));
}

int zel_db_content_put_uint64(zel_db_content_values_t* values, const char* column, uint64_t value) {
  return put(values, column, Value::unsigned64(value));
}

int zel_db_content_put_short_uint(zel_db_content_values_t* values, const char* column, uint16_t value) {
  return put(values, column, Value::integer(value));
}

int zel_db_content_put_uchar(zel_db_content_values_t* values, const char* column, uint8_t value) {
  return put(values, column, Value::integer(value));
}

int zel_db_content_put_null(zel_db_content_values_t* values, const char* column) {
  return put(values, column, Value::null());
}

void zel_db_content_clear(zel_db_content_values_t* values) {
  if (values != nullptr) values->clear();
}

void zel_db_free_content_values(zel_db_content_values_t* values) {
  delete values;
}
