// The system's tools as programs run them through the shell: exit statuses, messages, and what is
// on the flash afterwards.

#include "bsp.h"
#include "tests/support/answer.h"
#include "tests/support/process.h"
#include "tests/virtual_board/flash_test.h"
#include "virtual_board/os/seam.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

namespace {

namespace fs = std::filesystem;

class FlashToolsTest : public FlashBoardTest {
  protected:
    struct Answer {
        int status; // exit status; 128 + the signal's number for a command that was killed
        std::string out, err;
    };

    /** Runs a command as the library does. */
    Answer shell(const std::string &command) const {
        const int status =
            std::system((command + " >" + path("out") + " 2>" + path("err")).c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), fileText("out"),
                fileText("err")};
    }
    /** The same, for a command that succeeds without a word. */
    void succeed(const std::string &command) const {
        const Answer answer = shell(command);
        EXPECT_EQ(answer.status, 0) << command;
        EXPECT_EQ(answer.out + answer.err, "") << command;
    }
    void fail(const std::string &command, int status, const std::string &part) const {
        const Answer answer = shell(command);
        EXPECT_EQ(answer.status, status) << command;
        EXPECT_NE((answer.out + answer.err).find(part), std::string::npos)
            << command << ": " << answer.out << answer.err;
    }

    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }
    std::string fileText(const std::string &name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /** A file of blocks that differ: the first is full of 'a', the next of 'b', ... */
    std::string makeImage(size_t size) const {
        std::string image(size, '\0');
        for (size_t i = 0; i < size; ++i)
            image[i] = static_cast<char>('a' + i / kNandBlock % 26);
        std::ofstream(path("image"), std::ios::binary) << image;
        return image;
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(FlashToolsTest, FlashEraseErasesThePartition) {
    const Node node(kNand);
    node.write(0, std::string(kPage, 'x'));
    node.write(kNandSize - kPage, std::string(kPage, 'x'));
    succeed("flash_erase -q /dev/mtd12 0 0");
    EXPECT_EQ(node.read(0, kPage), erased(kPage));
    EXPECT_EQ(node.read(kNandSize - kPage, kPage), erased(kPage));
    for (uint32_t block = 0; block < kNandSize / kNandBlock; ++block)
        EXPECT_EQ(flash(12).erases[block], 1u) << block;
    EXPECT_EQ(flash(14).erases[0], 0u);
}

TEST_F(FlashToolsTest, FlashEraseTakesAStartAndACount) {
    succeed("flash_erase --quiet /dev/mtd12 0x20000 2");
    EXPECT_EQ(std::vector<uint32_t>(flash(12).erases, flash(12).erases + 4),
              (std::vector<uint32_t>{0, 1, 1, 0}));
    EXPECT_NE(shell("flash_erase /dev/mtd12 0 1").out.find("Erasing 128 Kibyte @ 0"),
              std::string::npos);
}

TEST_F(FlashToolsTest, AWholePartitionIsErasedInOneRequest) {
    trace();
    succeed("flash_erase -q /dev/mtd12 0 0");
    EXPECT_EQ(trace(),
              (Lines{"open /dev/mtd12", "MTD info mtd12", "MTD erase mtd12 0x0+0x2880000"}));
    EXPECT_EQ(shell("flash_erase -q -N /dev/mtd12 0 0").err, "");
    EXPECT_EQ(trace().size(), 2 + kNandSize / kNandBlock);
}

/** What is told when a partition cannot be erased in one request. */
constexpr char kOneByOne[] =
    "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 0 (mtd12)\n"
    "        error 5 (Input/output error)\n"
    "flash_erase: error!: /dev/mtd12: MTD Erase entire chip failureTrying one by one each sector.\n"
    "             error 5 (Input/output error)\n";

TEST_F(FlashToolsTest, FlashErasePassesBadBlocksOver) {
    flash(12).isBad[3] = 1;
    const Answer answer = shell("flash_erase -q /dev/mtd12 0 0");
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.err, kOneByOne);
    // Those before the bad one twice: the first try got that far.
    EXPECT_EQ(std::vector<uint32_t>(flash(12).erases, flash(12).erases + 6),
              (std::vector<uint32_t>{2, 2, 2, 0, 1, 1}));
    EXPECT_NE(shell("flash_erase /dev/mtd12 0 5").out.find("Skipping bad block at 00060000"),
              std::string::npos);
}

TEST_F(FlashToolsTest, FlashEraseGoesOnBehindAWeakBlockAndSucceeds) {
    addRule("mtd12", "erase", "fails=EIO", "0x40000");
    const Answer answer = shell("flash_erase -q /dev/mtd12 0 0");
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.err, std::string(kOneByOne) +
                              "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 2 (mtd12)\n"
                              "        error 5 (Input/output error)\n"
                              "flash_erase: error!: /dev/mtd12: MTD Erase failure\n"
                              "             error 5 (Input/output error)\n");
    EXPECT_EQ(flash(12).erases[2], 0u);
    EXPECT_EQ(flash(12).erases[3], 1u);
}

TEST_F(FlashToolsTest, FlashEraseRefuses) {
    fail("flash_erase -q /dev/mtd13 0 0", 255,
         "flash_erase: error!: /dev/mtd13\n             error 2 (No such file or directory)\n");
    fail("flash_erase -q /dev/null 0 0", 255, "mtd_get_dev_info failed");
    fail("flash_erase -q /dev/mtd12", 255, "no start erase block specified");
    fail("flash_erase -q /dev/mtd12 x 0", 255, "unable to parse the number 'x'");
    fail("flash_erase -q /dev/mtd12 0 0 0", 255, "no MTD device specified");
    fail("flash_erase -q /dev/mtd12 0x40000 400", 255, "bad eraseblock number 324");
    flash(12) = vb::Flash{flash(12).geometry, 0, {}, {}};
    fail("flash_erase --wrong /dev/mtd12 0 0", 255, "unrecognized option '--wrong'");
    flash(12).isWriteProtected = 1;
    fail("flash_erase -q /dev/mtd12 0 0", 255, "error 13 (Permission denied)");
    EXPECT_EQ(flash(12).erases[0], 0u);
}

TEST_F(FlashToolsTest, NandwriteWritesAFileAndPadsItsLastPage) {
    const std::string image = makeImage(2 * kNandBlock + 100);
    succeed("nandwrite -q -p /dev/mtd12 " + path("image"));
    EXPECT_EQ(Node(kNand).read(0, 3 * kNandBlock), image + erased(kNandBlock - 100));
    const Lines lines = trace();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string &line) { return line.starts_with("MTD write"); }),
              2 * kNandBlock / kPage + 1);
}

TEST_F(FlashToolsTest, NandwriteStartsWhereItIsTold) {
    const std::string image = makeImage(512);
    succeed("nandwrite -q -p -s 0x2700000 /dev/mtd12 " + path("image"));
    EXPECT_EQ(Node(kNand).read(0x2700000 - kPage, 2 * kPage),
              erased(kPage) + image + erased(kPage - 512));
}

TEST_F(FlashToolsTest, ABadBlockMovesWhatFollows) {
    flash(12).isBad[1] = 1;
    const std::string image = makeImage(3 * kNandBlock);
    succeed("nandwrite -q -p /dev/mtd12 " + path("image"));
    EXPECT_EQ(Node(kNand).read(0, 5 * kNandBlock),
              image.substr(0, kNandBlock) + erased(kNandBlock) + image.substr(kNandBlock) +
                  erased(kNandBlock));
    flash(12).isBad[0] = 1;
    fail("nandwrite -p /dev/mtd12 " + path("image"), 0, "Bad block at 0, 1 block(s)");
}

TEST_F(FlashToolsTest, AWeakBlockIsErasedAndItsDataMove) {
    addRule("mtd12", "program", "fails=EIO", std::to_string(kNandBlock + 3 * kPage));
    const std::string image = makeImage(2 * kNandBlock);
    const Answer answer = shell("nandwrite -q -p /dev/mtd12 " + path("image"));
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.err, "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 1, offset "
                          "6144)\n        error 5 (Input/output error)\n"
                          "Erasing failed write from 0x020000 to 0x03ffff\n");
    EXPECT_EQ(Node(kNand).read(0, 4 * kNandBlock),
              image.substr(0, kNandBlock) + erased(kNandBlock) + image.substr(kNandBlock) +
                  erased(kNandBlock));
    EXPECT_EQ(flash(12).erases[1], 1u);
}

TEST_F(FlashToolsTest, NandwriteRunsOutOfBlocks) {
    const uint32_t last = kNandSize / kNandBlock - 1;
    flash(12).isBad[last] = 1;
    makeImage(2 * kNandBlock);
    fail("nandwrite -q -p -s " + std::to_string((last - 1) * kNandBlock) + " /dev/mtd12 " +
             path("image"),
         255, "Data was only partially written due to error");
    EXPECT_EQ(Node(kNand).read((last - 1) * kNandBlock, 1), "a");
}

TEST_F(FlashToolsTest, NandwriteTakesAFileAsLargeAsThePartition) {
    fs::resize_file((std::ofstream(path("image")).put('x'), path("image")), kNandSize);
    succeed("nandwrite -q -p /dev/mtd12 " + path("image"));
    EXPECT_EQ(Node(kNand).read(kNandSize - kPage, kPage), std::string(kPage, '\0'));
    fs::resize_file(path("image"), kNandSize + kPage);
    fail("nandwrite -q -p /dev/mtd12 " + path("image"), 255, "Input file does not fit into device");
}

TEST_F(FlashToolsTest, NandwriteRefuses) {
    makeImage(kPage + 1);
    fail("nandwrite -q -p /dev/mtd12 " + path("none"), 255,
         path("none") + ": No such file or directory\nnandwrite: error!: Data was only partially "
                        "written due to error\n");
    fail("nandwrite -q -p /dev/mtd13 " + path("image"), 255,
         "nandwrite: error!: /dev/mtd13\n           error 2 (No such file or directory)\n");
    fail("nandwrite -q -p -s 512 /dev/mtd12 " + path("image"), 255,
         "The start address is not page-aligned !\nThe pagesize of this NAND Flash is 0x800.");
    fail("nandwrite -q -p -s " + std::to_string(kNandSize - kPage) + " /dev/mtd14 " + path("image"),
         255, "partially written"); // the second page
    fail("nandwrite -q /dev/mtd12 " + path("image"), 255, "Use the padding option.");
    fail("nandwrite -q -p -s -2048 /dev/mtd12 " + path("image"), 255, "negative device offset");
    fail("nandwrite -q -p -s zz /dev/mtd12 " + path("image"), 1, "unable to parse the number 'zz'");
    fail("nandwrite -q -p", 1, "Usage: nandwrite");
    fail("nandwrite --wrong /dev/mtd12 " + path("image"), 1, "unrecognized option");
    EXPECT_EQ(Node(kNand).read(0, kPage), erased(kPage));
}

TEST_F(FlashToolsTest, NanddumpCopiesAPart) {
    const std::string image = makeImage(kNandBlock + kPage);
    succeed("nandwrite -q -p /dev/mtd12 " + path("image"));
    succeed("nanddump -q -s 0x1f800 -l 0x900 /dev/mtd12 -f " + path("part"));
    EXPECT_EQ(fileText("part"), image.substr(0x1F800, 0x900));
    std::ofstream(path("part")) << std::string(10000, 'z'); // replaced, not written over
    succeed("nanddump -q -s 0 -l 0x200 /dev/mtd12 -f " + path("part"));
    EXPECT_EQ(fileText("part"), image.substr(0, 0x200));
    succeed("nanddump -q -l 0x800 -f /tmp/bsp/osHeader.bin /dev/mtd12");
    EXPECT_EQ(readBoardFile("/tmp/bsp/osHeader.bin"), image.substr(0, 0x800));
    EXPECT_EQ(shell("nanddump -q -l 3 /dev/mtd12").out, "aaa");
}

TEST_F(FlashToolsTest, NanddumpHasThreeWaysWithBadBlocks) {
    const std::string image = makeImage(3 * kNandBlock);
    succeed("nandwrite -q -p /dev/mtd12 " + path("image"));
    flash(12).isBad[1] = 1;
    const std::string length = std::to_string(2 * kNandBlock);
    const std::string command = "nanddump -q -l " + length + " /dev/mtd12 -f " + path("part");
    const std::string a = image.substr(0, kNandBlock);
    const std::string b = image.substr(kNandBlock, kNandBlock);
    const std::string c = image.substr(2 * kNandBlock);
    succeed(command);
    EXPECT_EQ(fileText("part"), a + c);
    succeed(command + " --bb=skipbad");
    EXPECT_EQ(fileText("part"), a + c);
    succeed(command + " --bb=padbad");
    EXPECT_EQ(fileText("part"), a + erased(kNandBlock));
    succeed(command + " --bb=dumpbad");
    EXPECT_EQ(fileText("part"), a + b);
}

TEST_F(FlashToolsTest, NanddumpFails) {
    fail("nanddump -q -s 0 -l 0x200 /dev/mtd13 -f " + path("part"), 1,
         "/dev/mtd13: No such file or directory");
    fail("nanddump -q -s 512 -l 0x200 /dev/mtd12 -f " + path("part"), 1, "is not page-aligned!");
    fail("nanddump -q -l 0x200 /dev/mtd12 -f " + path("none/part"), 1,
         "none/part: No such file or directory");
    fail("nanddump -q --bb=other /dev/mtd12", 1, "Usage: nanddump");
    fail("nanddump -q -s zz /dev/mtd12", 1, "unable to parse the number 'zz'");
    fail("nanddump -q -l -1 /dev/mtd12", 255, "negative length");
    addRule("mtd12", "read", "fails=EIO");
    fail("nanddump -q -l 0x200 /dev/mtd12 -f " + path("part"), 1, "nanddump: error!: mtd_read\n");
    EXPECT_EQ(fileText("part"), "");
}

TEST_F(FlashToolsTest, GeometryThatFailsStopsEachTool) {
    makeImage(kPage);
    addRule("mtd12", "info", "fails=EIO");
    for (const std::string command : {"flash_erase -q /dev/mtd12 0 0", "nanddump -q /dev/mtd12"})
        fail(command, 255, "mtd_get_dev_info failed");
    fail("nandwrite -q -p /dev/mtd12 " + path("image"), 255, "mtd_get_dev_info failed");
}

// Standard input and output

TEST_F(FlashToolsTest, NandwriteReadsStandardInput) {
    const std::string image = makeImage(kNandBlock + 3 * kPage);
    for (const std::string source : {"", " -"}) {
        succeed("flash_erase -q /dev/mtd12 0 0");
        succeed("cat " + path("image") + " | nandwrite -q /dev/mtd12" + source);
        EXPECT_EQ(Node(kNand).read(0, kNandBlock + 4 * kPage), image + erased(kPage));
    }
    // The last page is filled up only if that is wanted, whatever pieces a pipe delivers.
    succeed("flash_erase -q /dev/mtd12 0 0");
    succeed("(printf abc; sleep 0.1; printf def) | nandwrite -q -p /dev/mtd12 -");
    EXPECT_EQ(Node(kNand).read(0, kPage + 1), "abcdef" + erased(kPage - 5));
    fail("printf abc | nandwrite -q -s 0x800 /dev/mtd12", 255,
         "Unexpected EOF. Expecting at least 2045 more bytes. Use the padding option.\n");
    EXPECT_EQ(Node(kNand).read(kPage, kPage), erased(kPage));
    trace();
    succeed("nandwrite -q -p /dev/mtd12 </dev/null");
    for (const std::string &line : trace())
        EXPECT_EQ(line.find("MTD write"), std::string::npos) << line;
    fail("nandwrite -q -p /dev/mtd12 - more </dev/null", 1, "Usage: nandwrite");
}

TEST_F(FlashToolsTest, StandardInputStepsOverBadAndSpoiltBlocks) {
    flash(12).isBad[0] = 1;
    addRule("mtd12", "program", "fails=EIO", std::to_string(kNandBlock + kPage), "1", "once");
    const std::string image = makeImage(2 * kNandBlock);
    EXPECT_EQ(shell("cat " + path("image") + " | nandwrite -q /dev/mtd12 -").status, 0);
    EXPECT_EQ(Node(kNand).read(2 * kNandBlock, 2 * kNandBlock), image);
}

TEST_F(FlashToolsTest, StandardInputThatDoesNotFitIsNotReadFurther) {
    makeImage(3 * kPage);
    const std::string start = std::to_string(kNandSize - 2 * kPage);
    succeed("nandwrite -q -s " + start + " /dev/mtd12 - <" + path("image"));
    EXPECT_EQ(Node(kNand).read(kNandSize - 2 * kPage, 2 * kPage), std::string(2 * kPage, 'a'));
}

TEST_F(FlashToolsTest, NanddumpWritesStandardOutput) {
    const std::string image = makeImage(2 * kPage);
    Node(kNand).write(0, image);
    for (const std::string target : {"", " -f -", " --file=-"})
        EXPECT_EQ(shell("nanddump -q -l 0x1000 /dev/mtd12" + target).out, image) << target;
    // From one bank to the other
    succeed("nanddump -q -l 0x1000 /dev/mtd12 -f - | nandwrite -q /dev/mtd14 -");
    EXPECT_EQ(Node("/dev/mtd14").read(0, 3 * kPage), image + erased(kPage));
}

// What the tools say of themselves

TEST_F(FlashToolsTest, HelpSaysThatAToolIsTheBoardsOwn) {
    const std::map<std::string, Lines> options = {
        {"flash_erase", {"-q, --quiet, --silent", "-N, --noskipbad"}},
        {"nandwrite",
         {"MTD_DEVICE [INPUTFILE|-]", "-s, --start=", "-p, --pad", "-m, --markbad",
          "-N, --noskipbad", "-q, --quiet"}},
        {"nanddump",
         {"-f, --file=", "-s, --startaddress=", "-l, --length=", "--bb=METHOD", "-a, --forcebinary",
          "-q, --quiet"}},
        {"stty", {"-F /dev/ttyS0", "-F, --file=", "ispeed SPEED, ospeed SPEED, cs8"}},
        {"rm", {"FILE..."}}};
    trace();
    for (const auto &[tool, parts] : options) {
        const Answer help = shell(tool + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.err, "");
        const Answer version = shell(tool + " --version");
        EXPECT_EQ(version.status, 0);
        EXPECT_TRUE(version.out.starts_with(tool + " of a virtual board 1.")) << version.out;
        EXPECT_TRUE(help.out.starts_with(version.out + "Usage: " + tool + " ")) << help.out;
        for (const std::string &part : parts)
            EXPECT_NE(help.out.find(part), std::string::npos) << part << help.out;
        for (const char *part : {"docs/virtual-board.md", "man vboard", "VBOARD_DIR"})
            EXPECT_NE(help.out.find(part), std::string::npos) << part << help.out;
        for (const std::string &line : linesOf(help.out))
            EXPECT_LE(line.size(), 80u) << line;
    }
    EXPECT_EQ(shell("nandwrite -h").out, shell("nandwrite --help").out);
    EXPECT_EQ(shell("nandwrite -V").out, shell("nandwrite --version").out);
    EXPECT_EQ(shell("nandwrite -q --help /dev/mtd12").out, shell("nandwrite --help").out);
    EXPECT_EQ(shell("env -u VBOARD_DIR nandwrite --help").out, shell("nandwrite --help").out);
    EXPECT_EQ(trace(), Lines{}) << "the board is not asked";
    // Not a question: a file of that name.
    std::ofstream(path("--help")) << "x";
    succeed("cd " + path("") + " && rm -- --help");
    EXPECT_FALSE(fs::exists(path("--help")));
}

TEST_F(FlashToolsTest, AWrongCommandLineIsToldOnStandardError) {
    for (const std::string command : {"nandwrite", "nanddump"}) {
        const Answer answer = shell(command);
        EXPECT_EQ(answer.status, 1);
        EXPECT_EQ(answer.out, "");
        EXPECT_TRUE(answer.err.starts_with("Usage: " + command + " [OPTION]... MTD_DEVICE"));
        EXPECT_NE(answer.err.find("\nTry '" + command + " --help'.\n"), std::string::npos);
    }
}

TEST_F(FlashToolsTest, SttySetsTheConsole) {
    EXPECT_EQ(devices().console.speed, 115200u);
    succeed("stty -F /dev/ttyS0 ispeed 9600 ospeed 9600 cs8");
    EXPECT_EQ(devices().console.speed, 9600u);
    EXPECT_EQ(trace().back(), "console speed 9600");
    fail("stty -F /dev/ttyS0 ispeed 9601 ospeed 9600 cs8", 1, "stty: invalid ispeed '9601'");
    fail("stty -F /dev/ttyS0 ispeed 38400 ospeed 1 cs8", 1, "stty: invalid ospeed '1'");
    fail("stty -F /dev/ttyS0 38400 cs9", 1, "stty: invalid argument 'cs9'");
    fail("stty -F /dev/ttyS0 ispeed", 1, "stty: missing argument to 'ispeed'");
    EXPECT_EQ(devices().console.speed, 9600u);
    EXPECT_EQ(shell("stty -F /dev/ttyS0").out, "speed 9600 baud; line = 0;\n");
    succeed("stty --file=/dev/ttyS0 57600");
    EXPECT_EQ(devices().console.speed, 57600u);
}

TEST_F(FlashToolsTest, TheConsoleCanRefuseItsSpeed) {
    addRule("console", "write", "fails=EIO", "", "2", "once");
    addRule("console", "any", "fails=EACCES", "", "3", "from");
    succeed("stty -F /dev/ttyS0 57600");
    const std::string command = "stty -F /dev/ttyS0 ispeed 9600 ospeed 9600 cs8";
    const Answer second = shell(command);
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.out, "");
    EXPECT_EQ(second.err, "stty: /dev/ttyS0: Input/output error\n");
    EXPECT_EQ(trace().back(), "console speed 9600 -> fails, errno 5 (Input/output error)");
    EXPECT_EQ(shell(command).err, "stty: /dev/ttyS0: Permission denied\n");
    EXPECT_EQ(devices().console.speed, 57600u);
    // Neither a question nor words that are no settings set anything.
    EXPECT_EQ(shell("stty -F /dev/ttyS0").out, "speed 57600 baud; line = 0;\n");
    fail("stty -F /dev/ttyS0 9601", 1, "invalid argument '9601'");
    succeed("stty -F /dev/ttyS0 cs8");
    EXPECT_EQ(board().faults.rule[0].matched, 3u);
    EXPECT_EQ(board().faults.rule[1].fired, 1u);
}

TEST_F(FlashToolsTest, TheLibraryKeepsItsSettingWhenTheConsoleRefuses) {
    EXPECT_EQ(bspBaudrateSet(57600), BSP_OK);
    addRule("console", "write", "fails=EIO");
    const ::Answer refused = answerOf([] { return bspBaudrateSet(9600); });
    EXPECT_EQ(refused.status, BSP_E_FAILED);
    EXPECT_EQ(refused.printed, "bspBaudrateSet-#: set console baudrate to 9600 error, ret = 256\n");
    uint32_t baud = 0;
    EXPECT_EQ(bspBaudrateGet(&baud), BSP_OK);
    EXPECT_EQ(baud, 57600u);
    EXPECT_EQ(devices().console.speed, 57600u);
}

TEST_F(FlashToolsTest, OtherTerminalsAreTheSystems) {
    fail("stty -F " + path("none") + " ispeed 9600", 1, "No such file or directory");
    EXPECT_EQ(devices().console.speed, 115200u);
}

TEST_F(FlashToolsTest, RmRemovesTheBoardsFiles) {
    writeBoardFile("/tmp/bsp/one", "1");
    writeBoardFile("/tmp/bsp/two", "2");
    succeed("rm -f /tmp/bsp/one");
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/one")));
    EXPECT_TRUE(fs::exists(boardFile("/tmp/bsp/two")));
    succeed("rm -f /tmp/bsp/one");
    std::ofstream(path("host")) << "x";
    succeed("rm -f /tmp/bsp/two " + path("host"));
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/two")));
    EXPECT_FALSE(fs::exists(path("host")));
    fail("rm " + path("host"), 1, "No such file or directory");
}

TEST_F(FlashToolsTest, RmTakesTheBoardsFilesAsTheKernelDoes) {
    writeBoardFile("/tmp/bsp/one", "1");
    writeBoardFile("/tmp/bsp/two", "2");
    writeBoardFile("/tmp/bsp/-f", "3");
    // A name without a folder, as the tool's own is, within the board's.
    succeed("cd " + boardFile("/tmp/bsp") + " && rm one && rm -- -f");
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/one")));
    EXPECT_FALSE(fs::exists(boardFile("/tmp/bsp/-f")));
    fs::create_symlink("two", boardFile("/tmp/bsp/link"));
    succeed("rm /tmp/bsp/link");
    EXPECT_FALSE(fs::is_symlink(boardFile("/tmp/bsp/link")));
    EXPECT_TRUE(fs::exists(boardFile("/tmp/bsp/two")));
    for (const char *own : {"/dev/mtd4", "/dev/bspHandle", "/proc/mtd"}) {
        fail("rm -f " + std::string(own), 1,
             "cannot remove '" + std::string(own) + "': Operation not permitted");
        EXPECT_TRUE(fs::exists(boardFile(own)));
    }
    fail("rm /tmp/bsp/two/below", 1, "Not a directory");
}

TEST_F(FlashToolsTest, OtherCommandsAreTheShells) {
    EXPECT_EQ(shell("exit 42").status, 42);
    EXPECT_EQ(shell("echo 'a  b' \"$((1 + 1))\"").out, "a  b 2\n");
    EXPECT_EQ(shell("no-such-command").status, 127);
    EXPECT_NE(std::system(nullptr), 0);
    vb::detachBoard();
    EXPECT_EQ(shell("echo $VBOARD_DIR").out, "\n");
}

TEST_F(FlashToolsTest, ABoardInAFolderOfAnyNameWorks) {
    const TemporaryFolder folder;
    const std::string odd = folder.path() + "/it's a \"board\" $HOME";
    vb::BoardOptions options;
    options.devId = 0x0709;
    vb::FolderError error = {};
    ASSERT_TRUE(vb::createBoard(odd, options, error)) << error.text;
    ASSERT_TRUE(vb::attachBoard(odd.c_str(), error)) << error.text;
    succeed("flash_erase -q /dev/mtd4 0 1");
    EXPECT_EQ(vb::attachedFolder()->board()->devices.flash[1].erases[0], 1u);
    vb::detachBoard();
}

TEST_F(FlashToolsTest, APowerCutInAToolEndsTheProgramThatRanIt) {
    const std::string image = makeImage(kNandBlock);
    addRule("mtd12", "program", "power-cut=100", "", "3", "once");
    EXPECT_EQ(signalOf([&] {
                  shell("nandwrite -q -p /dev/mtd12 " + path("image"));
                  shell("flash_erase -q /dev/mtd12 0 0");
              }),
              SIGKILL);
    EXPECT_EQ(Node(kNand).read(0, 4 * kPage),
              image.substr(0, 2 * kPage + 100) + erased(2 * kPage - 100));
}

TEST_F(FlashToolsTest, EachUseCountsOnce) {
    writeBoardFile("/tmp/bsp/image", std::string(3 * kPage, 'x'));
    addRule("/tmp/bsp/image", "read", "short=1", "", "1000");
    addRule("mtd12", "program", "fails=EIO", "", "1000");
    succeed("nandwrite -q -p /dev/mtd12 /tmp/bsp/image");
    EXPECT_EQ(board().faults.rule[0].matched, 3u);
    EXPECT_EQ(board().faults.rule[1].matched, 3u);
    // Also where the library is preloaded into everything.
    const ProcessResult result =
        runOnBoard(boardFolder(), {builtProgram("run_commands"), "flash_erase -q /dev/mtd12 0 0",
                                   "nandwrite -q -p /dev/mtd12 /tmp/bsp/image"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(board().faults.rule[0].matched, 6u);
    EXPECT_EQ(board().faults.rule[1].matched, 6u);
}

TEST_F(FlashToolsTest, UnmodifiedProgramsRunTheTools) {
    makeImage(kPage);
    const ProcessResult result =
        runOnBoard(boardFolder(), {builtProgram("run_commands"), "flash_erase -q /dev/mtd12 0 0",
                                   "nandwrite -q -p /dev/mtd12 " + path("image"),
                                   "nanddump -q -s 0 -l 0x200 /dev/mtd12 -f /tmp/bsp/osHeader.bin",
                                   "stty -F /dev/ttyS0 ispeed 19200 ospeed 19200 cs8",
                                   "rm -f " + path("image"), "exit 9"});
    EXPECT_EQ(result.exitCode, 9);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(Node(kNand).read(0, 2), "aa");
    EXPECT_EQ(readBoardFile("/tmp/bsp/osHeader.bin"), std::string(512, 'a'));
    EXPECT_EQ(devices().console.speed, 19200u);
    EXPECT_FALSE(fs::exists(path("image")));
}

} // namespace
