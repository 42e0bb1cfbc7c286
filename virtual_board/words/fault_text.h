#pragma once
// Fault rules in words.

#include "virtual_board/board/faults.h"

#include <string>

namespace vb {

/** The parts of a rule as the command line has them. */
struct FaultWords {
    std::string device;     // cpld, gpio, i2c, i2c:BUS.CH.DEV, poe, mtdN, console, or the path of a
                            // file of the board
    std::string op = "any"; // any, open, read, write, reset, program, erase, info, change,
                            // map
    std::string offset;     // register, line, I2C or flash offset, PoE command; empty: every one
    std::string nth = "1";  // which matching request
    std::string when = "once"; // once, every, from
    std::string effect;        // refuse=N, open-fails=ERRNO, ioctl-fails=ERRNO, short=N,
                               // corrupt=INDEX:MASK, no-answer, late-answer=N, wrong-echo,
                               // wrong-checksum, bad-port=N, no-effect, fails=ERRNO, power-cut=N
};

/** The rule that the words stand for. Words that make no rule that could ever fire throw Refused.
 */
FaultRule parseFault(const FaultWords &words);

FaultWords faultWords(const FaultRule &rule);

/** A rule as arguments of `vboard fault add`. */
std::string faultText(const FaultRule &rule);

} // namespace vb
