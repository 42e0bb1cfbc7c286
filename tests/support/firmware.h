#pragma once
// Firmware of the PoE controller.

#include <string>

/** An image whose version, in its first two bytes, is V1.2.3.4. */
inline std::string firmwareImage(size_t size) {
    std::string image(size, '\x5A');
    image.replace(0, 2, "\x12\x34");
    return image;
}
