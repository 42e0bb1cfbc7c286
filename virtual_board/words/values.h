#pragma once
// Numbers and bytes as people write them.

#include "language/bytes.h"
#include "language/numbers.h"
#include "language/refused.h"
#include "language/texts.h"
#include "language/times.h"

namespace vb {

using language::hex16Text;
using language::listed;
using language::macText;
using language::Refused;
using language::secondsText;

/** A number from 0 to max, decimal or hexadecimal with 0x; nothing for any other text. */
inline std::optional<uint32_t> parseNumber(const std::string &text, uint32_t max) {
    return language::readNumber<uint32_t>(text, 0, max);
}

} // namespace vb
