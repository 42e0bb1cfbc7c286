#pragma once
// Bytes and numbers as text.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace iodbg {

using ByteView = std::span<const uint8_t>;

/** "0x0709" */
std::string hexNumber(uint32_t value, int digits);

/** "CPLD register 7" */
std::string registerName(uint32_t reg);

/** "444556", in the form that commands accept. */
std::string hexBytes(ByteView bytes);

/** "02:00:5E:10:00:00" */
std::string macText(ByteView mac);

/** The text in a zero-padded field. Bytes that are not printable ASCII appear as \xNN. */
std::string fieldText(ByteView field);

/** The same of a text. */
std::string printable(const std::string &text);

/** The beginning of a text that is longer than this, with dots behind it. */
std::string shortened(const std::string &text, size_t longest);

/** A word of the user's or of a file's in a message: short, printable, between quotes. */
std::string quoted(const std::string &word);

/** "54.000" of 54000 */
std::string thousandths(int64_t value);

/** Lines of 16 bytes with offset, hexadecimal and ASCII columns. */
std::string hexDump(uint32_t offset, ByteView bytes);

} // namespace iodbg
