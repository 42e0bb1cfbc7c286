// Supplies, fans, temperature and clock of a twin.

#include "language/formats/byte_order.h"
#include "virtual_board/board/circuits.h"
#include "virtual_board/board/climate_lines.h"
#include "virtual_board/twin/parts.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace vb {

namespace {

struct PmbusRow {
    const char *name;
    uint8_t command;
};

constexpr PmbusRow kPmbusRows[] = {
    {"supply.#.input-voltage", 0x88},  {"supply.#.input-current", 0x89},
    {"supply.#.input-power", 0x97},    {"supply.#.output-voltage", 0x8B},
    {"supply.#.output-current", 0x8C}, {"supply.#.output-power", 0x96},
    {"supply.#.temperature1", 0x8D},   {"supply.#.temperature2", 0x8E},
    {"supply.#.temperature3", 0x8F},
};

/** What fits best to the lines that a supply's register showed. */
void followLines(Twin &twin, uint32_t index) {
    PmbusSupply &pmbus = twin.devices().supply[index].pmbus;
    const uint16_t lines = twin.devices().cpld.reg[kCpldSupplies];
    for (const uint32_t state : {0U, 1U, 2U}) {
        pmbus.hasInputFailed = state == 1 ? 1 : 0;
        pmbus.hasOutputFailed = state == 2 ? 1 : 0;
        driveSupplyLines(twin.board(), index);
        if (twin.devices().cpld.reg[kCpldSupplies] == lines)
            return;
    }
    pmbus.hasInputFailed = pmbus.hasOutputFailed = 0;
    twin.devices().cpld.reg[kCpldSupplies] = lines;
}

/** Whether a supply answers a command with the word that the unit's had. */
bool tells(PmbusSupply pmbus, uint8_t command, uint16_t word) {
    uint8_t answer[2];
    pmbusRead(pmbus, command, answer, sizeof(answer));
    return formats::loadLe16(answer) == word;
}

/** The amount where this supply writes it with the same word, else the word. */
void makeReading(Twin &twin, uint32_t index, const PmbusRow &row) {
    const language::CapturedReading *reading = twin.read(row.name, index + 1);
    if (reading == nullptr || reading->number() == nullptr)
        return;
    if (!reading->raw || reading->raw->size() != sizeof(uint16_t)) {
        twin.lack(reading->name, "the document does not have the supply's word");
        return;
    }
    PmbusSupply &pmbus = twin.devices().supply[index].pmbus;
    const uint16_t word = formats::loadLe16(reading->raw->data());
    if (tells(pmbus, row.command, word))
        return;
    PmbusSupply amount = pmbus;
    *pmbusReading(amount, row.command) = static_cast<uint32_t>(*reading->number());
    if (pmbusIsConsistent(amount) && tells(amount, row.command, word)) {
        pmbus = amount;
        return;
    }
    pmbusTell(pmbus, row.command, word);
}

/** Whether a supply tells of something that it does not have when its lines are to be believed. */
bool contradictsLines(const Twin &twin, uint32_t index) {
    return std::any_of(std::begin(kPmbusRows), std::end(kPmbusRows), [&](const PmbusRow &row) {
        const language::CapturedReading *reading = twin.read(row.name, index + 1);
        if (reading == nullptr || !reading->raw || reading->raw->size() != sizeof(uint16_t))
            return false;
        const uint16_t word = formats::loadLe16(reading->raw->data());
        PmbusSupply pmbus = twin.devices().supply[index].pmbus;
        pmbusTell(pmbus, row.command, word);
        return !tells(pmbus, row.command, word) && word != toLinear11(0);
    });
}

/** The state in which a fan turns so fast. */
FanState fanStateOf(const Fan &fan, uint32_t level) {
    for (const FanState state : {FanState::Good, FanState::Failing, FanState::Stuck}) {
        Fan other = fan;
        other.state = state;
        other.rpm = fanTarget(other, level);
        if (fanCount(other) == fanCount(fan))
            return state;
    }
    return FanState::Held;
}

void makeFan(Twin &twin, uint32_t index) {
    Fan &fan = twin.devices().climate.fan[index];
    const auto speed = twin.number("fan.#.speed", index + 1, 0, INT64_MAX);
    // A pair has one line, so a fan that turns is there whatever it says.
    if (twin.text("fan.#.present", index + 1) == "no" && speed.value_or(0) == 0)
        fan.isPresent = 0;
    if (!speed)
        return;
    const uint32_t level = fieldOf(twin.devices().cpld.reg[kFanLevel.reg], kFanLevel);
    fan.rpm = static_cast<uint32_t>(std::min<int64_t>(*speed, kFanHighestRpm));
    if (fan.rpm != *speed)
        twin.lack(twinName("fan.#.speed", index + 1), "no fan of this board is so fast");
    fan.state = fan.isPresent != 0 ? fanStateOf(fan, level) : FanState::Good;
    if (fan.state != FanState::Held)
        fan.rpm = fanTarget(fan, level);
}

} // namespace

void makeTwinSupplies(Twin &twin) {
    for (uint32_t index = 0; index < twin.model.supplies.count && index < kSupplies; ++index) {
        twin.devices().supply[index].isPresent =
            twin.text("supply.#.present", index + 1) != "no" ? 1 : 0;
        followLines(twin, index);
        PmbusSupply &pmbus = twin.devices().supply[index].pmbus;
        if (contradictsLines(twin, index))
            pmbus.hasInputFailed = pmbus.hasOutputFailed = 0;
        for (const PmbusRow &row : kPmbusRows)
            makeReading(twin, index, row);
    }
}

void makeTwinClimate(Twin &twin) {
    for (uint32_t index = 0; index < twin.devices().climate.fans; ++index)
        makeFan(twin, index);
    if (const auto degrees = twin.number("temperature.sensor", 0, INT8_MIN, INT8_MAX))
        settleClimateAt(twin.board(), static_cast<int32_t>(*degrees));
}

void makeTwinClock(Twin &twin) {
    constexpr uint32_t kRegisters[] = {2, 3, 4, 5, 7, 8};
    const language::Bytes registers = twin.bytes("rtc.registers", 0);
    if (registers.empty())
        return;
    if (registers.size() != std::size(kRegisters)) {
        twin.lack("rtc.registers",
                  "there are " + std::to_string(std::size(kRegisters)) + " of them");
        return;
    }
    for (size_t i = 0; i < registers.size(); ++i)
        twin.devices().clockChip.reg[kRegisters[i]] = registers[i];
}

} // namespace vb
