// iodbg's commands that read, for people and in JSON, on boards whose chips and flash hold
// anything. A command answers, or says why it cannot; JSON that could not be written is neither.

#include "bsp.h"
#include "fuzz/board.h"
#include "iodbg/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "language/formats/boot_settings.h"
#include "language/formats/os_image.h"
#include "language/formats/product_record.h"
#include "tests/support/host_clock.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/os/seam.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

using fuzz::FactoryBoard;
using fuzz::Input;
using Words = std::vector<const char *>;

const Words kCommands[] = {
    {"show"},
    {"check"},
    {"identity", "get"},
    {"eeprom", "dump"},
    {"eeprom", "dump", "--device", "supply1"},
    {"power"},
    {"fan", "get"},
    {"temperature"},
    {"clock", "get"},
    {"led", "get"},
    {"watchdog", "get"},
    {"cpld", "get", "1", "40"},
    {"sfp", "list"},
    {"sfp", "show", "49"},
    {"sfp", "dump", "49"},
    {"mtd", "read", "mtd4", "/dev/null"},
    {"boot", "get", "--show-password"},
    {"image", "info"},
    {"poe", "status"},
    {"poe", "info"},
    {"poe", "port", "3"},
};

constexpr uint32_t kCage = 49;
constexpr uint32_t kSettings = 1, kBank = 2; // among the partitions

void fillRecord(vb::Devices &devices, Input &input) {
    uint8_t *record = devices.eeprom.bytes + BSP_DEVINFO_OFFSET;
    const bool isWhole = input.below(8) != 7;
    input.fill(record, formats::kBoardRecordSize);
    if (!isWhole)
        return;
    std::memcpy(record, formats::kBoardRecordMagic, sizeof(formats::kBoardRecordMagic));
    formats::renewRecordCrc(record);
}

void plugModule(vb::Devices &devices, Input &input) {
    vb::SfpModule &module = devices.sfp[kCage - 1];
    vb::sfpPlug(module, static_cast<vb::SfpKind>(input.below(vb::kSfpKinds)), kCage, 0);
    if (input.below(2) == 0)
        input.fill(module.id, sizeof(module.id));
    if (input.below(2) == 0)
        input.fill(module.diagnostics, sizeof(module.diagnostics));
}

void fillFlash(const FactoryBoard &board, Input &input) {
    const vb::FlashContent settings(board.folder(), kSettings);
    const vb::FlashContent bank(board.folder(), kBank);
    uint8_t bytes[formats::kBootBlockSize];
    input.fill(bytes, sizeof(bytes));
    if (input.below(2) == 0)
        settings.store(0, bytes, sizeof(bytes));
    else
        bank.store(formats::kOsHeaderPlace, bytes, sizeof(bytes));
}

void fillRegisters(vb::Devices &devices, Input &input) {
    uint16_t &reg = devices.cpld.reg[input.below(vb::kCpldRegisters)];
    reg = input.number<uint16_t>();
}

void change(FactoryBoard &board, Input &input) {
    vb::Devices &devices = board.state().devices;
    switch (input.below(6)) {
    case 0:
        return fillRecord(devices, input);
    case 1:
        return plugModule(devices, input);
    case 2:
        return fillFlash(board, input);
    case 3:
        return fillRegisters(devices, input);
    case 4:
        return input.fill(devices.clockChip.reg, sizeof(devices.clockChip.reg));
    default:
        return input.fill(devices.supply[0].eeprom.bytes, sizeof(devices.supply[0].eeprom.bytes));
    }
}

void putBack(FactoryBoard &board) {
    board.putBack();
    vb::FlashContent(board.folder(), kSettings).erase(0, vb::kSettingsFlash.eraseSize);
    vb::FlashContent(board.folder(), kBank)
        .erase(formats::kOsHeaderPlace, vb::kBankFlash.eraseSize);
    board.state().trace.total = 0;
}

void answer(const Words &command, bool isJson) {
    static iodbg::Console console;
    console.isJson() = false;
    command_line::Tool tool = iodbg::makeTool(console.isJson());
    Words words = command;
    if (isJson)
        words.insert(words.begin(), "--json");
    try {
        command_line::actionFor(tool, words)(console);
    } catch (const iodbg::Failure &) {
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    protectHostClock();
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    constexpr int kMostChanges = 3;
    Input input(bytes, size);
    const Words &command = kCommands[input.below(std::size(kCommands))];
    const bool isJson = input.below(4) != 3;
    FactoryBoard &board = fuzz::anyBoard(input);
    for (int i = 0; i < kMostChanges && !input.isEmpty(); ++i)
        change(board, input);
    vb::FolderError error = {};
    fuzz::require(vb::attachBoard(board.path().c_str(), error), error.text);
    answer(command, isJson);
    vb::detachBoard();
    putBack(board);
    return 0;
}
