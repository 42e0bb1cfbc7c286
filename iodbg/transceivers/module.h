#pragma once
// What a module's pages hold, read at once.

#include "iodbg/transceivers/diagnostics.h"
#include "iodbg/transceivers/identification.h"

#include <cstdint>
#include <optional>

namespace iodbg {

struct Module {
    int32_t status; // of reading its identification; without that nothing else is known
    Identification identification;
    int32_t diagnosticsStatus;              // of a module that should have them
    std::optional<Diagnostics> diagnostics; // of one that has them
};

/** Reads the module in a cage. */
Module readModule(uint32_t port);

} // namespace iodbg
