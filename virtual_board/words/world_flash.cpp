// The flash partitions and the console as properties.

#include "virtual_board/board/flash_content.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/property_types.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <sstream>

namespace vb {

namespace {

using Target = PropertyTarget;

constexpr const char *kNoYes[] = {"no", "yes"};

Flash &flashOf(const Target &target) {
    return target.devices().flash[flashIndex(target.number)];
}

std::string getGeometry(const Target &target) {
    return flashGeometryText(flashOf(target).geometry);
}

std::string getBadBlocks(const Target &target) {
    const Flash &flash = flashOf(target);
    std::string text;
    for (uint32_t block = 0; block < flashBlocks(flash); ++block) {
        if (flash.isBad[block] != 0)
            text += (text.empty() ? "" : ",") + std::to_string(block);
    }
    return text.empty() ? "none" : text;
}

void setBadBlocks(const Target &target, const std::string &value) {
    Flash &flash = flashOf(target);
    if (flash.geometry.type == FlashType::Nor && value != "none")
        throw Refused("only NAND has bad blocks");
    std::vector<uint32_t> blocks;
    std::istringstream words(value == "none" ? "" : value);
    for (std::string word; std::getline(words, word, ',');) {
        const auto block = parseNumber(word, flashBlocks(flash) - 1);
        if (!block.has_value())
            throw Refused("bad blocks are 'none' or numbers from 0 to " +
                          std::to_string(flashBlocks(flash) - 1) +
                          " with commas between them, not '" + value + "'");
        blocks.push_back(*block);
    }
    std::fill(std::begin(flash.isBad), std::end(flash.isBad), uint8_t{0});
    for (const uint32_t block : blocks)
        flash.isBad[block] = 1;
}

std::string getProtected(const Target &target) {
    return kNoYes[flashOf(target).isWriteProtected];
}

void setProtected(const Target &target, const std::string &value) {
    flashOf(target).isWriteProtected = language::parseChoice(value, kNoYes);
}

std::string getErases(const Target &target) {
    const FlashSummary summary = flashSummary(target.folder, flashIndex(target.number));
    return "min=" + std::to_string(summary.leastErases) +
           " max=" + std::to_string(summary.mostErases) +
           " total=" + std::to_string(summary.totalErases);
}

constexpr uint32_t kMostBytes = 1024 * 1024; // shown at once

std::string getContent(const Target &target) {
    const uint32_t size = flashOf(target).geometry.size;
    const uint32_t offset = target.offset.value_or(0);
    const uint32_t length = target.length.value_or(offset < size ? size - offset : 1);
    if (length == 0 || offset >= size || length > size - offset || length > kMostBytes)
        throw Refused("the partition has bytes 0 to " + std::to_string(size - 1) +
                      "; give a range inside, of up to 1048576 bytes: @OFFSET+LENGTH");
    std::vector<uint8_t> bytes(length);
    const FlashContent content(target.folder, flashIndex(target.number));
    if (!content.load(offset, bytes.data(), length))
        throw Refused("the flash's content cannot be read");
    return language::hexText(bytes);
}

void setContent(const Target &target, const std::string &value) {
    const uint32_t size = flashOf(target).geometry.size;
    const std::vector<uint8_t> bytes = bytesToSet(target, value, size, "partition");
    const FlashContent content(target.folder, flashIndex(target.number));
    if (!content.store(target.offset.value_or(0), bytes.data(),
                       static_cast<uint32_t>(bytes.size())))
        throw Refused("the flash's content cannot be written");
}

std::string getSpeed(const Target &target) {
    return std::to_string(target.devices().console.speed);
}

void setSpeed(const Target &target, const std::string &value) {
    const auto speed = parseNumber(value, UINT32_MAX);
    if (!speed.has_value() || !isConsoleSpeed(*speed))
        throw Refused("'" + value + "' is no rate of a serial console; 9600 and 115200 are");
    target.devices().console.speed = *speed;
}

constexpr uint32_t kFirst = kFlashNumbers[0];
constexpr uint32_t kLast = kFlashNumbers[kFlashPartitions - 1];

constexpr PropertyType kFlashProperties[] = {
    {"flash.#.geometry", kFirst, kLast, getGeometry, nullptr, nullptr, false, Fitted::Flash},
    {"flash.#.bad-blocks", kFirst, kLast, getBadBlocks, setBadBlocks, "none", false, Fitted::Flash},
    {"flash.#.write-protected", kFirst, kLast, getProtected, setProtected, "no", false,
     Fitted::Flash},
    {"flash.#.erase-counts", kFirst, kLast, getErases, nullptr, "min=0 max=0 total=0", false,
     Fitted::Flash},
    {"flash.#.content", kFirst, kLast, getContent, setContent, nullptr, true, Fitted::Flash, true},
    {"console.speed", 0, 0, getSpeed, setSpeed, nullptr, false, Fitted::Always},
};

} // namespace

std::span<const PropertyType> flashProperties() {
    return kFlashProperties;
}

} // namespace vb
