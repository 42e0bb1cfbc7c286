#pragma once
// The frames that the library exchanges with the PoE controller, seen as they pass: what long work
// has reached, and parts of answers that no function of the library gives.

#include "iodbg/core/format.h"
#include "iodbg/core/library_calls.h"
#include "poe/guide.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

namespace iodbg {

enum class PoeDirection { ToController, FromController };

/** A frame on its way. */
struct PoeTraffic {
    PoeDirection direction;
    ByteView frame;
};

/**
 * The frame that a request of the library has carried to or from the PoE controller; none for all
 * other requests. What a request's argument is, its code tells: only behind those of the I2C bus
 * stands a record.
 */
std::optional<PoeTraffic> poeTrafficOf(unsigned long request, const void *argument);

constexpr size_t kLongestPoeTransfer = 64; // what is longer is no frame of any controller

/** The frame that was sent last, by which its answer is known. */
class PoeEcho {
  public:
    explicit PoeEcho(const bsp::PoeGuide &guide) : guide_(guide) {}

    void sent(ByteView frame);
    /** Whether a frame that was read is a whole one and answers what was sent. */
    bool isAnsweredBy(ByteView frame) const;

  private:
    const bsp::PoeGuide &guide_;
    std::array<uint8_t, kLongestPoeTransfer> sent_{};
    size_t length_ = 0;
};

/** Told of every frame that the bus has carried. It must not throw. */
using PoeWatcher = std::function<void(PoeDirection direction, ByteView frame)>;

/** Watches the frames as long as it lives; one at a time. */
class PoeWatch {
  public:
    explicit PoeWatch(PoeWatcher watcher);

  private:
    RequestWatch watch_;
};

} // namespace iodbg
