// Versions of the board's parts.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

namespace {

using namespace std::string_literals;
using VersionsTest = VirtualBoardTest;

/** What a version function leaves of a buffer of '#', up to the byte behind its text. */
std::string textOf(int32_t (*versionGet)(char *)) {
    std::string buffer(12, '#');
    EXPECT_EQ(answerOf([&] { return versionGet(buffer.data()); }), Answer{BSP_OK});
    return buffer.substr(0, buffer.find('#') + 1);
}

TEST_F(VersionsTest, AreFieldsOfTheVersionRegister) {
    const struct {
        uint16_t content;
        std::string hardware, cpld;
    } cases[] = {
        {0x1312, "A.3\0#"s, "V1.2\0#"s},    {0x1300, "A.3\0#"s, "V0.0\0#"s},
        {0x0012, "@.0\0#"s, "V1.2\0#"s},    {0x0000, "@.0\0#"s, "V0.0\0#"s},
        {0x1F00, "A.15\0#"s, "V0.0\0#"s},   {0x20A0, "B.0\0#"s, "V10.0\0#"s},
        {0xFFFF, "O.15\0#"s, "V15.15\0#"s}, {0x000B, "@.0\0#"s, "V0.11\0#"s},
    };
    for (const auto &expected : cases) {
        devices().cpld.reg[2] = expected.content;
        EXPECT_EQ(textOf(bspHwVersionGet), expected.hardware);
        EXPECT_EQ(textOf(bspCpldVersionGet), expected.cpld);
    }
}

TEST_F(VersionsTest, EachReadsTheVersionRegisterOnce) {
    textOf(bspHwVersionGet);
    EXPECT_EQ(trace(), (Lines{"CPLD read  reg 2 (version) = 0x1312"}));
    textOf(bspCpldVersionGet);
    EXPECT_EQ(trace(), (Lines{"CPLD read  reg 2 (version) = 0x1312"}));
}

TEST_F(VersionsTest, ThereIsNoFpgaToHaveOne) {
    EXPECT_EQ(textOf(bspFpgaVersionGet), "---\0#"s);
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(VersionsTest, TheSerialVersionIsReadAfresh) {
    writeBoardFile("/tmp/bsp/devId", "\x11\x11\x11\x11");
    devices().cpld.reg[1] = 0x8712;
    uint32_t version = 0xA5A5A5A5;
    EXPECT_EQ(answerOf([&] { return bspDevSerialVerGet(&version); }), Answer{BSP_OK});
    EXPECT_EQ(version, 0x12u);
    EXPECT_EQ(trace(), (Lines{"CPLD read  reg 1 (device id) = 0x8712"}));
}

TEST_F(VersionsTest, TheStatusOfTheRegisterIsPassedOnInSilence) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 6));
    std::string text(12, '#');
    uint32_t version = 0xA5A5A5A5;
    EXPECT_EQ(answerOf([&] { return bspHwVersionGet(text.data()); }), Answer{6});
    EXPECT_EQ(answerOf([&] { return bspCpldVersionGet(text.data()); }), Answer{6});
    EXPECT_EQ(answerOf([&] { return bspDevSerialVerGet(&version); }), Answer{6});
    EXPECT_EQ(text, std::string(12, '#'));
    EXPECT_EQ(version, 0xA5A5A5A5);
}

TEST_F(VersionsTest, ANullOutputIsRefusedBeforeAnythingIsDone) {
    EXPECT_EQ(answerOf([] { return bspHwVersionGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspCpldVersionGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspFpgaVersionGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(answerOf([] { return bspDevSerialVerGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
