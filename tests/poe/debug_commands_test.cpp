// Hand-made frames from the diagnostic shell, and what is printed of them.

#include "bsp.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

namespace {

using Lines = std::vector<std::string>;

constexpr char kUsage[] = "  iodbg poe poeCommand                     CMD SEQ DATA ... \n";

/** The words of a shell command. */
class Words {
  public:
    explicit Words(Lines words) : words_(std::move(words)) {
        for (std::string &word : words_)
            pointers_.push_back(word.data());
    }
    int32_t count() const { return static_cast<int32_t>(pointers_.size()); }
    char **vector() { return pointers_.data(); }

  private:
    Lines words_;
    std::vector<char *> pointers_;
};

Answer dispatch(const Lines &words) {
    Words all(words);
    return answerOf([&] { return bspPoeRtl8239DebugDispatch(0, all.count(), all.vector()); });
}

std::string invalidText(const std::string &word) {
    return "***Error! \"" + word +
           "\" is an invalid io command!\n"
           "Please use \"iodbg poe -h\" or \"iodbg poe ?\" for help!\n";
}

using DebugCommandsTest = PoeTest;

TEST_F(DebugCommandsTest, PoeCommandSendsItsBytesAndDumpsBothFrames) {
    controller.answer({"01 02 03 04 05 06 07 08 0A"});
    EXPECT_EQ(dispatch({"iodbg", "poe", "poeCommand", "4b", "0", "1"}),
              (Answer{BSP_OK, "\nSend Data:\n"
                              "4B 00 01 FF FF FF FF FF FF FF FF 44 "
                              "\nRecv Data:\n"
                              "4B 00 01 02 03 04 05 06 07 08 0A 79 \n"}));
    EXPECT_EQ(controller.requests(), (Lines{"4B/00: 01"}));
}

TEST_F(DebugCommandsTest, TheDumpShowsTheSequenceNumberThatWasSent) {
    EXPECT_EQ(dispatch({"iodbg", "poe", "poeCommand", "41", "99"}),
              (Answer{BSP_OK, "\nSend Data:\n"
                              "41 10 FF FF FF FF FF FF FF FF FF 48 "
                              "\nRecv Data:\n"
                              "41 10 00 00 00 00 00 00 00 00 00 51 \n"}));
}

TEST_F(DebugCommandsTest, ARefusedFrameIsDumpedAsItWasBuilt) {
    EXPECT_EQ(dispatch({"iodbg", "poe", "poeCommand", "c0", "80"}),
              (Answer{BSP_E_POE_UNAVAILABLE, "\nSend Data:\n"
                                             "C0 80 FF FF FF FF FF FF FF FF FF FF "
                                             "\nRecv Data:\n"
                                             "FF FF FF FF FF FF FF FF FF FF FF FF \n"}));
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(DebugCommandsTest, AFailedExchangeIsDumpedToo) {
    controller.answer({"05", Spoil::Checksum});
    EXPECT_EQ(dispatch({"iodbg", "poe", "poeCommand", "c0", "5"}),
              (Answer{BSP_E_POE_FRAME, "\nSend Data:\n"
                                       "C0 05 FF FF FF FF FF FF FF FF FF BC "
                                       "\nRecv Data:\n"
                                       "C0 05 05 00 00 00 00 00 00 00 00 CB \n"}));
}

TEST_F(DebugCommandsTest, BytesAreHexadecimalTheirLow8BitsCount) {
    dispatch({"iodbg", "poe", "poeCommand", "0x14a", "ff", "1FE", "zz", "0X7f", "1g"});
    EXPECT_EQ(controller.requests(), (Lines{"4A: FE 00 7F 01"}));
}

TEST_F(DebugCommandsTest, BytesBeyondTheFrameAreCutOff) {
    dispatch({"iodbg", "poe", "poeCommand", "41", "0", "2", "3", "4", "5", "6", "7", "8", "9", "a",
              "b", "c", "d"});
    EXPECT_EQ(controller.exchanges().at(0).request, bytesOf("41 10 02 03 04 05 06 07 08 09 0A 87"));

    const std::vector<uint8_t> many(300, 0x42);
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgUdfCmd(many.data(), 300); }).status, BSP_OK);
    EXPECT_EQ(controller.exchanges().at(0).request, bytesOf("42 11 42 42 42 42 42 42 42 42 42 A5"));
}

TEST_F(DebugCommandsTest, OneByteIsEnoughForAFrameAndNoneIsNot) {
    const uint8_t command = 0x50;
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgUdfCmd(&command, 1); }).status, BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"50:"}));
    const Answer invalid = {BSP_E_POE_INVALID, ""};
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgUdfCmd(&command, 0); }), invalid);
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgUdfCmd(&command, -1); }), invalid);
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgUdfCmd(nullptr, 1); }), invalid);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(DebugCommandsTest, WithoutBytesTheUsageIsPrinted) {
    const Answer usage = {BSP_E_FAILED, std::string("Caution, command should be: \n") + kUsage};
    EXPECT_EQ(dispatch({"iodbg", "poe", "poeCommand"}), usage);
    Words words({"iodbg", "poe", "poeCommand"});
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgPoeCommand(0, 3, words.vector()); }), usage);
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgPoeCommand(1, 3, words.vector()); }),
              (Answer{BSP_E_FAILED, ""}))
        << "the usage is that of the given row";
}

TEST_F(DebugCommandsTest, OtherWordsAreNoCommands) {
    for (const char *word : {"foo", "END", "POECOMMAND", "poeCommand ", "poe", "-h", "?", ""})
        EXPECT_EQ(dispatch({"iodbg", "poe", word, "1"}), (Answer{BSP_OK, invalidText(word)}));
    EXPECT_EQ(dispatch({"iodbg", "poe"}), (Answer{BSP_OK, invalidText("")}));
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(DebugCommandsTest, NeedTheirWords) {
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239DebugDispatch(0, 4, nullptr); }),
              (Answer{BSP_E_POE_NULL, ""}));
    for (const int32_t count : {3, 4})
        EXPECT_EQ(answerOf([&] { return bspPoeRtl8239DbgPoeCommand(0, count, nullptr); }),
                  (Answer{BSP_E_POE_NULL, ""}));
}

TEST_F(DebugCommandsTest, HelpListsTheCommandsOrOneUsage) {
    const auto help = [](int32_t index) {
        return answerOf([&] { return bspPoeRtl8239DebugDispatchHelp(index); });
    };
    const Answer list = {BSP_OK, std::string("\nSupported poe chip iodbg: \n") + kUsage};
    EXPECT_EQ(help(-1), list);
    EXPECT_EQ(help(INT32_MIN), list);
    EXPECT_EQ(help(0), (Answer{BSP_OK, std::string("Caution, command should be: \n") + kUsage}));
    EXPECT_EQ(help(1), kSilentSuccess);
    EXPECT_EQ(help(INT32_MAX), kSilentSuccess);
}

} // namespace
