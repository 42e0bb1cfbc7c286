#pragma once
// Fields of a product record as people write them.

#include "iodbg/identity/record.h"

#include <string>

namespace iodbg {

/**
 * Stores a field that is written as 'identity get' shows it; throws Refused for what it cannot
 * hold. Texts and rows of bytes that are shorter than their field are followed by zeros.
 */
void storeField(const ShownField &field, const Carrier &carrier, const std::string &word,
                BspDevinfo &record);

/** Whether a text in a field is all that the field holds. */
bool isTextAlone(const ShownField &field, const Carrier &carrier, const BspDevinfo &record);

/** What no unit should be given, in words; empty when nothing is wrong. */
std::string flawOf(const Carrier &carrier, const BspDevinfo &record);

/** The field of a key; null when there is none. */
const ShownField *fieldOf(const std::string &key, const Carrier &carrier);

} // namespace iodbg
