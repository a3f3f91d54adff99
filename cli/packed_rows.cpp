// SPDX-License-Identifier: Apache-2.0
//
// The format: a row is the number of its values, and the values. A value is the index of its alternative, and
// then a number, or the length of a text and the text.
#include "cli/packed_rows.h"

#include <cstring>
#include <stdexcept>

namespace zeldb::cli {

namespace {

template <typename Number>
void put(std::string& text, Number number) {
  char bytes[sizeof(number)];
  std::memcpy(bytes, &number, sizeof(number));
  text.append(bytes, sizeof(number));
}

class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool is_at_end() const { return rest_.empty(); }
  std::string_view bytes(size_t size) {
    if (size > rest_.size()) throw std::runtime_error("the rows of a machine are cut off");
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }
  template <typename Number>
  Number number() {
    Number number = {};
    std::memcpy(&number, bytes(sizeof(number)).data(), sizeof(number));
    return number;
  }
  Value value() {
    switch (number<uint8_t>()) {
      case 0:
        return {};
      case 1:
        return number<uint64_t>();
      case 2:
        return number<int64_t>();
      default:
        return std::string(bytes(number<uint32_t>()));
    }
  }

 private:
  std::string_view rest_;
};

}  // namespace

std::string packed(const std::vector<Row>& rows) {
  std::string text;
  for (const Row& row : rows) {
    put(text, static_cast<uint32_t>(row.size()));
    for (const Value& value : row) {
      put(text, static_cast<uint8_t>(value.index()));
      if (const auto* number = std::get_if<uint64_t>(&value)) put(text, *number);
      if (const auto* number = std::get_if<int64_t>(&value)) put(text, *number);
      if (const auto* letters = std::get_if<std::string>(&value)) {
        put(text, static_cast<uint32_t>(letters->size()));
        text += *letters;
      }
    }
  }
  return text;
}

std::vector<Row> unpacked(std::string_view text, const Row& first) {
  std::vector<Row> rows;
  for (Reader reader(text); !reader.is_at_end();) {
    const auto size = reader.number<uint32_t>();
    Row& row = rows.emplace_back(first);
    for (uint32_t place = 0; place < size; ++place) row.push_back(reader.value());
  }
  return rows;
}

}  // namespace zeldb::cli
