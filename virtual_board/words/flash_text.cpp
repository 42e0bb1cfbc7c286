#include "virtual_board/words/flash_text.h"

#include "virtual_board/board/flash_content.h"
#include "virtual_board/devices/byte_order.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace vb {

namespace {

constexpr uint8_t kErased = 0xFF;

/** The bytes of a partition, for reading. */
class Reader {
  public:
    Reader(const BoardFolder &folder, uint32_t index)
        : content_(folder, index), size_(folder.board()->devices.flash[index].geometry.size) {}

    std::vector<uint8_t> bytes(uint32_t offset, uint32_t length) const {
        std::vector<uint8_t> data(length, kErased);
        if (offset < size_ && length <= size_ - offset &&
            !content_.load(offset, data.data(), length))
            throw Refused("the flash's content cannot be read");
        return data;
    }

    uint32_t programmedPages(uint32_t pageSize) const {
        uint32_t pages = 0;
        for (uint32_t offset = next(0, pageSize); offset < size_;) {
            if (!isErased(bytes(offset, pageSize)))
                ++pages;
            offset = next(offset + pageSize, pageSize);
        }
        return pages;
    }

    static bool isErased(const std::vector<uint8_t> &data) {
        return std::all_of(data.begin(), data.end(), [](uint8_t byte) { return byte == kErased; });
    }

  private:
    /** The page that the next bytes which are no hole of the file belong to. */
    uint32_t next(uint32_t offset, uint32_t pageSize) const {
        return offset < size_ ? content_.nextProgrammed(offset, size_) / pageSize * pageSize
                              : size_;
    }

    FlashContent content_;
    uint32_t size_;
};

// What is recognised

/** The texts of the boot settings: each in a slot of its own, passwords unshown. */
void findSettings(const Reader &reader, std::vector<std::string> &found) {
    constexpr uint32_t kSize = 256;
    constexpr uint32_t kSlot = 32;
    constexpr uint32_t kLastSlot = 192; // which is twice as long
    constexpr const char *kKeys[] = {
        "main_system=", "boot_type=", "baudrate=", "password=", "user_pwd=", "boot_pwd="};
    const std::vector<uint8_t> block = reader.bytes(0, kSize);
    for (uint32_t slot = 0; slot <= kLastSlot; slot += kSlot) {
        const uint32_t end = slot == kLastSlot ? kSize : slot + kSlot;
        std::string text;
        for (uint32_t i = slot; i < end && block[i] >= ' ' && block[i] <= '~'; ++i)
            text += static_cast<char>(block[i]);
        for (const std::string key : kKeys) {
            if (text.starts_with(key))
                found.push_back("boot setting " + (key == "boot_pwd=" ? key + "..." : text));
        }
    }
}

/** A length header, as in front of files that are stored with one. */
void findLengthHeader(const Reader &reader, std::vector<std::string> &found) {
    constexpr uint32_t kSize = 8;
    constexpr uint8_t kMarker[] = {0xA1, 0x02, 0xA3, 0x04};
    const std::vector<uint8_t> header = reader.bytes(0, kSize);
    if (!std::equal(std::begin(kMarker), std::end(kMarker), header.begin() + 4))
        return;
    const uint32_t length = loadBe32(header.data());
    found.push_back("length header: a file of " + std::to_string(length) + " bytes");
}

/** A bank's image, and the copy of its header behind the largest possible image. */
void findImage(const Reader &reader, std::vector<std::string> &found) {
    constexpr uint32_t kHeaderOffset = 0x2700000;
    constexpr uint32_t kHeaderSize = 512;
    if (!Reader::isErased(reader.bytes(0, kHeaderSize)))
        found.emplace_back("image");
    if (!Reader::isErased(reader.bytes(kHeaderOffset, kHeaderSize)))
        found.emplace_back("image header at 0x2700000");
}

std::vector<std::string> contentsOf(const Reader &reader, const FlashGeometry &geometry) {
    constexpr uint32_t kSmallestBank = 0x2700000 + 512;
    std::vector<std::string> found;
    findSettings(reader, found);
    findLengthHeader(reader, found);
    if (geometry.size >= kSmallestBank)
        findImage(reader, found);
    return found;
}

// Geometry in words

void changeField(FlashGeometry &geometry, const std::string &word) {
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (name == "type") {
        if (value != "nor" && value != "nand")
            throw Refused("a partition's type is nor or nand, not '" + value + "'");
        geometry.type = value == "nor" ? FlashType::Nor : FlashType::Nand;
        return;
    }
    const struct {
        const char *name;
        uint32_t FlashGeometry::*field;
    } fields[] = {{"size", &FlashGeometry::size},
                  {"erase", &FlashGeometry::eraseSize},
                  {"page", &FlashGeometry::pageSize},
                  {"spare", &FlashGeometry::spareSize}};
    for (const auto &[known, field] : fields) {
        if (name != known)
            continue;
        const auto number = parseNumber(value, UINT32_MAX);
        if (!number.has_value())
            throw Refused(std::string(known) + " is a number of bytes, not '" + value + "'");
        geometry.*field = *number;
        return;
    }
    throw Refused("'" + word +
                  "' is no part of a geometry; give size=, erase=, page=, spare= "
                  "and type=");
}

} // namespace

const char *flashTypeText(FlashType type) {
    return type == FlashType::Nor ? "nor" : "nand";
}

std::string flashGeometryText(const FlashGeometry &geometry) {
    std::string text = std::string(flashTypeText(geometry.type)) + ", " +
                       std::to_string(geometry.size) + " bytes, blocks of " +
                       std::to_string(geometry.eraseSize) + ", pages of " +
                       std::to_string(geometry.pageSize);
    return geometry.spareSize != 0 ? text + "+" + std::to_string(geometry.spareSize) : text;
}

uint32_t flashIndexOf(uint32_t number) {
    const uint32_t index = flashIndex(number);
    if (index == kFlashPartitions)
        throw Refused("there is no flash partition " + std::to_string(number) +
                      "; the numbers are 0, 4, 12 and 14");
    return index;
}

void changeGeometry(FlashGeometries &all, const std::string &text) {
    const size_t colon = text.find(':');
    const auto number = parseNumber(text.substr(0, colon), UINT32_MAX);
    if (colon == std::string::npos || !number.has_value())
        throw Refused("'" + text +
                      "' is not the geometry of a partition; give it as in "
                      "4:size=262144,erase=131072,page=2048,type=nand");
    FlashGeometry &geometry = all[flashIndexOf(*number)];
    std::istringstream words(text.substr(colon + 1));
    for (std::string word; std::getline(words, word, ',');)
        changeField(geometry, word);
    if (!flashIsPossible(geometry))
        throw Refused("partition " + std::to_string(*number) + " cannot be " +
                      flashGeometryText(geometry) +
                      ": erase blocks are powers of 2 from 4096 to 524288, pages are powers of 2 "
                      "up to 16384 and no larger than a block, the spare area has up to 2048 "
                      "bytes, and the size is 1 to 2048 whole blocks");
}

FlashSummary flashSummary(const BoardFolder &folder, uint32_t index) {
    const Flash &flash = folder.board()->devices.flash[index];
    FlashSummary summary = {};
    summary.number = kFlashNumbers[index];
    summary.geometry = flash.geometry;
    summary.isWriteProtected = flash.isWriteProtected != 0;
    summary.leastErases = UINT32_MAX;
    for (uint32_t block = 0; block < flashBlocks(flash); ++block) {
        summary.leastErases = std::min(summary.leastErases, flash.erases[block]);
        summary.mostErases = std::max(summary.mostErases, flash.erases[block]);
        summary.totalErases += flash.erases[block];
        if (flash.isBad[block] != 0)
            summary.badBlocks.push_back(block);
    }
    const Reader reader(folder, index);
    summary.programmedPages = reader.programmedPages(flash.geometry.pageSize);
    summary.contents = contentsOf(reader, flash.geometry);
    return summary;
}

} // namespace vb
