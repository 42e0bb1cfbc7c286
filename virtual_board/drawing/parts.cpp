// What the parts of a panel are, and what is said of each.

#include "virtual_board/drawing/panel.h"

#include "language/numbers.h"

#include <algorithm>
#include <functional>

namespace vboard::drawing {

const std::vector<std::string> kMoreReadings = {"*.bus"};

namespace {

constexpr uint32_t kMilli = 1000;

/** What a board tells, by name. */
class Board {
  public:
    explicit Board(const Readings &readings) : readings_(readings) {}

    bool has(const std::string &name) const { return readings_.contains(name); }
    std::string text(const std::string &name) const {
        const auto place = readings_.find(name);
        return place == readings_.end() ? "" : place->second;
    }
    bool is(const std::string &name, const std::string &value) const { return text(name) == value; }
    uint32_t number(const std::string &name) const {
        return language::readNumber<uint32_t>(text(name), 0, UINT32_MAX).value_or(0);
    }

  private:
    const Readings &readings_;
};

std::string numbered(const char *what, uint32_t number) {
    return what + std::to_string(number);
}

/** "15.4 W" */
std::string wattsText(uint32_t milliwatts) {
    constexpr uint32_t kTenth = 100;
    const uint32_t tenths = (milliwatts + kTenth / 2) / kTenth;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " W";
}

/** A time without digits that nobody can follow: "12.5 s" */
std::string secondsText(const std::string &seconds) {
    const size_t point = seconds.find('.');
    return seconds.substr(0, point == std::string::npos ? point : point + 2) + " s";
}

// Ports

struct PhaseWords {
    const char *state;
    const char *text; // on the port
    const char *sentence;
};

constexpr PhaseWords kPhases[] = {
    {"disabled", "off", "PoE is off"},
    {"idle", "", "nothing asks for power"},
    {"detecting", "...", "looks for a device"},
    {"classifying", "...", "asks a device for its class"},
    {"held", "found", "has found a device and waits"},
    {"powering-up", "...", "powers up a device"},
    {"denied", "denied", "is denied power: there is not enough"},
    {"fault", "fault", "has a fault"},
};

/** " of class 4"; empty where nothing is known of a device. */
std::string classText(const std::string &device) {
    constexpr char kClass[] = "class=";
    const size_t place = device.find(kClass);
    if (place == std::string::npos)
        return "";
    const size_t from = place + sizeof(kClass) - 1;
    return " of class " + device.substr(from, device.find(' ', from) - from);
}

Part poePort(const Board &board, uint32_t port) {
    const std::string name = numbered("poe.", port);
    const std::string state = board.text(name + ".state");
    const std::string device = board.text(name + ".device");
    const bool isPlugged = device != "none";
    Part part = {numbered("port.", port), "port",
                 state + (isPlugged ? " plugged" : "") +
                     (board.is(name + ".lamp", "lit") ? " lit" : ""),
                 "", numbered("Port ", port) + ": "};
    if (state == "delivering") {
        part.text = wattsText(board.number(name + ".power"));
        part.label += "delivers " + part.text + " to a device" + classText(device);
    } else {
        const auto *words = std::find_if(std::begin(kPhases), std::end(kPhases),
                                         [&](const PhaseWords &row) { return state == row.state; });
        part.text = words != std::end(kPhases) ? words->text : state;
        part.label += (words != std::end(kPhases) ? words->sentence : state) +
                      (isPlugged ? ", with a device" + classText(device) + " plugged" : "");
    }
    part.label += board.is(name + ".lamp", "lit") ? ", LED lit" : "";
    part.properties = {name + ".*"};
    part.bus = "poe";
    return part;
}

Part copperPort(const Board &board, uint32_t port) {
    if (board.has(numbered("poe.", port) + ".state"))
        return poePort(board, port);
    return {numbered("port.", port), "port", "plain", "",
            numbered("Port ", port) + ": copper, without PoE"};
}

// Cages

struct SignalWords {
    const char *signal;
    const char *sentence;
};

constexpr SignalWords kSignals[] = {{"good", "signal arrives"},
                                    {"lost", "no signal arrives"},
                                    {"off", "its transmitter is switched off"},
                                    {"tx-fault", "its transmitter has a fault"}};

Part cage(const Board &board, uint32_t port, bool isUplink) {
    const std::string name = numbered("sfp.", port);
    const std::string module = board.text(name + ".module");
    const std::string signal = board.text(name + ".signal");
    Part part = {name, "sfp", module == "none" ? "empty" : signal,
                 module == "none"           ? ""
                 : module == "bad-checksum" ? "bad sum"
                                            : module.substr(0, module.find('-')),
                 (isUplink ? "Uplink " : "SFP port ") + std::to_string(port) + ": "};
    if (module == "none") {
        part.label += "empty";
    } else {
        const auto *words =
            std::find_if(std::begin(kSignals), std::end(kSignals),
                         [&](const SignalWords &row) { return signal == row.signal; });
        part.label +=
            "module " + module + ", " + (words != std::end(kSignals) ? words->sentence : signal);
        if (board.number(name + ".rx-power") != 0)
            part.label += ", " + board.text(name + ".rx-power") + " uW of light";
    }
    part.properties = {name + ".*"};
    part.bus = board.text(name + ".bus");
    return part;
}

// What is seen from behind

Part fan(const Board &board, uint32_t number) {
    const std::string name = numbered("fan.", number);
    const bool isPresent = board.is(name + ".present", "yes");
    const std::string state = board.text(name + ".state");
    const std::string speed = board.text(name + ".speed") + " rpm";
    const std::string words = state == "good" ? speed : state + ", " + speed;
    const std::string seen = state == "failing" || state == "held" ? state : speed;
    Part part = {name, "fan", isPresent ? state : "absent", isPresent ? seen : "not plugged",
                 numbered("Fan ", number) + ": " + (isPresent ? words : "not plugged")};
    part.properties = {name + ".*"};
    part.rpm = board.number(name + ".speed");
    return part;
}

Part supply(const Board &board, uint32_t number) {
    const std::string name = numbered("supply.", number);
    std::string look = "good", text = "good";
    if (board.is(name + ".present", "no")) {
        look = "absent";
        text = "not plugged";
    } else if (board.is(name + ".input", "failed")) {
        look = "failed";
        text = "no input";
    } else if (board.is(name + ".output", "failed")) {
        look = "failed";
        text = "no output";
    } else if (board.has(name + ".output-power")) {
        text = wattsText(board.number(name + ".output-power"));
    }
    Part part = {name, "supply", look, text,
                 numbered("Supply ", number) + ": " +
                     (look == "good" && text != "good" ? "good, gives " + text : text)};
    part.properties = {name + ".*", numbered("eeprom.supply", number)};
    part.bus = board.text(name + ".bus");
    return part;
}

// Lamps, and what is measured and counted

Part lamp(const Board &board, const std::string &name, const std::string &label) {
    const std::string state = board.text(name);
    return {name, "lamp", state, "", label + ": " + state, {name}};
}

Part systemLamp(const Board &board) {
    const std::string state = board.text("lamp.system");
    return {"lamp.system",
            "lamp",
            state == "0" ? "dark" : "lit field-" + state,
            state,
            "System lamp: its register holds " + state,
            {"lamp.system"}};
}

Part temperature(const Board &board) {
    const std::string sensed = board.text("temperature.sensor");
    const bool isSensed = sensed != "none";
    const std::string state = board.text("temperature.state");
    const std::string stuck = state == "stuck" ? ", stuck" : "";
    Part part = {"temperature", "gauge", state,
                 isSensed ? sensed + " °C" + (stuck.empty() ? "" : ", stuck") : "no sensor",
                 "Temperature: " +
                     (isSensed ? sensed + " °C" + stuck : std::string("no sensor answers"))};
    part.properties = {"temperature.*"};
    part.bus = board.text("temperature.bus");
    return part;
}

/** How many tenths of the budget are drawn, as a word of the style. */
std::string shareWord(uint32_t drawn, uint32_t budget) {
    constexpr uint64_t kWhole = 10;
    const uint64_t share =
        budget == 0 ? (drawn == 0 ? 0 : kWhole) : (drawn * kWhole + budget - 1) / budget;
    return "tenths-" + std::to_string(std::min(share, kWhole)) +
           (drawn > budget ? " overdrawn" : "");
}

Part poe(const Board &board) {
    const uint32_t drawn = board.number("poe.drawn"), budget = board.number("poe.budget");
    const std::string controller = board.text("poe.controller");
    const std::string text =
        std::to_string(drawn / kMilli) + " of " + std::to_string(budget / kMilli) + " W";
    Part part = {"poe", "gauge", shareWord(drawn, budget),
                 controller == "application" ? text : controller,
                 "PoE power: " + text + " drawn, the controller " +
                     (controller == "missing" ? "is missing" : "runs: " + controller)};
    part.properties = {"poe.controller", "poe.budget", "poe.drawn"};
    part.bus = "poe";
    return part;
}

Part watchdog(const Board &board) {
    const std::string expires = board.text("watchdog.expires");
    const bool isOff = expires == "off";
    Part part = {"watchdog", "clock", isOff ? "off" : "armed", isOff ? "off" : secondsText(expires),
                 isOff ? "Watchdog: off" : "Watchdog: resets the board in " + secondsText(expires)};
    part.properties = {"watchdog.*", "reset.*"};
    return part;
}

Part calendar(const Board &board) {
    const std::string time = board.text("rtc.time");
    const std::string battery = board.text("rtc.battery");
    Part part = {"calendar", "clock", battery, time,
                 "Calendar: " + time + (battery == "empty" ? ", its battery is empty" : "")};
    part.properties = {"rtc.*"};
    part.bus = board.text("rtc.bus");
    return part;
}

Part clock(const Board &board) {
    const std::string pace = board.text("time"), time = secondsText(board.text("clock"));
    Part part = {"clock", "clock",
                 pace == "real" || pace == "virtual" || pace == "stepped" ? pace : "fast",
                 time + ", " + pace, "Board's clock: " + time + ", " + pace};
    part.properties = {"clock", "time", "system-clock"};
    return part;
}

} // namespace

std::vector<Part> partsOf(const Readings &readings) {
    const Board board(readings);
    const uint32_t cages = board.number("ports.sfp"), copper = board.number("ports.copper");
    const uint32_t uplinks = board.number("ports.uplinks");
    std::vector<Part> parts;
    for (uint32_t port = 1; port <= cages; ++port)
        parts.push_back(cage(board, port, false));
    for (uint32_t port = cages + 1; port <= cages + copper; ++port)
        parts.push_back(copperPort(board, port));
    for (uint32_t port = cages + copper + 1; port <= cages + copper + uplinks; ++port)
        parts.push_back(cage(board, port, true));
    parts.push_back(systemLamp(board));
    parts.push_back(lamp(board, "lamp.4", "Lamp 4"));
    parts.push_back(lamp(board, "lamp.5", "Lamp 5"));
    parts.push_back(temperature(board));
    if (board.has("poe.controller"))
        parts.push_back(poe(board));
    parts.push_back(watchdog(board));
    if (board.has("rtc.time"))
        parts.push_back(calendar(board));
    parts.push_back(clock(board));
    for (uint32_t number = 1; board.has(numbered("fan.", number) + ".state"); ++number)
        parts.push_back(fan(board, number));
    for (uint32_t number = 1; board.has(numbered("supply.", number) + ".present"); ++number)
        parts.push_back(supply(board, number));
    return parts;
}

} // namespace vboard::drawing
