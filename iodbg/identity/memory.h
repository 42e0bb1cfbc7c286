#pragma once
// The EEPROMs with product data: the board's and its supplies'.

#include "iodbg/core/command.h"
#include "iodbg/core/format.h"

#include <cstdint>
#include <string>

namespace iodbg {

/** What carries an EEPROM: the board, or one of its power supplies. */
struct Carrier {
    uint32_t supply = 0; // 0: the board

    bool isBoard() const { return supply == 0; }
    /** As the command line calls it: "board", "supply1". */
    std::string word() const;
    /** In messages: "the board", "supply 1". */
    std::string name() const;
    /** Its index among the device information records. */
    uint32_t devinfoIndex() const;
    /** How much of its EEPROM is known to be there. */
    uint32_t eepromSize() const;
};

Parser carrier(Carrier &target);
constexpr char kCarrierWords[] = "board|supply1|supply2";

int32_t readEeprom(const Carrier &carrier, uint32_t offset, Bytes &buffer);
int32_t writeEeprom(const Carrier &carrier, uint32_t offset, const Bytes &data);

} // namespace iodbg
