#pragma once
// What a capture of the unit gathers: each room reads its part into a sheet.

#include "iodbg/core/format.h"
#include "language/captured_unit.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace iodbg {

class Failure;

/** What its user wants to have in it besides. */
struct CaptureWishes {
    bool hasSecrets = false;
    bool hasFlash = false;
};

/** A property's name with its number: numbered("fan.#.speed", 1). */
std::string numbered(const std::string &pattern, uint32_t number);

class CaptureSheet {
  public:
    /** reached: told how many milliseconds of a part's least time have passed. */
    CaptureSheet(const CaptureWishes &wishes, std::function<void(uint32_t)> reached);

    const CaptureWishes &wishes() const { return wishes_; }

    /** What was read of a property: its value, or how reading it failed. */
    void put(const std::string &name, int32_t status, language::CapturedContent value,
             std::optional<Bytes> raw = {});
    void putNumber(const std::string &name, int32_t status, int64_t value,
                   std::optional<Bytes> raw = {});
    /** Bytes that are not printable ASCII appear as \xNN. */
    void putText(const std::string &name, int32_t status, const std::string &text,
                 std::optional<Bytes> raw = {});
    void putBytes(const std::string &name, int32_t status, ByteView bytes);
    void putFlag(const std::string &name, int32_t status, bool isSet);
    /** A reading that ended before its time. */
    void putFailure(const std::string &name, const Failure &failure);

    void leaveOut(const std::string &name, const std::string &reason);
    void reach(uint32_t ms) const { reached_(ms); }

    language::CapturedUnit &unit() { return unit_; }

  private:
    CaptureWishes wishes_;
    std::function<void(uint32_t)> reached_;
    language::CapturedUnit unit_;
};

} // namespace iodbg
