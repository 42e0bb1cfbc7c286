#include "tests/virtual_board/state_uses.h"

#include "bsp.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// Commands

void printTrace(const std::string &board, bool asJson, uint32_t last, bool isClearing = false) {
    vboard::TraceArguments arguments;
    arguments.folder = board;
    arguments.asJson = asJson;
    arguments.last = last;
    arguments.isClearing = isClearing;
    vboard::printTrace(arguments);
}

/** Asks for a property by its name, and sets it to what it holds. */
void useProperty(const vb::BoardFolder &folder, const std::string &name) {
    try {
        vb::setProperty(folder, name, vb::property(folder, name));
    } catch (const vb::Refused &) { // can only be read, or is too much to be shown
    }
}

void useProperties(const std::string &board, Random &random) {
    vb::BoardFolder folder;
    vb::FolderError error = {};
    if (!folder.open(board.c_str(), error))
        throw vb::Refused(error.text);
    const vb::BoardLock lock(folder);
    const std::vector<vb::Property> all = vb::properties(folder);
    for (int i = 0; i < 20; ++i)
        useProperty(folder, all[below(random, all.size())].name);
    for (const char *name :
         {"eeprom.board@1020+4", "eeprom.supply2@255+1", "sfp.49.id@200+56", "sfp.50.diagnostics",
          "flash.12.content@0x27FFF00+256", "mdio.31.31", "poe.48.device"})
        useProperty(folder, name);
}

void changeWorld(const std::string &board, Random &random) {
    constexpr const char *kChanges[][2] = {
        {"time", "real"},
        {"time", "virtual"},
        {"cmdline", "quiet"},
        {"identity.serial", "SN42"},
        {"identity.mac", "02:00:00:00:00:09"},
        {"cpld.4", "0xFF"},
        {"cpld.63", "0xFFFF"},
        {"gpio.31", "1"},
        {"eeprom.board@1023", "ff"},
        {"eeprom.supply1@255", "00"},
        {"supply.2.present", "no"},
        {"supply.1.output", "failed"},
        {"supply.1.output-power", "4000000"},
        {"supply.2.temperature3", "-40"},
        {"supply.1.busy-every", "1"},
        {"supply.1.line.status2", "1"},
        {"poe.controller", "missing"},
        {"poe.48.device", "class=8 requests=200000 draws=90000"},
        {"poe.1.device", "class=0 signature=short over-current"},
        {"power", "cycle"},
        {"fan.2.state", "stuck"},
        {"fan.1.present", "no"},
        {"temperature.ambient", "85"},
        {"temperature.state", "missing"},
        {"rtc.time", "2059-12-31 23:59:59"},
        {"rtc.battery", "empty"},
        {"sfp.50.module", "lr"},
        {"sfp.49.rx-power", "6553"},
        {"sfp.49.state", "tx-fault"},
        {"sfp.49.link", "down"},
        {"sfp.49.diagnostics@110", "40"},
        {"mdio.state", "stuck"},
        {"mdio.busy-polls", "3"},
        {"mdio.31.31", "0xFFFF"},
        {"flash.12.bad-blocks", "0,319"},
        {"flash.0.write-protected", "yes"},
        {"flash.4.content@262143", "00"},
        {"console.speed", "9600"},
    };
    for (int i = 0; i < 4; ++i) {
        const auto &[name, value] = kChanges[below(random, std::size(kChanges))];
        try {
            vboard::setProperties(board, {{name, value}});
        } catch (const vb::Refused &) { // models do not have everything
        }
    }
}

void addFaults(const std::string &board, Random &) {
    vboard::FaultWords words;
    words.device = "/tmp/bsp/x";
    words.op = "read";
    words.effect = "short=1";
    vboard::addFault(board, words);
    words.device = "i2c:16.0.0x20";
    words.op = "any";
    words.effect = "corrupt=11:0x80";
    vboard::addFault(board, words);
}

void clearFaults(const std::string &board, Random &) {
    try {
        vboard::clearFaults(board, {"1", "3"});
    } catch (const vb::Refused &) { // another has been cleared, or overwritten
    }
    vboard::clearFaults(board, {});
    vboard::listFaults(board, true);
}

// Requests of programs

/** Attached to a board as a program is that runs on it. */
class OnBoard {
  public:
    explicit OnBoard(const std::string &board) {
        vb::FolderError error = {};
        if (!vb::attachBoard(board.c_str(), error))
            throw vb::Refused(error.text);
    }
    OnBoard(const OnBoard &) = delete;
    OnBoard &operator=(const OnBoard &) = delete;
    ~OnBoard() { vb::detachBoard(); }
};

bool isTimeVirtual() {
    return vb::attachedFolder()->board()->clock.pace.mode == vb::TimeMode::Virtual;
}

/** Lets time pass, which on a board of real time would be the test's own. */
void rest(uint32_t us) {
    usleep(isTimeVirtual() ? us : 1);
}

/** A descriptor that is closed again. */
class OpenFile {
  public:
    OpenFile(const char *path, int flags) : fd_(open(path, flags | O_CLOEXEC, 0644)) {}
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    ~OpenFile() {
        if (fd_ >= 0)
            close(fd_);
    }
    int fd() const { return fd_; }

  private:
    int fd_;
};

void askRegisters(const std::string &board, Random &random) {
    const OnBoard attached(board);
    for (int i = 0; i < 20; ++i) {
        const uint32_t reg = below(random, 70);
        const uint32_t line = below(random, 34);
        uint16_t content = 0;
        uint32_t level = 0;
        bspCpldGet(reg, &content);
        bspCpldSet(reg, below(random, 0x10000));
        bspGpioDirectionOutput(line, static_cast<int32_t>(below(random, 2)));
        bspGpioGetValue(line, &level);
        bspGpioDirectionInput(line);
        rest(1 + below(random, 1000));
    }
}

void askDevices(const std::string &board, Random &random) {
    constexpr uint32_t kPlaces[][3] = {{0, 0, 0x50}, {0, 0, 0x53}, {0, 2, 0x50}, {0, 3, 0x58},
                                       {0, 1, 0x4F}, {0, 1, 0x51}, {1, 0, 0x50}, {1, 1, 0x51},
                                       {1, 2, 0x56}, {1, 8, 0x51}, {1, 31, 0x51}};
    const OnBoard attached(board);
    uint8_t data[64] = {};
    for (int i = 0; i < 30; ++i) {
        const auto &[bus, channel, device] = kPlaces[below(random, std::size(kPlaces))];
        const uint32_t offset = below(random, 256);
        bspI2cRead(bus, channel, device, offset, 1, data,
                   static_cast<int32_t>(1 + below(random, sizeof(data))));
        if (below(random, 4) == 0)
            bspI2cWrite(bus, channel, device, offset, 1, data,
                        static_cast<int32_t>(1 + below(random, 16)));
    }
}

/** Sends frames to the PoE controller and takes its answers. */
void askPoe(const std::string &board, Random &random) {
    constexpr uint32_t kFrame = 12;
    constexpr uint32_t kBus = 16, kDevice = 0x20;
    const OnBoard attached(board);
    for (int i = 0; i < 40; ++i) {
        uint8_t frame[kFrame];
        for (uint8_t &byte : frame)
            byte = static_cast<uint8_t>(below(random, 4) == 0 ? random() : below(random, 3));
        constexpr uint8_t kOthers[] = {0xC0, 0xF0, 0xF1};
        const uint32_t code = below(random, 0x54);
        frame[0] = static_cast<uint8_t>(code <= 0x50 ? code : kOthers[code - 0x51]);
        uint32_t sum = 0;
        for (uint32_t at = 0; at + 1 < kFrame; ++at)
            sum += frame[at];
        frame[kFrame - 1] = static_cast<uint8_t>(sum);
        bspI2cWrite(kBus, 0, kDevice, 0, 0, frame, kFrame);
        rest(5000 + below(random, 2) * 1000);
        bspI2cRead(kBus, 0, kDevice, 0, 0, frame, kFrame);
    }
    rest(below(random, 3) * 1000000);
}

void askFlash(const std::string &board, Random &random) {
    constexpr const char *kNodes[] = {"/dev/mtd0", "/dev/mtd4", "/dev/mtd12", "/dev/mtd14"};
    const OnBoard attached(board);
    const OpenFile node(kNodes[below(random, 4)], O_RDWR);
    mtd_info_user info = {};
    ioctl(node.fd(), MEMGETINFO, &info);
    uint8_t data[4096] = {};
    for (int i = 0; i < 6; ++i) {
        const auto offset = static_cast<off_t>(uint64_t{below(random, 330)} * 131072);
        long long block = offset;
        erase_info_user range = {static_cast<uint32_t>(offset), 131072};
        mtd_ecc_stats statistics = {};
        ioctl(node.fd(), MEMGETBADBLOCK, &block);
        ioctl(node.fd(), MEMERASE, &range);
        (void)!pwrite(node.fd(), data, 2048u << below(random, 2), offset);
        const auto before = static_cast<off_t>(below(random, 100));
        (void)!pread(node.fd(), data, sizeof(data), offset - before);
        ioctl(node.fd(), MEMSETBADBLOCK, &block);
        ioctl(node.fd(), ECCGETSTATS, &statistics);
    }
}

void useFiles(const std::string &board, Random &random) {
    const OnBoard attached(board);
    for (const char *path : {"/tmp/bsp/x", "/tmp/bsp/devId", "/proc/cmdline"}) {
        const OpenFile file(path, O_RDWR | O_CREAT);
        char data[64] = "content";
        (void)!write(file.fd(), data, 1 + below(random, sizeof(data)));
        lseek(file.fd(), 0, SEEK_SET);
        (void)!read(file.fd(), data, sizeof(data));
    }
    unlink("/tmp/bsp/x");
}

void askMdio(const std::string &board, Random &random) {
    const OnBoard attached(board);
    if (!isTimeVirtual())
        return; // the library waits for a stuck controller long
    uint32_t value = 0;
    bsp_smi_read(0, below(random, 32), 0, below(random, 32), &value);
    bsp_smi_write(0, below(random, 32), 0, below(random, 32), below(random, 0x10000));
}

void askTime(const std::string &board, Random &random) {
    const OnBoard attached(board);
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    time(nullptr);
    if (below(random, 2) == 0) {
        now.tv_sec += 86400;
        clock_settime(CLOCK_REALTIME, &now);
    }
}

using Folder = const std::string &;

const std::vector<StateUse> kUses = {
    {"get", [](Folder board, Random &) { vboard::getProperties(board, {}, false); }},
    {"get --json", [](Folder board, Random &) { vboard::getProperties(board, {}, true); }},
    {"get and set of names", useProperties},
    {"set", changeWorld},
    {"fault list",
     [](Folder board, Random &random) { vboard::listFaults(board, below(random, 2) == 0); }},
    {"fault add", addFaults},
    {"fault clear", clearFaults},
    {"trace", [](Folder board, Random &) { printTrace(board, false, 100); }},
    {"trace --json", [](Folder board, Random &) { printTrace(board, true, 100); }},
    {"trace --clear",
     [](Folder board, Random &random) { printTrace(board, below(random, 2) == 0, 300, true); }},
    {"panel", [](Folder board, Random &) { vboard::printPanel(board, false, 1); }},
    {"flash", [](Folder board, Random &) { vboard::showFlash(board, false); }},
    {"flash --json", [](Folder board, Random &) { vboard::showFlash(board, true); }},
    {"flash mark-bad", [](Folder board, Random &) { vboard::markBadBlock(board, "14", "319"); }},
    {"console",
     [](Folder board, Random &random) { vboard::showConsole(board, below(random, 2) == 0); }},
    {"registers and lines", askRegisters},
    {"devices of the buses", askDevices},
    {"the PoE controller", askPoe},
    {"flash partitions", askFlash},
    {"files", useFiles},
    {"MDIO", askMdio},
    {"the system clock", askTime},
};

} // namespace

const std::vector<StateUse> &stateUses() {
    return kUses;
}

void silence() {
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        _exit(EXIT_FAILURE);
    stderr = std::fopen("/dev/null", "w");
}
