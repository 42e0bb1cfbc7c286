// The file that tells whether the controller's application is usable.

#include "bsp.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

using AppStatusTest = PoeTest;

TEST_F(AppStatusTest, IsTheFirstByteOfItsFile) {
    for (const auto &[content, expected] :
         {std::pair<std::string, uint32_t>{"", 0}, {"\x01", 1}, {"\x02\x01", 2}, {"\xFF", 255}}) {
        writeBoardFile(kStatusFile, content);
        uint32_t status = kMark;
        EXPECT_EQ(answerOf([&] { return bspPoeRtl8239AppStatusGet(&status); }), kSilentSuccess);
        EXPECT_EQ(status, expected);
        EXPECT_EQ(readBoardFile(kStatusFile), content);
    }
}

TEST_F(AppStatusTest, IsZeroWithoutAFileWhichIsCreated) {
    const mode_t mask = umask(0);
    uint32_t status = kMark;
    EXPECT_EQ(bspPoeRtl8239AppStatusGet(&status), BSP_OK);
    umask(mask);
    EXPECT_EQ(status, 0u);
    struct stat info = {};
    ASSERT_EQ(stat(boardFile(kStatusFile).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    EXPECT_EQ(info.st_size, 0);
}

TEST_F(AppStatusTest, IsStoredAsOneByte) {
    EXPECT_EQ(bspPoeRtl8239AppStatusSet(0x1FE), BSP_OK);
    EXPECT_EQ(readBoardFile(kStatusFile), "\xFE");
    writeBoardFile(kStatusFile, "\x01tail");
    EXPECT_EQ(bspPoeRtl8239AppStatusSet(2), BSP_OK);
    EXPECT_EQ(readBoardFile(kStatusFile), "\x02tail") << "the file is not truncated";
}

TEST_F(AppStatusTest, OfAFileThatDoesNotOpenIsReportedByTheFunctionThatOpensIt) {
    addFault(openFails(kStatusFile, EROFS));
    const auto text = [](const std::string &function) {
        return function + "-#: open /tmp/bsp/poeApp file filed, " + std::to_string(EROFS) + " \n";
    };
    uint32_t status = kMark;
    EXPECT_EQ(answerOf([&] { return bspPoeRtl8239AppStatusGet(&status); }),
              (Answer{BSP_E_POE_OPEN, text("bspPoeRtl8239AppStatusGet")}));
    EXPECT_EQ(status, kMark);
    EXPECT_EQ(answerOf([] { return bspPoeRtl8239AppStatusSet(1); }),
              (Answer{BSP_E_POE_OPEN, text("bspPoeRtl8239AppStatusSet")}));
}

TEST_F(AppStatusTest, NeedsAnOutputBeforeTheFileIsOpened) {
    EXPECT_EQ(bspPoeRtl8239AppStatusGet(nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(trace().empty());
}

} // namespace
