// Firmware upgrades whose process is killed: what is left behind, and that the next one makes it
// good.

#include "tests/poe/poe_board.h"
#include "tests/poe/shared_controller_test.h"
#include "tests/support/depth.h"
#include "tests/support/firmware.h"
#include "tests/support/sudden_death.h"

#include <fstream>

namespace {

using Call = LibraryCall;
using vb::PoeMode;

constexpr uint32_t kImageSize = 51200;
constexpr uint32_t kBlock = 32;
constexpr uint32_t kBlocks = kImageSize / kBlock;

/** What the firmware is and knows when the process is gone. */
struct Leftover {
    const char *appStatus; // content of the status file
    PoeMode mode;
    bool isNew; // the application is the one of the upgrade

    bool operator==(const Leftover &) const = default;
};
constexpr Leftover kUntouched = {"", PoeMode::Application, false};
constexpr Leftover kInLoader = {"", PoeMode::Loader, false};
constexpr Leftover kLoading = {"\x01", PoeMode::Loader, false};
constexpr Leftover kRenewed = {"\x01", PoeMode::Application, true};

/** A call of the upgrade, and what a process leaves that is killed before it. */
struct Step {
    Call call;
    Leftover left;
};

constexpr Step kBeforeBlocks[] = {
    // The question whether the application runs.
    {Call::Lock, kUntouched},
    {Call::Store, kUntouched}, // the sequence number
    {Call::Sleep, kUntouched},
    {Call::Send, kUntouched},
    {Call::Sleep, kUntouched},
    {Call::Fetch, kUntouched},
    {Call::Unlock, kUntouched},
    // The upgrade's own lock, and the jump to the loader.
    {Call::Lock, kUntouched},
    {Call::Sleep, kUntouched},
    {Call::Sleep, kUntouched},
    {Call::Send, kUntouched},
    {Call::Sleep, kInLoader},
    {Call::Fetch, kInLoader},
    {Call::Sleep, kInLoader},
    {Call::Store, kInLoader}, // status 1
};
constexpr Call kOfBlock[] = {Call::Sleep, Call::Send, Call::Sleep, Call::Fetch};
constexpr Step kAfterBlocks[] = {
    {Call::Sleep, kLoading},
    // The jump to the application.
    {Call::Sleep, kLoading},
    {Call::Send, kLoading},
    {Call::Sleep, kRenewed},
    {Call::Fetch, kRenewed},
    {Call::Sleep, kRenewed},
    {Call::Unlock, kRenewed},
};
constexpr uint32_t kFirstBlockCall = std::size(kBeforeBlocks);
constexpr uint32_t kCallsOfBlock = std::size(kOfBlock);
constexpr uint32_t kFirstCallAfterBlocks = kFirstBlockCall + kCallsOfBlock * kBlocks;

class KilledUpgradeTest : public SharedControllerTest {
  protected:
    void SetUp() override {
        SharedControllerTest::SetUp();
        image_ = firmwareImage(kImageSize);
        imageFile_ = boardFolder() + "/image";
        std::ofstream(imageFile_, std::ios::binary) << image_;
    }

    /** Upgrades in a process that is killed before its n-th call, counted from 0. */
    void upgradeUntil(uint32_t lastCall) {
        const pid_t child = start([this, lastCall] {
            uint32_t calls = 0;
            watchCalls([&calls, lastCall](Call) { return calls++ == lastCall; });
            return bspPoeRtl8239McuUpgrade(imageFile_.c_str()) == BSP_OK;
        });
        EXPECT_TRUE(wasKilled(endOf(child)));
    }

    vb::PoeController &poe() const { return devices().poe; }

    std::string appStatus() const {
        std::ifstream file(boardFile(kStatusFile), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void expectLeft(const Leftover &left, const std::string &image) const {
        EXPECT_EQ(appStatus(), left.appStatus);
        EXPECT_EQ(poe().mode, left.mode);
        EXPECT_EQ(std::string(poe().image.bytes, poe().image.bytes + poe().image.size), image);
        EXPECT_TRUE(isPoeLockFree());
    }
    /** An image that is not whole cannot be started. */
    void expectIncomplete(uint32_t blocks) const {
        expectLeft(kLoading, image_.substr(0, size_t{blocks} * kBlock));
        EXPECT_EQ(poe().image.isValid, 0u);
    }

    /** The next upgrade succeeds and starts the new application. */
    void upgradeAgain() {
        // Nobody starts it before the firmware is up again, which takes it half a second.
        sleep(1);
        int32_t status = -1;
        printedBy([&] { status = bspPoeRtl8239McuUpgrade(imageFile_.c_str()); });
        ASSERT_EQ(status, BSP_OK);
        expectLeft(kRenewed, image_);
        EXPECT_EQ(poe().image.isValid, 1u);
        char version[32] = "";
        EXPECT_EQ(bspPoeRtl8239AppVersionGet(version), BSP_OK);
        EXPECT_STREQ(version, "V1.2.3.4");
    }

    /** An initialisation works and takes the mark of the upgrade away. */
    void initialise() {
        ASSERT_EQ(bspPoeRtl8239DeviceInit(), BSP_OK);
        EXPECT_EQ(appStatus(), std::string(1, '\0'));
    }

    /** A board as before any upgrade. */
    void renewBoard() {
        useModel(0x0709);
        SetUp();
    }

    void killAtSteps(const Step *steps, size_t count, uint32_t firstCall,
                     const std::string &imageBefore) {
        // Each step is two downloads: where they take long, the first and the last and where
        // something else is left are enough.
        const bool isEach = depthOf(true, false, true, true);
        for (size_t i = 0; i < count; ++i) {
            if (!isEach && i > 0 && i + 1 < count && steps[i].left == steps[i - 1].left)
                continue;
            SCOPED_TRACE("step " + std::to_string(i));
            renewBoard();
            upgradeUntil(firstCall + static_cast<uint32_t>(i));
            expectLeft(steps[i].left, imageBefore);
            ASSERT_NO_FATAL_FAILURE(upgradeAgain());
            initialise();
        }
    }

    std::string image_;

  private:
    std::string imageFile_;
};

TEST_F(KilledUpgradeTest, StepsComeInThisOrder) {
    std::vector<Call> calls;
    watchCalls([&calls](Call call) {
        calls.push_back(call);
        return false;
    });
    const auto path = boardFolder() + "/image";
    EXPECT_EQ(bspPoeRtl8239McuUpgrade(path.c_str()), BSP_OK);
    ignoreCalls();

    std::vector<Call> expected;
    for (const Step &step : kBeforeBlocks)
        expected.push_back(step.call);
    for (uint32_t block = 0; block < kBlocks; ++block)
        expected.insert(expected.end(), std::begin(kOfBlock), std::end(kOfBlock));
    for (const Step &step : kAfterBlocks)
        expected.push_back(step.call);
    EXPECT_EQ(calls, expected);
}

TEST_F(KilledUpgradeTest, IsMadeGoodFromEveryStepBeforeTheBlocks) {
    const std::string factory(poe().image.bytes, poe().image.bytes + poe().image.size);
    killAtSteps(kBeforeBlocks, std::size(kBeforeBlocks), 0, factory);
}

TEST_F(KilledUpgradeTest, IsMadeGoodFromEveryStepAfterTheBlocks) {
    killAtSteps(kAfterBlocks, std::size(kAfterBlocks), kFirstCallAfterBlocks, image_);
}

TEST_F(KilledUpgradeTest, IsMadeGoodFromWithinABlock) {
    const auto sent = depthOf<uint32_t>(700, 40, 700, 700); // blocks before the one that is cut off
    for (uint32_t call = 0; call < kCallsOfBlock; ++call) {
        SCOPED_TRACE(call);
        renewBoard();
        upgradeUntil(kFirstBlockCall + sent * kCallsOfBlock + call);
        expectIncomplete(sent + (call > 1 ? 1 : 0));
        ASSERT_NO_FATAL_FAILURE(upgradeAgain());
        initialise();
    }
}

/** A part of the blocks, so that the parts can run side by side. */
class KilledAtBlockTest : public KilledUpgradeTest,
                          public ::testing::WithParamInterface<uint32_t> {};

constexpr uint32_t kParts = 8;

TEST_P(KilledAtBlockTest, IsMadeGood) {
    constexpr uint32_t kBlocksOfPart = kBlocks / kParts;
    // Blocks between kills, each of which costs two downloads.
    const auto interval = depthOf<uint32_t>(50, kBlocksOfPart, 10, 50);
    const uint32_t first = GetParam() * kBlocksOfPart;
    const std::string factory(poe().image.bytes, poe().image.bytes + poe().image.size);
    for (uint32_t block = first; block < first + kBlocksOfPart; block += interval) {
        SCOPED_TRACE("block " + std::to_string(block));
        renewBoard();
        upgradeUntil(kFirstBlockCall + block * kCallsOfBlock);
        if (block == 0)
            expectLeft(kLoading, factory); // the first block is what erases it
        else
            expectIncomplete(block);
        ASSERT_NO_FATAL_FAILURE(upgradeAgain());
    }
    initialise();
}
INSTANTIATE_TEST_SUITE_P(OfTheImage, KilledAtBlockTest, ::testing::Range(0u, kParts));

} // namespace
