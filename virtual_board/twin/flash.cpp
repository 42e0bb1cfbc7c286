#include "virtual_board/twin/flash.h"

#include "language/erased_flash.h"
#include "language/formats/boot_settings.h"
#include "language/formats/crc32.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/twin/parts.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

namespace vb {

namespace {

using language::Bytes;

constexpr uint32_t kImageHeader = 0x2700000; // behind the largest image
constexpr uint8_t kErasedByte = 0xFF;

/** A partition of the twin, being written. */
class Partition {
  public:
    Partition(Twin &twin, uint32_t index)
        : twin_(twin), index_(index), content_(twin.folder, index) {}

    uint32_t number() const { return kFlashNumbers[index_]; }
    const Flash &flash() const { return twin_.devices().flash[index_]; }

    void store(uint64_t offset, const Bytes &bytes) const {
        const uint64_t size = flash().geometry.size;
        if (offset > size || bytes.size() > size - offset)
            throw Refused("flash." + std::to_string(number()) +
                          ".content: it is more than the partition holds");
        if (!content_.store(static_cast<uint32_t>(offset), bytes.data(),
                            static_cast<uint32_t>(bytes.size())))
            throw Refused("the flash's content cannot be written");
    }

    /** The CRC of all blocks that are not bad, but for so many bytes at the end of the last one. */
    uint32_t crcBut(const Bytes &end) const {
        const FlashGeometry &geometry = flash().geometry;
        const uint32_t last = lastGoodBlock();
        uint32_t crc = 0;
        Bytes block(geometry.eraseSize);
        for (uint32_t i = 0; i <= last; ++i) {
            if (flash().isBad[i] != 0)
                continue;
            content_.load(i * geometry.eraseSize, block.data(), geometry.eraseSize);
            const size_t length = block.size() - (i == last ? end.size() : 0);
            crc = language::flashCrc32(crc, {block.data(), length});
        }
        return crc;
    }

    /** Its last bytes. */
    Bytes lastBytes(uint32_t count) const {
        Bytes bytes(count);
        content_.load(end() - count, bytes.data(), count);
        return bytes;
    }

    bool hasGoodBlock() const {
        return std::any_of(flash().isBad, flash().isBad + flashBlocks(flash()),
                           [](uint8_t isBad) { return isBad == 0; });
    }

    uint32_t end() const { return (lastGoodBlock() + 1) * flash().geometry.eraseSize; }

  private:
    uint32_t lastGoodBlock() const {
        uint32_t block = flashBlocks(flash()) - 1;
        while (block > 0 && flash().isBad[block] != 0)
            --block;
        return block;
    }

    Twin &twin_;
    uint32_t index_;
    FlashContent content_;
};

/** A setting of the boot loader as a property has it. */
struct BootRow {
    const char *name;
    const formats::BootSlot &slot;
};

constexpr BootRow kBootNumbers[] = {{"boot.mode", formats::kBootModeSlot},
                                    {"boot.flag", formats::kBootFlagSlot},
                                    {"boot.baudrate", formats::kBaudrateSlot}};

/** Whether the defaults held that the settings tell: nothing was stored. */
bool hasNoBootSettings(const language::CapturedUnit &unit) {
    return std::any_of(unit.findings.begin(), unit.findings.end(),
                       [](const language::CapturedFinding &finding) {
                           return finding.code == "boot-settings-empty";
                       });
}

/** The settings where their block was not captured. */
void makeBootSettings(Twin &twin, const Partition &partition) {
    Bytes block(formats::kBootBlockSize, kErasedByte);
    for (const BootRow &row : kBootNumbers) {
        if (const auto number = twin.number(row.name, 0, INT32_MIN, INT32_MAX))
            formats::storeBootText(
                row.slot, formats::bootText(row.slot, static_cast<int32_t>(*number)), block.data());
    }
    const formats::BootSlotText asks = formats::bootText(
        formats::kConsolePasswordSlot, twin.text("boot.console-password", 0) == "yes" ? 1 : 0);
    formats::storeBootText(formats::kConsolePasswordSlot, asks, block.data());
    if (twin.text("boot.user-password", 0) == "no")
        formats::storeBootText(formats::kUserPasswordSlot,
                               formats::bootText(formats::kUserPasswordSlot, 0), block.data());
    if (twin.text("boot.has-password", 0) == "yes") {
        formats::storeBootText(formats::kBootPasswordSlot,
                               formats::bootPasswordText("not-captured"), block.data());
        twin.lack("boot.password", "it was not captured; 'not-captured' stands for it");
    }
    partition.store(0, block);
}

/** Makes the partition have the unit's checksum by four bytes at its end. */
void makeChecksum(Twin &twin, const Partition &partition) {
    constexpr uint32_t kFiller = 4;
    const std::string text = twin.text("flash.#.crc32", partition.number());
    const auto crc = parseNumber(text, UINT32_MAX);
    if (!crc && !text.empty())
        twin.lack(twinName("flash.#.crc32", partition.number()), "'" + text + "' is no checksum");
    if (!crc || !partition.hasGoodBlock())
        return;
    Bytes bytes = partition.lastBytes(kFiller);
    const uint32_t before = partition.crcBut(bytes);
    if (formats::crc32(before, bytes.data(), kFiller) == *crc)
        return;
    const uint32_t filler = bytesBetween(before, *crc);
    for (uint32_t i = 0; i < kFiller; ++i)
        bytes[i] = static_cast<uint8_t>(filler >> 8 * i);
    partition.store(partition.end() - kFiller, bytes);
    twin.lack(twinName("flash.#.content", partition.number()),
              "it was not captured; the partition reads as erased where nothing else is known, and "
              "its last four bytes make its checksum the unit's");
}

void makeContent(Twin &twin, const Partition &partition) {
    const language::CapturedReading *content = twin.read("flash.#.content", partition.number());
    if (content != nullptr && content->runs() != nullptr) {
        for (const language::CapturedRun &run : *content->runs())
            partition.store(run.offset, run.bytes);
        return;
    }
    if (partition.number() == kBootSettingsPartition) {
        const Bytes block = twin.bytes("boot.block", 0);
        if (!block.empty())
            partition.store(0, block);
        else if (twin.has("boot.mode", 0) && !hasNoBootSettings(twin.unit))
            makeBootSettings(twin, partition);
    }
    const bool isBank =
        partition.number() == kOsBank0Partition || partition.number() == kOsBank1Partition;
    const uint32_t bank = partition.number() == kOsBank0Partition ? 0 : 1;
    if (const Bytes header = twin.bytes("image.#.header", bank); isBank && !header.empty())
        partition.store(kImageHeader, header);
    makeChecksum(twin, partition);
}

} // namespace

FlashGeometry parseGeometryText(const std::string &text) {
    FlashGeometry geometry = {};
    char type[8] = "", rest = '\0';
    const int found = std::sscanf(text.c_str(),
                                  "%7[a-z], %10" SCNu32 " bytes, blocks of %10" SCNu32
                                  ", pages of %10" SCNu32 "+%10" SCNu32 "%c",
                                  type, &geometry.size, &geometry.eraseSize, &geometry.pageSize,
                                  &geometry.spareSize, &rest);
    const std::string word = type;
    geometry.type = word == "nor" ? FlashType::Nor : FlashType::Nand;
    const bool isWhole = found == 4 || found == 5;
    if (!isWhole || (word != "nor" && word != "nand") || !flashIsPossible(geometry))
        throw Refused("no partition of a virtual board is '" + text + "'");
    return geometry;
}

uint32_t bytesBetween(uint32_t crcBefore, uint32_t crcBehind) {
    constexpr uint32_t kPolynomial = 0xEDB88320, kHighestBit = 0x80000000;
    uint32_t value = ~crcBehind;
    for (int bit = 0; bit < 32; ++bit)
        value = (value & kHighestBit) != 0 ? (value ^ kPolynomial) << 1 | 1 : value << 1;
    return value ^ ~crcBefore;
}

void makeTwinFlash(Twin &twin) {
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const uint32_t number = kFlashNumbers[index];
        if (!twin.has("flash.#.geometry", number))
            continue;
        const std::string badBlocks = twin.text("flash.#.bad-blocks", number);
        if (!badBlocks.empty())
            setProperty(twin.folder, twinName("flash.#.bad-blocks", number), badBlocks);
        makeContent(twin, Partition(twin, index));
        twin.devices().flash[index].isWriteProtected =
            twin.text("flash.#.write-protected", number) == "yes" ? 1 : 0;
    }
}

} // namespace vb
