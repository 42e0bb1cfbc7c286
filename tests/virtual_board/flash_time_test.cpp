// Flash that takes its time: how long, who may do what meanwhile, and what is left of a request
// that does not come to its end.

#include "language/trace_text.h"
#include "tests/support/world.h"
#include "tests/virtual_board/flash_test.h"
#include "virtual_board/board/mtd.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

namespace {

constexpr uint64_t kUs = 1000;
constexpr uint64_t kMs = 1000 * kUs;

class FlashTimeTest : public FlashBoardTest {
  protected:
    void SetUp() override {
        FlashBoardTest::SetUp();
        world::set("flash.timing", "usual");
        board().clock.anchorNs = 0;
    }

    /** How long something takes on the board's clock. */
    template <typename Use>
    uint64_t timeOf(Use use) const {
        const uint64_t before = now();
        use();
        return now() - before;
    }

    /** Sends a write to the driver itself; what happens while the chip works is the test's. */
    vb::MtdAnswer write(uint32_t number, const std::string &data, std::function<bool()> meanwhile) {
        const auto pass = [](void *context, uint64_t) {
            return (*static_cast<std::function<bool()> *>(context))();
        };
        const vb::BoardFolder &folder = *vb::attachedFolder();
        return vb::mtdWrite(
            {folder, vb::thisSender(board()), vb::flashIndex(number), {&meanwhile, pass}}, 0,
            reinterpret_cast<const uint8_t *>(data.data()), data.size());
    }

    std::string traced(uint64_t number) const {
        return language::traceText(vb::traceAt(board().trace, number));
    }
};

TEST_F(FlashTimeTest, NoneWhereItIsOff) {
    world::set("flash.timing", "off");
    const Node node(kNor);
    EXPECT_EQ(timeOf([&] {
                  node.erase(0, 4 * kNorBlock);
                  node.write(0, "data");
                  node.read(0, kNorBlock);
              }),
              0u);
}

TEST_F(FlashTimeTest, ProgramsTakeTheTimeOfThePagesThatTheyTouch) {
    const Node nor(kNor);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nor.write(5, "a"), 0); }), 700 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nor.write(255, "ab"), 0); }), 2 * 700 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nor.write(1000, std::string(2048, 'b')), 0); }),
              9 * 700 * kUs);
    const Node nand(kNand);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nand.write(0, std::string(512, 'q')), 0); }), 300 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nand.write(kPage, std::string(40 * kPage, 'p')), 0); }),
              40 * 300 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nand.write(0, ""), 0); }), 0u);
    EXPECT_EQ(nor.read(1000, 2049), std::string(2048, 'b') + '\xFF');
    EXPECT_EQ(nand.read(kPage, 41 * kPage), std::string(40 * kPage, 'p') + erased(kPage));
}

TEST_F(FlashTimeTest, ReadsTakeTheTimeOfThePagesThatTheyTouch) {
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNor).read(100, 1).size(), 1u); }), 40 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNor).read(0, 3 * kNorBlock).size(), 3 * kNorBlock); }),
              3 * 256 * 40 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNand).read(kPage - 1, 2).size(), 2u); }), 2 * 80 * kUs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNand).read(kNandSize, 1), ""); }), 0u);
    mtd_info_user info = {};
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(ioctl(Node(kNand).fd(), MEMGETINFO, &info), 0); }), 0u);
}

TEST_F(FlashTimeTest, ErasesTakeTheTimeOfTheirBlocks) {
    const Node nor(kNor);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(nor.erase(0, 3 * kNorBlock), 0); }), 3 * 500 * kMs);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNand).erase(0, kNandSize), 0); }), 324 * 2 * kMs);
    EXPECT_EQ(flash(4).erases[2], 1u);
    EXPECT_EQ(flash(4).erases[3], 0u);
    EXPECT_EQ(flash(12).erases[323], 1u);
}

TEST_F(FlashTimeTest, ANorChipHasItsBufferWhateverPagesTheDriverTells) {
    useGeometry("4:size=262144,erase=65536,page=1,type=nor");
    world::set("flash.timing", "usual");
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNor).write(0, std::string(512, 'b')), 0); }),
              2 * 700 * kUs);
}

TEST_F(FlashTimeTest, ABadBlockIsRefusedAtOnceWhereAnEraseComesToIt) {
    flash(12).isBad[1] = 1;
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(Node(kNand).erase(0, 3 * kNandBlock), EIO); }), 2 * kMs);
    EXPECT_EQ(flash(12).erases[0], 1u);
    EXPECT_EQ(flash(12).erases[2], 0u);
}

TEST_F(FlashTimeTest, WhatIsNotDoneTakesNone) {
    addRule("mtd4", "change", "fails=EIO", "", "1", "once");
    const Node node(kNor);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(node.erase(0, kNorBlock), EIO); }), 0u);
    EXPECT_EQ(timeOf([&] { EXPECT_EQ(node.erase(1, kNorBlock), EINVAL); }), 0u);
}

TEST_F(FlashTimeTest, ARequestIsOneInTheTraceAndForTheRules) {
    const uint32_t id = addRule("mtd12", "program", "fails=EIO", "", "2");
    trace();
    EXPECT_EQ(Node(kNand).write(0, std::string(3 * kPage, 'p')), 0);
    EXPECT_EQ(requests(), Lines{"MTD write mtd12 0x0+0x1800"});
    EXPECT_EQ(board().faults.rule[id - 1].matched, 1u);
}

TEST_F(FlashTimeTest, APowerCutComesBehindTheTimeOfWhatIsDone) {
    addRule("mtd12", "program", "power-cut=5000");
    EXPECT_EQ(timeOf([&] {
                  EXPECT_EQ(signalOf([] { Node(kNand).write(0, std::string(8 * kPage, 'p')); }),
                            SIGKILL);
              }),
              3 * 300 * kUs);
    EXPECT_EQ(traced(board().trace.total - 1),
              "MTD write mtd12 0x0+0x4000 -> power cut after 0x1388");
    clearFaults();
    EXPECT_EQ(Node(kNand).read(0, 8 * kPage), std::string(5000, 'p') + erased(8 * kPage - 5000));
}

TEST_F(FlashTimeTest, APowerCutAmidAnEraseLeavesTheBlocksBehind) {
    const Node node(kNor);
    for (uint32_t block = 0; block < 4; ++block)
        EXPECT_EQ(node.write(block * kNorBlock, "full"), 0);
    addRule("mtd4", "erase", "power-cut=131072");
    EXPECT_EQ(
        timeOf([&] { EXPECT_EQ(signalOf([] { Node(kNor).erase(0, 4 * kNorBlock); }), SIGKILL); }),
        2 * 500 * kMs);
    EXPECT_EQ(node.read(kNorBlock, 4), erased(4));
    EXPECT_EQ(node.read(2 * kNorBlock, 4), "full");
}

TEST_F(FlashTimeTest, WhoHasThePowerCycledEndsWhatTheChipIsAt) {
    int pages = 0;
    const uint64_t number = board().trace.total;
    const vb::MtdAnswer answer = write(12, std::string(8 * kPage, 'p'), [&] {
        if (++pages == 3)
            world::set("power", "cycle");
        return true;
    });
    EXPECT_TRUE(answer.isPowerCut);
    EXPECT_EQ(answer.value, 2 * kPage);
    EXPECT_EQ(devices().powerCuts, 1u);
    EXPECT_EQ(traced(number), "MTD write mtd12 0x0+0x4000 -> power cut after 0x1000");
    world::set("flash.timing", "off");
    EXPECT_EQ(Node(kNand).read(0, 3 * kPage), std::string(2 * kPage, 'p') + erased(kPage));
}

TEST_F(FlashTimeTest, AResetWithoutPowerDoesNotReachTheChip) {
    const vb::MtdAnswer answer = write(12, std::string(kPage, 'p'), [&] {
        devices().lastReset = vb::ResetReason::Register;
        ++devices().resets;
        return true;
    });
    EXPECT_FALSE(answer.isPowerCut);
    EXPECT_EQ(answer.value, kPage);
}

TEST_F(FlashTimeTest, ABoardThatGoesMeanwhileIsNotTouched) {
    const uint64_t number = board().trace.total;
    int pages = 0;
    const vb::MtdAnswer answer =
        write(12, std::string(4 * kPage, 'p'), [&] { return ++pages < 3; });
    EXPECT_EQ(answer.error, ENODEV);
    EXPECT_EQ(traced(number), "MTD write mtd12 0x0+0x2000 -> 0x1000");
}

TEST_F(FlashTimeTest, AnOverwrittenRecordIsLeftToItsNextUser) {
    const uint64_t number = board().trace.total;
    const vb::MtdAnswer answer = write(4, "data", [&] {
        for (uint32_t i = 0; i < vb::kTraceCapacity; ++i)
            traceNext(board().trace, vb::TraceKind::Sleep, {1, 0}).sleepNs = kUs;
        return true;
    });
    EXPECT_EQ(answer.value, 4u);
    EXPECT_EQ(traced(number + vb::kTraceCapacity), "sleep 1 us");
    EXPECT_EQ(board().trace.record[number % vb::kTraceCapacity].value, 0u);
}

TEST_F(FlashTimeTest, ARuleThatIsRemovedMeanwhileStillStrikes) {
    addRule("mtd4", "program", "power-cut=300");
    int pages = 0;
    const vb::MtdAnswer answer = write(4, std::string(1024, 'd'), [&] {
        clearFaults();
        return ++pages < 10;
    });
    EXPECT_TRUE(answer.isPowerCut);
    EXPECT_EQ(answer.value, 300u);
    EXPECT_EQ(pages, 2);
}

TEST_F(FlashTimeTest, PassesReallyWhereTheTimeIsReal) {
    world::set("time", "real");
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(Node(kNand).erase(0, 5 * kNandBlock), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(10));
}

TEST_F(FlashTimeTest, AKilledProgramLeavesItsEraseWhereItIs) {
    world::set("time", "real");
    const pid_t child = fork();
    if (child == 0) {
        Node("/dev/mtd0").erase(0, 16 * kNorBlock);
        _exit(0);
    }
    // It has eight seconds of work in front of it, and holds nobody up meanwhile.
    volatile const uint32_t *erases = flash(0).erases;
    while (erases[0] == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(Node(kNor).read(0, 4), erased(4));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ(flash(0).erases[15], 0u);
    EXPECT_EQ(Node(kNor).write(0, "next"), 0);
}

} // namespace
