#include "iodbg/flash/device_argument.h"

#include "language/refused.h"

#include <algorithm>
#include <iterator>

namespace iodbg {

namespace {

constexpr const char *kPartitions[] = {"mtd0", "mtd4", "mtd12", "mtd14"};

} // namespace

Parser flashDevice(std::string &path) {
    const auto take = [&path](const std::string &word) {
        const auto *const known = std::find(std::begin(kPartitions), std::end(kPartitions), word);
        if (known == std::end(kPartitions) && word.find('/') == std::string::npos)
            language::refuse(word, "is none of mtd0|mtd4|mtd12|mtd14, and no path of a device");
        path = known == std::end(kPartitions) ? word : "/dev/" + word;
    };
    return offering("mtd0|mtd4|mtd12|mtd14", take, Offers::Files::Paths);
}

} // namespace iodbg
