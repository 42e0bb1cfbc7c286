// Properties of SFP cages and MDIO registers.

#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/words/line_notes.h"
#include "virtual_board/words/property_types.h"
#include "virtual_board/words/sfp_text.h"
#include "virtual_board/words/values.h"

#include <array>
#include <utility>

namespace vb {

namespace {

using Target = PropertyTarget;

constexpr const char *kSfpStates[] = {"good", "tx-fault", "dead"};
constexpr const char *kLinks[] = {"down", "up"};
constexpr const char *kMdioStates[] = {"good", "error", "stuck"};

// Cages and modules

SfpModule &moduleOf(const Target &target) {
    return sfpModule(target.board(), target.number);
}

/** The module of a cage; an empty one throws Refused. */
SfpModule &pluggedModuleOf(const Target &target) {
    SfpModule &module = moduleOf(target);
    const std::string port = std::to_string(target.number);
    if (module.kind == SfpKind::None)
        throw Refused("cage " + port + " is empty; plug a module first: sfp." + port +
                      ".module sr");
    return module;
}

std::string getModule(const Target &target) {
    return sfpKindText(moduleOf(target).kind);
}

void setModule(const Target &target, const std::string &value) {
    sfpPlug(moduleOf(target), sfpKindOf(value), target.number, target.now());
}

std::string getSfpState(const Target &target) {
    return kSfpStates[static_cast<size_t>(moduleOf(target).state)];
}

void setSfpState(const Target &target, const std::string &value) {
    pluggedModuleOf(target).state = static_cast<SfpState>(language::parseChoice(value, kSfpStates));
}

std::string getLink(const Target &target) {
    return kLinks[moduleOf(target).isLinkUp];
}

void setLink(const Target &target, const std::string &value) {
    pluggedModuleOf(target).isLinkUp = language::parseChoice(value, kLinks);
}

std::string getRxPower(const Target &target) {
    const SfpModule &module = moduleOf(target);
    return std::to_string(module.isLinkUp != 0 ? module.microwatts : 0);
}

void setRxPower(const Target &target, const std::string &value) {
    SfpModule &module = pluggedModuleOf(target);
    if (!sfpIsOptical(module))
        throw Refused("a module of kind " + std::string(sfpKindText(module.kind)) +
                      " receives no light; set its link");
    module.microwatts = language::parseNumber<uint32_t>(value, 0, kSfpMostMicrowatts);
    module.isLinkUp = 1;
}

std::string partOf(const uint8_t (&page)[kSfpPageSize], const Target &target) {
    return bytesText(target, page, kSfpPageSize, "page");
}

void setPart(uint8_t (&page)[kSfpPageSize], const Target &target, const std::string &value) {
    const std::vector<uint8_t> bytes = bytesToSet(target, value, kSfpPageSize, "page");
    std::copy(bytes.begin(), bytes.end(), page + target.offset.value_or(0));
}

std::string getId(const Target &target) {
    return partOf(pluggedModuleOf(target).id, target);
}

void setId(const Target &target, const std::string &value) {
    setPart(pluggedModuleOf(target).id, target, value);
}

/** A module that has a diagnostics page; others throw Refused. */
SfpModule &measuringModuleOf(const Target &target) {
    SfpModule &module = pluggedModuleOf(target);
    if (!sfpHasDiagnostics(module))
        throw Refused("a module of kind " + std::string(sfpKindText(module.kind)) +
                      " has no diagnostics");
    return module;
}

std::string getDiagnostics(const Target &target) {
    uint8_t page[kSfpPageSize];
    sfpMeasure(measuringModuleOf(target), sfpCage(target.board(), target.number, target.now()),
               page);
    return partOf(page, target);
}

void setDiagnostics(const Target &target, const std::string &value) {
    setPart(measuringModuleOf(target).diagnostics, target, value);
}

// MDIO

template <uint32_t first>
std::string getMdio(const Target &target) {
    return hex16Text(target.devices().mdio.reg[first][target.number]);
}

template <uint32_t first>
void setMdio(const Target &target, const std::string &value) {
    target.devices().mdio.reg[first][target.number] =
        language::parseNumber<uint16_t>(value, 0, 0xFFFF);
}

std::string getMdioState(const Target &target) {
    return kMdioStates[static_cast<size_t>(target.devices().mdio.state)];
}

void setMdioState(const Target &target, const std::string &value) {
    target.devices().mdio.state = static_cast<MdioState>(language::parseChoice(value, kMdioStates));
}

std::string getBusyPolls(const Target &target) {
    return std::to_string(target.devices().mdio.busyPolls);
}

void setBusyPolls(const Target &target, const std::string &value) {
    target.devices().mdio.busyPolls = language::parseNumber<uint32_t>(value, 1, kMdioMostBusyPolls);
}

/** "mdio.7.#": a row of registers for each first field of the address. */
template <uint32_t first>
constexpr char kMdioPattern[] = {'m',
                                 'd',
                                 'i',
                                 'o',
                                 '.',
                                 first < 10 ? '0' + first : '0' + first / 10,
                                 first < 10 ? '.' : '0' + first % 10,
                                 first < 10 ? '#' : '.',
                                 first < 10 ? '\0' : '#',
                                 '\0'};

template <uint32_t first>
constexpr PropertyType mdioRow() {
    return {kMdioPattern<first>,
            0,
            kMdioAddresses - 1,
            getMdio<first>,
            setMdio<first>,
            "0x0000",
            false,
            Fitted::Always,
            true};
}

template <uint32_t... first>
constexpr auto mdioRows(std::integer_sequence<uint32_t, first...>) {
    return std::array{mdioRow<first>()...};
}

constexpr auto kMdioRows = mdioRows(std::make_integer_sequence<uint32_t, kMdioAddresses>());

constexpr PropertyType kSfpProperties[] = {
    {"sfp.#.module", 1, kMostPorts, getModule, setModule, "none", false, Fitted::Sfp, false,
     noteOfCage},
    {"sfp.#.state", 1, kMostPorts, getSfpState, setSfpState, "good", false, Fitted::Sfp},
    {"sfp.#.link", 1, kMostPorts, getLink, setLink, "down", false, Fitted::Sfp},
    {"sfp.#.rx-power", 1, kMostPorts, getRxPower, setRxPower, "0", false, Fitted::Sfp},
    {"sfp.#.id", 1, kMostPorts, getId, setId, nullptr, true, Fitted::Sfp, true},
    {"sfp.#.diagnostics", 1, kMostPorts, getDiagnostics, setDiagnostics, nullptr, true, Fitted::Sfp,
     true},
    {"mdio.state", 0, 0, getMdioState, setMdioState, "good", false, Fitted::Always},
    {"mdio.busy-polls", 0, 0, getBusyPolls, setBusyPolls, "1", false, Fitted::Always},
};

} // namespace

std::span<const PropertyType> sfpProperties() {
    return kSfpProperties;
}

std::span<const PropertyType> mdioRegisterProperties() {
    return kMdioRows;
}

} // namespace vb
