#pragma once
// What the library answers of PoE, in words.

#include "iodbg/core/report.h"

#include <cstdint>

namespace iodbg {

// Detection codes of a port where a device was found, as the virtual controller has them: the
// library passes on the controller's own.
constexpr uint32_t kPoeDetectedLegacy = 2;
constexpr uint32_t kPoeDetectedGood = 4;

/** Of the classes that the controller does not tell apart. */
constexpr char kUnknownClassText[] = "unknown";

// Each makes a cell of a value that the library answered.
Cell poeNumberCell(uint32_t number);
Cell poeModeCell(uint32_t mode);
Cell poeDetectionCell(uint32_t detection);
Cell poeClassCell(uint32_t deviceClass);
Cell poeDeliveringCell(uint32_t disconnect);
/** "25.500" and 25500. */
Cell milliCell(uint32_t thousandthsOfUnit);

} // namespace iodbg
