// What the factory, the boot loader and time gave the board as properties.

#include "language/digits.h"
#include "virtual_board/board/clock_change.h"
#include "virtual_board/board/create.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/pace_text.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

// Model and time

Value getModel(const Target &target) {
    return hex16Text(target.board().header.devId);
}

template <uint8_t Model::*count>
Value getPorts(const Target &target) {
    return target.model().*count;
}

Value getTime(const Target &target) {
    return paceText(target.board().clock.pace);
}

void setTime(const Target &target, const Value &value) {
    const Pace pace = parsePace(value.text());
    target.deeds->push_back({[&folder = target.folder, pace] {
                                 ClockChange clock(folder);
                                 setPace(*clock, pace, hostTime());
                             },
                             {}});
}

Value getClock(const Target &target) {
    return secondsText(target.now());
}

Value getSystemClock(const Target &target) {
    const int64_t offset = target.board().clock.systemOffsetNs;
    return offset == 0 ? "host" : std::to_string(offset / 1000000000) + " s off the host's";
}

// The kernel's command line

std::string readCommandLine(const BoardFolder &folder) {
    constexpr size_t kMost = 4096; // as much as kernels have
    std::ifstream file(folder.hostPath(kCommandLinePath).text);
    std::string line(kMost, '\0');
    file.read(line.data(), kMost);
    line.resize(static_cast<size_t>(file.gcount()));
    return line.substr(0, line.find('\n'));
}

void writeCommandLine(const BoardFolder &folder, const std::string &line) {
    // A program that reads it meanwhile sees the old line or the new one.
    const std::string written = folder.ownFile("cmdline.new").text;
    std::ofstream file(written);
    file << line << '\n';
    file.close();
    folder.giveToOwner(written.c_str());
    std::error_code failure;
    if (file.fail())
        failure.assign(errno, std::generic_category());
    else
        std::filesystem::rename(written, folder.hostPath(kCommandLinePath).text, failure);
    if (!failure)
        return;
    std::error_code ignored;
    std::filesystem::remove(written, ignored);
    throw Refused("cannot write the command line: " + failure.message());
}

Value getCommandLine(const Target &target) {
    return readCommandLine(target.folder);
}

void setCommandLine(const Target &target, const Value &value) {
    const std::string &line = value.text();
    if (const std::string problem = commandLineProblem(line); !problem.empty())
        throw Refused(problem);
    const BoardFolder &folder = target.folder;
    target.deeds->push_back(
        {[&folder, line] { writeCommandLine(folder, line); },
         [&folder, old = readCommandLine(folder)] { writeCommandLine(folder, old); }});
}

// The factory's record

/** A field's text, with what is not printable as \xNN. */
Value getSerial(const Target &target) {
    const uint8_t *serial = factorySerial(target.devices().eeprom);
    std::string text;
    for (uint32_t i = 0; i < kFactorySerialSize && serial[i] != 0; ++i) {
        const bool isPlain = serial[i] >= ' ' && serial[i] <= '~' && serial[i] != '\\';
        text += isPlain ? std::string(1, static_cast<char>(serial[i]))
                        : "\\x" + language::hexText({serial + i, 1});
    }
    return text;
}

constexpr size_t kShownByteLength = 4; // "\xff"

/** The byte that is shown by its digits at the beginning of a text; 0 when there is none. */
uint8_t shownByte(const std::string &text) {
    uint8_t byte = 0;
    const bool isShown = text.size() == kShownByteLength && text.starts_with("\\x") &&
                         language::readDigits(std::string_view(text).substr(2), 16, byte);
    return isShown ? byte : 0;
}

/** A serial number from how it is shown: what cannot be typed can be set again. */
std::string serialOf(const std::string &shown) {
    std::string serial;
    std::string typed; // with a letter for each byte that is shown by its digits
    for (size_t i = 0; i < shown.size();) {
        const uint8_t byte = shownByte(shown.substr(i, kShownByteLength));
        serial += byte != 0 ? static_cast<char>(byte) : shown[i];
        typed += byte != 0 ? 'x' : shown[i];
        i += byte != 0 ? kShownByteLength : 1;
    }
    if (const std::string problem = serialProblem(typed); !problem.empty())
        throw Refused(problem);
    return serial;
}

void setSerial(const Target &target, const Value &value) {
    setFactorySerial(target.devices().eeprom, serialOf(value.text()).c_str());
}

Value getMac(const Target &target) {
    return macText({factoryMac(target.devices().eeprom), kFactoryMacSize});
}

void setMac(const Target &target, const Value &value) {
    const language::Mac bytes = language::parseMac(value.text());
    uint8_t mac[kFactoryMacSize];
    std::memcpy(mac, bytes.data(), sizeof(mac));
    setFactoryMac(target.devices().eeprom, mac);
}

constexpr Binding kBoardBindings[] = {
    bind("model", getModel),
    bind("ports.copper", getPorts<&Model::copperPorts>),
    bind("ports.sfp", getPorts<&Model::sfpPorts>),
    bind("ports.uplinks", getPorts<&Model::uplinks>),
    bind("time", getTime, setTime),
    bind("clock", getClock),
    bind("system-clock", getSystemClock),
    bind("cmdline", getCommandLine, setCommandLine),
    bind("identity.serial", getSerial, setSerial),
    bind("identity.mac", getMac, setMac),
};

} // namespace

std::span<const Binding> boardBindings() {
    return kBoardBindings;
}

} // namespace vb
