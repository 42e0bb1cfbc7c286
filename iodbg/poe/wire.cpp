#include "iodbg/poe/wire.h"

#include "bsp.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace iodbg {

namespace {

constexpr uint64_t kPoeBus = 16; // bus 16, channel 0
constexpr uint64_t kPoeDevice = 0x20;
constexpr uint64_t kLongestTransfer = 64; // a block of firmware has 36 bytes

PoeWatcher watching;

std::optional<PoeDirection> directionOf(unsigned long request) {
    if (request == BSP_REQ_I2C_WRITE)
        return PoeDirection::ToController;
    if (request == BSP_REQ_I2C_READ)
        return PoeDirection::FromController;
    return {};
}

} // namespace

std::optional<PoeTraffic> poeTrafficOf(unsigned long request, const void *argument) {
    const std::optional<PoeDirection> direction = directionOf(request);
    if (!direction || argument == nullptr)
        return {};
    const auto &record = *static_cast<const BspIoctlRecord *>(argument);
    const auto *bytes = reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(record.slot[4]));
    const uint64_t length = record.slot[5];
    const bool isCarried =
        record.result == BSP_OK && bytes != nullptr && length <= kLongestTransfer;
    if (record.slot[0] != kPoeBus || record.slot[1] != kPoeDevice || !isCarried)
        return {};
    return PoeTraffic{*direction, {bytes, static_cast<size_t>(length)}};
}

bool isPoeFrame(ByteView frame) {
    constexpr size_t kSize = 12;
    if (frame.size() != kSize)
        return false;
    const auto sum = std::accumulate(frame.begin(), frame.end() - 1, 0u);
    return frame.back() == static_cast<uint8_t>(sum);
}

void PoeEcho::sent(ByteView frame) {
    if (frame.size() >= head_.size())
        std::copy_n(frame.begin(), head_.size(), head_.begin());
}

bool PoeEcho::isAnsweredBy(ByteView frame) const {
    return isPoeFrame(frame) && std::equal(head_.begin(), head_.end(), frame.begin());
}

void tellOfRequest(unsigned long request, const void *argument) {
    if (!watching)
        return;
    if (const auto traffic = poeTrafficOf(request, argument); traffic.has_value())
        watching(traffic->direction, traffic->frame);
}

PoeWatch::PoeWatch(PoeWatcher watcher) {
    watching = std::move(watcher);
}

PoeWatch::~PoeWatch() {
    watching = nullptr;
}

} // namespace iodbg
