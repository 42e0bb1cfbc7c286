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
#include "iodbg/poe/guide.h"
#include "iodbg/poe/parts.h"
#include "iodbg/poe/wire.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace iodbg {

namespace {

struct Arguments {
    std::string file;
    bool isDryRun = false;
    bool isYes = false;
};

struct Image {
    std::string file;
    uint32_t size;
};

/** What controllers take as firmware, of those that take any. */
std::vector<const bsp::PoeGuide *> guidesWithFirmware() {
    std::vector<const bsp::PoeGuide *> guides;
    for (const bsp::PoeGuideRow &row : bsp::kPoeGuides) {
        if (row.guide.image.largest != 0)
            guides.push_back(&row.guide);
    }
    return guides;
}

bool fits(uint32_t size, const bsp::PoeImageSizes &sizes) {
    return size >= sizes.smallest && size <= sizes.largest && size % sizes.step == 0;
}

/** "51200 to 196608 bytes, a multiple of 4", for all controllers. */
std::string sizesText(const char *unit, const char *also) {
    std::string text;
    for (const bsp::PoeGuide *guide : guidesWithFirmware())
        text += (text.empty() ? "" : ", or ") + std::to_string(guide->image.smallest) + " to " +
                std::to_string(guide->image.largest) + unit + also + "a multiple of " +
                std::to_string(guide->image.step);
    return text;
}

/** Whether some controller takes it; what is too large for all is not read at all. */
Image checkImage(const std::string &file) {
    const std::vector<const bsp::PoeGuide *> guides = guidesWithFirmware();
    uint32_t largest = 0;
    for (const bsp::PoeGuide *guide : guides)
        largest = std::max(largest, guide->image.largest);
    const auto size = static_cast<uint32_t>(readHostFile(file, largest).size());
    const auto isTakenBy = [size](const bsp::PoeGuide *guide) { return fits(size, guide->image); };
    if (std::none_of(guides.begin(), guides.end(), isTakenBy))
        throw Failure::usage("'" + file + "' has " + std::to_string(size) +
                             " bytes; firmware of the PoE controller has " +
                             sizesText("", " and ") + "; check that it is the right file");
    return {file, size};
}

/** The guide to this board's controller, which must take such an image. */
const bsp::PoeGuide &guideFor(bsp::PoeChip chip, const Image &image) {
    const bsp::PoeGuide &guide = poeGuide(chip);
    if (guide.image.largest == 0)
        throw Failure(ExitCode::Board, "the PoE controller of this model takes no firmware");
    if (!fits(image.size, guide.image))
        throw Failure::usage("'" + image.file + "' has " + std::to_string(image.size) +
                             " bytes, which is no size of firmware for the PoE controller of this "
                             "model; check that it is the right file");
    return guide;
}

std::optional<std::string> readVersion() {
    std::array<char, BSP_POE_APP_VERSION_SIZE> text{};
    if (ioPoeAppVersionGet(text.data()) != BSP_OK)
        return {};
    return text.data();
}

uint32_t secondsFor(const bsp::PoeGuide &guide, uint32_t size) {
    uint32_t milliseconds = 0;
    for (const WorkStep &step : stepsOf(guide.upgrade, size))
        milliseconds += step.leastMs;
    return milliseconds / 1000;
}

/** "4 to 14 minutes", over all controllers. */
std::string minutesText() {
    constexpr uint32_t kMinute = 60;
    uint32_t shortest = UINT32_MAX;
    uint32_t longest = 0;
    for (const bsp::PoeGuide *guide : guidesWithFirmware()) {
        shortest = std::min(shortest, secondsFor(*guide, guide->image.smallest));
        longest = std::max(longest, secondsFor(*guide, guide->image.largest));
    }
    const auto roundedUp = [](uint32_t seconds) { return (seconds + kMinute - 1) / kMinute; };
    return std::to_string(roundedUp(shortest)) + " to " + std::to_string(roundedUp(longest)) +
           " minutes";
}

int32_t upgrade(Console &console, const bsp::PoeGuide &guide, const Image &image) {
    const bsp::PoeWork &work = guide.upgrade;
    Progress progress(console, "poe upgrade", stepsOf(work, image.size));
    uint32_t sent = 0;
    const PoeWatch watch([&](PoeDirection direction, ByteView frame) {
        if (direction != PoeDirection::ToController)
            return;
        if (const auto place = work.placeOf(image.size, sent, frame))
            progress.reach(place->step, place->ms);
        ++sent;
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

std::string planText(const Image &image, uint32_t seconds,
                     const std::optional<std::string> &version) {
    return "Firmware of the PoE controller\n"
           "  now  " +
           version.value_or("none that answers: the controller is in its loader") +
           "\n"
           "  new  " +
           image.file + ", " + std::to_string(image.size) + " bytes\n" +
           inLines("The upgrade takes at least " + durationText(seconds) +
                       " and must not be interrupted; no port has power afterwards until 'iodbg "
                       "poe init'.",
                   kPageWidth) +
           "\n";
}

void addPlan(Section &section, const Image &image, uint32_t seconds,
             const std::optional<std::string> &version) {
    section.add("file", "Image", textCell(image.file));
    section.add("size_bytes", "Size, bytes", numberCell(image.size));
    section.add("least_seconds", "Takes at least, s", numberCell(seconds));
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
    const bsp::PoeGuide &guide = guideFor(requirePoe().poeChip, image);
    const uint32_t seconds = secondsFor(guide, image.size);
    const std::optional<std::string> version = readVersion();
    Section section = {"", "", {}};
    addPlan(section, image, seconds, version);
    section.add("dry_run", "Dry run",
                flagCell(arguments.isDryRun, "yes, nothing was changed", "no"));
    if (arguments.isDryRun)
        return console.print({{section}, {}});

    if (!arguments.isYes)
        confirm(planText(image, seconds, version) + "Upgrade the firmware now?");
    if (const int32_t status = upgrade(console, guide, image); status != BSP_OK)
        throw Failure::board("upgrade the PoE controller's firmware", status, hintFor(status));
    addResult(section);
    return console.print({{section}, {}});
}

} // namespace

void addPoeUpgradeCommand(Command &poe) {
    const auto arguments = std::make_shared<Arguments>();
    Command &command =
        poe.command("upgrade", "Write new firmware into the controller; takes " + minutesText());
    command.argument("FILE", "The image: " + sizesText(" bytes", ", "), fileName(arguments->file));
    command.flag("--dry-run", "Check the file and show what would be replaced",
                 arguments->isDryRun);
    command.flag("--yes", kYesHelp, arguments->isYes);
    command.detail("It must not be interrupted.");
    command.example("iodbg poe upgrade poe.bin --dry-run")
        .example("iodbg poe upgrade poe.bin --yes");
    command.does([arguments](Console &console) { return run(console, *arguments); });
}

} // namespace iodbg
