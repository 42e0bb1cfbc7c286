// Properties of SFP cages and what is plugged into them.

#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/parts.h"
#include "virtual_board/words/sfp_text.h"
#include "virtual_board/words/values.h"

#include <algorithm>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

// Cages and modules

SfpModule &moduleOf(const Target &target) {
    return sfpModule(target.board(), target.number());
}

/** The module of a cage; an empty one throws Refused. */
SfpModule &pluggedModuleOf(const Target &target) {
    SfpModule &module = moduleOf(target);
    const std::string port = std::to_string(target.number());
    if (module.kind == SfpKind::None)
        throw Refused("cage " + port + " is empty; plug a module first: sfp." + port +
                      ".module sr");
    return module;
}

Value getModule(const Target &target) {
    return static_cast<uint32_t>(moduleOf(target).kind);
}

void setModule(const Target &target, const Value &value) {
    sfpPlug(moduleOf(target), value.as<SfpKind>(), target.number(), target.now());
}

Value getSfpState(const Target &target) {
    return static_cast<uint32_t>(moduleOf(target).state);
}

void setSfpState(const Target &target, const Value &value) {
    SfpModule &module = pluggedModuleOf(target);
    sfpRelease(module);
    module.state = value.as<SfpState>();
}

Value getLink(const Target &target) {
    return moduleOf(target).isLinkUp;
}

void setLink(const Target &target, const Value &value) {
    SfpModule &module = pluggedModuleOf(target);
    sfpRelease(module);
    module.isLinkUp = value.as<uint32_t>();
}

Value getRxPower(const Target &target) {
    const SfpModule &module = moduleOf(target);
    return module.isLinkUp != 0 ? module.microwatts : 0;
}

void setRxPower(const Target &target, const Value &value) {
    SfpModule &module = pluggedModuleOf(target);
    if (!sfpIsOptical(module))
        throw Refused("a module of kind " + sfpKindText(module.kind) +
                      " receives no light; set its link");
    sfpRelease(module);
    module.microwatts = value.as<uint32_t>();
    module.isLinkUp = 1;
}

Value getSignal(const Target &target) {
    const SfpModule &module = moduleOf(target);
    return static_cast<uint32_t>(
        sfpSignal(module, sfpCage(target.board(), target.number(), target.now())));
}

Value getSfpBus(const Target &target) {
    return busText(placeOfModule(target.model(), target.number()));
}

Value partOf(const uint8_t (&page)[kSfpPageSize], const Target &target) {
    return bytesText(target, page, kSfpPageSize, "page");
}

void setPart(uint8_t (&page)[kSfpPageSize], const Target &target, const Value &value) {
    const std::vector<uint8_t> bytes = bytesToSet(target, value, kSfpPageSize, "page");
    std::copy(bytes.begin(), bytes.end(), page + target.name.offset.value_or(0));
}

Value getId(const Target &target) {
    return partOf(pluggedModuleOf(target).id, target);
}

void setId(const Target &target, const Value &value) {
    setPart(pluggedModuleOf(target).id, target, value);
}

/** A module that has a diagnostics page; others throw Refused. */
SfpModule &measuringModuleOf(const Target &target) {
    SfpModule &module = pluggedModuleOf(target);
    if (!sfpHasDiagnostics(module))
        throw Refused("a module of kind " + sfpKindText(module.kind) + " has no diagnostics");
    return module;
}

Value getDiagnostics(const Target &target) {
    uint8_t page[kSfpPageSize];
    sfpMeasure(measuringModuleOf(target), sfpCage(target.board(), target.number(), target.now()),
               page);
    return partOf(page, target);
}

void setDiagnostics(const Target &target, const Value &value) {
    setPart(measuringModuleOf(target).diagnostics, target, value);
}

constexpr Binding kSfpBindings[] = {
    bind("sfp.#.module", getModule, setModule, noteOfCage),
    bind("sfp.#.state", getSfpState, setSfpState),
    bind("sfp.#.link", getLink, setLink),
    bind("sfp.#.rx-power", getRxPower, setRxPower),
    bind("sfp.#.signal", getSignal),
    bind("sfp.#.bus", getSfpBus),
    bind("sfp.#.id", getId, setId),
    bind("sfp.#.diagnostics", getDiagnostics, setDiagnostics),
};
static_assert(language::wordCount("sfp.#.module") == kSfpKinds);
static_assert(hasWordsUpTo("sfp.#.state", SfpState::Dead));
static_assert(hasWordsUpTo("sfp.#.signal", SfpSignal::Good));
static_assert(language::propertyOf("sfp.#.rx-power").highest == kSfpMostMicrowatts);

} // namespace

std::span<const Binding> sfpBindings() {
    return kSfpBindings;
}

} // namespace vb
