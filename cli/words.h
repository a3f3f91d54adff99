// SPDX-License-Identifier: Apache-2.0
//
// Words that tables show for codes. They are empty for a code without a word, which is then shown itself.
#ifndef CLI_WORDS_H
#define CLI_WORDS_H

#include <cstdint>
#include <string>

namespace zeldb::cli {

std::string yes_or_no(uint64_t code);
std::string link_word(uint64_t code);
// Takes the 24 bits of a PCI class; base class and subclass choose the word.
std::string class_word(uint64_t code);
std::string function_kind_word(uint64_t code);
std::string memory_type_word(uint64_t code);
std::string place_word(uint64_t code);
std::string drive_form_word(uint64_t code);
std::string update_status_word(uint64_t code);
// Takes seconds since 1970 and tells date and time in UTC.
std::string date_word(uint64_t seconds);

}  // namespace zeldb::cli

#endif
