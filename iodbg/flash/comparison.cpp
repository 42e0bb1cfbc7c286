#include "iodbg/flash/comparison.h"

#include <algorithm>

namespace iodbg {

namespace {

void note(Comparison &comparison, const Comparison::Difference &difference) {
    if (!comparison.first)
        comparison.first = difference;
    ++comparison.differing;
}

/** Steps over bad blocks, each of which is noted. */
uint64_t behindBadBlocks(const FlashPartition &partition, uint64_t place, Comparison &comparison) {
    while (place < partition.size() && partition.isBad(place)) {
        comparison.badBlocks.push_back(static_cast<int64_t>(place / partition.blockSize()));
        place += partition.blockSize();
    }
    return place;
}

} // namespace

Comparison compare(const FlashPartition &partition, const Content &content, Layout layout,
                   const std::function<void(uint64_t)> &reached) {
    const ContentReader reader(content);
    Comparison comparison;
    Bytes wanted(partition.blockSize());
    Bytes stored(partition.blockSize());
    uint64_t place = 0;
    uint64_t offset = 0;
    while (offset < content.size()) {
        if (layout == Layout::AroundBadBlocks)
            place = behindBadBlocks(partition, place, comparison);
        const auto count =
            static_cast<size_t>(std::min<uint64_t>(partition.blockSize(), content.size() - offset));
        const auto onDevice =
            static_cast<size_t>(std::min<uint64_t>(count, partition.size() - place));
        reader.read(offset, {wanted.data(), count});
        partition.read(place, {stored.data(), onDevice});
        for (size_t i = 0; i < count; ++i) {
            if (i >= onDevice)
                note(comparison, {offset + i, place + i, wanted[i], {}});
            else if (wanted[i] != stored[i])
                note(comparison, {offset + i, place + i, wanted[i], stored[i]});
        }
        offset += count;
        place += onDevice;
        reached(offset);
    }
    return comparison;
}

std::string differenceText(const FlashPartition &partition, const Content &content,
                           const Comparison &comparison) {
    const Comparison::Difference &first = *comparison.first;
    const auto hex = [](uint64_t value) { return hexNumber(static_cast<uint32_t>(value), 1); };
    const size_t front = content.front.size();
    const std::string byte = first.offset < front
                                 ? "byte " + hex(first.offset) + " of the header"
                                 : "byte " + hex(first.offset - front) + " of the file";
    if (!first.stored)
        return "the partition ends before " + byte + ", so that " +
               std::to_string(comparison.differing) + " bytes are missing or differ";
    std::string text = byte + ", at " + hex(first.place) + " in " + partition.device() + ", is " +
                       hexNumber(*first.stored, 2) + " instead of " + hexNumber(first.wanted, 2) +
                       ", and " + std::to_string(comparison.differing) + " of " +
                       std::to_string(content.size()) + " bytes differ";
    const std::string block = std::to_string(first.place / partition.blockSize());
    if (partition.isBad(first.place))
        text += "; block " + block + " is bad";
    else if (partition.isErased(first.place))
        text += "; block " + block + " reads as erased";
    return text;
}

} // namespace iodbg
