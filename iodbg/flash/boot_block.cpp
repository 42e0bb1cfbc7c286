#include "iodbg/flash/boot_block.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/partition.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

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
    {"mode", "mode", "Mode (system to start)", 0, 32,
     "main_system=", readNumber<uint32_t, bspBootModeGet>, writeNumber<int32_t, bspBootModeSet>},
    {"flag", "flag", "Boot flag", 32, 32, "boot_type=", readNumber<int32_t, bspBootFlagGet>,
     writeNumber<int32_t, bspBootFlagSet>},
    {"baudrate", "baudrate", "Console, baud", 64, 32,
     "baudrate=", readNumber<uint32_t, bspBaudrateGet>, writeNumber<uint32_t, bspBaudrateSet>},
    {"console-password", "console_password", "Console asks for a password", 96, 32,
     "password=", readSwitch<bspConsolePwdValidGet>, writeSwitch<bspConsolePwdValidSet>},
    {"user-password", "user_password", "User password in force", 128, 32,
     "user_pwd=", readSwitch<bspUserPwdValidGet>, writeSwitch<bspUserPwdValidSet>},
    {"password", "password", "Boot password", 192, 64, "boot_pwd=", readPassword, writePassword},
};
constexpr const BootSetting *kMode = &kSettings[0];
constexpr const BootSetting *kBaudrate = &kSettings[2];
constexpr const BootSetting *kConsolePassword = &kSettings[3];
constexpr const BootSetting *kUserPassword = &kSettings[4];
constexpr const BootSetting *kPassword = &kSettings[5];

bool isSwitch(const BootSetting &setting) {
    return &setting == kConsolePassword || &setting == kUserPassword;
}

/** Throws std::invalid_argument for a value that the setting cannot have. */
std::string parseValue(const BootSetting &setting, const std::string &value) {
    uint32_t ignored = 0;
    if (&setting == kPassword) {
        const bool isPrintable = std::all_of(value.begin(), value.end(), [](unsigned char byte) {
            return byte >= 0x20 && byte < 0x7F;
        });
        if (value.size() > BSP_BOOT_PASSWORD_MAX || !isPrintable)
            throw std::invalid_argument("a boot password has at most 40 printable characters");
        return value;
    }
    if (isSwitch(setting)) {
        oneOf(ignored, {{kOn, 1}, {kOff, 0}})(value);
        return value;
    }
    if (&setting == kBaudrate)
        oneOf(ignored, {{"9600", BSP_BAUDRATE_9600},
                        {"19200", BSP_BAUDRATE_19200},
                        {"38400", BSP_BAUDRATE_38400},
                        {"57600", BSP_BAUDRATE_57600},
                        {"115200", BSP_BAUDRATE_115200}})(value);
    const bool isMode = &setting == kMode;
    return std::to_string(parseNumber(value, isMode ? 0 : INT32_MIN, isMode ? 1 : INT32_MAX));
}

std::string slotText(const BootSetting &setting, const std::string &value) {
    if (&setting == kPassword && value.empty())
        return "";
    if (isSwitch(setting))
        return setting.mark + std::string(value == kOn ? "1" : "0");
    return setting.mark + value;
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
    throw std::invalid_argument("'" + name + "' is none of " + known);
}

std::string checkBootValue(const BootSetting &setting, const std::string &value) {
    try {
        return parseValue(setting, value);
    } catch (const std::invalid_argument &refusal) {
        throw Failure::usage(std::string(setting.name) + ": " + refusal.what());
    }
}

std::optional<std::string> storedValue(const BootSetting &setting, ByteView block) {
    const ByteView slot = block.subspan(setting.offset, setting.size);
    const std::string text(slot.begin(), std::find(slot.begin(), slot.end(), uint8_t{0}));
    const size_t at = text.find(setting.mark);
    if (at == std::string::npos)
        return {};
    return text.substr(at + std::strlen(setting.mark));
}

Bytes withValue(const BootSetting &setting, const std::string &value, Bytes block) {
    // The user password is in force as an erase leaves the slot.
    const bool isErased = &setting == kUserPassword && value == kOn;
    const auto slot = block.begin() + static_cast<ptrdiff_t>(setting.offset);
    std::fill_n(slot, setting.size, isErased ? uint8_t{0xFF} : uint8_t{0});
    if (const std::string text = slotText(setting, value); !isErased)
        std::copy(text.begin(), text.end(), slot);
    return block;
}

Bytes readBootBlock() {
    return FlashPartition(BSP_MTD_BOOT_SETTINGS).read(0, kBootBlockSize);
}

} // namespace iodbg
