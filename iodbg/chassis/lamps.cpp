#include "iodbg/chassis/lamps.h"

#include "bsp.h"
#include "iodbg/core/format.h"
#include "iodbg/core/model.h"
#include "support/register_bits.h"

#include <vector>

namespace iodbg {

namespace {

constexpr int kRegisterDigits = 4;

constexpr bsp::CpldField single(const bsp::CpldLine &line) {
    return {line.reg, line.bit, 1};
}

constexpr LampKind kKinds[] = {
    {BSP_LED_SYSTEM, "system", "System lamp", nullptr, 1, BSP_LED_STATE_3, bsp::kSystemLamp,
     "iodbg led set system 2"},
    {BSP_LED_4, "lamp4", "Lamp 4", nullptr, 1, BSP_LED_STATE_1, single(bsp::kLamp4),
     "iodbg led set lamp4 on"},
    {BSP_LED_5, "lamp5", "Lamp 5", nullptr, 1, BSP_LED_STATE_1, single(bsp::kLamp5),
     "iodbg led set lamp5 off"},
    {BSP_LED_INDEXED, "indexed", "Indexed lamp", "LAMP", BSP_LED_INDEXED_MAX, BSP_LED_STATE_1,
     single(bsp::kIndexedLamp), "iodbg led set indexed 3 on"},
    {BSP_LED_POE_PORT, "poe", "LED of a PoE port", "PORT", BSP_POE_PORTS_MAX, BSP_POE_LED_ON,
     single({bsp::kCpldPoeLamps, 0}), "iodbg led set poe 17 on"},
};
constexpr const LampKind &kSystem = kKinds[0];
constexpr const LampKind &kLamp4 = kKinds[1];
constexpr const LampKind &kLamp5 = kKinds[2];
constexpr const LampKind &kIndexed = kKinds[3];
constexpr const LampKind &kPoe = kKinds[4];

/** Which of the first lamps of a kind are lit, by their registers. */
Cell litCell(const LampKind &kind, const std::vector<uint16_t> &registers, uint32_t lamps) {
    std::vector<int64_t> lit;
    for (uint32_t lamp = 1; lamp <= lamps; ++lamp) {
        if (kind.stateIn(registers[kind.registerOf(lamp) - kind.first.reg], lamp) == 1)
            lit.push_back(lamp);
    }
    return listCell(lit);
}

/** Adds registers to a section; true when all could be read. */
bool addRegisters(Report &report, Section &section, uint32_t first,
                  std::vector<uint16_t> &registers) {
    const size_t failuresBefore = report.failures.size();
    for (uint32_t i = 0; i < registers.size(); ++i) {
        const int32_t status = bspCpldGet(first + i, &registers[i]);
        const std::string key = "register_" + std::to_string(first + i);
        section.add(
            key, registerName(first + i),
            report.tried(section.path(key), status, hexCell(registers[i], kRegisterDigits)));
    }
    return report.failures.size() == failuresBefore;
}

} // namespace

const std::span<const LampKind> kLampKinds = kKinds;

uint32_t LampKind::registerOf(uint32_t lamp) const {
    return first.reg + (lamp - 1) / bsp::kCpldLinesPerRegister;
}

uint32_t LampKind::bitOf(uint32_t lamp) const {
    return first.lowestBit + (lamp - 1) % bsp::kCpldLinesPerRegister * first.width;
}

bool LampKind::isPoe() const {
    return number == BSP_LED_POE_PORT;
}

uint32_t LampKind::stateIn(uint16_t content, uint32_t lamp) const {
    const uint32_t field = bsp::fieldOf(content, {registerOf(lamp), bitOf(lamp), first.width});
    if (isPoe())
        return field == 0 ? BSP_POE_LED_ON : BSP_POE_LED_OFF; // active low
    constexpr uint32_t kSystemStates[] = {0, 3, 2, 1};        // 1 and 3 change places on their way
    return number == kSystem.number ? kSystemStates[field] : field;
}

std::string stateWord(const LampKind &kind, uint32_t state) {
    if (state == 0)
        return "off";
    return kind.highestState == 1 ? "on" : std::to_string(state);
}

Cell stateCell(const LampKind &kind, uint32_t state) {
    return {stateWord(kind, state), int64_t{state}};
}

void addPanelLamps(Report &report) {
    Section section = {"panel", "Front panel", {}};
    std::vector<uint16_t> registers(1);
    if (addRegisters(report, section, bsp::kCpldLamps, registers)) {
        for (const LampKind *kind : {&kSystem, &kLamp4, &kLamp5})
            section.add(kind->word, kind->label, stateCell(*kind, kind->stateIn(registers[0], 1)));
        section.add("indexed_on", "Indexed lamps on", litCell(kIndexed, registers, kIndexed.lamps));
    }
    report.parts.emplace_back(section);
}

void addPoeLamps(Report &report) {
    Section section = {"poe", "PoE ports", {}};
    Model model;
    const int32_t status = readModel(model);
    section.add("ports", "Number of ports",
                report.tried("poe.ports", status, numberCell(model.poePorts)));
    if (status == BSP_OK && model.poePorts > 0) {
        std::vector<uint16_t> registers(kPoe.registerOf(model.poePorts) - bsp::kCpldPoeLamps + 1);
        if (addRegisters(report, section, bsp::kCpldPoeLamps, registers))
            section.add("ports_on", "Port LEDs on", litCell(kPoe, registers, model.poePorts));
    }
    report.parts.emplace_back(section);
}

} // namespace iodbg
