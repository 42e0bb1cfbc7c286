// Settings of the whole controller: request, checks of the reply, range.

#include "bsp.h"
#include "poe/rtl8239/commands.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

namespace {

using Lines = std::vector<std::string>;
using Call = int32_t (*)();

struct Sent {
    Call call;
    const char *request;
};

/** A setting: its function, and a reply of which the byte that fails the check is at 1. */
struct Checked {
    const char *function;
    Call call;
    const char *code; // as messages show it
    std::vector<const char *> refusals;
    const char *accepted; // everything else wrong that is not looked at
};

constexpr Rtl8239ChipRegister kRegister = {0x05, 0x12345678, 0x9ABCDEF0};

const Sent kSent[] = {
    {[] { return rtl8239CmdGlobalEnableSet(0); }, "00: 00"},
    {[] { return rtl8239CmdGlobalEnableSet(1); }, "00: 01"},
    {[] { return rtl8239CmdGlobalEnableSet(2); }, "00: 01"},
    {[] { return rtl8239CmdGlobalEnableSet(-1); }, "00: 00"},
    {[] { return rtl8239CmdGlobalResetSet(0); }, "02: 00"},
    {[] { return rtl8239CmdGlobalResetSet(1); }, "02: 01"},
    {[] { return rtl8239CmdGlobalPowerSourceSet(0, 0, 0); }, "04: 00 00 00 00 00"},
    {[] { return rtl8239CmdGlobalPowerSourceSet(7, 3000000, 100); }, "04: 07 75 30 00 01"},
    {[] { return rtl8239CmdGlobalPowerSourceSet(1, 1, 101); }, "04: 01 00 01 00 02"},
    {[] { return rtl8239CmdGlobalPowerSourceSet(0, 6553500, 6553401); }, "04: 00 FF FF FF FF"},
    {[] { return rtl8239CmdPortMappingEnableSet(0, 48); }, "05: 00 30"},
    {[] { return rtl8239CmdPortMappingEnableSet(1, 0); }, "05: 01 00"},
    {[] { return rtl8239CmdPortMappingEnableSet(9, 24); }, "05: 01 18"},
    {[] { return rtl8239CmdPortPairMappingSet(47, 1, 11, 6, 7, 0x36); },
     "06: 2F 01 0B 06 07 FF FF FF 36"},
    {[] { return rtl8239CmdPortPairMappingSet(0, 0, 0, 7, 255, 255); }, "06: 00 00 00 07"},
    {[] { return rtl8239CmdPortPairMappingSet(1, 2, 3, 0, 0, 0); },
     "06: 01 01 03 00 00 FF FF FF 00"},
    {[] { return rtl8239CmdGlobalParamSet(33000, 57000); }, "0E: 00 FF 00"},
    {[] { return rtl8239CmdGlobalParamSet(33001, 57064); }, "0E: 01 FF 01"},
    {[] { return rtl8239CmdGlobalParamSet(33065, 57065); }, "0E: 02 FF 02"},
    {[] { return rtl8239CmdGlobalParamSet(49000, 73000); }, "0E: F9 FF F9"},
    {[] { return rtl8239CmdGlobalParamSet(33000, 73000); }, "0E: 00 FF F9"},
    {[] { return rtl8239CmdGlobalPmModeSet(0); }, "10: 00"},
    {[] { return rtl8239CmdGlobalPmModeSet(4); }, "10: 04"},
    {[] { return rtl8239CmdGlobalPmModeExtSet(0); }, "11: 00"},
    {[] { return rtl8239CmdGlobalPmModeExtSet(1); }, "11: 01"},
    {[] { return rtl8239CmdGlobalPortEventMaskSet(0, 0); }, "16: 00"},
    {[] { return rtl8239CmdGlobalPortEventMaskSet(1, 0); }, "16: 02"},
    {[] { return rtl8239CmdGlobalPortEventMaskSet(0, 1); }, "16: 04"},
    {[] { return rtl8239CmdGlobalPortEventMaskSet(2, 8); }, "16: 06"},
    {[] { return rtl8239CmdMiscConfigInfoSave(); }, "C0/01:"},
    {[] { return rtl8239CmdMiscConfigInfoClear(); }, "C0/02:"},
    {[] { return rtl8239CmdMiscConfigInfoReset(); }, "C0/05:"},
    {[] { return rtl8239CmdMiscConfigInfoInit(); }, "C0/06:"},
    {[] { return rtl8239CmdDebugChipRegSet(&kRegister); }, "F0: 05 12 34 56 78 9A BC DE F0"},
};

const Call kInvalid[] = {
    [] { return rtl8239CmdGlobalPowerSourceSet(-1, 0, 0); },
    [] { return rtl8239CmdGlobalPowerSourceSet(8, 0, 0); },
    [] { return rtl8239CmdGlobalPowerSourceSet(0, 6553501, 0); },
    [] { return rtl8239CmdGlobalPowerSourceSet(0, 0, 6553501); },
    [] { return rtl8239CmdGlobalPowerSourceSet(0, UINT32_MAX, 0); },
    [] { return rtl8239CmdGlobalPowerSourceSet(0, 0, UINT32_MAX); },
    [] { return rtl8239CmdPortMappingEnableSet(1, -1); },
    [] { return rtl8239CmdPortMappingEnableSet(1, 49); },
    [] { return rtl8239CmdPortPairMappingSet(-1, 1, 0, 0, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(48, 1, 0, 0, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, -1, 0, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 12, 0, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, -1, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 8, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 255, 1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, -1, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, 8, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, 254, 0x20); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, 1, -1); },
    [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, 1, 256); },
    [] { return rtl8239CmdGlobalParamSet(32999, 57000); },
    [] { return rtl8239CmdGlobalParamSet(49001, 57000); },
    [] { return rtl8239CmdGlobalParamSet(33000, 56999); },
    [] { return rtl8239CmdGlobalParamSet(33000, 73001); },
    [] { return rtl8239CmdGlobalPmModeSet(-1); },
    [] { return rtl8239CmdGlobalPmModeSet(5); },
    [] { return rtl8239CmdGlobalPmModeExtSet(-1); },
    [] { return rtl8239CmdGlobalPmModeExtSet(2); },
};

const Checked kChecked[] = {
    {"rtl8239CmdGlobalEnableSet",
     [] { return rtl8239CmdGlobalEnableSet(1); },
     "0",
     {"01", "FF"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalResetSet",
     [] { return rtl8239CmdGlobalResetSet(1); },
     "2",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalPowerSourceSet",
     [] { return rtl8239CmdGlobalPowerSourceSet(3, 0, 0); },
     "4",
     {"02 00", "03 01", "00 00"},
     "03 00 09 09 09 09 09 09 09"},
    {"rtl8239CmdPortMappingEnableSet",
     [] { return rtl8239CmdPortMappingEnableSet(1, 5); },
     "5",
     {"01 00", "00 01"},
     "00 00 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalParamSet",
     [] { return rtl8239CmdGlobalParamSet(33000, 73000); },
     "e",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalPmModeSet",
     [] { return rtl8239CmdGlobalPmModeSet(2); },
     "10",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalPmModeExtSet",
     [] { return rtl8239CmdGlobalPmModeExtSet(1); },
     "11",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdGlobalPortEventMaskSet",
     [] { return rtl8239CmdGlobalPortEventMaskSet(1, 1); },
     "16",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdMiscConfigInfoSave",
     [] { return rtl8239CmdMiscConfigInfoSave(); },
     "",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdMiscConfigInfoClear",
     [] { return rtl8239CmdMiscConfigInfoClear(); },
     "",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdMiscConfigInfoReset",
     [] { return rtl8239CmdMiscConfigInfoReset(); },
     "",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdMiscConfigInfoInit",
     [] { return rtl8239CmdMiscConfigInfoInit(); },
     "",
     {"01"},
     "00 09 09 09 09 09 09 09 09"},
    {"rtl8239CmdDebugChipRegSet",
     [] { return rtl8239CmdDebugChipRegSet(&kRegister); },
     "f0",
     {"00 00 00 00 00 01"},
     "09 09 09 09 09 00 09 09 09"},
};

using GlobalSettingsTest = PoeTest;

TEST_F(GlobalSettingsTest, SendOneFrame) {
    for (const Sent &row : kSent) {
        EXPECT_EQ(answerOf(row.call), kSilentSuccess) << row.request;
        EXPECT_EQ(controller.requests(), (Lines{withoutUnused(row.request)}));
    }
}

TEST_F(GlobalSettingsTest, RefuseWhatIsOutOfRangeBeforeAnythingIsSent) {
    for (const Call &call : kInvalid)
        EXPECT_EQ(answerOf(call), (Answer{BSP_E_POE_INVALID, ""})) << &call - kInvalid;
    EXPECT_EQ(rtl8239CmdDebugChipRegSet(nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(GlobalSettingsTest, ReportARefusalOfTheController) {
    for (const Checked &row : kChecked) {
        for (const char *refusal : row.refusals) {
            controller.answer({refusal});
            EXPECT_EQ(answerOf(row.call),
                      (Answer{BSP_E_POE_STATUS, std::string("ERROR: ") + row.function +
                                                    "(#): response status check failed.\n"}))
                << refusal;
        }
    }
}

TEST_F(GlobalSettingsTest, LookAtTheirStatusBytesOnly) {
    for (const Checked &row : kChecked) {
        controller.answer({row.accepted});
        EXPECT_EQ(answerOf(row.call), kSilentSuccess) << row.function;
    }
}

TEST_F(GlobalSettingsTest, PassOnAFailedExchange) {
    controller.answerAlways({"", Spoil::Read});
    for (const Checked &row : kChecked) {
        const std::string code = row.code;
        EXPECT_EQ(answerOf(row.call),
                  (Answer{BSP_E_POE_READ, code.empty() ? "" : silenceText(code)}))
            << row.function;
    }
    const auto map = [] { return rtl8239CmdPortPairMappingSet(0, 1, 0, 0, 1, 0x20); };
    EXPECT_EQ(answerOf(map), (Answer{BSP_E_POE_READ, silenceText("6")}));
}

TEST_F(GlobalSettingsTest, MappingChecksEachFieldThatWasSent) {
    struct Case {
        int32_t secondaryChannel, chipAddress;
        const char *reply;
        const char *text; // what follows "response status check failed, "; null: accepted
    };
    constexpr Case kCases[] = {
        {1, 0x20, "05 00 00 00 00 09 09 09 00", nullptr},
        {1, 0x20, "06 00 00 00 00 00 00 00 00", "port=6, 4-pair=0, dev id=0, pri chl=0, sec chl=0"},
        {1, 0x20, "05 01 02 03 04 00 00 00 05", "port=5, 4-pair=1, dev id=2, pri chl=3, sec chl=4"},
        {1, 0x20, "05 01", "port=5, 4-pair=1, dev id=0, pri chl=0, sec chl=0"},
        {1, 0x20, "05 00 01", "port=5, 4-pair=0, dev id=1, pri chl=0, sec chl=0"},
        {1, 0x20, "05 00 00 01", "port=5, 4-pair=0, dev id=0, pri chl=1, sec chl=0"},
        {1, 0x20, "05 00 00 00 01", "port=5, 4-pair=0, dev id=0, pri chl=0, sec chl=1"},
        {1, 0x20, "05 00 00 00 00 00 00 00 EE", "chip_addr=238"},
        {255, 0x20, "05 00 00 00 09 00 00 00 00", nullptr},
        {255, 0x20, "05 00 00 09 09 00 00 00 00",
         "port=5, 4-pair=0, dev id=0, pri chl=9, sec chl=9"},
        {1, 255, "05 00 00 00 00 00 00 00 09", nullptr},
    };
    for (const Case &row : kCases) {
        controller.answer({row.reply});
        const Answer expected =
            row.text == nullptr
                ? kSilentSuccess
                : Answer{BSP_E_POE_STATUS, "ERROR: rtl8239CmdPortPairMappingSet(#): response "
                                           "status check failed, " +
                                               std::string(row.text) + ".\n"};
        EXPECT_EQ(answerOf([&] {
                      return rtl8239CmdPortPairMappingSet(5, 1, 0, 0, row.secondaryChannel,
                                                          row.chipAddress);
                  }),
                  expected)
            << row.reply;
    }
}

} // namespace
