#include "chassis/pmbus.h"

#include "bsp.h"
#include "support/board_map.h"
#include "support/message.h"

#include <cstring>
#include <unistd.h>

namespace {

using bsp::kSupplyPmbus;

constexpr int32_t kMaxReply = 32;
constexpr int32_t kShortestBlock = 3;
constexpr useconds_t kReadPause = 100000; // the supply's controller needs it between commands

constexpr uint32_t supplyChannel(int32_t index) {
    return kSupplyPmbus.channel + static_cast<uint32_t>(index) - 1;
}

} // namespace

int32_t bsp_power_info_read(int32_t index, uint32_t command, int32_t length, uint8_t *buffer) {
    if ((index != 1 && index != 2) || length < 1 || length > kMaxReply)
        return BSP_E_INVALID;
    uint8_t reply[kMaxReply] = {};
    if (bspI2cRead(kSupplyPmbus.bus, supplyChannel(index), kSupplyPmbus.device, command, 1, reply,
                   length) != BSP_OK)
        return BSP_E_FAILED;
    const auto count = static_cast<size_t>(length);
    if (length < kShortestBlock) {
        std::memcpy(buffer, reply, count);
    } else if (reply[0] == length - 1) {
        std::memcpy(buffer, reply + 1, count - 1);
    } else {
        bsp::report(bsp::CallSite::here(), "get data len error,%d(%#x) \n", length, reply[0]);
        return BSP_E_FAILED;
    }
    usleep(kReadPause);
    return BSP_OK;
}
