// iodbg boot: the settings of the boot loader.

#include "bsp.h"
#include "iodbg/core/captured_unit_option.h"
#include "iodbg/core/console.h"
#include "iodbg/core/excerpt.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"
#include "iodbg/core/secret.h"
#include "iodbg/flash/boot_block.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/commands.h"
#include "iodbg/flash/partition.h"

#include <algorithm>

namespace iodbg {

namespace {

// boot get

struct GetArguments {
    const BootSetting *only = nullptr;
    bool isPasswordShown = false;
};

bool isHidden(const BootSetting &setting, const GetArguments &arguments) {
    return &setting == &kBootPassword && !arguments.isPasswordShown;
}

/** As it is typed; one that flash has got in another way as all texts that cannot be shown. */
std::string shownPassword(const std::string &value) {
    const bool canBeShown = std::all_of(value.begin(), value.end(), [](char character) {
        return character >= ' ' && character <= '~';
    });
    return canBeShown ? value : printable(value);
}

Cell cellOf(const BootSetting &setting, const std::string &value) {
    if (&setting == &kBootPassword)
        return value.empty() ? Cell{"none", ""} : textCell(shownPassword(value));
    if (value == "on" || value == "off")
        return flagCell(value == "on", "yes", "no");
    return numberCell(std::stoll(value));
}

void addSetting(Report &report, Section &section, const BootSetting &setting,
                const GetArguments &arguments) {
    std::string value;
    const int32_t status = setting.read(value);
    if (isHidden(setting, arguments))
        section.add("has_password", setting.label,
                    flagCell(!value.empty(), "stored; --show-password shows it", "none"));
    else if (status == BSP_E_FAILED) // how the library says that no flag is stored
        section.add(setting.key, setting.label, {"none stored", nullptr});
    else
        section.add(setting.key, setting.label,
                    report.tried(setting.key, status, cellOf(setting, value)));
}

ExitCode get(Console &console, const GetArguments &arguments) {
    // The library answers defaults for a block that cannot be read, so it is looked at first.
    const bool isBlockErased = isErased(readBootBlock());
    Report report;
    Section section = {"", "", {}};
    for (const BootSetting &setting : kBootSettings) {
        if (arguments.only == nullptr || arguments.only == &setting)
            addSetting(report, section, setting, arguments);
    }
    section.add(
        "erased", "Block",
        flagCell(isBlockErased, "erased: nothing is stored, these are the defaults", "written"));
    report.parts.emplace_back(section);
    return console.print(report);
}

// boot set

struct SetArguments {
    const BootSetting *setting = nullptr;
    std::string value;
    std::string backup;
    bool isForced = false;
};

/** What the old settings were, for those who have to store them anew. */
std::string oldValues(ByteView before) {
    std::string text;
    for (const BootSetting &setting : kBootSettings) {
        const std::optional<std::string> value = storedValue(setting, before);
        if (!value)
            continue;
        const bool isPassword = &setting == &kBootPassword;
        text += (text.empty() ? "" : ", ") + std::string(setting.slot.key) +
                (isPassword
                     ? "(not shown)"
                     : excerpt({reinterpret_cast<const uint8_t *>(value->data()), value->size()}));
    }
    return text.empty() ? "there were none" : "they were " + text;
}

std::string changedSettings(ByteView wanted, ByteView after) {
    std::string names;
    for (const BootSetting &setting : kBootSettings) {
        const ByteView slot = wanted.subspan(setting.slot.offset, setting.slot.size);
        if (!std::equal(slot.begin(), slot.end(),
                        after.begin() + static_cast<ptrdiff_t>(setting.slot.offset)))
            names += (names.empty() ? "" : ", ") + std::string(setting.name);
    }
    return names.empty() ? "bytes between the settings" : names;
}

/** Why the flash cannot take a block of settings, if that is so. */
std::string pageSizeReason(uint64_t pageSize) {
    if (pageSize <= formats::kBootBlockSize)
        return "";
    return "; the flash takes only whole pages of " + std::to_string(pageSize) +
           " bytes, and so no setting of these 256";
}

std::string repairText(const SetArguments &arguments, uint64_t pageSize) {
    const std::string file = arguments.backup.empty() ? "FILE" : arguments.backup;
    const std::string text = pageSizeReason(pageSize) +
                             "; write the block back with 'iodbg mtd write mtd4 " + file + "'";
    return arguments.backup.empty() ? text + ", FILE being its 256 bytes (--backup saves them)"
                                    : text;
}

void verify(const SetArguments &arguments, const Bytes &before, const Bytes &wanted) {
    const FlashPartition partition(BSP_MTD_BOOT_SETTINGS);
    const Bytes after = partition.read(0, formats::kBootBlockSize);
    std::string value;
    const int32_t status = arguments.setting->read(value);
    if (after == wanted && status == BSP_OK && value == arguments.value)
        return;
    const std::string name = arguments.setting->name;
    if (after == before) {
        const std::string reason = pageSizeReason(partition.pageSize());
        throw Failure(ExitCode::ReadBack,
                      name + " was not stored, the block is as it was" +
                          (reason.empty() ? "; check the kernel log for flash errors"
                                          : reason + ": write a whole block of settings with "
                                                     "'iodbg mtd write mtd4 FILE'"));
    }
    const std::string repair =
        "; " + oldValues(before) + repairText(arguments, partition.pageSize());
    if (isErased(after))
        throw Failure(ExitCode::ReadBack, name +
                                              " was not stored, and all boot settings are lost: "
                                              "the block was erased and not written" +
                                              repair);
    throw Failure(ExitCode::ReadBack, "the boot settings read back differently: " +
                                          changedSettings(wanted, after) + repair);
}

std::string valueFor(const SetArguments &arguments) {
    if (arguments.setting != &kBootPassword)
        return checkBootValue(*arguments.setting, arguments.value);
    if (arguments.value != "-")
        throw Failure::usage("a password on a command line is seen by everyone: give '-', and the "
                             "password on standard input; an empty line removes it");
    return checkBootValue(kBootPassword, readSecret("New boot password"));
}

ExitCode set(Console &console, SetArguments arguments) {
    const BootSetting &setting = *arguments.setting;
    arguments.value = valueFor(arguments);
    const FlashPartition partition(BSP_MTD_BOOT_SETTINGS);
    // Of two that read the old block the later writer would undo what the other one has set.
    const FlashClaim claim(partition);
    // Without the old block the library would store this setting alone.
    const Bytes before = partition.read(0, formats::kBootBlockSize);
    if (!arguments.backup.empty())
        save(console, {arguments.backup, arguments.isForced, true}, before);
    const Bytes wanted = withValue(setting, arguments.value, before);
    // The console's rate alone is tried before it is stored.
    if (const int32_t status = setting.write(arguments.value); status != BSP_OK)
        throw Failure::board(std::string("set ") + setting.name, status,
                             "nothing was stored, as the running console /dev/ttyS0 refuses it; "
                             "the messages above say more");
    verify(arguments, before, wanted);

    Section section = {"", "", {}};
    section.add("setting", "Setting", textCell(setting.name));
    if (&setting == &kBootPassword)
        section.add("has_password", "Password",
                    flagCell(!arguments.value.empty(), "stored", "removed"));
    else
        section.add("value", "Value", cellOf(setting, arguments.value));
    section.add("verified", "Verified",
                flagCell(true, "read back, and the other settings are as they were", ""));
    return console.print({{section}, {}});
}

constexpr char kSettingsHelp[] = "mode|flag|baudrate|console-password|user-password|password";

Parser settingName(const BootSetting *&target) {
    return offering(kSettingsHelp,
                    [&target](const std::string &word) { target = &bootSetting(word); });
}

/** The values of the setting that stands before them. */
std::vector<std::string> offeredValues(const std::vector<std::string> &arguments) {
    return bootValueWords(bootSetting(arguments.at(0)));
}

void addGet(Command &boot) {
    const auto arguments = std::make_shared<GetArguments>();
    Command &command = boot.command("get", "Show the settings, or one of them");
    command.optionalArgument("SETTING", kSettingsHelp, settingName(arguments->only));
    command.flag("--show-password", "Show the boot password", arguments->isPasswordShown);
    command.detail("The password is shown with --show-password alone.");
    command.example("iodbg boot get").example("iodbg boot get baudrate");
    takesCapturedUnit(command);
    command.does([arguments](Console &console) { return get(console, *arguments); });
}

void addSet(Command &boot) {
    const auto arguments = std::make_shared<SetArguments>();
    Command &command =
        boot.command("set", "Store a setting and read all of them back.\nA power cut on the way "
                            "leaves none of them");
    command.argument("SETTING", kSettingsHelp, settingName(arguments->setting));
    command.argument("VALUE",
                     "mode 0|1; flag: a number; baudrate 9600|19200|38400|57600|115200; "
                     "console-password, user-password on|off; password - (asked for, or from "
                     "standard input)",
                     {text(arguments->value), {{}, Offers::Files::None, offeredValues}});
    command.option("--backup", "FILE",
                   "Save the block first, the password included, - is standard output; 'mtd write "
                   "mtd4 FILE' restores it",
                   fileName(arguments->backup));
    command.flag("--force", "Replace a backup that exists", arguments->isForced);
    command.detail("The backup is for its owner alone.");
    command.example("iodbg boot set flag 3")
        .example("iodbg boot set mode 1 --backup saved-settings.bin");
    command.does([arguments](Console &console) { return set(console, *arguments); });
}

void defineBoot(Command &boot) {
    addGet(boot);
    addSet(boot);
}

} // namespace

void addBootCommands(Command &root) {
    root.group("boot", "Settings of the boot loader", defineBoot);
}

} // namespace iodbg
