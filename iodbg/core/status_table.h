#pragma once
// The library's status codes in words.

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

struct StatusText {
    int32_t code;
    std::string name; // as in bsp.h; empty for codes that the library does not define
    std::string meaning;
    std::string next; // what a user can do about it
};

/** Every code that bsp.h defines. */
std::vector<StatusText> allStatuses();

/** Any code in words, also those that come from the kernel module or the operating system. */
StatusText explain(int32_t status);

/** "BSP_E_INVALID (1002)", or "status 22" for a code without a name. */
std::string nameAndNumber(int32_t status);

} // namespace iodbg
