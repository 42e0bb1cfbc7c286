// iodbg upgrade cpld: the CPLD's logic.

#include "bsp.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/content.h"
#include "iodbg/flash/upgrade_parts.h"

#include <array>
#include <cstdio>
#include <optional>

namespace iodbg {

namespace {

constexpr uint64_t kLargestInput = 16 << 20; // of standard input: far beyond any logic

std::string version() {
    std::array<char, 64> text{};
    return ioCpldVersionGet(text.data()) == BSP_OK ? std::string("version ") + text.data()
                                                   : "a version that cannot be read";
}

ExitCode upgradeCpld(Console &console, const UpgradeArguments &arguments) {
    console.beginLongWork();
    const SpooledInput input(arguments, kLargestInput);
    const uint64_t size = hostFileSize(input.path());
    const UpgradePlan plan = {
        "Logic of the CPLD", version(), input.name() + ", " + std::to_string(size) + " bytes",
        "The file is judged by the kernel module alone. The upgrade must not be interrupted."};
    Section section = {"", "", {}};
    section.add("size_bytes", "Size, bytes", numberCell(static_cast<int64_t>(size)));
    std::optional<FlashClaim> claim;
    if (!arguments.isDryRun)
        claim.emplace(FlashClaim::Cpld());
    if (!goOn(section, plan, arguments))
        return console.print({{section}, {}});

    std::fputs("upgrade cpld: the kernel module programs the CPLD\n", stderr);
    if (const int32_t status = bspImageUpgrade(BSP_IMAGE_CPLD, input.path().c_str(), 0);
        status != BSP_OK)
        throw Failure::board("program the CPLD", status,
                             "do not switch the board off before an upgrade ends well; see the "
                             "kernel log");
    section.add("after", "Now running", textCell(version()));
    section.add("verified", "Verified",
                flagCell(false, "",
                         "no: nothing reads the logic back; the kernel module answered success, "
                         "and new logic may need the power switched off to show its version"));
    return console.print({{section}, {}});
}

} // namespace

void addUpgradeCpld(Command &upgrade) {
    const auto arguments = std::make_shared<UpgradeArguments>();
    Command &command = upgrade.command("cpld", "Program the CPLD; nothing reads it back");
    addUpgradeArguments(command, *arguments,
                        "The image, which the kernel module opens; - is standard input");
    command.example("iodbg upgrade cpld cpld.bin");
    command.onlyAfter(requireKernelModule);
    command.does([arguments](Console &console) { return upgradeCpld(console, *arguments); });
}

} // namespace iodbg
