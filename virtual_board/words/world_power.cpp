// Power on and off, watchdog and reset, and the PTP line, as properties.

#include "virtual_board/board/circuits.h"
#include "virtual_board/board/clock_change.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/values.h"

#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

Value getWatchdog(const Target &target) {
    const uint64_t expiry =
        watchdogExpiry(target.devices().watchdog, target.devices().cpld.reg[kCpldWatchdog]);
    return expiry == UINT64_MAX ? "off" : secondsText(expiry - target.now());
}

Value getResets(const Target &target) {
    return target.devices().resets;
}

Value getReason(const Target &target) {
    return static_cast<uint32_t>(target.devices().lastReset);
}

Value getPower(const Target &) {
    return "on";
}

/** Empties a folder but for one in it. Positions in folders have 64 bits everywhere. */
void emptyFolder(const std::string &path, const std::string &kept) {
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(opendir(path.c_str()), closedir);
    if (folder == nullptr)
        return;
    while (const dirent64 *entry = readdir64(folder.get())) {
        const std::string name = entry->d_name;
        std::string file = path;
        file.append("/").append(name);
        const bool isFolder = name != "." && name != ".." && unlink(file.c_str()) != 0;
        if (isFolder) {
            emptyFolder(file, kept);
            if (file != kept)
                rmdir(file.c_str());
        }
    }
}

/** What is in main memory does not outlive the power. */
void emptyMemory(const BoardFolder &board) {
    const std::string shared = board.hostPath(kSharedFolderPath).text;
    emptyFolder(shared.substr(0, shared.rfind('/')), shared); // programs may be in it
    if (mkdir(shared.c_str(), 0755) == 0) {
        chmod(shared.c_str(), 0755); // whatever the umask is
        board.giveToOwner(shared.c_str());
    }
}

/** The files in /tmp and the system clock are in main memory. */
void setPower(const Target &target, const Value &) {
    const BoardFolder &folder = target.folder;
    target.deeds->push_back({[&folder] {
                                 emptyMemory(folder);
                                 ClockChange clock(folder);
                                 setSystemOffset(*clock, 0);
                             },
                             {}});
    resetBoard(target.board(), ResetReason::PowerOn, target.now());
}

Value getPulses(const Target &target) {
    return target.devices().ptpPulses;
}

constexpr Binding kPowerBindings[] = {
    bind("watchdog.expires", getWatchdog), bind("reset.count", getResets),
    bind("reset.reason", getReason),       bind("power", getPower, setPower),
    bind("ptp.pulses", getPulses),
};
static_assert(hasWordsUpTo("reset.reason", ResetReason::Watchdog));

} // namespace

std::span<const Binding> powerBindings() {
    return kPowerBindings;
}

} // namespace vb
