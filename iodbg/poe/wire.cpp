#include "iodbg/poe/wire.h"

#include "bsp.h"
#include "support/board_map.h"

#include <algorithm>
#include <utility>

namespace iodbg {

namespace {

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
        record.result == BSP_OK && bytes != nullptr && length <= kLongestPoeTransfer;
    if (record.slot[0] != bsp::kPoeController.bus || record.slot[1] != bsp::kPoeController.device ||
        !isCarried)
        return {};
    return PoeTraffic{*direction, {bytes, static_cast<size_t>(length)}};
}

void PoeEcho::sent(ByteView frame) {
    if (frame.size() < 2 || frame.size() > sent_.size())
        return; // no question
    std::copy(frame.begin(), frame.end(), sent_.begin());
    length_ = frame.size();
}

bool PoeEcho::isAnsweredBy(ByteView frame) const {
    return guide_.isAnswer({sent_.data(), length_}, frame);
}

PoeWatch::PoeWatch(PoeWatcher watcher)
    : watch_([tell = std::move(watcher)](unsigned long request, const void *argument) {
          if (const auto traffic = poeTrafficOf(request, argument); traffic.has_value())
              tell(traffic->direction, traffic->frame);
      }) {}

} // namespace iodbg
