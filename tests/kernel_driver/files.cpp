#include "tests/kernel_driver/files.h"

#include "tests/kernel_driver/chip.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <unistd.h>

Bytes readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file)
        return {};
    Bytes content(static_cast<size_t>(file.tellg()));
    file.seekg(0);
    file.read(reinterpret_cast<char *>(content.data()),
              static_cast<std::streamsize>(content.size()));
    return content;
}

void writeFile(const std::string &path, const Bytes &content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char *>(content.data()),
               static_cast<std::streamsize>(content.size()));
}

bool exists(const std::string &path) {
    return access(path.c_str(), F_OK) == 0;
}

Bytes patterned(size_t size, uint32_t seed) {
    constexpr uint32_t kFactor = 1664525;
    constexpr uint32_t kIncrement = 1013904223;
    Bytes bytes(size);
    uint32_t state = seed;
    for (uint8_t &byte : bytes) {
        state = state * kFactor + kIncrement;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

Bytes erased(size_t size) {
    return Bytes(size, kErased);
}

Bytes part(const Bytes &bytes, size_t offset, size_t length) {
    const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {start, start + static_cast<std::ptrdiff_t>(length)};
}

Bytes paddedToPage(Bytes content, uint8_t padding) {
    content.resize((content.size() + kPageSize - 1) / kPageSize * kPageSize, padding);
    return content;
}

Bytes bothProgrammed(const Bytes &first, const Bytes &second) {
    Bytes bytes = first;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(first[i] & second[i]);
    return bytes;
}

Bytes joined(std::initializer_list<Bytes> pieces) {
    Bytes bytes;
    for (const Bytes &piece : pieces)
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    return bytes;
}

Bytes settingsPage() {
    struct Slot {
        size_t offset;
        const char *text;
    };
    constexpr Slot kSlots[] = {{0, "main_system=1"},   {32, "boot_type=-7"},
                               {64, "baudrate=19200"}, {96, "password=1"},
                               {128, "user_pwd=0"},    {192, "boot_pwd=secret"}};
    Bytes page(kPageSize);
    for (const Slot &slot : kSlots)
        std::copy_n(slot.text, std::strlen(slot.text),
                    page.begin() + static_cast<std::ptrdiff_t>(slot.offset));
    return page;
}
