#pragma once
// The flash that holds the RTL8239's application.

#include <cstdint>

namespace vb {

constexpr uint32_t kPoeImageSize = 196608;
constexpr uint32_t kPoeSmallestImage = 51200;
constexpr uint32_t kPoeImageUnit = 4; // bytes that are programmed at once
constexpr uint32_t kPoeImageUnits = kPoeImageSize / kPoeImageUnit;

struct PoeImage {
    uint32_t isValid; // the loader has started it once; cleared by the first new block
    uint32_t size;    // up to the end of the last block
    uint8_t written[kPoeImageUnits / 8]; // a bit for each unit; fewer than the size has: holes
    uint8_t bytes[kPoeImageSize];
};

/** An image as the factory programs it. */
void poeProgramImage(PoeImage &image);

/**
 * Programs a block; false when it does not fit or is not whole units. A block at the start erases
 * what was there.
 */
bool poeProgramBlock(PoeImage &image, uint32_t position, const uint8_t *data, uint32_t length);

/** Whether an image has no holes and the length of an application. */
bool poeIsWhole(const PoeImage &image);

/** Whether the state is one that such a flash can have. */
bool poeIsConsistent(const PoeImage &image);

/** Version of the application: an image carries it in its first two bytes. */
uint16_t poeVersion(const PoeImage &image);

} // namespace vb
