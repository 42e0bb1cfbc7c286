#include "tests/iodbg/flash_commands_test.h"

#include "tests/virtual_board/flash_test.h"

#include <cerrno>
#include <fstream>

std::string FlashCommandsTest::stored(uint32_t number, uint32_t offset, size_t length) const {
    return Node("/dev/mtd" + std::to_string(number), O_RDONLY).read(offset, length);
}

void FlashCommandsTest::store(uint32_t number, uint32_t offset, const std::string &bytes) const {
    EXPECT_EQ(Node("/dev/mtd" + std::to_string(number)).write(offset, bytes), 0);
}

void FlashCommandsTest::expectUnreadable(const Words &arguments) {
    std::ofstream(boardFile(kUnreadable)) << imageBytes(4096);
    addFault(openFails(kUnreadable, EACCES)); // permissions would not keep root out
    expectRefusal(arguments, 4, "cannot open /tmp/bsp/unreadable: Permission denied");
    clearFaults();
}

std::string FlashCommandsTest::imageBytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 256 * 7 + i / 65536) & 0xFF);
    const std::string header = "OS image 2.5";
    if (size >= 512)
        bytes.replace(size - 512, 512, header + std::string(512 - header.size(), '\0'));
    return bytes;
}

std::string FlashCommandsTest::makeImage(size_t size, const std::string &name) const {
    return makeFile(name, imageBytes(size));
}
