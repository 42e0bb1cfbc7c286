// The settings of the boot loader: "key=value" texts in the fixed slots of the boot block.

#include "bsp.h"
#include "identity/boot_block.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

struct Slot {
    size_t offset;
    size_t size;
    const char *key;
};

constexpr Slot kBootMode = {0, 32, "main_system="};
constexpr Slot kBootFlag = {32, 32, "boot_type="};
constexpr Slot kBaudrate = {64, 32, "baudrate="};
constexpr Slot kConsolePassword = {96, 32, "password="};
constexpr Slot kUserPassword = {128, 32, "user_pwd="};
constexpr Slot kBootPassword = {192, 64, "boot_pwd="};
constexpr size_t kLargestSlot = 64;

constexpr uint32_t kBaudrates[] = {BSP_BAUDRATE_9600, BSP_BAUDRATE_19200, BSP_BAUDRATE_38400,
                                   BSP_BAUDRATE_57600, BSP_BAUDRATE_115200};

/** What a slot holds, with room for the zero that ends the text of a slot without one. */
using SlotText = std::array<char, kLargestSlot + 1>;

/**
 * The setting's value: what stands behind its key, within its slot. Null when the slot does not
 * have the key. A block that cannot be read counts as empty, so the getters answer with their
 * defaults, and callers rely on getting these from a unit without the partition.
 */
const char *findValue(const Slot &slot, SlotText &text) {
    uint8_t block[bsp::kBootBlockSize] = {};
    bsp::readBootBlock(block);
    text.fill('\0');
    std::copy_n(block + slot.offset, slot.size, text.begin());
    const char *found = std::strstr(text.data(), slot.key);
    return found != nullptr ? found + std::strlen(slot.key) : nullptr;
}

/** A setting that is a number; empty without the key. */
std::optional<int> findNumber(const Slot &slot) {
    SlotText text;
    const char *value = findValue(slot, text);
    return value != nullptr ? std::optional<int>(std::atoi(value)) : std::nullopt;
}

/** A setting that is a switch: 1 for a number other than 0. */
int32_t readSwitch(const Slot &slot, bool isOnWithoutKey, uint32_t *out) {
    if (out == nullptr)
        return BSP_E_NULL;
    *out = findNumber(slot).value_or(isOnWithoutKey ? 1 : 0) != 0 ? 1 : 0;
    return BSP_OK;
}

/**
 * Replaces one slot as a whole and writes the block anew. Setters succeed whatever happens to the
 * block, and callers rely on it: a missing or worn partition must not stop them. A block that
 * cannot be read is written with this slot alone.
 */
int32_t storeSlot(const Slot &slot, const SlotText &text) {
    uint8_t block[bsp::kBootBlockSize] = {};
    bsp::readBootBlock(block);
    std::copy_n(text.begin(), slot.size, block + slot.offset);
    bsp::writeBootBlock(block);
    return BSP_OK;
}

int32_t storeNumber(const Slot &slot, int32_t value) {
    SlotText text = {};
    std::snprintf(text.data(), slot.size, "%s%d", slot.key, value);
    return storeSlot(slot, text);
}

} // namespace

int32_t bspBootModeGet(uint32_t *mode) {
    return readSwitch(kBootMode, false, mode);
}

int32_t bspBootModeSet(int32_t mode) {
    return storeNumber(kBootMode, mode > 0 ? 1 : 0);
}

int32_t bspBootFlagGet(int32_t *flag) {
    if (flag == nullptr)
        return BSP_E_NULL;
    const std::optional<int> stored = findNumber(kBootFlag);
    if (!stored)
        return BSP_E_FAILED;
    *flag = *stored;
    return BSP_OK;
}

int32_t bspBootFlagSet(int32_t flag) {
    return storeNumber(kBootFlag, flag);
}

int32_t bspBaudrateGet(uint32_t *baud) {
    if (baud == nullptr)
        return BSP_E_NULL;
    SlotText text;
    const char *value = findValue(kBaudrate, text);
    *baud = value != nullptr ? static_cast<uint32_t>(std::strtoul(value, nullptr, 10))
                             : uint32_t{BSP_BAUDRATE_DEFAULT};
    return BSP_OK;
}

int32_t bspBaudrateSet(uint32_t baud) {
    const auto printedRate = static_cast<int32_t>(baud);
    const auto *const end = std::end(kBaudrates);
    const auto *const found = std::find(std::begin(kBaudrates), end, baud);
    if (found == end) {
        std::printf("%s-%d: Baudrate %d is not supported. i=%d\n", __func__, __LINE__, printedRate,
                    static_cast<int>(found - std::begin(kBaudrates)));
        return BSP_E_INVALID;
    }
    // The running console goes first: a rate that it refuses must not be there at the next start.
    char command[64];
    std::snprintf(command, sizeof(command), "stty -F /dev/ttyS0 ispeed %d ospeed %d cs8",
                  printedRate, printedRate);
    if (const int result = std::system(command); result != 0) {
        std::printf("%s-%d: set console baudrate to %d error, ret = %d\n", __func__, __LINE__,
                    printedRate, result);
        return BSP_E_FAILED;
    }
    return storeNumber(kBaudrate, printedRate);
}

int32_t bspConsolePwdValidGet(uint32_t *valid) {
    return readSwitch(kConsolePassword, false, valid);
}

int32_t bspConsolePwdValidSet(int32_t valid) {
    return storeNumber(kConsolePassword, valid > 0 ? 1 : 0);
}

int32_t bspUserPwdValidGet(uint32_t *valid) {
    return readSwitch(kUserPassword, true, valid);
}

int32_t bspUserPwdValidSet(int32_t valid) {
    if (valid == 0)
        return storeNumber(kUserPassword, 0);
    // In force is how the slot is left by an erase.
    SlotText erased;
    erased.fill('\xFF');
    return storeSlot(kUserPassword, erased);
}

int32_t bspBootPwdGet(char *pwd) {
    if (pwd == nullptr)
        return BSP_E_NULL;
    SlotText text;
    const char *value = findValue(kBootPassword, text);
    if (value == nullptr)
        value = "";
    std::memcpy(pwd, value, std::strlen(value) + 1);
    return BSP_OK;
}

int32_t bspBootPwdSet(const char *pwd) {
    if (pwd == nullptr)
        return BSP_E_NULL;
    if (std::strlen(pwd) > BSP_BOOT_PASSWORD_MAX)
        return BSP_E_INVALID;
    SlotText text = {};
    if (*pwd != '\0')
        std::snprintf(text.data(), kBootPassword.size, "%s%s", kBootPassword.key, pwd);
    return storeSlot(kBootPassword, text);
}
