#pragma once
// What only one iodbg of a board may do at a time. The library locks its own steps, but neither an
// upgrade as a whole nor the scratch file through which image headers are read. The locks are
// record locks on a file of iodbg's own: the kernel knows who holds them, and frees them when that
// process ends, however it does.

#include "iodbg/flash/partition.h"

#include <optional>
#include <sys/types.h>

namespace iodbg {

/** A part of the lock file, locked as long as it lives. */
class FlashClaim {
  public:
    /** Claims a partition for a change of it; throws, naming the process, when another has it. */
    explicit FlashClaim(const FlashPartition &partition);
    /** The same for the CPLD's logic. */
    struct Cpld {};
    explicit FlashClaim(Cpld) : FlashClaim(kCpld, "the CPLD's logic") {}

    FlashClaim(const FlashClaim &) = delete;
    FlashClaim &operator=(const FlashClaim &) = delete;
    ~FlashClaim();

  private:
    FlashClaim(off_t place, const std::string &what);

    static constexpr off_t kCpld = 2;

    off_t place_;
};

/** The use of the scratch file with an image's header; others wait for its end. */
class HeaderTurn {
  public:
    enum class Length {
        Moment,
        Long, // those who wait are told of it
    };

    explicit HeaderTurn(Length length = Length::Moment);
    HeaderTurn(const HeaderTurn &) = delete;
    HeaderTurn &operator=(const HeaderTurn &) = delete;
    ~HeaderTurn();

    /** The process that has a long turn, for those who would rather not wait; none without one. */
    static std::optional<pid_t> longHolder();
};

} // namespace iodbg
