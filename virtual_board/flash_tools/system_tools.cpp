// stty on the board's console, and rm on the board's files. Everything else that these tools can do
// is the system's.

#include "virtual_board/devices/console.h"
#include "virtual_board/flash_tools/tools.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/words/values.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>

namespace flash_tools {

namespace {

int refuseSetting(const char *reason, const std::string &word) {
    std::fprintf(stderr, "stty: %s '%s'\nTry 'stty --help' for more information.\n", reason,
                 word.c_str());
    return kFailed;
}

/** A rate that the console has. */
std::optional<uint32_t> parseSpeed(const std::string &text) {
    const auto speed = vb::parseNumber(text, UINT32_MAX);
    return speed.has_value() && vb::isConsoleSpeed(*speed) ? speed : std::nullopt;
}

/** The errno with which it fails, or 0. */
int setSpeed(uint32_t speed) {
    const vb::BoardFolder &folder = *vb::attachedFolder();
    const vb::BoardLock lock(folder);
    vb::Board &board = *folder.board();
    vb::TraceRecord &trace =
        vb::traceNext(board.trace, vb::TraceKind::Console, vb::thisSender(board));
    trace.value = speed;
    const vb::FaultRule *fault =
        vb::faultFor(board.faults, {vb::FaultDevice::Console, vb::FaultOp::Write});
    if (fault != nullptr && fault->effect == vb::FaultEffect::Fails)
        trace.error = fault->argument;
    else
        board.devices.console.speed = speed;
    return trace.error;
}

/** Settings of the console. All are looked at before the first one is made. */
int setConsole(const Arguments &settings) {
    std::optional<uint32_t> speed;
    for (size_t i = 0; i < settings.size(); ++i) {
        const std::string &word = settings[i];
        const bool isSpeed = word == "ispeed" || word == "ospeed";
        if (isSpeed && i + 1 == settings.size())
            return refuseSetting("missing argument to", word);
        const auto number = parseSpeed(isSpeed ? settings[i + 1] : word);
        if (isSpeed && !number.has_value())
            return refuseSetting(word == "ispeed" ? "invalid ispeed" : "invalid ospeed",
                                 settings[i + 1]);
        if (number.has_value())
            speed = number;
        else if (word != "cs8")
            return refuseSetting("invalid argument", word);
        i += isSpeed ? 1 : 0;
    }
    if (const int error = speed.has_value() ? setSpeed(*speed) : 0; error != 0) {
        std::fprintf(stderr, "stty: %s: %s\n", vb::kConsolePath, std::strerror(error));
        return kFailed;
    }
    if (settings.empty())
        std::printf("speed %u baud; line = 0;\n",
                    vb::attachedFolder()->board()->devices.console.speed);
    return kDone;
}

/** Whether the programs that this one starts are on the board without its help. */
bool isSeamPreloaded() {
    const char *list = std::getenv(vb::kPreloadVariable);
    return list != nullptr && std::strstr(list, vb::kSeamLibrary) != nullptr;
}

} // namespace

int setTerminal(const Arguments &arguments) {
    constexpr char kLong[] = "--file=";
    std::string device;
    Arguments settings;
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string &word = arguments[i];
        if (word == "-F" && i + 1 < arguments.size())
            device = arguments[++i];
        else if (word.starts_with("-F"))
            device = word.substr(2);
        else if (word.starts_with(kLong))
            device = word.substr(std::strlen(kLong));
        else
            settings.push_back(word);
    }
    return device == vb::kConsolePath ? setConsole(settings) : runSystemTool(arguments);
}

int removeFiles(const Arguments &arguments) {
    if (isSeamPreloaded())
        return runSystemTool(arguments); // which is on the board by itself
    Arguments mapped = {arguments[0]};
    int status = kDone;
    bool areOptions = true;
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string &word = arguments[i];
        const vb::HostPath target(word.c_str(), vb::LastLink::Kept);
        const bool isOption = areOptions && word.size() > 1 && word[0] == '-';
        const int error = target.isOfKernel() ? EPERM : target.error();
        areOptions = areOptions && word != "--";
        if (isOption || error == 0) {
            mapped.emplace_back(isOption ? word : target.get());
            continue;
        }
        std::fprintf(stderr, "rm: cannot remove '%s': %s\n", word.c_str(), std::strerror(error));
        status = kFailed;
    }
    // What nobody could tell the place of must not be looked for on the host.
    return status == kDone ? runSystemTool(mapped) : status;
}

} // namespace flash_tools
