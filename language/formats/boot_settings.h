#pragma once
// The boot loader's settings: a block of 256 bytes, in whose slots "key=value" texts stand. A slot
// is zero behind its text, or as an erase has left it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace formats {

constexpr size_t kBootBlockSize = 256;

struct BootSlot {
    size_t offset;
    size_t size;
    const char *key;
};
constexpr BootSlot kBootModeSlot = {0, 32, "main_system="};
constexpr BootSlot kBootFlagSlot = {32, 32, "boot_type="};
constexpr BootSlot kBaudrateSlot = {64, 32, "baudrate="};
constexpr BootSlot kConsolePasswordSlot = {96, 32, "password="};
constexpr BootSlot kUserPasswordSlot = {128, 32, "user_pwd="};
constexpr BootSlot kBootPasswordSlot = {192, 64, "boot_pwd="};
constexpr size_t kLargestBootSlot = 64;

/** What a slot holds, with room for the zero that ends the text of a slot without one. */
using BootSlotText = std::array<char, kLargestBootSlot + 1>;

/** What stands behind the slot's key, within its slot; null when the slot does not have the key. */
inline const char *findBootValue(const BootSlot &slot, const uint8_t *block, BootSlotText &text) {
    text.fill('\0');
    std::copy_n(block + slot.offset, slot.size, text.begin());
    const char *found = std::strstr(text.data(), slot.key);
    return found != nullptr ? found + std::strlen(slot.key) : nullptr;
}

inline BootSlotText bootText(const BootSlot &slot, const char *value) {
    BootSlotText text = {};
    std::snprintf(text.data(), slot.size, "%s%s", slot.key, value);
    return text;
}

inline BootSlotText bootText(const BootSlot &slot, int32_t value) {
    BootSlotText text = {};
    std::snprintf(text.data(), slot.size, "%s%d", slot.key, static_cast<int>(value));
    return text;
}

/** Without a password there is no key either. */
inline BootSlotText bootPasswordText(const char *password) {
    return *password != '\0' ? bootText(kBootPasswordSlot, password) : BootSlotText{};
}

/** The user password is in force as an erase leaves its slot; else there is a 0. */
inline BootSlotText userPasswordInForce() {
    BootSlotText erased;
    erased.fill('\xFF');
    return erased;
}

/** Replaces one slot as a whole. */
inline void storeBootText(const BootSlot &slot, const BootSlotText &text, uint8_t *block) {
    std::copy_n(text.begin(), slot.size, block + slot.offset);
}

} // namespace formats
