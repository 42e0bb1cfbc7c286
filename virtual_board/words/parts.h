#pragma once
// Parts of what has bytes: "eeprom.board@0x100+16".

#include "virtual_board/words/bindings.h"

namespace vb {

/** The bytes that a value of hexadecimal digits sets, all inside of size bytes; or Refused. */
std::vector<uint8_t> bytesToSet(const PropertyTarget &target, const language::Value &value,
                                uint32_t size, const std::string &what);

/** The part of size bytes that a name asks for, in hexadecimal digits; or Refused. */
std::string bytesText(const PropertyTarget &target, const uint8_t *bytes, uint32_t size,
                      const std::string &what);

} // namespace vb
