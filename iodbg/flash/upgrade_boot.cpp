// iodbg upgrade boot: the boot loader.

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/boot_image.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/upgrade_parts.h"
#include "iodbg/flash/work.h"

#include <array>
#include <optional>

namespace iodbg {

namespace {

/** Refuses a file that the library would, and says in which field it is wrong. */
void checkFile(const std::string &path, const Bytes &file, const FlashPartition &partition) {
    std::string wrong;
    for (const BootField &field : bootFields(file)) {
        if (!field.isRight())
            wrong += (wrong.empty() ? "" : ", ") + field.name + " is '" + field.found +
                     "' and must be '" + field.wanted + "'";
    }
    if (!wrong.empty())
        throw Failure::usage("'" + path + "' is no boot-loader upgrade file: " + wrong +
                             "; 'iodbg image pack-boot' makes one of an image");
    if (file.size() > partition.size())
        throw Failure::usage("'" + path + "' has " + std::to_string(file.size()) + " bytes; " +
                             BSP_MTD_BOOT_LOADER + " holds " + std::to_string(partition.size()));
}

std::string runningVersion() {
    std::array<char, 64> version{};
    if (ioBiosVersionGet(version.data()) != BSP_OK)
        return "a version that cannot be read";
    const std::string text = version.data();
    return "version " + text.substr(0, text.find_last_not_of(' ') + 1);
}

ExitCode upgradeBoot(Console &console, const UpgradeArguments &arguments) {
    console.beginLongWork();
    const SpooledInput input(arguments, BSP_BOOT_FILE_MAX);
    const Bytes file = readBootFile(input.path(), input.name());
    const FlashPartition partition(BSP_MTD_BOOT_LOADER);
    checkFile(input.name(), file, partition);
    std::optional<FlashClaim> claim;
    if (!arguments.isDryRun)
        claim.emplace(partition);
    const UpgradePlan plan = {
        "Boot loader, " BSP_MTD_BOOT_LOADER, runningVersion(),
        input.name() + ", " + std::to_string(file.size()) + " bytes, image CRC " +
            bootFields(file).back().found,
        "A board without a whole boot loader does not start: do not interrupt the upgrade."};
    Section section = {"", "", {}};
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(file.size())));
    if (!goOn(section, plan, arguments))
        return console.print({{section}, {}});

    const Content content = {{}, input.path(), file.size()};
    PartitionWork work(console, "upgrade boot", partition, content);
    const int32_t status =
        work.write([&] { return bspImageUpgrade(BSP_IMAGE_BOOT, content.file.c_str(), 0); });
    // The library answers 0 also when it could not write, so that only the comparison counts.
    const std::string found = work.readBack();
    constexpr char kNext[] = "do not reset the board: repeat the upgrade until it is verified";
    if (status != BSP_OK)
        throw Failure::board("upgrade the boot loader", status, found + "; " + kNext);
    work.requireSame(kNext);
    section.add("verified", "Verified", flagCell(true, "read back, all bytes are the file's", ""));
    return console.print({{section}, {}});
}

} // namespace

void addUpgradeBoot(Command &upgrade) {
    const auto arguments = std::make_shared<UpgradeArguments>();
    Command &command = upgrade.command("boot", "Write a new boot loader");
    addUpgradeArguments(
        command, *arguments,
        "The upgrade file, see 'iodbg image check'; up to 1048576 bytes; - is standard input");
    command.example("iodbg upgrade boot loader.bin --dry-run")
        .example("iodbg upgrade boot loader.bin");
    command.does([arguments](Console &console) { return upgradeBoot(console, *arguments); });
}

} // namespace iodbg
