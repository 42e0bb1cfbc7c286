#include "iodbg/poe_port.h"

#include "bsp.h"
#include "iodbg/format.h"
#include "iodbg/poe_wire.h"

#include <iterator>
#include <optional>

namespace iodbg {

namespace {

constexpr uint32_t kIsFaulty = 1;

/** A reading of the library's, and what becomes of it. */
struct Reading {
    PoePortItem item;
    int32_t (*get)(uint32_t port, uint32_t *out);
    Cell (*cell)(uint32_t value);
    bool onlyWithPower; // a port without power measures nothing
};

Cell faultCell(uint32_t fault) {
    return flagCell(fault == kIsFaulty, "fault", "no");
}

// The state comes before the measurements that depend on it, the limit before the priority, which
// is part of the same answer.
const Reading kReadings[] = {
    {{"mode", "MODE", "Mode"}, ioPoePortModeGet, poeModeCell, false},
    {{"detection", "DETECTION", "Detection"}, ioPoePortDetectionGet, poeDetectionCell, false},
    {{"class", "CLASS", "Class"}, ioPoePortClassificationGet, poeClassCell, false},
    {{"fault", "FAULT", "Fault"}, ioPoePortFaultGet, faultCell, false},
    {{"delivering", "POWER", "Power"}, ioPoePortDisconnectGet, poeDeliveringCell, false},
    {{"voltage_v", "V", "Voltage, V"}, ioPoePortVoltageGet, poeNumberCell, true},
    {{"current_ma", "MA", "Current, mA"}, ioPoePortCurrentGet, poeNumberCell, true},
    {{"power_mw", "W", "Power, W"}, ioPoePortPowerGet, milliCell, true},
    {{"limit_mw", "LIMIT W", "Power limit, W"}, ioPoePortMaxPowerGet, milliCell, false},
    {{"inrush_mode", "INRUSH", "Inrush mode"}, ioPoePortInrushModeGet, poeNumberCell, false},
};
constexpr PoePortItem kPriority = {"priority", "PRIORITY", "Priority (1 is the most important)"};

/**
 * The priority that the last answer to a question about a port's power settings tells. The library
 * sets priorities 1 to 3 as 2 to 0 and has no function that reads them.
 */
class PrioritySeen {
  public:
    explicit PrioritySeen(uint32_t port)
        : watch_([this, port](PoeDirection direction, ByteView frame) {
              constexpr uint8_t kPowerSettings = 0x49;
              constexpr size_t kPriorityAt = 6;
              if (direction == PoeDirection::FromController && frame.size() > kPriorityAt &&
                  frame[0] == kPowerSettings && frame[2] == port - 1)
                  value_ = frame[kPriorityAt];
          }) {}

    Cell cell() const {
        if (!value_)
            return {"-", nullptr};
        if (*value_ > 2)
            return {"above 1", int64_t{0}};
        return numberCell(3 - *value_);
    }

  private:
    std::optional<uint8_t> value_;
    PoeWatch watch_;
};

/** Whether a status says that the controller could not be asked at all. */
bool isSilent(int32_t status) {
    return status == BSP_E_POE_WRITE || status == BSP_E_POE_READ || status == BSP_E_POE_FRAME ||
           status == BSP_E_POE_LOCK;
}

} // namespace

Cell poeNumberCell(uint32_t number) {
    return numberCell(number);
}

Cell poeModeCell(uint32_t mode) {
    switch (mode) {
    case kPoeModeAuto:
        return textCell("auto");
    case kPoeModeSemi:
        return textCell("semi");
    case kPoeModeManual:
        return textCell("manual");
    default:
        return textCell("disabled");
    }
}

Cell poeDetectionCell(uint32_t detection) {
    constexpr const char *kWords[] = {"none", "short", "legacy", "bad", "good", "", "open", ""};
    const std::string word = detection < std::size(kWords) ? kWords[detection] : "";
    return {std::to_string(detection) + (word.empty() ? "" : " " + word), int64_t{detection}};
}

Cell poeClassCell(uint32_t deviceClass) {
    constexpr uint32_t kNone = 0;
    constexpr uint32_t kUnknown = 9;
    if (deviceClass == kNone)
        return {"-", int64_t{deviceClass}};
    return {deviceClass == kUnknown ? "unknown" : std::to_string(deviceClass),
            int64_t{deviceClass}};
}

Cell poeDeliveringCell(uint32_t disconnect) {
    return flagCell(disconnect == kPoeIsDelivering, "on", "off");
}

Cell milliCell(uint32_t thousandthsOfUnit) {
    return {thousandths(thousandthsOfUnit), int64_t{thousandthsOfUnit}};
}

const std::vector<PoePortItem> &poePortItems() {
    static const std::vector<PoePortItem> items = [] {
        std::vector<PoePortItem> all;
        for (const Reading &reading : kReadings)
            all.push_back(reading.item);
        all.push_back(kPriority);
        return all;
    }();
    return items;
}

std::vector<Cell> readPoePort(Report &report, uint32_t port) {
    const PrioritySeen priority(port);
    const std::string prefix = "ports." + std::to_string(port) + ".";
    std::vector<Cell> cells;
    bool hasPower = false;
    bool isUnreachable = false;
    for (const Reading &reading : kReadings) {
        if (isUnreachable || (reading.onlyWithPower && !hasPower)) {
            cells.push_back({"-", nullptr});
            continue;
        }
        uint32_t value = 0;
        const int32_t status = reading.get(port, &value);
        if (reading.get == ioPoePortDisconnectGet)
            hasPower = status == BSP_OK && value == kPoeIsDelivering;
        isUnreachable = isSilent(status);
        cells.push_back(report.tried(prefix + reading.item.key, status, reading.cell(value)));
    }
    cells.push_back(priority.cell());
    return cells;
}

} // namespace iodbg
