#pragma once
// The models by what they have, for tests that know them from their data sheets alone.

#include <cstdint>
#include <vector>

using DeviceIds = std::vector<uint32_t>;

/** The family, and three ids that nobody knows. */
inline const DeviceIds kKnownIds = {0x0109, 0x0309, 0x0409, 0x0509, 0x0609, 0x0709, 0x0809,
                                    0x8209, 0x8309, 0x8409, 0x8509, 0x8609, 0x8709, 0x8809};
inline const DeviceIds kUnknownIds = {0x0209, 0x8109, 0x00010709};

inline DeviceIds allIds() {
    DeviceIds ids = kKnownIds;
    ids.insert(ids.end(), kUnknownIds.begin(), kUnknownIds.end());
    return ids;
}

inline bool isOneOf(uint32_t devId, const DeviceIds &ids) {
    for (const uint32_t id : ids) {
        if (id == devId)
            return true;
    }
    return false;
}
