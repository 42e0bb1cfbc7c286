#include "virtual_board/words/parts.h"

#include "virtual_board/words/values.h"

namespace vb {

std::vector<uint8_t> bytesToSet(const PropertyTarget &target, const language::Value &value,
                                uint32_t size, const std::string &what) {
    const uint32_t offset = target.name.offset.value_or(0);
    if (target.name.length.has_value())
        throw Refused("the bytes tell how many are set; leave out '+LENGTH'");
    std::vector<uint8_t> bytes = language::parseBytes(value.text());
    if (offset >= size || bytes.size() > size - offset)
        throw Refused("the " + what + " has bytes 0 to " + std::to_string(size - 1) + "; " +
                      std::to_string(bytes.size()) + " bytes from " + std::to_string(offset) +
                      " on would end behind them");
    return bytes;
}

std::string bytesText(const PropertyTarget &target, const uint8_t *bytes, uint32_t size,
                      const std::string &what) {
    const uint32_t offset = target.name.offset.value_or(0);
    const uint32_t length = target.name.length.value_or(offset < size ? size - offset : 1);
    if (length == 0 || offset >= size || length > size - offset)
        throw Refused("the " + what + " has bytes 0 to " + std::to_string(size - 1) +
                      "; give a range inside: @OFFSET+LENGTH");
    return language::hexText({bytes + offset, length});
}

} // namespace vb
