#pragma once
// The frames that the library exchanges with the PoE controller, seen as they pass: what long work
// has reached, and parts of answers that no function of the library gives.

#include "iodbg/format.h"

#include <functional>

namespace iodbg {

enum class PoeDirection { ToController, FromController };

/** Told of every frame that the bus has carried. It must not throw. */
using PoeWatcher = std::function<void(PoeDirection direction, ByteView frame)>;

/** Watches the frames as long as it lives; one at a time. */
class PoeWatch {
  public:
    explicit PoeWatch(PoeWatcher watcher);
    PoeWatch(const PoeWatch &) = delete;
    PoeWatch &operator=(const PoeWatch &) = delete;
    ~PoeWatch();
};

} // namespace iodbg
