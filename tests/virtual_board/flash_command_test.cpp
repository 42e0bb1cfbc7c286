// `vboard flash`, `vboard console`, `vboard create --mtd`, and flash and console as properties.

#include "tests/support/json.h"
#include "tests/virtual_board/command_test.h"
#include "tests/virtual_board/flash_test.h"
#include "virtual_board/os/seam.h"

namespace {

using nlohmann::json;

class FlashCommandTest : public CommandTest {
  protected:
    ~FlashCommandTest() override { vb::detachBoard(); }

    /** Puts this test's own calls on the board of the commands. */
    void attach() const {
        vb::FolderError error = {};
        ASSERT_TRUE(vb::attachBoard(board().c_str(), error)) << error.text;
    }
};

TEST_F(FlashCommandTest, FlashShowsThePartitions) {
    const Words lines = linesOf(vboard({"flash", board()}));
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_EQ(Words(lines.begin() + 12, lines.begin() + 18),
              (Words{"mtd12: nand, 42467328 bytes, blocks of 131072, pages of 2048+64",
                     "  erased           min 0, max 0, total 0", "  bad blocks       none",
                     "  write-protected  no", "  programmed       0 of 20736 pages",
                     "  holds            nothing"}));
    EXPECT_EQ(lines[0], "mtd0: nor, 1048576 bytes, blocks of 65536, pages of 256");
}

TEST_F(FlashCommandTest, FlashTellsWhatIsStored) {
    attach();
    {
        const Node settings("/dev/mtd4");
        std::string block(256, '\0');
        block.replace(0, 13, "main_system=1");
        block.replace(64, 14, "baudrate=38400");
        block.replace(192, 15, "boot_pwd=secret");
        settings.write(0, block);
        const Node bank("/dev/mtd12");
        bank.erase(0, 131072);
        bank.write(0, std::string(4096, 'i'));
        bank.write(0x2700000, std::string(512, 'h') + std::string(1536, '\xFF'));
        Node("/dev/mtd0").write(0, std::string("\x00\x00\x01\x00\xA1\x02\xA3\x04", 8));
        Node("/dev/mtd14").write(131072, std::string(2048, '\xFF')); // bytes, but none programmed
    }
    vb::detachBoard();
    vboard({"flash", board(), "mark-bad", "12", "7"});
    vboard({"set", board(), "flash.12.write-protected", "yes"});
    const std::string text = vboard({"flash", board()});
    EXPECT_NE(text.find("length header: a file of 256 bytes"), std::string::npos) << text;
    EXPECT_NE(text.find("boot setting main_system=1, boot setting baudrate=38400, boot setting "
                        "boot_pwd=..."),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("secret"), std::string::npos);
    const json list = parsedJson(vboard({"flash", board(), "--json"}));
    ASSERT_EQ(list.size(), 4u);
    EXPECT_EQ(list[2], parsedJson(R"({"partition": 12, "type": "nand", "size": 42467328,
        "erase_size": 131072, "page_size": 2048, "spare_size": 64,
        "erases": {"min": 0, "max": 1, "total": 1}, "bad_blocks": [7], "write_protected": true,
        "programmed_pages": 3, "holds": ["image", "image header at 0x2700000"]})"));
    EXPECT_EQ(list[3]["programmed_pages"], 0);
    EXPECT_EQ(list[1]["programmed_pages"], 1);
}

TEST_F(FlashCommandTest, MarkBadRefuses) {
    expectFailure(1, "the numbers are 0, 4, 12 and 14", {"flash", board(), "mark-bad", "5", "0"});
    expectFailure(1, "give 0, 4, 12 or 14", {"flash", board(), "mark-bad", "x", "0"});
    expectFailure(1, "they are 0 to 323", {"flash", board(), "mark-bad", "12", "324"});
    expectFailure(1, "only NAND has bad blocks", {"flash", board(), "mark-bad", "4", "0"});
    expectFailure(2, "BLOCK is required", {"flash", board(), "mark-bad", "12"});
    EXPECT_EQ(vboard({"get", board(), "flash.12.bad-blocks"}), "none\n");
    EXPECT_NE(vboard({"flash", "--help"}).find("Examples:\n  vboard flash"), std::string::npos);
}

TEST_F(FlashCommandTest, CreateTakesGeometries) {
    vboard({"create", "--model", "0x0109", "--mtd",
            "4:size=262144,erase=131072,page=2048,spare=64,type=nand", "--mtd", "0:page=512",
            path("other")});
    EXPECT_EQ(
        vboard({"get", path("other"), "flash.0.geometry", "flash.4.geometry", "flash.12.geometry"}),
        "nor, 1048576 bytes, blocks of 65536, pages of 512\n"
        "nand, 262144 bytes, blocks of 131072, pages of 2048+64\n"
        "nand, 42467328 bytes, blocks of 131072, pages of 2048+64\n");
    EXPECT_EQ(std::filesystem::file_size(path("other") + "/flash/mtd4"), 262144u);
}

TEST_F(FlashCommandTest, CreateRefusesImpossibleGeometries) {
    const struct {
        const char *geometry, *reason;
    } cases[] = {
        {"4", "4:size=262144"},
        {"x:size=262144", "4:size=262144"},
        {"5:size=262144", "the numbers are 0, 4, 12 and 14"},
        {"4:colour=1", "give size=, erase=, page=, spare= and type="},
        {"4:size=big", "is a number of bytes"},
        {"4:type=rom", "nor or nand"},
        {"4:size=262145", "whole blocks"},
        {"4:size=0", "whole blocks"},
        {"4:erase=5000", "powers of 2 from 4096"},
        {"4:erase=0", "powers of 2 from 4096"},
        {"4:erase=1048576", "powers of 2 from 4096"},
        {"4:page=0", "powers of 2"},
        {"4:page=131072", "no larger than a block"},
        {"4:size=8392704,erase=4096", "1 to 2048 whole blocks"},
        {"4:spare=4096", "up to 2048"},
    };
    for (const auto &[geometry, reason] : cases)
        expectFailure(1, reason, {"create", "--model", "0x0709", "--mtd", geometry, path("other")});
    EXPECT_FALSE(std::filesystem::exists(path("other")));
}

TEST_F(FlashCommandTest, FlashIsReadAndSetByName) {
    vboard({"set", board(), "flash.4.content@0xFFFE", "00112233"});
    EXPECT_EQ(vboard({"get", board(), "flash.4.content@65533+6"}), "ff00112233ff\n");
    vboard({"set", board(), "flash.4.content@0xFFFE", "ff"}); // a programming station sets bits
    EXPECT_EQ(vboard({"get", board(), "flash.4.content@65534+1"}), "ff\n");
    EXPECT_EQ(vboard({"get", board(), "flash.4.content"}).size(), 2 * 262144u + 1);
    expectFailure(1, "of up to 1048576 bytes", {"get", board(), "flash.12.content"});
    expectFailure(1, "bytes 0 to 262143", {"get", board(), "flash.4.content@262143+2"});
    expectFailure(1, "would end behind them", {"set", board(), "flash.4.content@262143", "0000"});
    expectFailure(1, "two hexadecimal digits for each", {"set", board(), "flash.4.content", "0"});

    vboard({"set", board(), "flash.14.bad-blocks", "0,7,323"});
    EXPECT_EQ(vboard({"get", board(), "flash.14.bad-blocks"}), "0,7,323\n");
    expectFailure(1, "from 0 to 323", {"set", board(), "flash.14.bad-blocks", "1,324"});
    EXPECT_EQ(vboard({"get", board(), "flash.14.bad-blocks"}), "0,7,323\n");
    vboard({"set", board(), "flash.14.bad-blocks", "none"});
    EXPECT_EQ(vboard({"get", board(), "flash.14.bad-blocks"}), "none\n");
    expectFailure(1, "only NAND", {"set", board(), "flash.4.bad-blocks", "1"});
    expectFailure(1, "write-protected: '1' is none of no|yes",
                  {"set", board(), "flash.4.write-protected", "1"});
    expectFailure(1, "can only be read", {"set", board(), "flash.4.geometry", "nor"});
    expectFailure(1, "can only be read", {"set", board(), "flash.4.erase-counts", "0"});
    expectFailure(1, "the numbers are 0, 4, 12 and 14", {"get", board(), "flash.1.geometry"});
    EXPECT_EQ(vboard({"get", board(), "flash.4.erase-counts"}), "min=0 max=0 total=0\n");
    EXPECT_EQ(vboard({"get", board()}).find("content"), std::string::npos);
}

TEST_F(FlashCommandTest, ConsoleShowsItsSpeed) {
    EXPECT_EQ(vboard({"console", board()}), "/dev/ttyS0 115200 baud\n");
    vboard({"set", board(), "console.speed", "9600"});
    EXPECT_EQ(vboard({"console", board()}), "/dev/ttyS0 9600 baud\n");
    EXPECT_EQ(parsedJson(vboard({"console", board(), "--json"})),
              parsedJson(R"({"device": "/dev/ttyS0", "speed": 9600})"));
    expectFailure(1, "no rate of a serial console", {"set", board(), "console.speed", "9601"});
    EXPECT_EQ(vboard({"get", board(), "console.speed"}), "9600\n");
}

TEST_F(FlashCommandTest, ShowingFlashDoesNotChangeTheBoard) {
    const auto before = contentOf(board());
    vboard({"flash", board()});
    vboard({"flash", board(), "--json"});
    vboard({"console", board()});
    EXPECT_EQ(contentOf(board()), before);
}

} // namespace
