#pragma once

#include <cstdint>

namespace vb {

/** What 32-bit systems with 64-bit time pass instead of a timespec. */
struct Timespec64 {
    int64_t tv_sec;
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    int32_t padding;
    int32_t tv_nsec;
#else
    int32_t tv_nsec;
    int32_t padding;
#endif
};

/** And instead of a timeval. */
struct Timeval64 {
    int64_t tv_sec;
    int64_t tv_usec;
};

} // namespace vb
