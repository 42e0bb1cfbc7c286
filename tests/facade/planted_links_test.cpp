// Links that another user has put where the library keeps its files below /tmp: what they lead to
// is left alone, and the library does what it does when the file cannot be opened.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace {

constexpr char kVictim[] = "/tmp/bsp/victim";
constexpr char kHeaderFile[] = "/tmp/bsp/osHeader.bin";
const std::string kContent(2000, 'v');

class PlantedLinksTest : public VirtualBoardTest {
  protected:
    void plant(const char *pathOnBoard) const {
        unlink(boardFile(pathOnBoard).c_str());
        ASSERT_EQ(symlink(kVictim, boardFile(pathOnBoard).c_str()), 0) << pathOnBoard;
    }

    std::string file(const char *name, const std::string &content) const {
        std::ofstream(boardFolder() + "/" + name, std::ios::binary) << content;
        return boardFolder() + "/" + name;
    }

    /** The file that the links lead to. */
    std::string victim() const { return boardFile(kVictim); }
    std::string contentOfVictim() const {
        std::ifstream stream(victim(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    bool hasVictim() const { return access(victim().c_str(), F_OK) == 0; }
};

TEST_F(PlantedLinksTest, AreNotFollowed) {
    const std::string image = file("image", std::string(3000, 'i'));
    const std::string manyLinks = std::strerror(ELOOP);
    const struct {
        const char *path;
        std::function<int32_t()> call;
        Answer answer;
        std::string complaint{};
    } cases[] = {
        {"/tmp/bsp/devId",
         [] {
             uint32_t devId = 0;
             return bspDevIdGet(&devId);
         },
         {BSP_E_OPEN}},
        {"/tmp/bsp/poeApp",
         [] { return bspPoeRtl8239AppStatusSet(1); },
         {BSP_E_POE_OPEN, "bspPoeRtl8239AppStatusSet-#: open /tmp/bsp/poeApp file filed, " +
                              std::to_string(ELOOP) + " \n"}},
        {"/tmp/bspPoeLockFile",
         [] {
             uint32_t power = 0;
             return bspPoeGlobalPowerGet(&power);
         },
         kSilentSuccess, "open /tmp/bspPoeLockFile error \n: " + manyLinks + "\n"},
        {"/tmp/bspFlashLockFile",
         [&] { return bsp_mtd_write_from_file(image.c_str(), "/dev/mtd0", 0); }, kSilentSuccess,
         "open /tmp/bspFlashLockFile error \n: " + manyLinks + "\n"},
        {kHeaderFile,
         [&] { return bspImageUpgrade(BSP_IMAGE_OS, image.c_str(), 0); },
         {BSP_E_OPEN, "bsp_os_file_header_to_file-#: open /tmp/bsp/osHeader.bin fail.\r\n"
                      "bsp_os_image_write-#: get OS file header failed.\r\n"}},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.path);
        for (const bool isThere : {true, false}) {
            useModel(0x0709);
            file("image", std::string(3000, 'i'));
            if (isThere)
                writeBoardFile(kVictim, kContent);
            ASSERT_NO_FATAL_FAILURE(plant(row.path));
            Answer answer = {-1};
            EXPECT_EQ(complainedBy([&] { answer = answerOf(row.call); }), row.complaint);
            EXPECT_EQ(answer, row.answer);
            EXPECT_EQ(contentOfVictim(), isThere ? kContent : "");
            EXPECT_EQ(hasVictim(), isThere);
        }
    }
}

// nanddump, which writes the work file, follows a link; the library does not take what lies there
// for the header.
TEST_F(PlantedLinksTest, AreNoPlaceToReadAHeaderFrom) {
    plant(kHeaderFile);
    std::string header(BSP_OS_HEADER_SIZE, 'h');
    EXPECT_EQ(
        answerOf([&] { return bspOsImageInfoGet(reinterpret_cast<uint8_t *>(header.data()), 0); }),
        (Answer{BSP_E_OPEN, "bsp_os_header_file_to_buffer-#: open /tmp/bsp/osHeader.bin fail.\r\n"
                            "bspOsImageInfoGet-#: get OS header file failed.\r\n"}));
    EXPECT_EQ(header, std::string(BSP_OS_HEADER_SIZE, 'h'));
    EXPECT_EQ(contentOfVictim(), std::string(BSP_OS_HEADER_SIZE, '\xFF')) << "as the tool left it";
}

} // namespace
