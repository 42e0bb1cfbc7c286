#include "virtual_board/words/panel_text.h"

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/climate_lines.h"
#include "virtual_board/board/sfp_cages.h"
#include "virtual_board/devices/poe_kind.h"
#include "virtual_board/devices/poe_measurements.h"
#include "virtual_board/words/clock_text.h"
#include "virtual_board/words/sfp_text.h"
#include "virtual_board/words/values.h"

namespace vb {

namespace {

constexpr char kGreen[] = "32";
constexpr char kYellow[] = "33";
constexpr char kRed[] = "31";
constexpr char kPlain[] = "0";

/** How a PoE port is drawn in a phase. */
struct Sign {
    char character;
    const char *colour;
};

Sign signOf(PoePhase phase) {
    switch (phase) {
    case PoePhase::Disabled:
        return {' ', kPlain};
    case PoePhase::Delivering:
        return {'*', kGreen};
    case PoePhase::Denied:
        return {'-', kYellow};
    case PoePhase::Fault:
        return {'!', kRed};
    case PoePhase::Idle:
        return {'.', kPlain};
    default:
        return {'~', kYellow};
    }
}

/** How many characters a terminal shows of a text, which may contain colours. */
size_t widthOf(const std::string &text) {
    size_t width = 0;
    bool isEscape = false;
    for (const char character : text) {
        isEscape = isEscape || character == '\x1b';
        width += isEscape ? 0 : 1;
        isEscape = isEscape && character != 'm';
    }
    return width;
}

class Panel {
  public:
    Panel(const Board &board, const Model &model, uint64_t nowNs, bool hasColour)
        : board_(board), model_(model), nowNs_(nowNs), hasColour_(hasColour) {}

    std::string text() const {
        std::string all = hex16Text(model_.devId) + "  " + model_.description + "  clock " +
                          secondsText(nowNs_) + "\n\n";
        const uint32_t ports = model_.copperPorts;
        for (uint32_t first = 1; first <= ports; first += kPortsPerBlock)
            all += portRow(first) + portRow(first + 1) + "\n";
        all += cages("SFP    ", 1, model_.sfpPorts) +
               cages("uplinks", firstUplink(model_), model_.uplinks) + fans() + supplies() +
               sharedLines() + climate() + lamps();
        return all + (model_.poePorts != 0 ? poeLine() + kLegend : "");
    }

  private:
    static constexpr uint32_t kPortsPerBlock = 24;
    static constexpr char kLegend[] =
        "       * delivers  ~ powering up  . nothing  - denied  ! fault  blank: off\n"
        "       o LED lit\n";

    std::string coloured(const std::string &text, const char *colour) const {
        return hasColour_ ? "\x1b[" + std::string(colour) + "m" + text + "\x1b[0m" : text;
    }

    std::string poeCell(uint32_t port) const {
        const Sign sign = signOf(board_.devices.poe.port[port - 1].phase);
        const std::string lamp =
            isPoeLampLit(board_.devices.cpld, port) ? coloured("o", kGreen) : " ";
        return coloured(std::string(1, sign.character), sign.colour) + lamp;
    }

    std::string portCell(uint32_t port) const {
        const std::string number = std::to_string(port);
        return "[" + std::string(number.size() < 2 ? 1 : 0, ' ') + number +
               (model_.poePorts != 0 ? poeCell(port) : "") + "]";
    }

    /** Every second port from the first one on. */
    std::string portRow(uint32_t first) const {
        std::string row;
        const uint32_t behind = (first - 1) / kPortsPerBlock * kPortsPerBlock + kPortsPerBlock;
        for (uint32_t port = first; port <= behind && port <= model_.copperPorts; port += 2)
            row += portCell(port);
        return row.empty() ? "" : row + "\n";
    }

    /** A module and how its link is. */
    std::string moduleText(uint32_t port) const {
        const SfpModule &module = board_.devices.sfp[port - 1];
        const std::string kind = " " + sfpKindText(module.kind) + " ";
        if (module.kind == SfpKind::None)
            return "";
        switch (sfpSignal(module, sfpCage(board_, port, nowNs_))) {
        case SfpSignal::TxFault:
            return kind + coloured("fault", kRed);
        case SfpSignal::Off:
            return kind + coloured("off", kYellow);
        case SfpSignal::Lost:
            return kind + "no signal";
        default:
            return kind + coloured("up", kGreen);
        }
    }

    /** Cages from that of a port on, in rows that fit on a terminal. */
    std::string cages(const std::string &what, uint32_t firstPort, uint32_t count) const {
        constexpr size_t kColumns = 80;
        constexpr uint32_t kCagesInRow = 12;
        std::string rows = what;
        size_t column = what.size();
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t port = firstPort + i;
            const std::string cage = " [" + std::to_string(port) + moduleText(port) + "]";
            const size_t width = widthOf(cage);
            if (i != 0 && (i % kCagesInRow == 0 || column + width > kColumns)) {
                rows += "\n" + std::string(what.size(), ' ');
                column = what.size();
            }
            rows += cage;
            column += width;
        }
        return count == 0 ? "" : rows + "\n";
    }

    std::string fanText(const Fan &fan) const {
        if (fan.isPresent == 0)
            return "not plugged";
        const std::string speed = std::to_string(fan.rpm) + " rpm";
        return fan.state == FanState::Good ? speed : coloured(speed, kRed);
    }

    std::string fans() const {
        if (model_.fans.count == 0)
            return "";
        std::string row = "fans   ";
        for (uint32_t index = 0; index < model_.fans.count; ++index)
            row += " [" + std::to_string(index + 1) + " " +
                   fanText(board_.devices.climate.fan[index]) + "]";
        return row + "\n";
    }

    /** What the sensor and the calendar clock tell. */
    std::string climate() const {
        uint8_t degrees = 0;
        const bool isSensed = climateSense(board_.devices.climate, &degrees);
        const std::string warmth =
            isSensed ? std::to_string(static_cast<int8_t>(degrees)) + " C" : "no sensor";
        const ClockChip &chip = board_.devices.clockChip;
        return "board   " + warmth +
               (chip.isFitted != 0 ? ", calendar " + clockTimeText(clockTime(chip)) : "") + "\n";
    }

    std::string supplyText(const Supply &supply) const {
        if (supply.isPresent == 0)
            return "not plugged";
        if (supply.pmbus.hasInputFailed != 0)
            return coloured("no input", kRed);
        if (supply.pmbus.hasOutputFailed != 0)
            return coloured("output failed", kRed);
        const std::string watts = std::to_string(supply.pmbus.outputMw / 1000) + " W";
        return coloured("good", kGreen) + (supply.eeprom.blocks != 0 ? ", " + watts : "");
    }

    std::string supplies() const {
        if (model_.supplies.count == 0)
            return "";
        std::string row = "supplies";
        for (uint32_t index = 0; index < model_.supplies.count; ++index)
            row += " [" + std::to_string(index + 1) + " " +
                   supplyText(board_.devices.supply[index]) + "]";
        return row + "\n";
    }

    /** Programs cannot tell from such a line who it speaks of. */
    std::string sharedLines() const {
        if (!model_.haveSharedPresenceLines())
            return "";
        std::string row = "presence";
        for (uint32_t supply = 1; supply <= model_.supplies.count; ++supply) {
            const bool level = cpldLevel(board_.devices.cpld, nthLine(kSupplyPresence, supply));
            row += " [fans " + std::to_string(2 * supply - 1) + ", " + std::to_string(2 * supply) +
                   " and supply " + std::to_string(supply) + ": " + (level ? "1" : "0") + "]";
        }
        return row + ", one line each\n";
    }

    std::string lamps() const {
        const Cpld &cpld = board_.devices.cpld;
        return "lamps   system " + std::to_string(fieldOf(cpld.reg[kCpldLamps], kSystemLamp)) +
               ", 4 " + (cpldLevel(cpld, kLamp4) ? "1" : "0") + ", 5 " +
               (cpldLevel(cpld, kLamp5) ? "1" : "0") + "\n";
    }

    std::string poeLine() const {
        const PoeController &poe = board_.devices.poe;
        const uint32_t budget = poeKindOf(poe).budget(poe).powerMw;
        return "PoE     " + std::to_string(poeTotalDrawn(poe) / 1000) + " of " +
               std::to_string(budget / 1000) + " W\n";
    }

    const Board &board_;
    const Model &model_;
    uint64_t nowNs_;
    bool hasColour_;
};

} // namespace

std::string panelText(const Board &board, uint64_t nowNs, bool hasColour) {
    const Model *model = findModel(board.header.devId);
    if (model == nullptr)
        throw Refused("the board is of no known model; create it again");
    return Panel(board, *model, nowNs, hasColour).text();
}

} // namespace vb
