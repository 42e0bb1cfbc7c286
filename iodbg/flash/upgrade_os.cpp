// iodbg upgrade os: an operating-system image for one of the banks.

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/library_calls.h"
#include "iodbg/core/progress.h"
#include "iodbg/flash/bank_verdict.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/os_bank.h"
#include "iodbg/flash/partition.h"
#include "iodbg/flash/reading_watch.h"
#include "iodbg/flash/upgrade_parts.h"

#include <optional>

namespace iodbg {

namespace {

// What the steps take at least, roughly.
constexpr uint32_t kMsPerBlockErased = 2; // a block
constexpr uint32_t kImageBytesPerMsWritten = 2048;
constexpr uint32_t kHeaderMs = 50;

enum ImageStep : size_t { kEraseBank, kWriteImage, kWriteHeader, kCompareBank };

std::vector<WorkStep> imageSteps(const FlashPartition &bank, uint64_t size) {
    return {{"erase the bank",
             static_cast<uint32_t>(bank.size() / bank.blockSize()) * kMsPerBlockErased},
            {"write the image", msFor(size, kImageBytesPerMsWritten)},
            {"write the copy of its header block", kHeaderMs},
            {"read back and compare", msFor(size, kImageBytesPerMsRead)}};
}

/** The step that begins with a command of the library's. */
ImageStep stepOf(const std::string &command) {
    if (command.starts_with("flash_erase"))
        return kEraseBank;
    const bool isImage =
        command.starts_with("nandwrite") && !command.starts_with("nandwrite -q -p -s");
    return isImage ? kWriteImage : kWriteHeader;
}

struct OsArguments : UpgradeArguments {
    uint32_t bank = 0;
    bool isForced = false;
};

std::string storedText(const BankHeader &header) {
    if (header.status != BSP_OK)
        return "a header block that cannot be read";
    return header.isImages() ? headerStart(header.bytes) : "empty";
}

/** Whether the bank was touched at all is told by the commands that were run. */
Failure writeFailure(const std::string &bank, int32_t status, bool isTouched,
                     const std::string &found) {
    const std::string what = "write the image into " + bank;
    if (!isTouched)
        return Failure::board(what, status,
                              "nothing was changed: check that the path is short enough for a "
                              "command line of 127 characters, and the messages above");
    return Failure::board(what, status,
                          (found.empty() ? "yet all of the image was read back" : found) +
                              "; do not start this bank, and write the image again");
}

void requireNoDoubt(const OsArguments &arguments, const SpooledInput &input, const Bytes &header,
                    const BankHeader &replaced) {
    if (arguments.isForced)
        return;
    const uint32_t staying = BSP_OS_BANKS - 1 - arguments.bank;
    const std::string doubt = doubtAbout(header, readBankHeader(staying), replaced);
    if (!doubt.empty())
        throw Failure::usage("'" + input.name() + "' is hardly an image: " + doubt +
                             "; check that it is the right file and whole, or write it with "
                             "--force");
}

ExitCode upgradeOs(Console &console, const OsArguments &arguments) {
    console.beginLongWork();
    const std::string name = "bank " + std::to_string(arguments.bank);
    const FlashPartition bank(bankDevice(arguments.bank));
    const SpooledInput input(arguments, BSP_OS_IMAGE_MAX); // somebody may still be sending it
    const Content content = imageIn(input.path(), input.name(), bank);
    std::optional<FlashClaim> claim;
    if (!arguments.isDryRun)
        claim.emplace(bank);
    const BankHeader replaced = readBankHeader(arguments.bank);
    requireNoDoubt(arguments, input, headerOf(content), replaced);
    const UpgradePlan plan = {
        "Image of " + name + ", " + bank.device(), storedText(replaced),
        input.name() + ", " + std::to_string(content.fileSize) + " bytes, " +
            headerStart(headerOf(content)),
        "The upgrade must not be interrupted: the bank is then incomplete. The other bank is not "
        "touched."};
    Section section = {"", "", {}};
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(content.fileSize)));
    if (!goOn(section, plan, arguments))
        return console.print({{section}, {}});

    Progress progress(console, "upgrade os", imageSteps(bank, content.fileSize));
    bool isTouched = false;
    int32_t status = BSP_OK;
    {
        std::optional<ReadingWatch> reading;
        const CommandWatch watch([&](const std::string &command) {
            isTouched = true;
            reading.reset();
            const ImageStep step = stepOf(command);
            progress.reach(step, 0);
            if (step == kWriteImage)
                reading.emplace(content.file, [&progress](uint64_t bytes) {
                    progress.reach(kWriteImage, msFor(bytes, kImageBytesPerMsWritten));
                });
        });
        const HeaderTurn turn(HeaderTurn::Length::Long);
        status = bspImageUpgrade(BSP_IMAGE_OS, content.file.c_str(),
                                 static_cast<int32_t>(arguments.bank));
    }
    if (!isTouched && status != BSP_OK)
        throw writeFailure(name, status, false, "");
    progress.reach(kCompareBank, 0);
    const BankVerdict verdict =
        judgeBank(arguments.bank, bank, content, [&progress](uint64_t bytes) {
            progress.reach(kCompareBank, msFor(bytes, kImageBytesPerMsRead));
        });
    if (status != BSP_OK)
        throw writeFailure(name, status, true, verdict.text);
    if (!verdict.text.empty())
        throw Failure(ExitCode::ReadBack,
                      name + " reads back differently: " + verdict.text +
                          "; do not start this bank: write the image again, or use the other bank");
    section.add("verified", "Verified",
                flagCell(true, "read back, image and header block are the file's", ""));
    addBadBlocks(section, bank, verdict.comparison);
    progress.hide();
    return console.print({{section}, {}});
}

} // namespace

void addUpgradeOs(Command &upgrade) {
    const auto arguments = std::make_shared<OsArguments>();
    Command &command =
        upgrade.command("os", "Write an operating-system image into a bank; takes minutes");
    addUpgradeArguments(command, *arguments,
                        "The image: 512 to 40894464 bytes; - is standard input");
    command.requiredOption("--bank", "0|1", "The bank that is replaced",
                           number(arguments->bank, BSP_OS_BANKS - 1));
    command.flag("--force", "Write it though its header block is not like those of the banks",
                 arguments->isForced);
    command.detail("A file is refused before anything is erased when it is too small or too large, "
                   "when all bytes of its header block are the same, or when that is not like the "
                   "header block of the bank that stays, or else of the one that is replaced: "
                   "three of four bytes must be of the same kind: zeros and FF, text, or others.");
    command.example("iodbg upgrade os os.img --bank 1 --dry-run")
        .example("iodbg upgrade os os.img --bank 1");
    command.does([arguments](Console &console) { return upgradeOs(console, *arguments); });
}

} // namespace iodbg
