#include "iodbg/poe/port.h"

#include "bsp.h"
#include "command_line/page.h"
#include "iodbg/core/format.h"
#include "iodbg/poe/cells.h"
#include "iodbg/poe/wire.h"

#include <array>
#include <optional>

namespace iodbg {

using namespace command_line;

namespace {

constexpr char kNotAskedText[] = "-";

/** Where a value comes from: an exchange with the controller. */
enum Source : size_t { kFromState, kFromMeasurement, kFromMode, kFromPower, kSources };

/** What a port answered. */
struct Answers {
    BspPoePortState state{};
    BspPoePortMeasurement measurement{};
    BspPoePortSettings settings{};
    Cell priority;
    std::array<std::optional<int32_t>, kSources> status; // none: not asked
};

/** Not every controller has inrush modes. */
Cell inrushCell(uint32_t mode) {
    constexpr uint32_t kNone = UINT32_MAX;
    return mode == kNone ? Cell{kNotAskedText, nullptr} : poeNumberCell(mode);
}

/** A value, and what becomes of it. */
struct PortReading {
    PoePortItem item;
    Source source;
    Cell (*cell)(const Answers &answers);
};

const PortReading kPortReadings[] = {
    {{"mode", "MODE", "Mode", 8},
     kFromMode,
     [](const Answers &answers) { return poeModeCell(answers.settings.mode); }},
    {{"detection", "DETECTION", "Detection", 9},
     kFromState,
     [](const Answers &answers) { return poeDetectionCell(answers.state.detection); }},
    {{"class", "CLASS", "Class", 5},
     kFromState,
     [](const Answers &answers) { return poeClassCell(answers.state.classification); }},
    {{"fault", "FAULT", "Fault", 5},
     kFromState,
     [](const Answers &answers) {
         return flagCell(answers.state.fault == BSP_POE_FAULT, "fault", "no");
     }},
    {{"delivering", "POWER", "Power", 5},
     kFromState,
     [](const Answers &answers) { return poeDeliveringCell(answers.state.disconnect); }},
    {{"voltage_v", "V", "Voltage, V", 2},
     kFromMeasurement,
     [](const Answers &answers) { return poeNumberCell(answers.measurement.voltageV); }},
    {{"current_ma", "MA", "Current, mA", 4},
     kFromMeasurement,
     [](const Answers &answers) { return poeNumberCell(answers.measurement.currentMa); }},
    {{"power_mw", "W", "Power, W", 6},
     kFromMeasurement,
     [](const Answers &answers) { return milliCell(answers.measurement.powerMw); }},
    {{"limit_mw", "LIMIT W", "Power limit, W", 7},
     kFromPower,
     [](const Answers &answers) { return milliCell(answers.settings.powerLimitMw); }},
    {{"inrush_mode", "INRUSH", "Inrush mode", 6},
     kFromPower,
     [](const Answers &answers) { return inrushCell(answers.settings.inrushMode); }},
    {{"priority", "PRIORITY", "Priority (1 is the most important)", 8},
     kFromPower,
     [](const Answers &answers) { return answers.priority; }},
};
constexpr PoePortItem kPort = {"port", "PORT", "Port", 4};

/** The priority that an answer about a port tells: the library has no function that reads it. */
class PrioritySeen {
  public:
    PrioritySeen(const bsp::PoeGuide &guide, uint32_t port)
        : guide_(guide), echo_(guide), watch_([this, port](PoeDirection direction, ByteView frame) {
              see(direction, frame, port);
          }) {}

    Cell cell() const {
        if (guide_.priorityIn == nullptr)
            return {kNotAskedText, nullptr};
        if (!value_)
            return {"unknown", nullptr};
        if (*value_ == 0)
            return {"above 1", int64_t{0}};
        return numberCell(*value_);
    }

  private:
    void see(PoeDirection direction, ByteView frame, uint32_t port) {
        if (direction == PoeDirection::ToController)
            echo_.sent(frame);
        else if (guide_.priorityIn != nullptr && echo_.isAnsweredBy(frame))
            see(guide_.priorityIn(frame, port));
    }
    void see(std::optional<uint32_t> priority) {
        if (priority)
            value_ = priority;
    }

    const bsp::PoeGuide &guide_;
    PoeEcho echo_;
    std::optional<uint32_t> value_;
    PoeWatch watch_;
};

/** Whether a status says that the controller could not be asked at all. */
bool isSilent(int32_t status) {
    return status == BSP_E_POE_WRITE || status == BSP_E_POE_READ || status == BSP_E_POE_FRAME ||
           status == BSP_E_POE_LOCK;
}

void askForSettings(Answers &answers, const bsp::PoeGuide &guide, uint32_t port) {
    const PrioritySeen priority(guide, port);
    const int32_t status = ioPoePortSettingsGet(port, &answers.settings);
    answers.status[kFromMode] = status == BSP_OK ? answers.settings.modeStatus : status;
    answers.status[kFromPower] = status == BSP_OK ? answers.settings.powerStatus : status;
    answers.priority = priority.cell();
}

/** Goes on until the controller falls silent. */
Answers ask(const bsp::PoeGuide &guide, uint32_t port) {
    Answers answers;
    int32_t status = ioPoePortStateGet(port, &answers.state);
    answers.status[kFromState] = status;
    const bool hasPower = status == BSP_OK && answers.state.disconnect == BSP_POE_DELIVERING;
    if (hasPower) {
        status = ioPoePortMeasurementGet(port, &answers.measurement);
        answers.status[kFromMeasurement] = status;
    }
    if (!isSilent(status))
        askForSettings(answers, guide, port);
    return answers;
}

std::string columnText(const Cell &cell) {
    const bool isFailed =
        std::holds_alternative<std::nullptr_t>(cell.value) && cell.text != kNotAskedText;
    if (isFailed)
        return "!";
    return cell.text == kUnknownClassText ? "?" : cell.text;
}

std::string paddedLine(const std::vector<std::string> &words) {
    std::string line = padded(words[0], kPort.width);
    for (size_t i = 0; i + 1 < words.size(); ++i)
        line += " " + padded(words[i + 1], kPortReadings[i].item.width);
    return withoutTrailingSpaces(line) + "\n";
}

} // namespace

const std::vector<PoePortItem> &poePortItems() {
    static const std::vector<PoePortItem> items = [] {
        std::vector<PoePortItem> all;
        for (const PortReading &reading : kPortReadings)
            all.push_back(reading.item);
        return all;
    }();
    return items;
}

std::vector<Cell> readPoePort(Report &report, const bsp::PoeGuide &guide, uint32_t port) {
    const std::string prefix = "ports." + std::to_string(port) + ".";
    const Answers answers = ask(guide, port);
    std::vector<Cell> cells;
    std::array<bool, kSources> isNoted{};
    for (const PortReading &reading : kPortReadings) {
        const std::optional<int32_t> status = answers.status[reading.source];
        if (!status) {
            cells.push_back({kNotAskedText, nullptr});
            continue;
        }
        Report unnoted;
        Report &notes = isNoted[reading.source] ? unnoted : report;
        cells.push_back(notes.tried(prefix + reading.item.key, *status, reading.cell(answers)));
        isNoted[reading.source] = true;
    }
    return cells;
}

std::string poePortHeadLine() {
    std::vector<std::string> words = {kPort.label};
    for (const PortReading &reading : kPortReadings)
        words.emplace_back(reading.item.label);
    return paddedLine(words);
}

std::string poePortLine(uint32_t port, const std::vector<Cell> &cells) {
    std::vector<std::string> words = {std::to_string(port)};
    for (const Cell &cell : cells)
        words.push_back(columnText(cell));
    return paddedLine(words);
}

} // namespace iodbg
