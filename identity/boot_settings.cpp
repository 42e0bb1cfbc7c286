// The settings of the boot loader: "key=value" texts in the fixed slots of the boot block.

#include "language/formats/boot_settings.h"
#include "bsp.h"
#include "identity/boot_block.h"
#include "support/message.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

using bsp::CallSite;
using formats::BootSlot;
using formats::BootSlotText;

namespace {

constexpr uint32_t kBaudrates[] = {BSP_BAUDRATE_9600, BSP_BAUDRATE_19200, BSP_BAUDRATE_38400,
                                   BSP_BAUDRATE_57600, BSP_BAUDRATE_115200};

/**
 * The setting's value, in text. A block that cannot be read counts as empty, so the getters answer
 * with their defaults, and callers rely on getting these from a unit without the partition.
 */
const char *findValue(const BootSlot &slot, BootSlotText &text) {
    uint8_t block[formats::kBootBlockSize] = {};
    bsp::readBootBlock(block);
    return formats::findBootValue(slot, block, text);
}

/** A setting that is a number; empty without the key. */
std::optional<int> findNumber(const BootSlot &slot) {
    BootSlotText text;
    const char *value = findValue(slot, text);
    return value != nullptr ? std::optional<int>(std::atoi(value)) : std::nullopt;
}

/** A setting that is a switch: 1 for a number other than 0. */
int32_t readSwitch(const BootSlot &slot, bool isOnWithoutKey, uint32_t *out) {
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
int32_t storeText(const BootSlot &slot, const BootSlotText &text) {
    uint8_t block[formats::kBootBlockSize] = {};
    bsp::readBootBlock(block);
    formats::storeBootText(slot, text, block);
    bsp::writeBootBlock(block);
    return BSP_OK;
}

int32_t storeNumber(const BootSlot &slot, int32_t value) {
    return storeText(slot, formats::bootText(slot, value));
}

} // namespace

int32_t bspBootModeGet(uint32_t *mode) {
    return readSwitch(formats::kBootModeSlot, false, mode);
}

int32_t bspBootModeSet(int32_t mode) {
    return storeNumber(formats::kBootModeSlot, mode > 0 ? 1 : 0);
}

int32_t bspBootFlagGet(int32_t *flag) {
    if (flag == nullptr)
        return BSP_E_NULL;
    const std::optional<int> stored = findNumber(formats::kBootFlagSlot);
    if (!stored)
        return BSP_E_FAILED;
    *flag = *stored;
    return BSP_OK;
}

int32_t bspBootFlagSet(int32_t flag) {
    return storeNumber(formats::kBootFlagSlot, flag);
}

int32_t bspBaudrateGet(uint32_t *baud) {
    if (baud == nullptr)
        return BSP_E_NULL;
    BootSlotText text;
    const char *value = findValue(formats::kBaudrateSlot, text);
    *baud = value != nullptr ? static_cast<uint32_t>(std::strtoul(value, nullptr, 10))
                             : uint32_t{BSP_BAUDRATE_DEFAULT};
    return BSP_OK;
}

int32_t bspBaudrateSet(uint32_t baud) {
    const auto printedRate = static_cast<int32_t>(baud);
    const auto *const end = std::end(kBaudrates);
    const auto *const found = std::find(std::begin(kBaudrates), end, baud);
    if (found == end) {
        bsp::report(CallSite::here(), "Baudrate %d is not supported. i=%d\n", printedRate,
                    static_cast<int>(found - std::begin(kBaudrates)));
        return BSP_E_INVALID;
    }
    // The running console goes first: a rate that it refuses must not be there at the next start.
    char command[64];
    std::snprintf(command, sizeof(command), "stty -F /dev/ttyS0 ispeed %d ospeed %d cs8",
                  printedRate, printedRate);
    if (const int result = std::system(command); result != 0) {
        bsp::report(CallSite::here(), "set console baudrate to %d error, ret = %d\n", printedRate,
                    result);
        return BSP_E_FAILED;
    }
    return storeNumber(formats::kBaudrateSlot, printedRate);
}

int32_t bspConsolePwdValidGet(uint32_t *valid) {
    return readSwitch(formats::kConsolePasswordSlot, false, valid);
}

int32_t bspConsolePwdValidSet(int32_t valid) {
    return storeNumber(formats::kConsolePasswordSlot, valid > 0 ? 1 : 0);
}

int32_t bspUserPwdValidGet(uint32_t *valid) {
    return readSwitch(formats::kUserPasswordSlot, true, valid);
}

int32_t bspUserPwdValidSet(int32_t valid) {
    if (valid == 0)
        return storeNumber(formats::kUserPasswordSlot, 0);
    return storeText(formats::kUserPasswordSlot, formats::userPasswordInForce());
}

int32_t bspBootPwdGet(char *pwd) {
    if (pwd == nullptr)
        return BSP_E_NULL;
    BootSlotText text;
    const char *value = findValue(formats::kBootPasswordSlot, text);
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
    return storeText(formats::kBootPasswordSlot, formats::bootPasswordText(pwd));
}
