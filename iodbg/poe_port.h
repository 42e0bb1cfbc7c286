#pragma once
// What a PoE port says of itself.

#include "iodbg/report.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

/** Modes of a port as the library numbers them. */
constexpr uint32_t kPoeModeAuto = 0;   // the controller powers what it finds
constexpr uint32_t kPoeModeSemi = 1;   // it detects and classifies; power comes on command
constexpr uint32_t kPoeModeManual = 2; // every step comes on command
constexpr uint32_t kPoeModeDisabled = 5;

/** What the library answers of a port that delivers power. */
constexpr uint32_t kPoeIsDelivering = 2;

// Each makes a cell of a value that the library answered.
Cell poeNumberCell(uint32_t number);
Cell poeModeCell(uint32_t mode);
Cell poeDetectionCell(uint32_t detection);
Cell poeClassCell(uint32_t deviceClass);
Cell poeDeliveringCell(uint32_t disconnect);
/** "25.500" and 25500. */
Cell milliCell(uint32_t thousandthsOfUnit);

/** One column of the ports' table. */
struct PoePortItem {
    const char *key;
    const char *label;     // of the table's column
    const char *longLabel; // with room for a unit
};

/** Everything that a port tells, in the order in which people read it. */
const std::vector<PoePortItem> &poePortItems();

/** The cells of one port, one for each item; failures are noted in the report. */
std::vector<Cell> readPoePort(Report &report, uint32_t port);

} // namespace iodbg
