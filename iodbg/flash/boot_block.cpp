#include "iodbg/flash/boot_block.h"

#include "bsp.h"
#include "iodbg/core/command.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/partition.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

constexpr char kOn[] = "on";
constexpr char kOff[] = "off";

template <auto get>
int32_t readSwitch(std::string &value) {
    uint32_t state = BSP_PASSWORD_UNUSED;
    const int32_t status = get(&state);
    value = state == BSP_PASSWORD_IN_FORCE ? kOn : kOff;
    return status;
}

template <auto set>
int32_t writeSwitch(const std::string &value) {
    return set(value == kOn ? BSP_PASSWORD_IN_FORCE : BSP_PASSWORD_UNUSED);
}

template <typename Number, auto get>
int32_t readNumber(std::string &value) {
    Number number = 0;
    const int32_t status = get(&number);
    value = std::to_string(number);
    return status;
}

template <typename Number, auto set>
int32_t writeNumber(const std::string &value) {
    return set(static_cast<Number>(parseNumber(value, INT32_MIN, INT32_MAX)));
}

int32_t readPassword(std::string &value) {
    std::array<char, BSP_BOOT_PASSWORD_BUFFER> text{};
    const int32_t status = bspBootPwdGet(text.data());
    value = text.data();
    return status;
}

int32_t writePassword(const std::string &value) {
    return bspBootPwdSet(value.c_str());
}

constexpr BootSetting kSettings[] = {
    {"mode", "mode", "Mode (system to start)", formats::kBootModeSlot,
     readNumber<uint32_t, bspBootModeGet>, writeNumber<int32_t, bspBootModeSet>},
    {"flag", "flag", "Boot flag", formats::kBootFlagSlot, readNumber<int32_t, bspBootFlagGet>,
     writeNumber<int32_t, bspBootFlagSet>},
    {"baudrate", "baudrate", "Console, baud", formats::kBaudrateSlot,
     readNumber<uint32_t, bspBaudrateGet>, writeNumber<uint32_t, bspBaudrateSet>},
    {"console-password", "console_password", "Console asks for a password",
     formats::kConsolePasswordSlot, readSwitch<bspConsolePwdValidGet>,
     writeSwitch<bspConsolePwdValidSet>},
    {"user-password", "user_password", "User password in force", formats::kUserPasswordSlot,
     readSwitch<bspUserPwdValidGet>, writeSwitch<bspUserPwdValidSet>},
    {"password", "password", "Boot password", formats::kBootPasswordSlot, readPassword,
     writePassword},
};
constexpr const BootSetting *kMode = &kSettings[0];
constexpr const BootSetting *kBaudrate = &kSettings[2];
constexpr const BootSetting *kConsolePassword = &kSettings[3];
constexpr const BootSetting *kUserPassword = &kSettings[4];
constexpr const BootSetting *kPassword = &kSettings[5];

bool isSwitch(const BootSetting &setting) {
    return &setting == kConsolePassword || &setting == kUserPassword;
}

/** Takes the value of a setting other than the password. */
Parser wordParser(const BootSetting &setting, uint32_t &target) {
    if (isSwitch(setting))
        return oneOf(target, {{kOn, 1}, {kOff, 0}});
    if (&setting == kBaudrate)
        return oneOf(target, {{"9600", BSP_BAUDRATE_9600},
                              {"19200", BSP_BAUDRATE_19200},
                              {"38400", BSP_BAUDRATE_38400},
                              {"57600", BSP_BAUDRATE_57600},
                              {"115200", BSP_BAUDRATE_115200}});
    if (&setting == kMode)
        return number(target, 1);
    return [](const std::string &word) { parseNumber(word, INT32_MIN, INT32_MAX); };
}

/** Throws language::Refused for a value that the setting cannot have. */
std::string parseValue(const BootSetting &setting, const std::string &value) {
    uint32_t ignored = 0;
    if (&setting == kPassword) {
        const bool isPrintable = std::all_of(value.begin(), value.end(), [](unsigned char byte) {
            return byte >= 0x20 && byte < 0x7F;
        });
        if (value.size() > BSP_BOOT_PASSWORD_MAX || !isPrintable)
            throw language::Refused("a boot password has at most 40 printable characters");
        return value;
    }
    wordParser(setting, ignored)(value);
    return isSwitch(setting) ? value : std::to_string(parseNumber(value, INT32_MIN, INT32_MAX));
}

formats::BootSlotText slotText(const BootSetting &setting, const std::string &value) {
    if (&setting == kPassword)
        return formats::bootPasswordText(value.c_str());
    if (&setting == kUserPassword && value == kOn)
        return formats::userPasswordInForce();
    if (isSwitch(setting))
        return formats::bootText(setting.slot, value == kOn ? 1 : 0);
    return formats::bootText(setting.slot, value.c_str());
}

} // namespace

const std::span<const BootSetting> kBootSettings = kSettings;
const BootSetting &kBootPassword = *kPassword;

const BootSetting &bootSetting(const std::string &name) {
    std::string known;
    for (const BootSetting &setting : kSettings) {
        if (name == setting.name)
            return setting;
        known += (known.empty() ? "" : "|") + std::string(setting.name);
    }
    language::refuse(name, "is none of " + known);
}

std::vector<std::string> bootValueWords(const BootSetting &setting) {
    uint32_t ignored = 0;
    return &setting == kPassword ? std::vector<std::string>{"-"}
                                 : wordParser(setting, ignored).offers().words;
}

std::string checkBootValue(const BootSetting &setting, const std::string &value) {
    try {
        return parseValue(setting, value);
    } catch (const language::Refused &refusal) {
        throw Failure::usage(std::string(setting.name) + ": " + refusal.what());
    }
}

std::optional<std::string> storedValue(const BootSetting &setting, ByteView block) {
    formats::BootSlotText text;
    const char *value = formats::findBootValue(setting.slot, block.data(), text);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

Bytes withValue(const BootSetting &setting, const std::string &value, Bytes block) {
    formats::storeBootText(setting.slot, slotText(setting, value), block.data());
    return block;
}

Bytes readBootBlock() {
    return FlashPartition(BSP_MTD_BOOT_SETTINGS).read(0, formats::kBootBlockSize);
}

} // namespace iodbg
