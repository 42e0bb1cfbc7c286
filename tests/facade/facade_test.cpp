// The facade: each io function is the bsp function of its stem.

#include "bsp.h"
#include "tests/identity/records.h"
#include "tests/support/virtual_board_test.h"

#include <array>
#include <cerrno>
#include <cstddef>

namespace {

/** What the calls of this test write to. */
struct Outputs {
    alignas(8) std::array<uint8_t, 128> bytes;
    uint32_t word;
};
Outputs outputs;

char *const kText = reinterpret_cast<char *>(outputs.bytes.data());
auto *const kRecord = reinterpret_cast<BspDevinfo *>(outputs.bytes.data());

struct Forwarding {
    const char *name;
    int32_t status; // on a board in order
    std::function<int32_t()> io, bsp;
};

/** Both functions, which must be of one type, with the same arguments. */
template <typename... Parameters, typename... Arguments>
Forwarding pair(const char *name, int32_t (*io)(Parameters...), int32_t (*bsp)(Parameters...),
                int32_t status, Arguments... arguments) {
    return {name, status, [=] { return io(arguments...); }, [=] { return bsp(arguments...); }};
}

const uint8_t kMac[] = {0x02, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE};

const Forwarding kFunctions[] = {
    pair("DevIdGet", ioDevIdGet, bspDevIdGet, 0, &outputs.word),
    pair("DevSerialVerGet", ioDevSerialVerGet, bspDevSerialVerGet, 0, &outputs.word),
    pair("HwVersionGet", ioHwVersionGet, bspHwVersionGet, 0, kText),
    pair("CpldVersionGet", ioCpldVersionGet, bspCpldVersionGet, 0, kText),
    pair("FpgaVersionGet", ioFpgaVersionGet, bspFpgaVersionGet, 0, kText),
    pair("BiosVersionGet", ioBiosVersionGet, bspUbootVersionGet, 0, kText),
    pair("BiosVersionGet of nothing", ioBiosVersionGet, bspUbootVersionGet, -1, nullptr),
    pair("BoardSlotIdGet", ioBoardSlotIdGet, bspBoardSlotIdGet, 0, &outputs.word),
    pair("BoardDescGet", ioBoardDescGet, bspBoardDescGet, 1000, kText),
    pair("BoardDescSet", ioBoardDescSet, bspBoardDescSet, 1000, kText),
    pair("BoardPowerInfoGet", ioBoardPowerInfoGet, bspBoardPowerInfoGet, 1000, 1u, kText),
    pair("DevinfoGet 0", ioDevinfoGet, bspDevinfoGet, 0, 0u, kRecord),
    pair("DevinfoGet 0x51", ioDevinfoGet, bspDevinfoGet, 0, 0x51u, kRecord),
    pair("DevinfoGet 0x52", ioDevinfoGet, bspDevinfoGet, 1002, 0x52u, kRecord),
    pair("DevinfoSet 0 without magic", ioDevinfoSet, bspDevinfoSet, 1017, 0u, kRecord),
    pair("DevinfoSet 0x51", ioDevinfoSet, bspDevinfoSet, 0, 0x51u, kRecord),
    pair("DevinfoSet 0x40", ioDevinfoSet, bspDevinfoSet, 1000, 0x40u, kRecord),
    pair("MacAddrGet 0", ioMacAddrGet, bspMacAddrGet, 0, 0u, outputs.bytes.data()),
    pair("MacAddrGet 1", ioMacAddrGet, bspMacAddrGet, 0, 1u, outputs.bytes.data()),
    pair("MacAddrGet to nothing", ioMacAddrGet, bspMacAddrGet, 1001, 1u, nullptr),
    pair("MacAddrSet", ioMacAddrSet, bspMacAddrSet, 0, 0u, kMac),
    pair("SerialNumGet", ioSerialNumGet, bspSerialNumGet, 0, kText, &outputs.word),
    pair("SerialNumSet", ioSerialNumSet, bspSerialNumSet, 0, "ABCDE", 3),
    pair("SerialNumSet of 32", ioSerialNumSet, bspSerialNumSet, 1002, kText, 32),
    pair("MfgDateGet", ioMfgDateGet, bspMfgDateGet, 0, kText),
    pair("MfgDateSet", ioMfgDateSet, bspMfgDateSet, 0, "20260131"),
};

class FacadeTest : public VirtualBoardTest {
  protected:
    /** All that can be seen of a call. */
    struct Effect {
        Answer answer;
        Bytes outputs;
        uint32_t word;
        Lines trace;
        Bytes devices;

        bool operator==(const Effect &) const = default;
    };

    Effect effectOf(const std::function<int32_t()> &call) {
        outputs.bytes.fill(0xA5);
        outputs.word = 0xA5A5A5A5;
        writeBoardFile("/tmp/bsp/devId", "");
        const vb::Devices before = devices();
        trace();
        const Answer answer = answerOf(call);
        forgetTime(devices());
        const Effect effect = {answer, Bytes(outputs.bytes.begin(), outputs.bytes.end()),
                               outputs.word, trace(), bytesOf(devices())};
        devices() = before;
        return effect;
    }

    void expectTheSame() {
        for (const Forwarding &function : kFunctions) {
            SCOPED_TRACE(function.name);
            const vb::FaultTable faults = board().faults;
            const Effect io = effectOf(function.io);
            board().faults = faults; // counts start anew
            const Effect bsp = effectOf(function.bsp);
            board().faults = faults;
            EXPECT_EQ(io.answer, bsp.answer);
            EXPECT_EQ(io.trace, bsp.trace);
            EXPECT_TRUE(io == bsp) << "outputs or devices differ";
        }
    }
};

TEST_F(FacadeTest, EachFunctionAnswersWhatItsStemAnswers) {
    for (const Forwarding &function : kFunctions)
        EXPECT_EQ(effectOf(function.io).answer, Answer{function.status}) << function.name;
    expectTheSame();
}

TEST_F(FacadeTest, FailuresArePassedOnUnchanged) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Any, 6));
    expectTheSame();
    clearFaults();
    addFault(refuse(vb::FaultDevice::I2c, vb::FaultOp::Any, 7, 4));
    expectTheSame();
    clearFaults();
    addFault(openFails("/tmp/bsp/devId", EACCES));
    addFault(openFails("/proc/cmdline", EACCES));
    expectTheSame();
}

TEST_F(FacadeTest, RebootStoresItsFlagWaitsAndResets) {
    EXPECT_EQ(answerOf([] { return ioRebootEx(-2); }), kSilentSuccess);
    const Lines lines = trace();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
              (Lines{"MTD write mtd4 0x0+0x100", "sleep 1000000 us",
                     "CPLD write reg 5 (reset) = 0x0000"}));
    int32_t flag = 0;
    EXPECT_EQ(bspBootFlagGet(&flag), BSP_OK);
    EXPECT_EQ(flag, -2);
}

TEST_F(FacadeTest, RebootSucceedsWhateverFails) {
    addFault(openFails("/dev/mtd4", ENOENT));
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Any, 5));
    EXPECT_EQ(answerOf([] { return ioRebootEx(1); }).status, BSP_OK) << "no partition, no reset";
    EXPECT_EQ(requests(), Lines{"CPLD write reg 5 (reset) = 0x0000 -> refused, result 5"});
}

} // namespace
