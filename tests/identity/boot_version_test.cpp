// The boot loader's version on the kernel's command line.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

namespace {

using namespace std::string_literals;
using BootVersionTest = VirtualBoardTest;

struct VersionCase {
    std::string commandLine;
    std::string buffer; // 8 bytes that held '#' before
};

std::string pad(size_t length) {
    return std::string(length, 'x');
}

TEST_F(BootVersionTest, IsTheSixBytesBehindTheKey) {
    const VersionCase cases[] = {
        {"console=ttyS0 bootver=1.2.34 root=/dev/mtdblock12\n", "1.2.34##"},
        {"bootver=1.2.34\n", "1.2.34##"},
        // a longer value is cut, a shorter one brings along what follows it
        {"bootver=1.2.3.4 quiet\n", "1.2.3.##"},
        {"bootver=1.2.3 quiet\n", "1.2.3 ##"},
        {"bootver=1.2 quiet\n", "1.2 qu##"},
        {"console=ttyS0 bootver=1.2.3\n", "1.2.3\n##"},
        {"console=ttyS0 bootver=1.2.3", "1.2.3\0##"s},
        {"bootver=1\n", "1\n\0\0\0\0##"s},
        {"bootver=\n", "\n\0\0\0\0\0##"s},
        {"bootver=", "\0\0\0\0\0\0##"s},
        // the first occurrence, wherever it stands
        {"bootver=A.1.11 bootver=B.2.22\n", "A.1.11##"},
        {"ubootver=9.8.76\n", "9.8.76##"},
        // without the key the buffer stays
        {"console=ttyS0\n", "########"},
        {"bootver 1.2.3\n", "########"},
        {"BOOTVER=1.2.34\n", "########"},
        {"", "########"},
        {"\n", "########"},
        // the second line is not looked at, nor is what lies behind character 255
        {"console=ttyS0\nbootver=1.2.34\n", "########"},
        {pad(241) + "bootver=1.2.34\n", "1.2.34##"},
        {pad(242) + "bootver=1.2.34\n", "1.2.3\0##"s},
        {pad(246) + "bootver=1.2.34\n", "1\0\0\0\0\0##"s},
        {pad(247) + "bootver=1.2.34\n", "\0\0\0\0\0\0##"s},
        {pad(248) + "bootver=1.2.34\n", "########"},
        {pad(600) + "bootver=1.2.34\n", "########"},
    };
    for (const VersionCase &expected : cases) {
        SCOPED_TRACE(expected.commandLine);
        writeBoardFile("/proc/cmdline", expected.commandLine);
        std::string buffer(8, '#');
        EXPECT_EQ(answerOf([&] { return bspUbootVersionGet(buffer.data()); }), Answer{BSP_OK});
        EXPECT_EQ(buffer, expected.buffer);
        EXPECT_EQ(trace(), (Lines{"open /proc/cmdline"}));
    }
}

TEST_F(BootVersionTest, ANullBufferIsAGenericFailure) {
    EXPECT_EQ(answerOf([] { return bspUbootVersionGet(nullptr); }), Answer{BSP_E_FAILED});
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(BootVersionTest, ACommandLineThatDoesNotOpenIsAGenericFailure) {
    addFault(openFails("/proc/cmdline", EACCES));
    std::string buffer(8, '#');
    EXPECT_EQ(answerOf([&] { return bspUbootVersionGet(buffer.data()); }),
              (Answer{BSP_E_FAILED, "open /proc/cmdline fail\n"}));
    EXPECT_EQ(buffer, "########");
}

} // namespace
