#include "iodbg/flash/device_argument.h"

#include "language/refused.h"
#include "support/board_map.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace iodbg {

namespace {

constexpr char kFolder[] = "/dev/";
constexpr const char *kPartitions[] = {bsp::kBootLoaderPartition, bsp::kBootSettingsPartition,
                                       bsp::kOsBank0Partition, bsp::kOsBank1Partition};

/** "mtd0|mtd4|...", without their folder. */
std::string partitionWords() {
    std::string words;
    for (const char *partition : kPartitions)
        words += (words.empty() ? "" : "|") + std::string(partition).substr(std::strlen(kFolder));
    return words;
}

} // namespace

std::string flashDeviceHelp() {
    return partitionWords() + ", or the path of a device";
}

Parser flashDevice(std::string &path) {
    const std::string words = partitionWords();
    const auto take = [&path, words](const std::string &word) {
        path = kFolder + word;
        if (std::find(std::begin(kPartitions), std::end(kPartitions), path) !=
            std::end(kPartitions))
            return;
        if (word.find('/') == std::string::npos)
            language::refuse(word, "is none of " + words + ", and no path of a device");
        path = word;
    };
    return offering(words, take, Offers::Files::Paths);
}

} // namespace iodbg
