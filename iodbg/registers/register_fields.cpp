#include "iodbg/registers/register_fields.h"

#include "support/board_map.h"
#include "support/register_bits.h"

namespace iodbg {

namespace {

/** A number in some bits, or lines bit by bit, which belong to things that are counted. */
struct KnownField {
    bsp::CpldField place;
    const char *name;
    uint32_t firstThing = 0; // that the lowest line is for; 0: the bits are a number
};

constexpr bsp::CpldField lineOf(const bsp::CpldLine &line) {
    return {line.reg, line.bit, 1};
}
constexpr bsp::CpldField linesFrom(const bsp::CpldLine &first, uint32_t lines) {
    return {first.reg, first.bit, lines};
}
/** All lines of one of the registers that have one for each port. */
constexpr bsp::CpldField portLines(uint32_t reg) {
    return {reg, 0, bsp::kCpldLinesPerRegister};
}

constexpr uint32_t kUplinks = 6;
constexpr uint32_t kSupplies = BSP_FIXED_SUPPLIES;
constexpr uint32_t kPairsOfFans = 2;
constexpr uint32_t kIndexedLamps = BSP_LED_INDEXED_MAX;
constexpr uint32_t kSecondPorts = 1 + bsp::kCpldLinesPerRegister; // of a register of three
constexpr uint32_t kThirdPorts = kSecondPorts + bsp::kCpldLinesPerRegister;

constexpr KnownField kFields[] = {
    {bsp::kDeviceSerialVersion, "device serial version"},
    {bsp::kHardwareLetter, "hardware version, letter (0 is @)"},
    {bsp::kHardwareNumber, "hardware version, number"},
    {bsp::kCpldMajorVersion, "CPLD version, major"},
    {bsp::kCpldMinorVersion, "CPLD version, minor"},
    {bsp::kWatchdogPeriod, "watchdog period"},
    {bsp::kFanLevel, "fan level, counted from 0"},
    {linesFrom(bsp::kRecordedSupplyAbsence, kSupplies), "recorded supplies absent", 1},
    {lineOf(bsp::kPoeAbsence), "PoE controller absent"},
    {lineOf(bsp::kPtpTrigger), "PTP trigger line"},
    {bsp::kSystemLamp, "system lamp"},
    {lineOf(bsp::kLamp4), "lamp 4"},
    {lineOf(bsp::kLamp5), "lamp 5"},
    {linesFrom(bsp::kIndexedLamp, kIndexedLamps), "indexed lamps lit", 1},
    // Models without lines for an uplink's signal and fault have nothing in the first six bits; the
    // library looks for both in the next six.
    {linesFrom(bsp::kUplinkReceiveLoss, kUplinks), "uplinks without a signal, where wired", 1},
    {linesFrom(bsp::kUplinkPresence, kUplinks),
     "uplinks with a module (read as loss where that is not wired)", 1},
    {linesFrom(bsp::kUplinkTransmitFault, kUplinks),
     "uplinks with a transmitter fault, where wired", 1},
    {linesFrom(bsp::kUplinkTransmitDisable, kUplinks),
     "uplinks with the transmitter off (read as fault where that is not wired)", 1},
    {portLines(bsp::kCpldPoeLamps), "PoE ports whose LED is dark", 1},
    {portLines(bsp::kCpldPoeLamps + 1), "PoE ports whose LED is dark", kSecondPorts},
    {portLines(bsp::kCpldPoeLamps + 2), "PoE ports whose LED is dark", kThirdPorts},
    {portLines(bsp::kCpldSfpReceiveLoss), "ports without a signal", 1},
    {portLines(bsp::kCpldSfpReceiveLoss + 1), "ports without a signal", kSecondPorts},
    {portLines(bsp::kCpldSfpReceiveLoss + 2), "ports without a signal", kThirdPorts},
    {portLines(bsp::kCpldSfpPresence), "ports with a module", 1},
    {portLines(bsp::kCpldSfpPresence + 1), "ports with a module", kSecondPorts},
    {portLines(bsp::kCpldSfpPresence + 2), "ports with a module", kThirdPorts},
    {portLines(bsp::kCpldSfpTransmitFault), "ports with a transmitter fault", 1},
    {portLines(bsp::kCpldSfpTransmitFault + 1), "ports with a transmitter fault", kSecondPorts},
    {portLines(bsp::kCpldSfpTransmitFault + 2), "ports with a transmitter fault", kThirdPorts},
    {portLines(bsp::kCpldSfpTransmitDisable), "ports with the transmitter off", 1},
    {portLines(bsp::kCpldSfpTransmitDisable + 1), "ports with the transmitter off", kSecondPorts},
    {portLines(bsp::kCpldSfpTransmitDisable + 2), "ports with the transmitter off", kThirdPorts},
    {bsp::kFanSpeed, "speed of fan 1, or of fans 1 and 2, raw"},
    {{bsp::kCpldFanSpeeds, 8, 8}, "speed of fan 2 of four, raw"},
    {{bsp::kCpldFanSpeeds + 1, 0, 8}, "speed of fan 3, raw"},
    {{bsp::kCpldFanSpeeds + 1, 8, 8}, "speed of fan 4, raw"},
    // Models with four fans have the presence of fans here, and supplies are there while it is
    // clear.
    {linesFrom(bsp::kSupplyPresence, kSupplies), "presence lines set: supplies, or fan pairs", 1},
    {linesFrom(bsp::kSupplyType, kSupplies), "supplies whose type line is set", 1},
    {linesFrom(bsp::kSupplyStatus0, kSupplies), "supplies whose first status line is set", 1},
    {linesFrom(bsp::kSupplyStatus1, kSupplies), "supplies whose second status line is set", 1},
    {linesFrom(bsp::kSupplyStatus2, kSupplies), "supplies whose third status line is set", 1},
    {linesFrom(bsp::kFanPresence, kPairsOfFans), "pairs of fans plugged", 1},
};

std::string bitsText(const bsp::CpldField &place) {
    const std::string lowest = std::to_string(place.lowestBit);
    return place.width == 1 ? lowest
                            : lowest + "-" + std::to_string(place.lowestBit + place.width - 1);
}

/** A number, or the numbers of the things whose lines are set. */
Cell contentOf(const KnownField &field, uint16_t content) {
    const uint32_t bits = bsp::fieldOf(content, field.place);
    if (field.firstThing == 0)
        return numberCell(bits);
    std::vector<int64_t> things;
    for (uint32_t line = 0; line < field.place.width; ++line) {
        if ((bits >> line & 1) != 0)
            things.push_back(int64_t{field.firstThing} + line);
    }
    return listCell(things);
}

} // namespace

Table emptyFieldTable() {
    return {"fields",
            {{"register", "REGISTER"}, {"bits", "BITS"}, {"field", "FIELD"}, {"value", "VALUE"}},
            {}};
}

void addFields(Table &fields, uint32_t reg, uint16_t content) {
    for (const KnownField &field : kFields) {
        if (field.place.reg == reg)
            fields.rows.push_back({numberCell(reg), textCell(bitsText(field.place)),
                                   textCell(field.name), contentOf(field, content)});
    }
}

} // namespace iodbg
