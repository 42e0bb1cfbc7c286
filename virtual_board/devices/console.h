#pragma once
// The serial port of the console.

#include <cstdint>

namespace vb {

constexpr char kConsolePath[] = "/dev/ttyS0";

struct Console {
    uint32_t speed; // in baud, both directions: the port has one divider
};

constexpr uint32_t kConsoleUsualSpeed = 115200;
/** The rates that terminals have. */
constexpr uint32_t kConsoleSpeeds[] = {50,    75,    110,    134,    150,    200,   300,
                                       600,   1200,  1800,   2400,   4800,   9600,  19200,
                                       38400, 57600, 115200, 230400, 460800, 921600};

constexpr bool isConsoleSpeed(uint32_t speed) {
    for (const uint32_t possible : kConsoleSpeeds) {
        if (speed == possible)
            return true;
    }
    return false;
}

} // namespace vb
