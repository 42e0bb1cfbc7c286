// iodbg image: what the banks hold, and boot-loader upgrade files.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/format.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/progress.h"
#include "iodbg/flash/bank_verdict.h"
#include "iodbg/flash/boot_image.h"
#include "iodbg/flash/commands.h"
#include "iodbg/flash/os_bank.h"
#include "iodbg/flash/partition.h"
#include "iodbg/flash/spooled_input.h"
#include "language/formats/boot_file.h"

#include <filesystem>
#include <optional>

namespace iodbg {

namespace {

// image info

std::string bankText(uint32_t bank, const Bytes &header) {
    const std::string title = "Bank " + std::to_string(bank) + " (" + bankDevice(bank) + ")";
    if (isErased(header))
        return title + ": empty, all 512 bytes of the header block are 0xFF\n";
    return title + ": header block\n" + hexDump(0, header);
}

/** A bank's row, and its text for people. */
std::string addBank(Report &report, Table &table, uint32_t bank) {
    Bytes header;
    const DeviceNode node = tryNode(bankDevice(bank));
    const int32_t status =
        node.state() == NodeState::Usable ? readOsHeader(bank, header) : BSP_E_OPEN;
    const auto ifRead = [&](const std::string &value) {
        return status == BSP_OK ? textCell(value) : Cell{"", nullptr};
    };
    const Cell empty = report.tried("bank" + std::to_string(bank), status,
                                    flagCell(isErased(header), "yes", "no"), node.hint());
    table.rows.push_back({numberCell(bank), textCell(bankDevice(bank)), empty,
                          ifRead(hexBytes(header)), ifRead(fieldText(header))});
    return status == BSP_OK ? bankText(bank, header)
                            : "Bank " + std::to_string(bank) + " (" + bankDevice(bank) +
                                  "): " + empty.text + "\n";
}

ExitCode showBanks(Console &console, std::optional<uint32_t> only) {
    Report report;
    Table table = {
        "banks",
        {{"bank", ""}, {"device", ""}, {"empty", ""}, {"header_hex", ""}, {"header_text", ""}},
        {}};
    std::string text;
    for (uint32_t bank = 0; bank < BSP_OS_BANKS; ++bank) {
        if (!only || *only == bank)
            text += addBank(report, table, bank);
    }
    report.parts.emplace_back(table);
    const Report failures = {{}, report.failures};
    return console.print(report, text + failures.toText());
}

// image verify

struct VerifyArguments : FlashInput {
    uint32_t bank = 0;
};

ExitCode verify(Console &console, const VerifyArguments &arguments) {
    console.beginLongWork();
    const std::string name = "bank " + std::to_string(arguments.bank);
    const FlashPartition bank(bankDevice(arguments.bank));
    const SpooledInput input(arguments, BSP_OS_IMAGE_MAX);
    const Content image = imageIn(input.path(), input.name(), bank);
    BankVerdict verdict;
    {
        Progress progress(console, "image verify",
                          {{"compare", msFor(image.size(), kImageBytesPerMsRead)}});
        progress.reach(0, 0);
        verdict = judgeBank(arguments.bank, bank, image, [&progress](uint64_t bytes) {
            progress.reach(0, msFor(bytes, kImageBytesPerMsRead));
        });
    }
    if (!verdict.text.empty())
        throw Failure(ExitCode::ReadBack,
                      name + " does not hold '" + input.name() + "': " + verdict.text +
                          "; nothing was written: 'iodbg upgrade os' writes it");
    Section section = {"", "", {}};
    section.add("bank", "Bank", numberCell(arguments.bank));
    section.add("device", "Device", textCell(bank.device()));
    section.add("file", "File", textCell(input.name()));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(image.fileSize)));
    section.add("verified", "Verified",
                flagCell(true, "image and header block are the file's", ""));
    addBadBlocks(section, bank, verdict.comparison);
    return console.print({{section}, {}});
}

// image pack-boot

struct PackArguments {
    std::string image;
    std::string output;
    bool isForced = false;
};

ExitCode pack(Console &console, const PackArguments &arguments) {
    const Bytes image =
        readHostFileOrInput(arguments.image, BSP_BOOT_FILE_MAX - formats::kBootTrailerSize);
    if (image.empty())
        throw Failure(ExitCode::Host,
                      inputName(arguments.image) + " is empty; give the right file");
    if (std::error_code error;
        std::filesystem::equivalent(arguments.image, arguments.output, error))
        throw Failure::usage(arguments.output +
                             " is the image itself, which would be lost; choose another name");
    const Bytes file = packBootFile(image);
    const Destination destination = {arguments.output, arguments.isForced};
    save(console, destination, file);
    Section section = {"", "", {}};
    section.add("output", "Saved in", textCell(destination.name()));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(file.size())));
    for (const BootField &field : bootFields(file)) {
        if (field.name == "trailer CRC")
            section.add("trailer_crc", "Trailer CRC", textCell(field.found));
        if (field.name == "image CRC")
            section.add("image_crc", "Image CRC", textCell(field.found));
    }
    return console.print({{section}, {}});
}

// image check

ExitCode check(Console &console, const std::string &path) {
    const Bytes file = readBootFile(path, inputName(path));
    Table table = {
        "fields",
        {{"field", "FIELD"}, {"found", "FOUND"}, {"wanted", "MUST BE"}, {"right", "VERDICT"}},
        {}};
    bool isValid = true;
    for (const BootField &field : bootFields(file)) {
        isValid = isValid && field.isRight();
        table.rows.push_back({textCell(field.name), textCell(field.found), textCell(field.wanted),
                              flagCell(field.isRight(), "right", "wrong")});
    }
    Section section = {"", "", {}};
    section.add("file", "File", textCell(inputName(path)));
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(file.size())));
    section.add("valid", "Boot-loader upgrade file",
                flagCell(isValid, "valid", "not valid: the board would refuse it"));
    console.print({{section, table}, {}});
    return isValid ? ExitCode::Ok : ExitCode::Host;
}

void addInfo(Command &image) {
    const auto only = std::make_shared<std::optional<uint32_t>>();
    Command &command =
        image.command("info", "Show the header blocks of the stored operating-system images");
    command.option("--bank", "0|1", "Only this bank",
                   offering("0|1", [only](const std::string &word) {
                       number(only->emplace(), BSP_OS_BANKS - 1)(word);
                   }));
    command.example("iodbg image info").example("iodbg image info --bank 1");
    takesCapturedUnit(command);
    command.does([only](Console &console) { return showBanks(console, *only); });
}

void addVerify(Command &image) {
    const auto arguments = std::make_shared<VerifyArguments>();
    arguments->isDryRun = true; // it asks nothing
    Command &command =
        image.command("verify", "Compare a bank with an image; nothing is written.\nA difference "
                                "is exit code 3");
    command.argument("FILE", "The image: 512 to 40894464 bytes; - is standard input",
                     fileName(arguments->file));
    command.requiredOption("--bank", "0|1", "The bank that is compared",
                           number(arguments->bank, BSP_OS_BANKS - 1));
    addSpoolOption(command, arguments->spool);
    command.detail("The comparison is that of 'iodbg upgrade os': the image around bad blocks, and "
                   "the copy of its header block.");
    command.example("iodbg image verify os.img --bank 1");
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return verify(console, *arguments); });
}

void addPackBoot(Command &image) {
    const auto arguments = std::make_shared<PackArguments>();
    Command &command = image.command("pack-boot", "Make an upgrade file of a boot-loader image");
    command.argument("IN", "The image, up to 1048496 bytes; - is standard input",
                     fileName(arguments->image));
    command.argument("OUT", "The upgrade file; - is standard output", fileName(arguments->output));
    command.flag("--force", kForceHelp, arguments->isForced);
    command.example("iodbg image pack-boot loader.raw new-loader.bin");
    command.does([arguments](Console &console) { return pack(console, *arguments); });
}

void addCheck(Command &image) {
    const auto path = std::make_shared<std::string>();
    Command &command =
        image.command("check", "Judge a boot-loader upgrade file, field by field.\nA wrong one is "
                               "exit code 4");
    command.argument("FILE", "The upgrade file, - is standard input", fileName(*path));
    command.example("iodbg image check loader.bin");
    command.does([path](Console &console) { return check(console, *path); });
}

void defineImage(Command &image) {
    addInfo(image);
    addVerify(image);
    addPackBoot(image);
    addCheck(image);
}

} // namespace

void addImageCommands(Command &root) {
    root.group("image", "Stored images and upgrade files", defineImage);
}

} // namespace iodbg
