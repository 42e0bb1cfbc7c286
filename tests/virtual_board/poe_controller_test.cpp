// The PoE controller's frames, modes and stored state, at its bus.

#include "tests/virtual_board/poe_test.h"
#include "virtual_board/words/fault_text.h"

#include <numeric>

namespace {

class PoeControllerTest : public PoeTest {
  protected:
    void add(const std::string &op, const std::string &effect, const std::string &offset = "",
             const std::string &when = "from") {
        addFault(vb::parseFault({"poe", op, offset, "1", when, effect}));
    }

    /** Sends an image in blocks of 32 bytes; the first answer that is not the block's head. */
    static void download(uint32_t from, uint32_t to) {
        for (uint32_t at = from; at < to; at += 32) {
            uint8_t block[36] = {0xC0, static_cast<uint8_t>(0x80 + at / 65536),
                                 static_cast<uint8_t>(at >> 8), static_cast<uint8_t>(at)};
            std::iota(block + 4, block + 36, static_cast<uint8_t>(at / 32));
            const uint32_t length = std::min(32u, to - at);
            ASSERT_EQ(bspI2cWrite(16, 0, 0x20, 0, 0, block, static_cast<int32_t>(4 + length)),
                      BSP_OK);
            sleepMs(10);
            uint8_t answer[4] = {};
            ASSERT_EQ(bspI2cRead(16, 0, 0x20, 0, 0, answer, 4), BSP_OK);
            for (int i = 0; i < 4; ++i)
                ASSERT_EQ(answer[i], block[i]) << "at " << at;
        }
    }

    static bool isApplicationUp() { return ask({0x41, 7})[0] == 0x41; }

    static void enterLoader() {
        EXPECT_EQ(ask({0xC0, 0x00})[2], 0);
        sleepMs(1000);
    }

    static int startApplication() {
        const PoeBytes answer = ask({0xC0, 0x40});
        EXPECT_EQ(answer[0], 0xC0);
        EXPECT_EQ(answer[1], 0x40);
        sleepMs(1000);
        return answer[2];
    }

    static void pulseReset() {
        EXPECT_EQ(bspGpioDirectionOutput(19, 0), BSP_OK);
        EXPECT_EQ(bspGpioDirectionOutput(19, 1), BSP_OK);
        sleepMs(1000);
    }
};

TEST_F(PoeControllerTest, AnswersWithTheEchoAndAChecksum) {
    const PoeBytes answer = ask({0x40, 0x5A});
    EXPECT_EQ(answer[0], 0x40);
    EXPECT_EQ(answer[1], 0x5A);
    EXPECT_EQ(answer[11], sum(answer));
    EXPECT_EQ(read(), answer); // until the next frame
}

TEST_F(PoeControllerTest, AFrameWithAWrongChecksumOrLengthIsNotAnswered) {
    ask({0x40, 1});
    PoeBytes bad = frame({0x40, 2});
    ++bad[11];
    EXPECT_EQ(write(bad), BSP_OK);
    sleepMs(100);
    EXPECT_EQ(read(), silence());

    const PoeBytes whole = frame({0x40, 3});
    EXPECT_EQ(bspI2cWrite(16, 0, 0x20, 0, 0, whole.data(), 11), BSP_OK);
    sleepMs(100);
    EXPECT_EQ(read(), silence());
}

TEST_F(PoeControllerTest, OffsetBytesSpoilAFrame) {
    const PoeBytes whole = frame({0x40, 3});
    EXPECT_NE(bspI2cWrite(16, 0, 0x20, 0, 1, whole.data(), 12), BSP_OK);
    EXPECT_EQ(read(), silence());
}

TEST_F(PoeControllerTest, UnknownCommandsAreNotAnswered) {
    for (const auto command :
         std::initializer_list<uint8_t>{0x07, 0x13, 0x17, 0x43, 0x47, 0x51, 0xCA})
        EXPECT_EQ(ask({command, 1}), silence()) << int{command};
}

TEST_F(PoeControllerTest, TakesItsTimeToAnswer) {
    const struct {
        uint8_t command;
        unsigned tooEarlyMs, dueMs;
    } cases[] = {{0x00, 999, 1000}, {0x05, 1999, 2000}, {0x41, 4, 5}};
    for (const auto &[command, tooEarlyMs, dueMs] : cases) {
        EXPECT_EQ(write(frame({command, 1, 0, 0})), BSP_OK);
        sleepMs(tooEarlyMs);
        EXPECT_EQ(read(), silence()) << int{command};
        sleepMs(dueMs - tooEarlyMs);
        EXPECT_EQ(read()[0], command);
    }
}

TEST_F(PoeControllerTest, AnswersAtItsPlaceOnModelsWithPoeOnly) {
    uint8_t byte = 0;
    EXPECT_EQ(bspI2cRead(16, 0, 0x20, 0, 0, &byte, 1), BSP_OK);
    EXPECT_NE(bspI2cRead(16, 1, 0x20, 0, 0, &byte, 1), BSP_OK);
    EXPECT_NE(bspI2cRead(16, 0, 0x21, 0, 0, &byte, 1), BSP_OK);
    EXPECT_NE(bspI2cRead(0, 0, 0x20, 0, 0, &byte, 1), BSP_OK);
    uint32_t isMissing = 7;
    EXPECT_EQ(bspPoeOnlineGet(&isMissing), BSP_OK);
    EXPECT_EQ(isMissing, 0u);

    devices().cpld.reg[6] |= 0x4000; // taken off the board
    EXPECT_NE(bspI2cRead(16, 0, 0x20, 0, 0, &byte, 1), BSP_OK);
    EXPECT_NE(write(frame({0x40})), BSP_OK);

    useModel(0x0309);
    EXPECT_NE(bspI2cRead(16, 0, 0x20, 0, 0, &byte, 1), BSP_OK);
    EXPECT_EQ(bspPoeOnlineGet(&isMissing), BSP_OK);
    EXPECT_EQ(isMissing, 1u);
}

/** A setting of ports, and where a question about the port shows it. */
struct PortSetting {
    uint8_t command, good, bad, query, at;
};

TEST_F(PoeControllerTest, PortSettingsAreKeptAndAsked) {
    constexpr PortSetting kSettings[] = {
        {0x01, 2, 3, 0x48, 3},  {0x08, 1, 3, 0x48, 4}, {0x09, 6, 7, 0x48, 5}, {0x0F, 3, 4, 0x48, 7},
        {0x0C, 9, 10, 0x49, 3}, {0x12, 2, 0, 0x49, 4}, {0x12, 1, 3, 0x49, 4}, {0x15, 3, 4, 0x49, 6},
    };
    for (const PortSetting &setting : kSettings) {
        const PoeBytes answer = ask({setting.command, 9, 5, setting.good, 47, setting.good, 48,
                                     setting.good, 6, setting.bad});
        const PoeBytes expected = frame({setting.command, 9, 5, 0, 47, 0, 48, 1, 6, 1});
        EXPECT_EQ(answer, expected) << int{setting.command};
        for (const auto port : std::initializer_list<uint8_t>{5, 47})
            EXPECT_EQ(ask({setting.query, 1, port})[setting.at], setting.good)
                << int{setting.command};
        EXPECT_NE(ask({setting.query, 1, 6})[setting.at], setting.bad) << int{setting.command};
    }
    EXPECT_EQ(ask({0x0D, 1, 5, 0xA5})[3], 0);
    EXPECT_EQ(ask({0x14, 1, 5, 225})[3], 0);
    const PoeBytes power = ask({0x49, 1, 5});
    EXPECT_EQ(power[5], 225);
    EXPECT_EQ(power[7], 0xA5);
    EXPECT_EQ(ask({0x4D, 1, 5, 0xFF, 6})[3], 1);
}

TEST_F(PoeControllerTest, GlobalSettingsAreKeptAndAsked) {
    EXPECT_EQ(ask({0x0E, 1, 17, 0xFF, 249})[2], 0);
    EXPECT_EQ(ask({0x10, 1, 4})[2], 0);
    EXPECT_EQ(ask({0x10, 1, 5})[2], 1);
    EXPECT_EQ(ask({0x11, 1, 1})[2], 0);
    EXPECT_EQ(ask({0x11, 1, 2})[2], 1);
    const PoeBytes global = ask({0x4A, 1});
    EXPECT_EQ(global[2], 17);
    EXPECT_EQ(global[3], 4);
    EXPECT_EQ(global[7], 249);
    EXPECT_EQ(global[8], 1);

    EXPECT_EQ(ask({0x04, 1, 3, 0x12, 0x34, 0x00, 0x10}), frame({0x04, 1, 3, 0}));
    EXPECT_EQ(ask({0x04, 1, 8, 0, 0, 0, 0}), frame({0x04, 1, 8, 1}));
    EXPECT_EQ(ask({0x4B, 3}), frame({0x4B, 3, 0, 0x12, 0x34, 0x00, 0x10}));
    EXPECT_EQ(ask({0x16, 1, 6})[2], 0);
    EXPECT_EQ(ask({0x16, 1, 7})[2], 1);
    EXPECT_EQ(ask({0x46, 1, 0})[2], 6);
}

TEST_F(PoeControllerTest, MappingIsCheckedAndShown) {
    EXPECT_EQ(ask({0x06, 1, 9, 1, 2, 4, 5, 0xFF, 0xFF, 0xFF, 0x24}),
              frame({0x06, 1, 9, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0}));
    EXPECT_EQ(ask({0x4E, 1, 9}), frame({0x4E, 1, 9, 1, 1, 2, 4, 5, 0x24}));
    EXPECT_EQ(ask({0x06, 1, 9, 2, 12, 8, 8, 0xFF, 0xFF, 0xFF, 0x24}),
              frame({0x06, 1, 9, 1, 1, 1, 1, 0xFF, 0xFF, 0xFF, 0}));
    EXPECT_EQ(ask({0x4C, 1, 0})[5], 0x24);
    EXPECT_EQ(ask({0x4C, 1, 8})[3], 0xFF);
    EXPECT_EQ(ask({0x05, 1, 1, 49}, 2100)[3], 1);
}

TEST_F(PoeControllerTest, AQuestionAboutAPortThatDoesNotExistNamesNone) {
    for (const auto query :
         std::initializer_list<uint8_t>{0x42, 0x44, 0x45, 0x48, 0x49, 0x4E, 0x4F})
        EXPECT_EQ(ask({query, 1, 48})[2], 0xFF) << int{query};
}

TEST_F(PoeControllerTest, ChipRegistersKeepTheirContent) {
    EXPECT_EQ(ask({0xF0, 1, 3, 0, 0, 0x12, 0x34, 0xDE, 0xAD, 0xBE, 0xEF})[7], 0);
    EXPECT_EQ(ask({0xF1, 1, 3, 0, 0, 0x12, 0x34}),
              frame({0xF1, 1, 3, 0, 0, 0x12, 0x34, 0xDE, 0xAD, 0xBE, 0xEF}));
    EXPECT_EQ(ask({0xF1, 1, 4, 0, 0, 0x12, 0x34})[10], 0);
    EXPECT_EQ(ask({0xF0, 1, 12, 0, 0, 0, 0, 0, 0, 0, 0})[7], 1);
}

TEST_F(PoeControllerTest, SavedSettingsSurviveAReset) {
    ask({0x10, 1, 3});
    pulseReset();
    EXPECT_EQ(ask({0x4A, 1})[3], 2);

    ask({0x10, 1, 3});
    EXPECT_EQ(ask({0xC0, 0x01})[2], 0);
    ask({0x10, 1, 4});
    pulseReset();
    EXPECT_EQ(ask({0x4A, 1})[3], 3);
    ask({0x10, 1, 4});
    EXPECT_EQ(ask({0xC0, 0x05})[2], 0); // back to the saved ones
    EXPECT_EQ(ask({0x4A, 1})[3], 3);
    EXPECT_EQ(ask({0xC0, 0x06})[2], 0); // back to the factory's, but still saved
    EXPECT_EQ(ask({0x4A, 1})[3], 2);
    EXPECT_EQ(ask({0x02, 1, 1})[2], 0);
    EXPECT_EQ(ask({0x4A, 1})[3], 3);
    EXPECT_EQ(ask({0xC0, 0x02})[2], 0);
    pulseReset();
    EXPECT_EQ(ask({0x4A, 1})[3], 2);
}

TEST_F(PoeControllerTest, ResetHoldsItAndAStartTakesHalfASecond) {
    ask({0x10, 1, 4});
    EXPECT_EQ(bspGpioDirectionOutput(19, 0), BSP_OK);
    sleepMs(2000);
    uint8_t byte = 0;
    EXPECT_NE(write(frame({0x40, 1})), BSP_OK);
    EXPECT_NE(bspI2cRead(16, 0, 0x20, 0, 0, &byte, 1), BSP_OK);
    EXPECT_EQ(bspGpioDirectionOutput(19, 1), BSP_OK);
    sleepMs(499);
    EXPECT_NE(write(frame({0x40, 1})), BSP_OK);
    sleepMs(1);
    EXPECT_EQ(ask({0x4A, 1})[3], 2);
}

TEST_F(PoeControllerTest, TheLoaderKnowsNoCommandOfTheApplication) {
    EXPECT_TRUE(isApplicationUp());
    EXPECT_EQ(ask({0xC0, 0x40}), silence()); // nor does the application know the loader's
    enterLoader();
    EXPECT_FALSE(isApplicationUp());
    EXPECT_EQ(ask({0xC0, 0x01}), silence());
    EXPECT_EQ(startApplication(), 0); // the one that is still there
    EXPECT_TRUE(isApplicationUp());
}

TEST_F(PoeControllerTest, AWholeImageIsStarted) {
    enterLoader();
    download(0, 51220);
    EXPECT_EQ(startApplication(), 0);
    const PoeBytes info = ask({0x40, 1});
    EXPECT_EQ(info[7], 0x00); // the image's first two bytes
    EXPECT_EQ(info[10], 0x01);
    EXPECT_EQ(poe().image.size, 51220u);
    EXPECT_EQ(poe().image.bytes[51200 + 19], static_cast<uint8_t>(51200 / 32 + 19));
}

TEST_F(PoeControllerTest, TheLargestImageFillsThreeBanks) {
    enterLoader();
    download(0, 196608);
    EXPECT_EQ(poe().image.bytes[65536], static_cast<uint8_t>(65536 / 32));
    EXPECT_EQ(poe().image.bytes[196607], static_cast<uint8_t>(196576 / 32 + 31));
    const uint8_t behind[8] = {0xC0, 0x83, 0, 0, 1, 2, 3, 4};
    EXPECT_EQ(bspI2cWrite(16, 0, 0x20, 0, 0, behind, 8), BSP_OK);
    sleepMs(10);
    EXPECT_EQ(read(), silence());
    EXPECT_EQ(startApplication(), 0);
}

TEST_F(PoeControllerTest, AnImageThatIsShortOrHasHolesIsNotStarted) {
    enterLoader();
    download(0, 51196);
    EXPECT_EQ(startApplication(), 1);
    EXPECT_FALSE(isApplicationUp());
    download(0, 1024);
    download(1056, 52000);
    EXPECT_EQ(startApplication(), 1);
    download(1024, 1056);
    EXPECT_EQ(startApplication(), 0);
    EXPECT_TRUE(isApplicationUp());
}

TEST_F(PoeControllerTest, AnInterruptedDownloadLeavesItInTheLoaderAlsoAfterAReset) {
    enterLoader();
    download(0, 60000 / 32 * 32); // long enough to be an application, but not the whole of it
    pulseReset();
    EXPECT_FALSE(isApplicationUp());
    download(0, 51200);
    EXPECT_EQ(startApplication(), 0);
    pulseReset();
    EXPECT_TRUE(isApplicationUp());
}

TEST_F(PoeControllerTest, FaultsOfItsFrames) {
    add("write", "late-answer=3", "0x41");
    EXPECT_EQ(ask({0x41, 1}), silence());
    EXPECT_EQ(read(), silence());
    EXPECT_EQ(read()[0], 0x41);
    EXPECT_EQ(ask({0x40, 1})[0], 0x40);

    clearFaults();
    add("write", "wrong-echo");
    PoeBytes answer = ask({0x41, 1});
    EXPECT_EQ(answer[1], 0xFE);
    EXPECT_EQ(answer[11], sum(answer));

    clearFaults();
    add("write", "wrong-checksum");
    answer = ask({0x41, 1});
    EXPECT_EQ(answer[1], 1);
    EXPECT_NE(answer[11], sum(answer));

    clearFaults();
    add("write", "bad-port=6");
    EXPECT_EQ(ask({0x15, 1, 5, 3, 6, 3, 7, 3}), frame({0x15, 1, 5, 0, 6, 1, 7, 0}));
    EXPECT_EQ(ask({0x49, 1, 6})[2], 0xFF);
    clearFaults();
    EXPECT_EQ(ask({0x49, 1, 6})[6], 0);

    add("write", "no-effect", "0x10");
    EXPECT_EQ(ask({0x10, 1, 4}), frame({0x10, 1, 0}));
    clearFaults();
    EXPECT_EQ(ask({0x4A, 1})[3], 2);

    add("write", "no-answer", "0x10");
    EXPECT_EQ(ask({0x10, 1, 4}), silence());
    clearFaults();
    EXPECT_EQ(ask({0x4A, 1})[3], 2);
}

TEST_F(PoeControllerTest, ItCanBeStuckInReset) {
    add("reset", "no-answer", "", "once");
    pulseReset();
    EXPECT_NE(write(frame({0x40, 1})), BSP_OK);
    EXPECT_EQ(board().faults.rule[0].matched, 1u);
    pulseReset();
    EXPECT_TRUE(isApplicationUp());
}

} // namespace
