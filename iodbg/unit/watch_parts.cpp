#include "iodbg/unit/watch_parts.h"

#include "language/refused.h"

#include <algorithm>
#include <iterator>

namespace iodbg {

namespace {

constexpr const char *kPartNames[] = {"climate", "fans",  "supplies", "poe",
                                      "sfp",     "clock", "panel"};
static_assert(std::size(kPartNames) == kWatchedParts);

WatchedPart partOf(const std::string &name) {
    for (size_t i = 0; i < kWatchedParts; ++i) {
        if (name == kPartNames[i])
            return static_cast<WatchedPart>(i);
    }
    language::refuse(name, "is none of " + partWords());
}

} // namespace

std::string partWords() {
    std::string words;
    for (const char *name : kPartNames)
        words += (words.empty() ? "" : "|") + std::string(name);
    return words;
}

Parser partsParser(WatchedParts &target) {
    return offering(partWords(), [&target](const std::string &word) {
        target.clear();
        for (size_t at = 0; at <= word.size();) {
            const size_t end = std::min(word.find(',', at), word.size());
            target.add(partOf(word.substr(at, end - at)));
            at = end + 1;
        }
    });
}

} // namespace iodbg
