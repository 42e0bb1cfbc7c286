// Upgrade of the controller's firmware.

#include "poe/rtl8239/firmware.h"

#include "bsp.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <algorithm>
#include <unistd.h>

namespace {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

constexpr char kImageFile[] =
    "/tmp/bsp/firmware.bin"; // among the board's files, where opens can fail

/** An image in which no block is like another. */
std::string imageOf(size_t size) {
    std::string image(size, '\0');
    for (size_t i = 0; i < size; ++i)
        image[i] = static_cast<char>(i % 32 < 4 ? i / 32 >> i % 32 * 4 : i * 7);
    return image;
}

Bytes blockOf(const std::string &image, size_t position) {
    Bytes block = {0xC0, static_cast<uint8_t>(0x80 + position / 0x10000),
                   static_cast<uint8_t>(position >> 8), static_cast<uint8_t>(position)};
    const std::string data = image.substr(position, 32);
    block.insert(block.end(), data.begin(), data.end());
    return block;
}

Answer download(const std::string &image) {
    return answerOf([&] {
        return rtl8239CmdFirmwareDownload(reinterpret_cast<const uint8_t *>(image.data()),
                                          static_cast<int32_t>(image.size()));
    });
}

class FirmwareTest : public PoeTest {
  protected:
    Answer upgrade(size_t size) {
        image = imageOf(size);
        writeBoardFile(kImageFile, image);
        return answerOf([] { return bspPoeRtl8239McuUpgrade(kImageFile); });
    }

    /** Nothing reached the controller, no time went by, and no status was left. */
    void expectNothingDone() {
        EXPECT_TRUE(controller.exchanges().empty());
        EXPECT_EQ(elapsed(), 0u);
        EXPECT_EQ(access(boardFile(kStatusFile).c_str(), F_OK), -1);
    }

    std::string image;
};

TEST_F(FirmwareTest, SendsTheWholeImageInBlocks) {
    for (const size_t size : {51200u, 51220u, 196608u}) {
        SCOPED_TRACE(size);
        elapsed();
        EXPECT_EQ(upgrade(size), kSilentSuccess);
        const std::vector<Exchange> seen = controller.exchanges();
        const size_t blocks = (size + 31) / 32;
        ASSERT_EQ(seen.size(), 3 + blocks);
        EXPECT_EQ(requestText(seen[0].request), "41:");
        EXPECT_EQ(seen[1].request, bytesOf("C0 00 FF FF FF FF FF FF FF FF FF B7"));
        for (size_t i = 0; i < blocks; ++i)
            ASSERT_EQ(seen[2 + i].request, blockOf(image, i * 32)) << "block " << i;
        EXPECT_EQ(seen.back().request, bytesOf("C0 40 FF FF FF FF FF FF FF FF FF F7"));
        EXPECT_EQ(readBoardFile(kStatusFile), "\x01");
        // The probe, two jumps, the blocks, and the rests of 1, 10, 1 and 1 seconds.
        EXPECT_EQ(elapsed(), 200000u + 2 * 125000u + blocks * 125000u + 13000000u);
    }
}

TEST_F(FirmwareTest, AddressesBlocksByBankAndOffset) {
    const std::string whole = imageOf(196608);
    EXPECT_EQ(download(whole), kSilentSuccess);
    const std::vector<Exchange> seen = controller.exchanges();
    const auto header = [&](size_t position) {
        const Bytes &request = seen.at(position / 32).request;
        return Bytes(request.begin(), request.begin() + 4);
    };
    EXPECT_EQ(header(0), bytesOf("C0 80 00 00"));
    EXPECT_EQ(header(65504), bytesOf("C0 80 FF E0"));
    EXPECT_EQ(header(65536), bytesOf("C0 81 00 00"));
    EXPECT_EQ(header(131040), bytesOf("C0 81 FF E0"));
    EXPECT_EQ(header(131072), bytesOf("C0 82 00 00"));
    EXPECT_EQ(header(196576), bytesOf("C0 82 FF E0"));
    EXPECT_EQ(seen.size(), 6144u);
    EXPECT_EQ(elapsed(), 6144u * 125000u);
}

TEST_F(FirmwareTest, EndsWithAShortBlock) {
    EXPECT_EQ(upgrade(51220), kSilentSuccess);
    const std::vector<Exchange> seen = controller.exchanges();
    EXPECT_EQ(seen.at(seen.size() - 2).request.size(), 24u);
    EXPECT_EQ(seen.at(seen.size() - 3).request.size(), 36u);
}

TEST_F(FirmwareTest, HoldsTheLockFromTheJumpToTheEnd) {
    EXPECT_EQ(upgrade(51200), kSilentSuccess);
    for (const Exchange &exchange : controller.exchanges())
        EXPECT_TRUE(exchange.isLocked) << requestText(exchange.request);
    EXPECT_EQ(readBoardFile(kLockFile), "\x10") << "only the probe is numbered";
    EXPECT_EQ(upgrade(51200), kSilentSuccess) << "the lock is free again";
}

TEST_F(FirmwareTest, TakesASilentControllerToBeInItsLoader) {
    controller.answer({"", Spoil::Read});
    EXPECT_EQ(upgrade(51200), (Answer{BSP_OK, silenceText("41")}));
    const std::vector<Exchange> seen = controller.exchanges();
    EXPECT_EQ(seen.size(), 1u + 1600 + 1);
    EXPECT_EQ(seen.at(1).request, blockOf(image, 0));
    EXPECT_EQ(elapsed(), 600000u + 1601u * 125000u + 3000000u);
}

TEST_F(FirmwareTest, IgnoresTheResultsOfTheJumps) {
    controller.answer({"07"}, 1);
    controller.answer({"", Spoil::Read}, 2 + 1600);
    EXPECT_EQ(upgrade(51200),
              (Answer{BSP_OK, "ERROR: rtl8239CmdJumpToLoader(#): response status check failed."
                              "\n"}));
    EXPECT_EQ(controller.exchanges().size(), 1603u);
    EXPECT_EQ(readBoardFile(kStatusFile), "\x01");
}

TEST_F(FirmwareTest, MarksTheStartBeforeTheFirstBlock) {
    writeBoardFile(kStatusFile, std::string(1, '\0'));
    controller.answer({"", Spoil::Read}, 1); // the jump to the loader
    controller.answer({"", Spoil::Read}, 2); // the first block
    EXPECT_EQ(upgrade(51200),
              (Answer{BSP_E_POE_READ, "firmware download failed, bank 0, image offset 0.\n"}));
    Lines steps;
    for (const std::string &line : trace()) {
        if (line.find("poeApp") != std::string::npos || line.ends_with("000000 us"))
            steps.push_back(line);
    }
    EXPECT_EQ(steps, (Lines{"sleep 1000000 us", "sleep 10000000 us", "open /tmp/bsp/poeApp",
                            "open /tmp/bsp/poeApp"}));
    EXPECT_EQ(readBoardFile(kStatusFile), "\x02");
}

TEST_F(FirmwareTest, StopsAtABlockThatIsNotAnswered) {
    struct Case {
        Spoil spoil;
        int32_t status;
        const char *before;
    };
    const Case cases[] = {
        {Spoil::Read, BSP_E_POE_READ, ""},
        {Spoil::Write, BSP_E_POE_WRITE,
         "ERROR: rtl8239CmdMessage(#): rtl8239CmdRequest failed, cmd=0xc0.\n"},
    };
    for (const Case &row : cases) {
        controller.answer({"", row.spoil}, 2 + 65536 / 32 + 1);
        EXPECT_EQ(
            upgrade(131072),
            (Answer{row.status, row.before + std::string("firmware download failed, bank 1, image "
                                                         "offset 65568.\n")}));
        EXPECT_EQ(controller.exchanges().size(), 2u + 2048 + 2) << "no jump to the application";
        EXPECT_EQ(readBoardFile(kStatusFile), "\x02");
    }
    EXPECT_EQ(upgrade(51200), kSilentSuccess) << "the lock is free again";
    EXPECT_EQ(readBoardFile(kStatusFile), "\x01");
}

TEST_F(FirmwareTest, StopsAtABlockThatIsEchoedWrongly) {
    // Position 32 is echoed with each of its four bytes wrong in turn.
    const ScriptedReply answers[] = {
        {"", Spoil::CommandEcho}, {"", Spoil::SecondByteEcho}, {"01 20"}, {"00 21"}};
    for (const ScriptedReply &answer : answers) {
        controller.answer(answer, 3);
        EXPECT_EQ(upgrade(51200), (Answer{BSP_E_POE_STATUS, "response status check failed, bank "
                                                            "0, image offset 32.\n"}));
        EXPECT_EQ(controller.exchanges().size(), 4u);
        EXPECT_EQ(readBoardFile(kStatusFile), "\x02");
    }
}

TEST_F(FirmwareTest, RepeatsTheReadOfABlockNotTheBlock) {
    controller.answer({"", Spoil::Read, 4}, 2);
    EXPECT_EQ(upgrade(51200), kSilentSuccess);
    EXPECT_EQ(controller.exchanges().at(2).readLengths, (std::vector<int32_t>(5, 4)));
}

TEST_F(FirmwareTest, RefusesOtherSizes) {
    for (const size_t size : {0u, 51196u, 51199u, 51201u, 51202u, 196609u, 196612u, 262144u}) {
        EXPECT_EQ(upgrade(size),
                  (Answer{BSP_E_POE_INVALID, "The firmware file's size is error...\r\n"}))
            << size;
    }
    expectNothingDone();
}

TEST_F(FirmwareTest, NeedsAFile) {
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239McuUpgrade(nullptr); }),
              (Answer{BSP_E_POE_NULL, ""}));
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239McuUpgrade(kImageFile); }),
              (Answer{BSP_E_POE_INVALID, ""}));
    expectNothingDone();
}

TEST_F(FirmwareTest, NeedsMemoryForTheWholeImage) {
    addFault(openFails(kImageFile, EACCES)); // the memory comes first
    recorder.failAlways("malloc 262144");
    EXPECT_EQ(upgrade(51200), (Answer{BSP_E_POE_NO_MEMORY, ""}));
    expectNothingDone();
}

TEST_F(FirmwareTest, NeedsAFileThatOpens) {
    addFault(openFails(kImageFile, EACCES));
    EXPECT_EQ(upgrade(51200), (Answer{BSP_E_POE_OPEN, ""}));
    expectNothingDone();
}

TEST_F(FirmwareTest, NeedsAFileThatReadsWhole) {
    recorder.failAlways("fread", 51197);
    EXPECT_EQ(upgrade(51200),
              (Answer{BSP_E_POE_SHORT_READ, "Reading firmware filesize 51197 failed...\r\n"}));
    expectNothingDone();
}

TEST_F(FirmwareTest, NeedsTheLockAfterTheProbe) {
    recorder.failAlways("flock /tmp/bspPoeLockFile");
    EXPECT_EQ(upgrade(51200),
              (Answer{BSP_E_POE_LOCK, "rtl8239CmdMessageSafe-# \r\n"
                                      "bspPoeRtl8239McuUpgrade-#: Get lock error \r\n"}));
    expectNothingDone();
}

TEST_F(FirmwareTest, GoesOnWithoutALockFile) {
    addFault(openFails(kLockFile, EACCES));
    Answer outcome;
    complainedBy([&] { outcome = upgrade(51200); });
    EXPECT_EQ(outcome, kSilentSuccess);
    EXPECT_EQ(controller.exchanges().size(), 1603u);
}

TEST_F(FirmwareTest, DoesNotLookAtTheResultOfWritingTheStatus) {
    addFault(openFails(kStatusFile, EACCES));
    EXPECT_EQ(upgrade(51200).status, BSP_OK);
    EXPECT_EQ(controller.exchanges().size(), 1603u);
}

TEST_F(FirmwareTest, JumpsCheckTheAnswer) {
    struct Case {
        int32_t (*jump)();
        ScriptedReply answer;
        Answer outcome;
    };
    const auto bad = [](const std::string &function) {
        return Answer{BSP_E_POE_STATUS,
                      "ERROR: " + function + "(#): response status check failed.\n"};
    };
    const Case cases[] = {
        {rtl8239CmdJumpToLoader, {"00 09 09"}, kSilentSuccess},
        {rtl8239CmdJumpToLoader, {"01"}, bad("rtl8239CmdJumpToLoader")},
        {rtl8239CmdJumpToLoader, {"", Spoil::SecondByteEcho}, {BSP_E_POE_FRAME, ""}},
        {rtl8239CmdJumpToLoader, {"", Spoil::Checksum}, {BSP_E_POE_FRAME, ""}},
        {rtl8239CmdJumpToLoader, {"", Spoil::Read}, {BSP_E_POE_READ, ""}},
        {rtl8239CmdJumpToApp, {"00 09 09"}, kSilentSuccess},
        {rtl8239CmdJumpToApp, {"01"}, bad("rtl8239CmdJumpToApp")},
        {rtl8239CmdJumpToApp, {"", Spoil::CommandEcho}, bad("rtl8239CmdJumpToApp")},
        {rtl8239CmdJumpToApp, {"", Spoil::SecondByteEcho}, bad("rtl8239CmdJumpToApp")},
        {rtl8239CmdJumpToApp, {"", Spoil::Checksum}, kSilentSuccess}, // the loader sends none
        {rtl8239CmdJumpToApp, {"", Spoil::Read}, {BSP_E_POE_READ, ""}},
    };
    for (const Case &row : cases) {
        controller.answer(row.answer);
        EXPECT_EQ(answerOf(row.jump), row.outcome) << &row - cases;
    }
}

TEST_F(FirmwareTest, DownloadOfNothingSendsNothing) {
    EXPECT_EQ(download(""), kSilentSuccess);
    EXPECT_EQ(rtl8239CmdFirmwareDownload(nullptr, 32), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

} // namespace
