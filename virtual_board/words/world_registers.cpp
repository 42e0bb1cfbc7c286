// Registers, lines and EEPROMs as properties.

#include "virtual_board/board/circuits.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/parts.h"
#include "virtual_board/words/values.h"

#include <cstring>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

// Registers and lines

Value getCpld(const Target &target) {
    return target.devices().cpld.reg[target.number()];
}

void setCpld(const Target &target, const Value &value) {
    target.devices().cpld.reg[target.number()] = value.as<uint16_t>();
}

Value getLogic(const Target &target) {
    const CpldLogic &logic = target.devices().cpld.logic;
    if (logic.programmings == 0)
        return "factory";
    return std::to_string(logic.size) + " bytes, CRC-32 0x" + hex16Text(logic.crc >> 16).substr(2) +
           hex16Text(logic.crc & 0xFFFF).substr(2) + ", programmed " +
           std::to_string(logic.programmings) + " times";
}

Value getSystemLamp(const Target &target) {
    return fieldOf(target.devices().cpld.reg[kCpldLamps], kSystemLamp);
}

template <const CpldLine &lamp>
Value getLamp(const Target &target) {
    return cpldLevel(target.devices().cpld, lamp) ? 1 : 0;
}

Value getGpio(const Target &target) {
    return gpioLevel(target.devices().gpio, target.number());
}

void setGpio(const Target &target, const Value &value) {
    target.devices().gpio.external[target.number()] = value.as<uint8_t>();
}

Value getDirection(const Target &target) {
    return target.devices().gpio.isOutput[target.number()] != 0;
}

// EEPROMs

Value getBytes(const Eeprom &eeprom, const Target &target) {
    return bytesText(target, eeprom.bytes, eepromSize(eeprom), "EEPROM");
}

void setBytes(Eeprom &eeprom, const Target &target, const Value &value) {
    const std::vector<uint8_t> bytes = bytesToSet(target, value, eepromSize(eeprom), "EEPROM");
    std::memcpy(eeprom.bytes + target.name.offset.value_or(0), bytes.data(), bytes.size());
}

Value getBoardEeprom(const Target &target) {
    return getBytes(target.devices().eeprom, target);
}

void setBoardEeprom(const Target &target, const Value &value) {
    setBytes(target.devices().eeprom, target, value);
}

Value getSupplyEeprom(const Target &target) {
    return getBytes(target.supply().eeprom, target);
}

void setSupplyEeprom(const Target &target, const Value &value) {
    setBytes(target.supply().eeprom, target, value);
}

constexpr Binding kRegisterBindings[] = {
    bind("cpld.#", getCpld, setCpld, noteOfRegister),
    bind("cpld.logic", getLogic),
    bind("gpio.#", getGpio, setGpio),
    bind("gpio.#.direction", getDirection),
    bind("lamp.system", getSystemLamp),
    bind("lamp.4", getLamp<kLamp4>),
    bind("lamp.5", getLamp<kLamp5>),
    bind("eeprom.board", getBoardEeprom, setBoardEeprom),
    bind("eeprom.supply#", getSupplyEeprom, setSupplyEeprom),
};
static_assert(language::kRegisters == kCpldRegisters);
static_assert(language::kLines == kGpioLines);

} // namespace

std::span<const Binding> registerBindings() {
    return kRegisterBindings;
}

} // namespace vb
