// iodbg poe upgrade: new firmware for the controller.

#include "bsp.h"
#include "command_line/page.h"
#include "iodbg/core/confirm.h"
#include "iodbg/core/console.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/progress.h"
#include "iodbg/poe/board.h"
#include "iodbg/poe/controller.h"
#include "iodbg/poe/parts.h"
#include "iodbg/poe/wire.h"

#include <array>
#include <optional>

namespace iodbg {

namespace {

constexpr uint32_t kBlockSize = 32;

struct Arguments {
    std::string file;
    bool isDryRun = false;
    bool isYes = false;
};

struct Image {
    std::string file;
    uint32_t size;

    uint32_t blocks() const { return (size + kBlockSize - 1) / kBlockSize; }
};

Image checkImage(const std::string &file) {
    const size_t size = readHostFile(file, BSP_POE_FIRMWARE_MAX).size();
    if (size < BSP_POE_FIRMWARE_MIN || size % BSP_POE_FIRMWARE_STEP != 0)
        throw Failure::usage("'" + file + "' has " + std::to_string(size) +
                             " bytes; firmware of the PoE controller has 51200 to 196608 and a "
                             "multiple of 4; check that it is the right file");
    return {file, static_cast<uint32_t>(size)};
}

std::optional<std::string> readVersion() {
    std::array<char, BSP_POE_APP_VERSION_SIZE> text{};
    if (ioPoeAppVersionGet(text.data()) != BSP_OK)
        return {};
    return text.data();
}

// What the steps take at least, in milliseconds.
constexpr uint32_t kAskMs = 200;
constexpr uint32_t kRestMs = 1000;
constexpr uint32_t kBlockMs = 125;
constexpr uint32_t kLoaderMs = kRestMs + kBlockMs + 10000;
constexpr uint32_t kStartMs = kRestMs + kBlockMs + kRestMs;

enum Step : size_t { kAsk, kLoader, kWrite, kStart };

std::vector<WorkStep> stepsFor(const Image &image) {
    return {{"ask the controller", kAskMs},
            {"start its loader", kLoaderMs},
            {"write the image", image.blocks() * kBlockMs},
            {"start the new firmware", kStartMs}};
}

uint32_t secondsFor(const Image &image) {
    uint32_t milliseconds = 0;
    for (const WorkStep &step : stepsFor(image))
        milliseconds += step.leastMs;
    return milliseconds / 1000;
}

/** Tells from a frame how far the upgrade is. */
void follow(Progress &progress, ByteView frame) {
    constexpr uint8_t kLoaderCommand = 0xC0;
    constexpr uint8_t kJumpToLoader = 0x00;
    constexpr uint8_t kJumpToFirmware = 0x40;
    constexpr uint8_t kBank0 = 0x80, kBank3 = 0x83;
    constexpr size_t kHeader = 4; // of a block
    if (frame.size() < kHeader)
        return;
    if (frame[0] != kLoaderCommand)
        return progress.reach(kAsk, 0);
    if (frame[1] == kJumpToLoader)
        return progress.reach(kLoader, kRestMs);
    if (frame[1] == kJumpToFirmware)
        return progress.reach(kStart, kRestMs);
    if (frame[1] < kBank0 || frame[1] > kBank3)
        return;
    const uint32_t position =
        static_cast<uint32_t>(frame[1] - kBank0) << 16 | uint32_t{frame[2]} << 8 | frame[3];
    progress.reach(kWrite, position / kBlockSize * kBlockMs);
}

int32_t upgrade(Console &console, const Image &image) {
    Progress progress(console, "poe upgrade", stepsFor(image));
    const PoeWatch watch([&progress](PoeDirection direction, ByteView frame) {
        if (direction == PoeDirection::ToController)
            follow(progress, frame);
    });
    return ioPoeAppUpgradeSet(image.file.c_str());
}

/** What to do after a failure. The file is judged before anything is sent. */
std::string hintFor(int32_t status) {
    uint32_t appStatus = BSP_POE_APP_USABLE;
    const bool isTouched =
        ioPoeAppStatusGet(&appStatus) == BSP_OK && appStatus != BSP_POE_APP_USABLE;
    return isTouched && status != BSP_E_POE_LOCK
               ? "the controller has no usable firmware now: repeat the upgrade"
               : "";
}

std::string planText(const Image &image, const std::optional<std::string> &version) {
    return "Firmware of the PoE controller\n"
           "  now  " +
           version.value_or("none that answers: the controller is in its loader") +
           "\n"
           "  new  " +
           image.file + ", " + std::to_string(image.size) + " bytes\n" +
           inLines("The upgrade takes at least " + durationText(secondsFor(image)) +
                       " and must not be interrupted; no port has power afterwards until 'iodbg "
                       "poe init'.",
                   kPageWidth) +
           "\n";
}

void addPlan(Section &section, const Image &image, const std::optional<std::string> &version) {
    section.add("file", "Image", textCell(image.file));
    section.add("size_bytes", "Size, bytes", numberCell(image.size));
    section.add("least_seconds", "Takes at least, s", numberCell(secondsFor(image)));
    section.add("version_before", "Firmware before",
                version ? textCell(*version) : Cell{"none that answered", nullptr});
}

/** What the controller runs now, which must answer. */
void addResult(Section &section) {
    const std::optional<std::string> version = readVersion();
    if (!version)
        throw Failure(ExitCode::ReadBack, "the image was written, but the new firmware does not "
                                          "answer; check the file and repeat the upgrade");
    section.add("version_after", "Firmware now", textCell(*version));
    section.add("next", "Next", textCell("initialise the controller with 'iodbg poe init'"));
}

ExitCode run(Console &console, const Arguments &arguments) {
    console.beginLongWork();
    const Image image = checkImage(arguments.file);
    requirePoe();
    const std::optional<std::string> version = readVersion();
    Section section = {"", "", {}};
    addPlan(section, image, version);
    section.add("dry_run", "Dry run",
                flagCell(arguments.isDryRun, "yes, nothing was changed", "no"));
    if (arguments.isDryRun)
        return console.print({{section}, {}});

    if (!arguments.isYes)
        confirm(planText(image, version) + "Upgrade the firmware now?");
    if (const int32_t status = upgrade(console, image); status != BSP_OK)
        throw Failure::board("upgrade the PoE controller's firmware", status, hintFor(status));
    addResult(section);
    return console.print({{section}, {}});
}

} // namespace

void addPoeUpgradeCommand(Command &poe) {
    const auto arguments = std::make_shared<Arguments>();
    Command &command =
        poe.command("upgrade", "Write new firmware into the controller; takes 4 to 14 minutes");
    command.argument("FILE", "The image: 51200 to 196608 bytes, a multiple of 4",
                     fileName(arguments->file));
    command.flag("--dry-run", "Check the file and show what would be replaced",
                 arguments->isDryRun);
    command.flag("--yes", kYesHelp, arguments->isYes);
    command.detail("It must not be interrupted.");
    command.example("iodbg poe upgrade poe.bin --dry-run")
        .example("iodbg poe upgrade poe.bin --yes");
    command.does([arguments](Console &console) { return run(console, *arguments); });
}

} // namespace iodbg
