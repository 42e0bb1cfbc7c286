#pragma once
// Product records in files: their 128 bytes, or JSON.

#include "iodbg/core/command.h"
#include "iodbg/core/host_file.h"
#include "iodbg/identity/record.h"

#include <string>

namespace iodbg {

/** How a file gets a record: "binary", which an empty word is, too, or "json". */
void addFormatOption(Command &command, std::string &format);

void saveRecord(Console &console, const Destination &destination, const std::string &format,
                const Carrier &carrier, const BspDevinfo &record);

} // namespace iodbg
