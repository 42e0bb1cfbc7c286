// Properties of the power supplies.

#include "virtual_board/board/circuits.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/line_notes.h"

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

Value getPresent(const Target &target) {
    return target.supply().isPresent != 0;
}

void setPresent(const Target &target, const Value &value) {
    target.supply().isPresent = value.as<uint32_t>();
    driveSupplyLines(target.board(), target.number() - 1);
}

template <uint32_t PmbusSupply::*flag>
Value getFailed(const Target &target) {
    return target.supply().pmbus.*flag != 0;
}

template <uint32_t PmbusSupply::*flag>
void setFailed(const Target &target, const Value &value) {
    target.supply().pmbus.*flag = value.as<uint32_t>();
    driveSupplyLines(target.board(), target.number() - 1);
}

template <uint32_t PmbusSupply::*field>
Value getAmount(const Target &target) {
    return pmbusAmount(target.supply().pmbus.*field);
}

Value getOutputVoltage(const Target &target) {
    return pmbusOutputMv(target.supply().pmbus);
}

Value getSupplyBus(const Target &target) {
    return busText(
        {kSupplyPmbus.bus, kSupplyPmbus.channel + target.number() - 1, kSupplyPmbus.device});
}

Value getBusyEvery(const Target &target) {
    return target.supply().pmbus.busyEvery;
}

template <uint32_t PmbusSupply::*field>
void setAmount(const Target &target, const Value &value) {
    target.supply().pmbus.*field = value.as<uint32_t>();
}

template <uint32_t index>
Value getDegrees(const Target &target) {
    return pmbusDegrees(target.supply().pmbus.degrees[index]);
}

template <uint32_t index>
void setDegrees(const Target &target, const Value &value) {
    target.supply().pmbus.degrees[index] = value.as<int32_t>();
}

// Single lines of a supply

template <const CpldLine &first>
Value getLine(const Target &target) {
    return cpldLevel(target.devices().cpld, nthLine(first, target.number()));
}

template <const CpldLine &first>
void setLine(const Target &target, const Value &value) {
    cpldDrive(target.devices().cpld, nthLine(first, target.number()), value.as<uint32_t>() != 0);
}

using P = PmbusSupply;

template <uint32_t P::*field>
constexpr Binding amount(const char *name) {
    return bind(name, getAmount<field>, setAmount<field>);
}

template <uint32_t P::*flag>
constexpr Binding failure(const char *name) {
    return bind(name, getFailed<flag>, setFailed<flag>);
}

template <uint32_t index>
constexpr Binding temperature(const char *name) {
    return bind(name, getDegrees<index>, setDegrees<index>);
}

template <const CpldLine &first>
constexpr Binding line(const char *name, PropertyNote note = nullptr) {
    return bind(name, getLine<first>, setLine<first>, note);
}

constexpr Binding kSupplyBindings[] = {
    bind("supply.#.present", getPresent, setPresent, noteOfSupplyPresence),
    failure<&P::hasInputFailed>("supply.#.input"),
    failure<&P::hasOutputFailed>("supply.#.output"),
    amount<&P::inputMv>("supply.#.input-voltage"),
    amount<&P::inputMa>("supply.#.input-current"),
    amount<&P::inputMw>("supply.#.input-power"),
    bind("supply.#.output-voltage", getOutputVoltage, setAmount<&P::outputMv>),
    amount<&P::outputMa>("supply.#.output-current"),
    amount<&P::outputMw>("supply.#.output-power"),
    temperature<0>("supply.#.temperature1"),
    temperature<1>("supply.#.temperature2"),
    temperature<2>("supply.#.temperature3"),
    bind("supply.#.bus", getSupplyBus),
    bind("supply.#.busy-every", getBusyEvery, setAmount<&P::busyEvery>),
    line<kSupplyPresence>("supply.#.line.presence", noteOfSupplyPresence),
    line<kSupplyType>("supply.#.line.type"),
    line<kSupplyStatus0>("supply.#.line.status0"),
    line<kSupplyStatus1>("supply.#.line.status1"),
    line<kSupplyStatus2>("supply.#.line.status2"),
};
static_assert(language::kMostPmbus == kPmbusMost && language::kMostDegrees == kPmbusMostDegrees);
static_assert(language::propertyOf("supply.#.output-voltage").highest == kPmbusMostOutputMv);

} // namespace

std::span<const Binding> supplyBindings() {
    return kSupplyBindings;
}

} // namespace vb
