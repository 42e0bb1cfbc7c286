// MDIO registers as properties, and how commands fare.

#include "virtual_board/words/bindings.h"

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

uint16_t &mdioRegister(const Target &target) {
    return target.devices().mdio.reg[target.name.number][target.name.second];
}

Value getMdio(const Target &target) {
    return mdioRegister(target);
}

void setMdio(const Target &target, const Value &value) {
    mdioRegister(target) = value.as<uint16_t>();
}

Value getMdioState(const Target &target) {
    return static_cast<uint32_t>(target.devices().mdio.state);
}

void setMdioState(const Target &target, const Value &value) {
    target.devices().mdio.state = value.as<MdioState>();
}

Value getBusyPolls(const Target &target) {
    return target.devices().mdio.busyPolls;
}

void setBusyPolls(const Target &target, const Value &value) {
    target.devices().mdio.busyPolls = value.as<uint32_t>();
}

constexpr Binding kMdioBindings[] = {
    bind("mdio.state", getMdioState, setMdioState),
    bind("mdio.busy-polls", getBusyPolls, setBusyPolls),
    bind("mdio.#.#", getMdio, setMdio),
};
static_assert(hasWordsUpTo("mdio.state", MdioState::Stuck));
static_assert(language::propertyOf("mdio.busy-polls").highest == kMdioMostBusyPolls);
static_assert(language::kMdioAddresses == kMdioAddresses);

} // namespace

std::span<const Binding> mdioBindings() {
    return kMdioBindings;
}

} // namespace vb
