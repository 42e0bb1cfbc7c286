// Properties of PoE: the controller, and what is plugged into its ports.

#include "virtual_board/board/circuits.h"
#include "virtual_board/devices/poe_kind.h"
#include "virtual_board/devices/poe_measurements.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/poe_text.h"

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

PoeController &poeOf(const Target &target) {
    return target.devices().poe;
}

Value getDevice(const Target &target) {
    return deviceText(poeOf(target).device[target.number() - 1]);
}

void setDevice(const Target &target, const Value &value) {
    poeSetDevice(poeOf(target), target.number() - 1, parseDevice(value.text()), target.now());
}

Value getState(const Target &target) {
    return static_cast<uint32_t>(poeOf(target).port[target.number() - 1].phase);
}

Value getPortPower(const Target &target) {
    return poeDrawn(poeOf(target), target.number() - 1);
}

Value getTotalPower(const Target &target) {
    return poeTotalDrawn(poeOf(target));
}

Value getBudget(const Target &target) {
    return poeKindOf(poeOf(target)).budget(poeOf(target)).powerMw;
}

Value getPoeLamp(const Target &target) {
    return isPoeLampLit(target.devices().cpld, target.number()) ? 1 : 0;
}

Value getController(const Target &target) {
    return isPoePresent(target.board())
               ? language::wordOf(language::propertyOf("poe.controller"),
                                  static_cast<uint32_t>(poeOf(target).mode))
               : "missing";
}

void setController(const Target &target, const Value &value) {
    poeOf(target).isMissing = value.as<uint8_t>();
    drivePoeLine(target.board());
}

constexpr Binding kPoeBindings[] = {
    bind("poe.controller", getController, setController),
    bind("poe.budget", getBudget),
    bind("poe.drawn", getTotalPower),
    bind("poe.#.device", getDevice, setDevice),
    bind("poe.#.state", getState),
    bind("poe.#.power", getPortPower),
    bind("poe.#.lamp", getPoeLamp),
};
static_assert(hasWordsUpTo("poe.#.state", PoePhase::Fault));

} // namespace

std::span<const Binding> poeBindings() {
    return kPoeBindings;
}

} // namespace vb
