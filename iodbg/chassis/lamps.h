#pragma once
// The lamps of the front panel and of the PoE ports, in the CPLD's registers.

#include "iodbg/core/report.h"
#include "support/board_map.h"

#include <cstdint>
#include <span>
#include <string>

namespace iodbg {

/** Where the lamps of a kind lie: a field for each, counted from number 1 or the only one. */
struct LampKind {
    uint32_t number;
    const char *word;
    const char *label;
    const char *index; // what numbers its lamps; null when there is only one
    uint32_t lamps;
    uint32_t highestState;
    bsp::CpldField first;
    const char *example;

    uint32_t registerOf(uint32_t lamp) const;
    uint32_t bitOf(uint32_t lamp) const;
    /** The state that a lamp's register shows. */
    uint32_t stateIn(uint16_t content, uint32_t lamp) const;
    /** Whether a port of the PoE controller has it. */
    bool isPoe() const;
};

extern const std::span<const LampKind> kLampKinds;

/** "off", "on", or the state's number. */
std::string stateWord(const LampKind &kind, uint32_t state);
Cell stateCell(const LampKind &kind, uint32_t state);

void addPanelLamps(Report &report);
void addPoeLamps(Report &report);

} // namespace iodbg
