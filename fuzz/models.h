#pragma once
// A model of the family, or one that nobody knows, as an input says.

#include "fuzz/input.h"
#include "tests/support/device_ids.h"

namespace fuzz {

inline uint32_t anyModel(Input &input) {
    static const DeviceIds all = allIds();
    return all[input.below(static_cast<uint32_t>(all.size()))];
}

} // namespace fuzz
