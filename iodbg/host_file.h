#pragma once
// Files on the host: read whole, written whole or not at all.

#include "iodbg/format.h"
#include "iodbg/parse.h"

#include <string>

namespace iodbg {

/** The content of a file of at most maxSize bytes. */
Bytes readHostFile(const std::string &path, size_t maxSize);

/** Writes to an open file; false, with the reason in errno, when not all bytes could be written. */
bool writeAll(int file, ByteView bytes);

/** Replaces a file at once, or leaves what was there. */
void writeHostFile(const std::string &path, ByteView content);

} // namespace iodbg
