#pragma once
// Building and sending one request record to the kernel module.

#include "bsp.h"

#include <cstdint>
#include <initializer_list>

namespace bsp {

constexpr uint64_t zeroExtend(uint32_t word) {
    return word;
}

constexpr uint64_t signExtend(uint32_t word) {
    return (word & 0x80000000u) != 0 ? 0xFFFFFFFF00000000u | word : word;
}

/** The slot value of a user-space address: sign-extended when it fits in 32 bits, whole otherwise.
 */
inline uint64_t addressSlot(const void *address) {
    const auto whole = uint64_t{reinterpret_cast<uintptr_t>(address)};
    return whole > UINT32_MAX ? whole : signExtend(static_cast<uint32_t>(whole));
}

/** Sends a request: the channel's status if it failed, else the driver's own answer. */
int32_t sendRequest(BspRequest code, std::initializer_list<uint64_t> arguments);

} // namespace bsp
