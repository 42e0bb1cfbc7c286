// iodbg upgrade os: an operating-system image for one of the banks.

#include "bsp.h"
#include "iodbg/core/excerpt.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/library_calls.h"
#include "iodbg/core/progress.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/comparison.h"
#include "iodbg/flash/content.h"
#include "iodbg/flash/os_bank.h"
#include "iodbg/flash/partition.h"
#include "iodbg/flash/reading_watch.h"
#include "iodbg/flash/upgrade_parts.h"
#include "language/formats/os_image.h"

#include <optional>

namespace iodbg {

namespace {

// What the steps take at least, roughly.
constexpr uint32_t kMsPerBlockErased = 2; // a block
constexpr uint32_t kImageBytesPerMsWritten = 2048;
constexpr uint32_t kImageBytesPerMsRead = 8192;
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

uint64_t checkImage(const std::string &file, const FlashPartition &bank) {
    const uint64_t size = hostFileSize(file);
    if (size < BSP_OS_IMAGE_MIN || size > BSP_OS_IMAGE_MAX)
        throw Failure::usage("'" + file + "' has " + std::to_string(size) +
                             " bytes; an operating-system image has 512 to 40894464; check that "
                             "it is the right file");
    if (bank.size() < formats::kOsBankMin)
        throw Failure(ExitCode::Board, bank.device() + " has " + std::to_string(bank.size()) +
                                           " bytes, too few for an image and the copy of its "
                                           "header block; nothing was changed");
    return size;
}

/** The image's own header block, its last bytes. */
Bytes headerOf(const Content &image) {
    const int64_t start = formats::osHeaderStart(static_cast<int64_t>(image.size()));
    return readContent(image, static_cast<uint64_t>(start), formats::kOsHeaderSize);
}

/** Enough of a header block to tell images apart: its format is the image build's. */
std::string headerStart(const Bytes &header) {
    return quotedExcerpt(header);
}

std::string storedText(uint32_t bank) {
    Bytes header;
    if (readOsHeader(bank, header) != BSP_OK)
        return "a header block that cannot be read";
    return isErased(header) ? "empty" : headerStart(header);
}

/** What the bank holds after the write. */
struct Verdict {
    Comparison comparison;
    bool isHeaderRight = false;
    std::string text; // what is wrong, or nothing
};

/** Why the copy of the header block is not where it is read. */
std::string headerText(const FlashPartition &bank, int32_t status, const Bytes &header) {
    std::string text = "the copy of the header block, which is read at " +
                       hexNumber(formats::kOsHeaderPlace, 1) + ", ";
    if (status != BSP_OK)
        text += "cannot be read";
    else
        text += isErased(header) ? "is empty" : "differs";
    if (bank.isBad(formats::kOsHeaderPlace))
        text += "; block " + std::to_string(formats::kOsHeaderPlace / bank.blockSize()) +
                " of its place is bad";
    return text;
}

Verdict judge(const FlashPartition &bank, const Content &content, uint32_t number,
              Progress &progress) {
    progress.reach(kCompareBank, 0);
    Verdict verdict;
    verdict.comparison = compare(bank, content, Layout::AroundBadBlocks, [&](uint64_t bytes) {
        progress.reach(kCompareBank, msFor(bytes, kImageBytesPerMsRead));
    });
    Bytes header;
    const Bytes expected = headerOf(content);
    const int32_t status = readOsHeader(number, expected, header);
    verdict.isHeaderRight = status == BSP_OK && header == expected;
    if (verdict.comparison.first)
        verdict.text = differenceText(bank, content, verdict.comparison);
    if (!verdict.isHeaderRight)
        verdict.text += (verdict.text.empty() ? "" : "; ") + headerText(bank, status, header);
    const std::vector<int64_t> &bad = verdict.comparison.badBlocks;
    if (!verdict.text.empty() && !bad.empty())
        verdict.text += "; behind bad block " + listCell(bad).text + " the image lies " +
                        std::to_string(bad.size() * bank.blockSize()) +
                        " bytes further on than without";
    return verdict;
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

void addBadBlocks(Section &section, const FlashPartition &bank, const Comparison &comparison) {
    const auto count = static_cast<int64_t>(comparison.badBlocks.size());
    const int64_t shift = count * static_cast<int64_t>(bank.blockSize());
    section.add("bad_blocks", "Bad blocks below it", listCell(comparison.badBlocks));
    section.add("shifted_bytes", "Moved behind them by, bytes", numberCell(shift));
}

ExitCode upgradeOs(Console &console, const UpgradeArguments &arguments) {
    console.beginLongWork();
    const std::string name = "bank " + std::to_string(arguments.bank);
    const FlashPartition bank(bankDevice(arguments.bank));
    std::optional<FlashClaim> claim;
    if (!arguments.isDryRun)
        claim.emplace(bank);
    const Content content = {{}, arguments.file, checkImage(arguments.file, bank)};
    const UpgradePlan plan = {
        "Image of " + name + ", " + bank.device(), storedText(arguments.bank),
        arguments.file + ", " + std::to_string(content.fileSize) + " bytes, " +
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
                reading.emplace(arguments.file, [&progress](uint64_t bytes) {
                    progress.reach(kWriteImage, msFor(bytes, kImageBytesPerMsWritten));
                });
        });
        const HeaderTurn turn(HeaderTurn::Length::Long);
        status = bspImageUpgrade(BSP_IMAGE_OS, arguments.file.c_str(),
                                 static_cast<int32_t>(arguments.bank));
    }
    if (!isTouched && status != BSP_OK)
        throw writeFailure(name, status, false, "");
    const Verdict verdict = judge(bank, content, arguments.bank, progress);
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
    const auto arguments = std::make_shared<UpgradeArguments>();
    Command &command =
        upgrade.command("os", "Write an operating-system image into a bank; takes minutes");
    addUpgradeArguments(command, *arguments, "The image: 512 to 40894464 bytes");
    command.requiredOption("--bank", "0|1", "The bank that is replaced",
                           number(arguments->bank, BSP_OS_BANKS - 1));
    command.example("iodbg upgrade os os.img --bank 1 --dry-run")
        .example("iodbg upgrade os os.img --bank 1");
    command.does([arguments](Console &console) { return upgradeOs(console, *arguments); });
}

} // namespace iodbg
