#pragma once
// The board's devices and files, as programs of a unit open them.

#include <cstdint>

namespace tracer {

enum class Device { None, Driver, Memory, Flash };

struct DeviceFound {
    Device device = Device::None;
    uint8_t partition = 0; // of flash: its number
};

/** Learns what tells the driver's node, and which devices this program has inherited. */
void learnDevices();

/**
 * Whose a descriptor is. The kernel is asked: descriptors are copied, passed, inherited and
 * replaced in ways that nobody sees.
 */
DeviceFound deviceOf(int fd);

/** Whether this process may have descriptors of flash at all. */
bool mayHaveFlash();

/** From now on it may. */
void expectFlash();
/** The driver's node was opened by this descriptor. */
void expectDriver(int fd);

constexpr uint32_t kLongestPath = 256;
/**
 * A path as it is told, free of doubled and idle parts; false for those of no file of the board's.
 * Links are not followed.
 */
bool isOfBoard(const char *path, char (&tidy)[kLongestPath]);

} // namespace tracer
