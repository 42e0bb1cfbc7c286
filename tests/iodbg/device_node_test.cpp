// What iodbg says when the kernel module, a partition or the whole board is not there.

#include "tests/iodbg/flash_commands_test.h"

#include <cerrno>

namespace {

constexpr char kVirtualBoardHint[] = "without a board: vboard run DIR -- iodbg ...";

using DeviceNodeTest = FlashCommandsTest;

/** Of each group that needs the kernel module, one command or more. */
const Words kModuleCommands[] = {
    {"show"},
    {"show", "--json"},
    {"init"},
    {"identity", "get"},
    {"identity", "set", "serial", "X"},
    {"eeprom", "dump"},
    {"power"},
    {"fan", "get"},
    {"temperature"},
    {"clock", "get"},
    {"led"},
    {"led", "set", "system", "1"},
    {"watchdog", "get"},
    {"ptp", "pulse"},
    {"reboot", "--yes"},
    {"cpld", "get"},
    {"i2c", "read", "0", "0", "0x50", "0", "1"},
    {"gpio", "get", "1"},
    {"poe", "status"},
    {"sfp", "list"},
    {"upgrade", "cpld", "/dev/null", "--yes"},
};

TEST_F(DeviceNodeTest, WithoutTheKernelModuleAllSaySoInOneLine) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    for (const Words &command : kModuleCommands) {
        const ProcessResult result = iodbg(command);
        EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(command);
        EXPECT_EQ(result.err, "iodbg: the kernel module cannot be reached: /dev/bspHandle does not "
                              "exist; load the board's kernel module\n")
            << ::testing::PrintToString(command);
    }
}

TEST_F(DeviceNodeTest, TheReasonDecidesTheAdvice) {
    const struct {
        int error;
        const char *text;
    } kReasons[] = {
        {ENOENT, "/dev/bspHandle does not exist; load the board's kernel module\n"},
        {ENODEV, "/dev/bspHandle has no driver; load the board's kernel module\n"},
        {EACCES, "/dev/bspHandle may not be opened; run iodbg as root\n"},
        {EPERM, "/dev/bspHandle may not be opened; run iodbg as root\n"},
        {EIO, "/dev/bspHandle cannot be opened: Input/output error; see the kernel log\n"},
    };
    for (const auto &reason : kReasons) {
        clearFaults();
        addFault(openFails("/dev/bspHandle", reason.error));
        const ProcessResult result = iodbg({"show"});
        EXPECT_TRUE(result.err.ends_with(reason.text)) << result.err;
        EXPECT_EQ(linesOf(result.err).size(), 1u) << result.err;
    }
}

TEST_F(DeviceNodeTest, FlashNeedsNoKernelModule) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    for (const Words &command :
         {Words{"boot", "get"}, Words{"image", "info"}, Words{"mtd", "read", "mtd4", hostFile("4")},
          Words{"mdio", "read", "1", "2"}, Words{"status"}})
        EXPECT_EQ(iodbg(command).exitCode, 0) << ::testing::PrintToString(command);
}

TEST_F(DeviceNodeTest, APartitionThatIsMissingIsNamed) {
    addFault(openFails("/dev/mtd12", ENOENT));
    addFault(openFails("/dev/mtd4", EACCES));
    const std::string answer = json({"image", "info", "--bank", "0"}, 1);
    EXPECT_EQ(jsonAt(answer, "/failures/0/next"),
              "\"/dev/mtd12 does not exist: check the path, and /proc/mtd\"");
    EXPECT_EQ(iodbg({"image", "info"}).err, "") << "the system's tools are not asked";
    expectRefusal({"boot", "get"}, 1,
                  "cannot open /dev/mtd4: Permission denied; run iodbg as root");
    expectRefusal({"mtd", "erase", "mtd12", "--yes"}, 1,
                  "cannot open /dev/mtd12: No such file or directory; check the path");
}

TEST_F(DeviceNodeTest, TheDeviceOfMdioIsNamed) {
    addFault(openFails("/dev/mem", EACCES));
    expectFailure({"mdio", "read", "1", "2"}, 1,
                  {"BSP_E_OPEN (1010)", "; /dev/mem may not be opened: run iodbg as root"});
    expectFailure({"mdio", "write", "1", "2", "3"}, 1, {"/dev/mem may not be opened"});
    clearFaults();
    addFault(openFails("/dev/mem", ENOENT));
    expectFailure({"mdio", "read", "1", "2"}, 1,
                  {"; /dev/mem does not exist: see that the kernel provides it"});
}

TEST_F(DeviceNodeTest, OnABoardNoVirtualOneIsRecommended) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    addFault(openFails("/dev/mtd4", ENOENT));
    for (const Words &command : {Words{"show"}, Words{"boot", "get"}, Words{"check"}}) {
        const ProcessResult result = iodbg(command);
        EXPECT_EQ((result.out + result.err).find("vboard"), std::string::npos) << result.err;
    }
}

/** iodbg on this machine, which is no board. */
ProcessResult onHost(const Words &arguments) {
    Words argv = {builtProgram("iodbg")};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return run(argv);
}

TEST(NoBoardTest, TheVirtualBoardIsRecommended) {
    for (const Words &command : kModuleCommands) {
        const ProcessResult result = onHost(command);
        EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(command);
        EXPECT_EQ(result.err,
                  std::string("iodbg: the kernel module cannot be reached: /dev/bspHandle does not "
                              "exist; load the board's kernel module; ") +
                      kVirtualBoardHint + "\n");
    }
    for (const Words &command : {Words{"boot", "get"}, Words{"image", "info"}}) {
        const ProcessResult result = onHost(command);
        EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(command);
        EXPECT_TRUE(result.err.ends_with(kVirtualBoardHint + std::string("\n"))) << result.err;
        EXPECT_EQ(linesOf(result.err).size(), 1u) << result.err;
    }
    // There is nothing to judge, not even again and again: three rounds would take a minute.
    for (const Words &command :
         {Words{"check"}, Words{"watch", "--count", "3", "--interval", "30"}}) {
        const ProcessResult judged = onHost(command);
        EXPECT_EQ(judged.exitCode, 1);
        EXPECT_EQ(judged.out, "");
        EXPECT_TRUE(judged.err.ends_with(kVirtualBoardHint + std::string("\n"))) << judged.err;
        EXPECT_EQ(linesOf(judged.err).size(), 1u) << judged.err;
    }
    EXPECT_EQ(onHost({"cpld", "get", "x"}).err.find("vboard"), std::string::npos)
        << "another board would not help";
    EXPECT_EQ(onHost({"status"}).exitCode, 0);
}

TEST(NoBoardTest, ProgramsAreToldToo) {
    const ProcessResult result = onHost({"show", "--json"});
    EXPECT_NE(jsonAt(result.out, "/error/message").find(kVirtualBoardHint), std::string::npos);
}

} // namespace
