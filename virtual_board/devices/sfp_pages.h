#pragma once
// What the modules of each kind are made of, and what their factory writes into their pages.

#include "virtual_board/devices/byte_order.h"
#include "virtual_board/devices/sfp_module.h"

#include <cstdint>

namespace vb {

/** High alarm, low alarm, high warning, low warning of a quantity. */
struct SfpLimits {
    int32_t limit[4];
};
constexpr uint32_t kSfpQuantities = 5; // temperature, voltage, bias, power out, power in

/** What the modules of one kind are made of. */
struct SfpTraits {
    const char *part;
    uint8_t connector;
    uint8_t tenGigabitCodes, gigabitCodes, cableCodes;
    uint8_t encoding, bitRate;
    uint8_t
        lengths[6]; // single mode in km and 100 m; 50, 62.5 um in 10 m; copper in m; OM3 in 10 m
    uint16_t wavelength; // in nm; cables: what they comply with
    uint8_t options;
    uint32_t usualMicrowatts, lostBelow; // light that arrives; 0: no optics
    int32_t biasUa, txMicrowatts;        // 0: no diagnostics
    SfpLimits biasLimits, rxLimits;
    uint16_t phyMode; // register 27; 0: no PHY
};

const SfpTraits &sfpTraits(SfpKind kind);

/** Stores the low 16 bits of a value. */
inline void storeSfpWord(uint8_t *place, int32_t value) {
    storeBe16(place, static_cast<uint16_t>(value));
}

/** Fills the pages, and the registers of the PHY, of a module of its kind. */
void fillSfpPages(SfpModule &module, uint32_t number);

} // namespace vb
