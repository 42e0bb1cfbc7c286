#pragma once
// Bytes of files and of flash within messages: they may be anything, and as many.

#include "iodbg/core/format.h"

#include <string>

namespace iodbg {

/** The beginning of a text as fieldText() writes it, "..." for what is not shown of it. */
std::string excerpt(ByteView field);
/** The same in quotes. */
std::string quotedExcerpt(ByteView field);

} // namespace iodbg
