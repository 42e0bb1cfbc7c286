// Fault rules: which request trips one, and what each effect does to it.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/fault_text.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class FaultsTest : public VirtualBoardTest {
  protected:
    /** Adds a rule in the words of the command. */
    void add(const std::string &device, const std::string &op, const std::string &effect,
             const std::string &when = "from", const std::string &nth = "1",
             const std::string &offset = "") {
        VirtualBoardTest::addFault(vb::parseFault({device, op, offset, nth, when, effect}));
    }

    /** Which of the next six CPLD reads fail: 'x', or '.' for those that do not. */
    static std::string pattern() {
        std::string text;
        for (int i = 0; i < 6; ++i) {
            uint16_t value = 0;
            text += bspCpldGet(2, &value) == BSP_OK ? '.' : 'x';
        }
        return text;
    }
};

TEST_F(FaultsTest, WhenTellsWhichOfTheMatchingRequestsFail) {
    const struct {
        const char *when, *nth, *expected;
    } cases[] = {{"once", "1", "x....."},  {"once", "3", "..x..."}, {"every", "1", "xxxxxx"},
                 {"every", "2", ".x.x.x"}, {"from", "1", "xxxxxx"}, {"from", "4", "...xxx"}};
    for (const auto &[when, nth, expected] : cases) {
        clearFaults();
        add("cpld", "read", "refuse=-5", when, nth);
        EXPECT_EQ(pattern(), expected) << when << ' ' << nth;
    }
}

TEST_F(FaultsTest, CountsMatchingAndFailingRequests) {
    add("cpld", "read", "refuse=-5", "every", "2");
    pattern();
    EXPECT_EQ(board().faults.rule[0].matched, 6u);
    EXPECT_EQ(board().faults.rule[0].fired, 3u);
}

TEST_F(FaultsTest, OtherDevicesOperationsAndOffsetsAreLeftAlone) {
    add("cpld", "write", "refuse=-5");
    add("cpld", "any", "refuse=-6", "from", "1", "3");
    add("gpio", "any", "refuse=-7");
    add("i2c:0.0.0x51", "any", "refuse=-8");
    uint16_t value = 0;
    EXPECT_EQ(bspCpldGet(2, &value), BSP_OK);
    EXPECT_EQ(bspCpldGet(3, &value), -6);
    EXPECT_EQ(bspCpldSet(4, 1), -5);
    uint8_t byte = 0;
    EXPECT_EQ(bspI2cRead(0, 0, 0x50, 0, 1, &byte, 1), BSP_OK);
    EXPECT_EQ(bspI2cRead(0, 0, 0x51, 0, 1, &byte, 1), -8);
    EXPECT_EQ(bspI2cWrite(0, 0, 0x51, 0, 1, &byte, 1), -8);
    EXPECT_EQ(bspI2cRead(0, 2, 0x50, 0, 1, &byte, 1), BSP_OK);
}

TEST_F(FaultsTest, ARefusedRequestDoesNothing) {
    add("cpld", "any", "refuse=-5");
    EXPECT_EQ(bspCpldSet(6, 0x1234), -5);
    EXPECT_EQ(devices().cpld.reg[6], 0x0000);
    EXPECT_EQ(requests(), (std::vector<std::string>{
                              "CPLD write reg 6 (control) = 0x1234 -> refused, result -5"}));
}

TEST_F(FaultsTest, TheIoctlFails) {
    add("gpio", "any", "ioctl-fails=EIO");
    errno = 0;
    EXPECT_LT(bspGpioDirectionOutput(4, 1), 0);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(devices().gpio.isOutput[4], 0);
}

TEST_F(FaultsTest, ASilentDeviceFloatsOrDoesNotAcknowledge) {
    add("cpld", "any", "no-answer");
    add("i2c", "any", "no-answer");
    add("gpio", "any", "no-answer");
    uint16_t value = 0;
    EXPECT_EQ(bspCpldGet(2, &value), BSP_OK);
    EXPECT_EQ(value, 0xFFFF);
    EXPECT_EQ(bspCpldSet(6, 1), BSP_OK);
    EXPECT_EQ(devices().cpld.reg[6], 0x0000);
    uint8_t byte = 0x77;
    EXPECT_NE(bspI2cRead(0, 0, 0x50, 0, 1, &byte, 1), BSP_OK);
    EXPECT_EQ(byte, 0x77);
    uint32_t level = 0;
    EXPECT_EQ(bspGpioGetValue(4, &level), BSP_OK);
    EXPECT_EQ(level, 1u);
}

TEST_F(FaultsTest, CorruptionFlipsBitsOfOneByteOnItsWay) {
    add("cpld", "read", "corrupt=1:0x81");
    uint16_t value = 0;
    EXPECT_EQ(bspCpldGet(2, &value), BSP_OK);
    EXPECT_EQ(value, 0x1312 ^ 0x0081);

    add("i2c", "any", "corrupt=2:0x0F");
    const uint8_t sent[4] = {1, 2, 3, 4};
    EXPECT_EQ(bspI2cWrite(0, 0, 0x50, 0x20, 1, sent, 4), BSP_OK);
    EXPECT_EQ(devices().eeprom.bytes[0x22], 3 ^ 0x0F);
    EXPECT_EQ(devices().eeprom.bytes[0x23], 4);
    uint8_t received[4] = {};
    EXPECT_EQ(bspI2cRead(0, 0, 0x50, 0x20, 1, received, 4), BSP_OK);
    EXPECT_EQ(received[2], 3);
    EXPECT_EQ(received[3], 4);
}

TEST_F(FaultsTest, AShortI2cTransferLeavesTheRestAlone) {
    add("i2c", "any", "short=2");
    devices().eeprom.bytes[0] = 0xA0;
    uint8_t received[4] = {9, 9, 9, 9};
    EXPECT_EQ(bspI2cRead(0, 0, 0x50, 0, 1, received, 4), BSP_OK);
    EXPECT_EQ(received[0], 0xA0);
    EXPECT_EQ(received[2], 9);
    const uint8_t sent[4] = {1, 2, 3, 4};
    EXPECT_EQ(bspI2cWrite(0, 0, 0x50, 0x20, 1, sent, 4), BSP_OK);
    EXPECT_EQ(devices().eeprom.bytes[0x21], 2);
    EXPECT_EQ(devices().eeprom.bytes[0x22], 0xFF);
}

TEST_F(FaultsTest, AFileDoesNotOpen) {
    add("/proc/cmdline", "open", "open-fails=EACCES", "once");
    EXPECT_EQ(open("/proc/cmdline", O_RDONLY), -1);
    EXPECT_EQ(errno, EACCES);
    const int fd = open("/proc/cmdline", O_RDONLY);
    EXPECT_GE(fd, 0);
    close(fd);
}

TEST_F(FaultsTest, TheNodeDoesNotOpen) {
    add("/dev/bspHandle", "open", "open-fails=ENODEV");
    EXPECT_LT(bspCpldSet(4, 1), 0);
    EXPECT_EQ(trace(), (std::vector<std::string>{"open /dev/bspHandle -> fails, errno " +
                                                 std::to_string(ENODEV) + " (No such device)"}));
}

TEST_F(FaultsTest, FileTransfersAreShortOrCorrupted) {
    add("/proc/cmdline", "read", "short=3", "once", "1");
    add("/proc/cmdline", "read", "corrupt=0:0x20", "once", "2");
    const int fd = open("/proc/cmdline", O_RDONLY);
    char text[8] = {};
    EXPECT_EQ(read(fd, text, 7), 3);
    EXPECT_STREQ(text, "con");
    EXPECT_EQ(read(fd, text, 4), 4);
    EXPECT_STREQ(text, "Sole");
    EXPECT_EQ(read(fd, text, 4), 4);
    EXPECT_STREQ(text, "=tty");
    close(fd);

    add("/tmp/bsp/note", "write", "short=1");
    const int note = open("/tmp/bsp/note", O_WRONLY | O_CREAT, 0600);
    EXPECT_EQ(write(note, "abc", 3), 1);
    close(note);
    EXPECT_EQ(std::filesystem::file_size(boardFile("/tmp/bsp/note")), 1u);
}

TEST_F(FaultsTest, RequestsOfAllProcessesCount) {
    add("cpld", "read", "refuse=-5", "once", "3");
    uint16_t value = 0;
    EXPECT_EQ(bspCpldGet(2, &value), BSP_OK);
    const pid_t child = fork();
    if (child == 0)
        _exit(bspCpldGet(2, &value) == BSP_OK ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bspCpldGet(2, &value), -5);
}

TEST_F(FaultsTest, TheTableTakesAsManyRulesAsItHasPlaces) {
    const vb::FaultRule rule = vb::parseFault({"cpld", "any", "", "1", "once", "refuse=-1"});
    for (uint32_t i = 1; i <= vb::kMaxFaults; ++i)
        EXPECT_EQ(vb::addFault(board().faults, rule), i);
    EXPECT_EQ(vb::addFault(board().faults, rule), 0u);
    EXPECT_TRUE(vb::removeFault(board().faults, 7));
    EXPECT_FALSE(vb::removeFault(board().faults, 7));
    EXPECT_FALSE(vb::removeFault(board().faults, 0));
    EXPECT_EQ(vb::addFault(board().faults, rule), vb::kMaxFaults + 1);
}

} // namespace
