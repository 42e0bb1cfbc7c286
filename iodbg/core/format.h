#pragma once
// Bytes and numbers as text.

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/texts.h"

#include <cstdint>
#include <string>

namespace iodbg {

using language::Bytes;
using language::ByteView;
using language::fieldText;
using language::Mac;
using language::parseMac;
using language::parseNumber;
using language::printable;
using language::quoted;
using language::shortened;
using language::thousandths;

/** "0x0709" */
std::string hexNumber(uint32_t value, int digits);

/** "CPLD register 7" */
std::string registerName(uint32_t reg);

/** "444556", in the form that commands accept. */
std::string hexBytes(ByteView bytes);

/** "02:00:5E:10:00:00" */
std::string macText(ByteView mac);

/** Lines of 16 bytes with offset, hexadecimal and ASCII columns. */
std::string hexDump(uint32_t offset, ByteView bytes);

} // namespace iodbg
