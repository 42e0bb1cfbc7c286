#pragma once
// A product record as a text that people read and edit: its fields as JSON.

#include "iodbg/identity/record.h"

#include <string>

namespace iodbg {

/** A record as a file of JSON. Texts that are not whole as texts stand there as bytes. */
std::string recordToJson(const Carrier &carrier, const BspDevinfo &record);

/** Whether a file is of that kind: a binary record does not begin so. */
bool isRecordJson(ByteView content);

/**
 * The record that such a file describes, with its CRC where it tells one, and else the right one.
 * Throws for others; name: of the file.
 */
BspDevinfo recordFromJson(const Carrier &carrier, ByteView content, const std::string &name);

} // namespace iodbg
