// The flash partitions and the console as properties.

#include "virtual_board/board/flash_content.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/parts.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <sstream>

namespace vb {

namespace {

using language::Value;
using Target = PropertyTarget;

Flash &flashOf(const Target &target) {
    return target.devices().flash[flashIndex(target.number())];
}

Value getGeometry(const Target &target) {
    return flashGeometryText(flashOf(target).geometry);
}

Value getBadBlocks(const Target &target) {
    const Flash &flash = flashOf(target);
    std::string text;
    for (uint32_t block = 0; block < flashBlocks(flash); ++block) {
        if (flash.isBad[block] != 0)
            text += (text.empty() ? "" : ",") + std::to_string(block);
    }
    return text.empty() ? "none" : text;
}

void setBadBlocks(const Target &target, const Value &given) {
    const std::string &value = given.text();
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

Value getProtected(const Target &target) {
    return flashOf(target).isWriteProtected != 0;
}

void setProtected(const Target &target, const Value &value) {
    flashOf(target).isWriteProtected = value.as<uint32_t>();
}

Value getErases(const Target &target) {
    const FlashSummary summary = flashSummary(target.folder, flashIndex(target.number()));
    return "min=" + std::to_string(summary.leastErases) +
           " max=" + std::to_string(summary.mostErases) +
           " total=" + std::to_string(summary.totalErases);
}

constexpr uint32_t kMostBytes = 1024 * 1024; // shown at once

Value getContent(const Target &target) {
    const uint32_t size = flashOf(target).geometry.size;
    const uint32_t offset = target.name.offset.value_or(0);
    const uint32_t length = target.name.length.value_or(offset < size ? size - offset : 1);
    if (length == 0 || offset >= size || length > size - offset || length > kMostBytes)
        throw Refused("the partition has bytes 0 to " + std::to_string(size - 1) +
                      "; give a range inside, of up to 1048576 bytes: @OFFSET+LENGTH");
    std::vector<uint8_t> bytes(length);
    const FlashContent content(target.folder, flashIndex(target.number()));
    if (!content.load(offset, bytes.data(), length))
        throw Refused("the flash's content cannot be read");
    return language::hexText(bytes);
}

bool storeContent(const BoardFolder &folder, uint32_t index, uint32_t offset,
                  const std::vector<uint8_t> &bytes) {
    const FlashContent content(folder, index);
    return content.store(offset, bytes.data(), static_cast<uint32_t>(bytes.size()));
}

void setContent(const Target &target, const Value &value) {
    const uint32_t size = flashOf(target).geometry.size;
    const std::vector<uint8_t> bytes = bytesToSet(target, value, size, "partition");
    const uint32_t offset = target.name.offset.value_or(0);
    std::vector<uint8_t> old(bytes.size());
    const uint32_t index = flashIndex(target.number());
    const BoardFolder &folder = target.folder;
    if (!FlashContent(folder, index).load(offset, old.data(), static_cast<uint32_t>(old.size())))
        throw Refused("the flash's content cannot be read");
    target.deeds->push_back(
        {[&folder, index, offset, bytes] {
             if (!storeContent(folder, index, offset, bytes))
                 throw Refused("the flash's content cannot be written");
         },
         [&folder, index, offset, old] { storeContent(folder, index, offset, old); }});
}

Value getTiming(const Target &target) {
    return static_cast<uint32_t>(target.devices().flashTiming);
}

void setTiming(const Target &target, const Value &value) {
    target.devices().flashTiming = value.as<FlashTiming>();
}

Value getSpeed(const Target &target) {
    return target.devices().console.speed;
}

void setSpeed(const Target &target, const Value &value) {
    const auto speed = value.as<uint32_t>();
    if (!isConsoleSpeed(speed))
        throw Refused("'" + std::to_string(speed) +
                      "' is no rate of a serial console; 9600 and 115200 are");
    target.devices().console.speed = speed;
}

constexpr Binding kFlashBindings[] = {
    bind("flash.#.geometry", getGeometry),
    bind("flash.#.bad-blocks", getBadBlocks, setBadBlocks),
    bind("flash.#.write-protected", getProtected, setProtected),
    bind("flash.#.erase-counts", getErases),
    bind("flash.#.content", getContent, setContent),
    bind("flash.timing", getTiming, setTiming),
    bind("console.speed", getSpeed, setSpeed),
};
static_assert(hasWordsUpTo("flash.timing", FlashTiming::Usual));
static_assert(language::propertyOf("console.speed").lowest == kConsoleSpeeds[0]);
static_assert(language::propertyOf("console.speed").highest ==
              kConsoleSpeeds[std::size(kConsoleSpeeds) - 1]);

} // namespace

std::span<const Binding> flashBindings() {
    return kFlashBindings;
}

} // namespace vb
