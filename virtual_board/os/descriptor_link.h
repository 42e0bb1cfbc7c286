#pragma once
// The link of a descriptor in the kernel's table of what this process has open.

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vb {

struct DescriptorLink {
    char text[32];

    explicit DescriptorLink(int fd) {
        constexpr char kFolder[] = "/proc/self/fd/";
        char digits[12];
        size_t count = 0;
        for (auto number = static_cast<unsigned>(fd); number != 0 || count == 0; number /= 10)
            digits[count++] = static_cast<char>('0' + number % 10);
        std::memcpy(text, kFolder, sizeof(kFolder));
        std::reverse_copy(digits, digits + count, text + sizeof(kFolder) - 1);
        text[sizeof(kFolder) - 1 + count] = '\0';
    }
};

} // namespace vb
