// Making and opening boards through the C interface.

#include "tests/control/held_board.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class ControlBoardsTest : public ControlTest {
  protected:
    ControlAnswer create(const std::string &folder, const VBoardOptions &options) const {
        return answerOf(
            [&](VBoardError *error) { return vboardCreate(folder.c_str(), &options, error); });
    }

    static ControlAnswer open(const std::string &folder, VBoard **opened) {
        return answerOf(
            [&](VBoardError *error) { return vboardOpen(folder.c_str(), opened, error); });
    }

    /** Why a folder cannot be opened; the handle stays as it was. */
    static ControlAnswer refusedOpen(const std::string &folder) {
        VBoard *const before = reinterpret_cast<VBoard *>(7);
        VBoard *opened = before;
        const ControlAnswer answer = open(folder, &opened);
        EXPECT_EQ(opened, before);
        return answer;
    }

    static VBoardOptions usual() {
        VBoardOptions options = {};
        options.size = sizeof(options);
        options.model = "0x0709";
        return options;
    }
};

TEST_F(ControlBoardsTest, AreMadeAsTheyAreAskedFor) {
    VBoardOptions options = usual();
    const char *const mtd[] = {"4:size=262144"};
    options.model = "0x0109";
    options.time = "virtual";
    options.serial = "SN42";
    options.mac = "02:00:5e:10:00:42";
    options.commandLine = "quiet";
    options.mtd = mtd;
    options.mtdCount = 1;
    options.flashTiming = "usual";
    ASSERT_EQ(create(path("other"), options), kDone);
    ASSERT_EQ(open(path("other"), &board), kDone);
    EXPECT_EQ(vboardFolder(board), fs::canonical(path("other")).string());
    EXPECT_EQ(get("flash.timing"), "usual");
    EXPECT_EQ(get({"model", "time", "identity.*", "cmdline"}),
              (std::map<std::string, std::string>{{"model", "0x0109"},
                                                  {"time", "virtual"},
                                                  {"identity.serial", "SN42"},
                                                  {"identity.mac", "02:00:5e:10:00:42"},
                                                  {"cmdline", "quiet"}}));
    EXPECT_EQ(fs::file_size(path("other") + "/flash/mtd4"), 262144u);
    vboardClose(board);
}

TEST_F(ControlBoardsTest, AreAsTheCommandMakesThemUnlessTold) {
    ASSERT_EQ(create(path("usual"), usual()), kDone);
    ASSERT_EQ(open(path("usual"), &board), kDone);
    EXPECT_EQ(get({"time", "identity.serial", "identity.mac"}),
              (std::map<std::string, std::string>{{"time", "real"},
                                                  {"identity.serial", "VB00000001"},
                                                  {"identity.mac", "02:00:5e:10:00:00"}}));
    vboardClose(board);
}

TEST_F(ControlBoardsTest, HaveFlashThatTakesItsTimeWhereTimePassesByItself) {
    EXPECT_EQ(get("flash.timing"), "off"); // its time is virtual
    board = newBoard("other", "0x0709", "real");
    EXPECT_EQ(get("flash.timing"), "usual");
    EXPECT_EQ(set({{"time", "virtual"}}), kDone);
    EXPECT_EQ(get("flash.timing"), "usual");
    EXPECT_EQ(set({{"flash.timing", "off"}}), kDone);
    EXPECT_EQ(get("flash.timing"), "off");
}

TEST_F(ControlBoardsTest, AreNotMadeWithWhatTheyCannotHave) {
    struct Case {
        void (*change)(VBoardOptions &options);
        int32_t status;
        const char *text;
    };
    constexpr Case kCases[] = {
        {[](VBoardOptions &options) { options.size = 8; }, VBOARD_E_ARGUMENT,
         "options has a size of 8"},
        {[](VBoardOptions &options) { options.model = nullptr; }, VBOARD_E_ARGUMENT,
         "model is null"},
        {[](VBoardOptions &options) { options.model = "0x0708"; }, VBOARD_E_REFUSED,
         "no model '0x0708'"},
        {[](VBoardOptions &options) { options.time = "fast"; }, VBOARD_E_REFUSED, "time: 'fast'"},
        {[](VBoardOptions &options) { options.serial = ""; }, VBOARD_E_REFUSED, "1 to 31"},
        {[](VBoardOptions &options) { options.mac = "02"; }, VBOARD_E_REFUSED, "'02'"},
        {[](VBoardOptions &options) { options.mtdCount = 1; }, VBOARD_E_ARGUMENT, "mtd is null"},
        {[](VBoardOptions &options) { options.flashTiming = "slow"; }, VBOARD_E_REFUSED,
         "flash.timing: 'slow'"},
    };
    for (const Case &row : kCases) {
        VBoardOptions options = usual();
        row.change(options);
        const ControlAnswer answer = create(path("other"), options);
        EXPECT_EQ(answer.status, row.status) << answer;
        EXPECT_NE(answer.text.find(row.text), std::string::npos) << answer;
        EXPECT_FALSE(fs::exists(path("other")));
    }
}

TEST_F(ControlBoardsTest, AreMadeWhereNothingIs) {
    EXPECT_EQ(create(path("board"), usual()).status, VBOARD_E_EXISTS);
    const ControlAnswer nowhere = create(path("nowhere/board"), usual());
    EXPECT_EQ(nowhere.status, VBOARD_E_REFUSED);
    EXPECT_NE(nowhere.text.find("is not a folder"), std::string::npos) << nowhere;
}

TEST_F(ControlBoardsTest, AreOpenedWhereTheyAreAndWhole) {
    EXPECT_EQ(refusedOpen(path("nowhere")).status, VBOARD_E_NO_BOARD);
    fs::create_directory(path("empty"));
    EXPECT_EQ(refusedOpen(path("empty")).status, VBOARD_E_NO_BOARD);

    fs::resize_file(path("board") + "/board.state", 4096);
    EXPECT_EQ(refusedOpen(path("board")).status, VBOARD_E_DAMAGED);
}

TEST_F(ControlBoardsTest, TellWhenTheirFolderIsGone) {
    EXPECT_EQ(get("model"), "0x0709");
    fs::remove_all(path("board"));
    VBoardProperty *properties = nullptr;
    uint32_t count = 7;
    const ControlAnswer answer = answerOf([&](VBoardError *error) {
        return vboardGet(board, nullptr, 0, &properties, &count, error);
    });
    EXPECT_EQ(answer.status, VBOARD_E_GONE);
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(count, 7u);
    EXPECT_EQ(set({{"fan.1.state", "stuck"}}).status, VBOARD_E_GONE);
}

TEST_F(ControlBoardsTest, FailWithoutWhatIsRequired) {
    EXPECT_EQ(vboardOpen(nullptr, &board, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardOpen("board", nullptr, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardCreate("board", nullptr, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardSet(nullptr, nullptr, 0, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardSet(board, nullptr, 1, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardWait(board, nullptr, 0, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardTime(board, nullptr, nullptr), VBOARD_E_ARGUMENT);
    EXPECT_EQ(vboardPanel(board, 0, nullptr, nullptr), VBOARD_E_ARGUMENT);
    vboardClose(nullptr);
    vboardFree(nullptr);
}

TEST(ControlStatuses, HaveNames) {
    EXPECT_STREQ(vboardStatusName(VBOARD_OK), "VBOARD_OK");
    EXPECT_STREQ(vboardStatusName(VBOARD_E_REFUSED), "VBOARD_E_REFUSED");
    EXPECT_STREQ(vboardStatusName(VBOARD_E_NO_MEMORY), "VBOARD_E_NO_MEMORY");
    EXPECT_STREQ(vboardStatusName(VBOARD_E_BUSY + 1), "");
    EXPECT_STREQ(vboardStatusName(-1), "");
}

} // namespace
