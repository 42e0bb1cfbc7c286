// iodbg upgrade.

#include "tests/iodbg/flash_commands_test.h"
#include "tests/support/patterns.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/world.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <poll.h>

namespace {

class UpgradeCommandsTest : public FlashCommandsTest {
  protected:
    ProcessResult upgradeOs(const std::string &file) const {
        return iodbg({"upgrade", "os", file, "--bank", "0", "--yes"});
    }
    /** Waits until something is true, up to ten seconds. */
    static bool comesTrue(const std::function<bool()> &isTrue) {
        constexpr int kTries = 1000;
        for (int i = 0; i < kTries; ++i) {
            if (isTrue())
                return true;
            poll(nullptr, 0, 10); // in real time, unlike a sleep on the board
        }
        return false;
    }
    /** The whole lines that tell of a step. */
    static Words stepLines(const std::string &output, int step) {
        Words lines;
        for (const std::string &line : linesOf(output.substr(0, output.rfind('\n') + 1))) {
            if (line.find("\"step\":" + std::to_string(step) + ",") != std::string::npos)
                lines.push_back(line);
        }
        return lines;
    }
    void shrink(uint32_t number, uint32_t size) const {
        flash(number).geometry.size = size;
        std::filesystem::resize_file(boardFolder() + "/flash/mtd" + std::to_string(number), size);
    }
    std::string bootFile(size_t size = 5000) const {
        const std::string file = hostFile("boot.bin");
        EXPECT_EQ(
            iodbg({"image", "pack-boot", makeImage(size, "boot.raw"), file, "--force"}).exitCode,
            0);
        return file;
    }
};

TEST_F(UpgradeCommandsTest, WritesAnImageAndComparesIt) {
    const std::string file = makeImage(300000);
    const ProcessResult result = upgradeOs(file);
    EXPECT_EQ(result.exitCode, 0);
    const std::string shown = // where the path leaves no room, the text goes on in the next line
        replaced(result.out, "\n {29}", " ");
    EXPECT_EQ(shown, "Size, bytes                  300000\n"
                     "Replaces                     Image of bank 0, /dev/mtd12\n"
                     "Now                          empty\n"
                     "New                          " +
                         file +
                         ", 300000 bytes, 'OS image 2.5'\n"
                         "Dry run                      no\n"
                         "Verified                     read back, image and header block are "
                         "the file's\n"
                         "Bad blocks below it          none\n"
                         "Moved behind them by, bytes  0\n")
        << result.out;
    EXPECT_EQ(linesOf(result.err),
              (Words{"upgrade os: step 1 of 4, erase the bank",
                     "upgrade os: step 2 of 4, write the image",
                     "upgrade os: step 3 of 4, write the copy of its header block",
                     "upgrade os: step 4 of 4, read back and compare"}));
    EXPECT_EQ(stored(12, 0, 300000), imageBytes(300000));
    EXPECT_EQ(stored(12, kHeaderPlace, 12), "OS image 2.5");
    EXPECT_EQ(flash(14).erases[0], 0u);
    EXPECT_EQ(iodbg({"upgrade", "os", file, "--bank", "1", "--yes"}).exitCode, 0);
    EXPECT_EQ(stored(14, 0, 300000), imageBytes(300000));
}

TEST_F(UpgradeCommandsTest, AFileThatIsHardlyAnImageErasesNothing) {
    ASSERT_EQ(iodbg({"upgrade", "os", makeImage(4096), "--bank", "1", "--yes"}).exitCode, 0);
    const std::string half = makeFile("half.img", imageBytes(300000).substr(0, 200000));
    expectRefusal({"upgrade", "os", half, "--bank", "0", "--yes"}, 2,
                  "is hardly an image: its header block, ");
    expectFailure({"upgrade", "os", half, "--bank", "0", "--dry-run"}, 2,
                  {", is not like that of bank 1, 'OS image 2.5'; check that it is the right file "
                   "and whole, or write it with --force"});
    for (const char byte : {'\0', '\xFF', 'x'}) {
        const std::string blank = makeFile("blank.img", std::string(4096, byte));
        expectFailure({"upgrade", "os", blank, "--bank", "0", "--yes"}, 2,
                      {"all bytes of its header block are 0x"});
    }
    EXPECT_EQ(flash(12).erases[0], 0u);
    EXPECT_EQ(iodbg({"upgrade", "os", half, "--bank", "0", "--yes", "--force"}).exitCode, 0);
    EXPECT_EQ(stored(12, 0, 200000), imageBytes(300000).substr(0, 200000));
    // Of 512 bytes 128 may be others.
    std::string odd = imageBytes(4096);
    odd.replace(odd.size() - 128, 128, std::string(128, '\x80'));
    EXPECT_EQ(iodbg({"upgrade", "os", makeFile("odd", odd), "--bank", "0", "--dry-run"}).exitCode,
              0);
    odd[odd.size() - 129] = '\x80';
    expectFailure({"upgrade", "os", makeFile("odder", odd), "--bank", "0", "--dry-run"}, 2,
                  {"is hardly an image"});
    // The bank that stays decides, and a later image of the same build is like it.
    std::string later = imageBytes(5000);
    later.replace(later.size() - 512, 12, "OS image 3.0");
    EXPECT_EQ(upgradeOs(makeFile("later.img", later)).exitCode, 0);
}

TEST_F(UpgradeCommandsTest, AnImageComesFromStandardInput) {
    const ProcessResult result =
        iodbg({"upgrade", "os", "-", "--bank", "0", "--yes", "--spool", hostFile("")},
              imageBytes(300000));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("New                          standard input, 300000 bytes, 'OS "
                              "image 2.5'\n"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(stored(12, 0, 300000), imageBytes(300000));
    EXPECT_TRUE(std::filesystem::is_empty(hostFile(""))) << "the spool file is gone";
    EXPECT_EQ(iodbg({"upgrade", "boot", "-", "--yes"}, readFile(bootFile())).exitCode, 0);
    EXPECT_EQ(stored(0, 0, 5000), imageBytes(5000));
    EXPECT_EQ(iodbg({"upgrade", "cpld", "-", "--yes"}, "logic").exitCode, 0);
    EXPECT_EQ(devices().cpld.logic.size, 5u);
}

TEST_F(UpgradeCommandsTest, TheBarGoesBeforeTheAnswer) {
    for (const Words &words :
         {Words{"upgrade", "os", makeImage(300000), "--bank", "0", "--yes"},
          Words{"upgrade", "boot", bootFile(), "--yes"},
          Words{"mtd", "write", "mtd4", makeImage(4096, "settings"), "--yes"}}) {
        const std::string screen = iodbgOnTerminal(words);
        const size_t bar = screen.rfind("read back and compare");
        ASSERT_NE(bar, std::string::npos) << screen;
        const size_t wiped = screen.find("\r\x1b[K", bar);
        ASSERT_NE(wiped, std::string::npos) << screen;
        EXPECT_EQ(screen.substr(bar, wiped - bar), "read back and compare") << words[1];
        EXPECT_EQ(screen.find('\x1b', wiped + 4), std::string::npos) << screen;
        EXPECT_NE(screen.find("\r\n", wiped + 4), std::string::npos) << screen;
    }
}

TEST_F(UpgradeCommandsTest, AsksBeforeAnImageIsReplaced) {
    EXPECT_EQ(upgradeOs(makeImage(2048)).exitCode, 0);
    const std::string file = makeImage(300000, "new.img");
    const ProcessResult refused = iodbg({"upgrade", "os", file, "--bank", "0"}, "n\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, "Image of bank 0, /dev/mtd12\n"
                           "  now  'OS image 2.5'\n"
                           "  new  " +
                               file +
                               ", 300000 bytes, 'OS image 2.5'\n"
                               "The upgrade must not be interrupted: the bank is then incomplete. "
                               "The other bank\nis not touched.\n"
                               "Upgrade it now? [y/N] \niodbg: not confirmed, nothing was done\n");
    const std::string dry =
        linesOf(iodbg({"upgrade", "os", file, "--bank", "0", "--dry-run", "--json"}).out).back();
    EXPECT_EQ(jsonKeys(dry, ""),
              (Words{"event", "size_bytes", "target", "before", "file", "dry_run", "failures"}));
    EXPECT_EQ(jsonAt(dry, "/dry_run"), "true");
    EXPECT_EQ(flash(12).erases[0], 1u);
    EXPECT_EQ(iodbg({"upgrade", "os", file, "--bank", "0"}, "y\n").exitCode, 0);
    EXPECT_EQ(flash(12).erases[0], 2u);
}

TEST_F(UpgradeCommandsTest, TellsProgramsOfAnImageInLines) {
    const Words lines =
        linesOf(iodbg({"upgrade", "os", makeImage(4096), "--bank", "0", "--yes", "--json"}).out);
    ASSERT_GT(lines.size(), 4u);
    EXPECT_EQ(jsonAt(lines[0], "/name"), "\"erase the bank\"");
    EXPECT_EQ(jsonKeys(lines.back(), ""),
              (Words{"event", "size_bytes", "target", "before", "file", "dry_run", "verified",
                     "bad_blocks", "shifted_bytes", "failures"}));
    EXPECT_EQ(jsonAt(lines.back(), "/bad_blocks"), "[]");
}

TEST_F(UpgradeCommandsTest, TellsHowFarTheToolIsWithAnImage) {
    const std::string file = makeImage(kLargestImage);
    Process upgrade = start({"upgrade", "os", file, "--bank", "0", "--yes", "--json"});
    // The tool is held up at its next request, somewhere within the image.
    ASSERT_TRUE(comesTrue([this] { return stored(12, 64 * kBankBlock, 1) != "\xFF"; }));
    Words writes;
    {
        const vb::BoardLock lock(*vb::attachedFolder());
        EXPECT_TRUE(comesTrue([&] {
            writes = stepLines(upgrade.output(), 2);
            return writes.size() > 1;
        }));
    }
    ASSERT_GT(writes.size(), 1u);
    const int before = std::stoi(jsonAt(writes.front(), "/percent"));
    const int within = std::stoi(jsonAt(writes.back(), "/percent"));
    EXPECT_GT(within, before);
    const ProcessResult result = upgrade.wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    int last = 0;
    for (const std::string &line : linesOf(result.out)) {
        if (jsonAt(line, "/event") != "\"progress\"")
            continue;
        EXPECT_GE(std::stoi(jsonAt(line, "/percent")), last);
        last = std::stoi(jsonAt(line, "/percent"));
    }
    EXPECT_EQ(last, 100);
}

TEST_F(UpgradeCommandsTest, EndsWithThePowerAndLeavesWhatItHadDone) {
    const auto set = [](const char *name, const char *value) {
        const vb::BoardLock lock(*vb::attachedFolder());
        vb::setProperty(*vb::attachedFolder(), name, value);
    };
    const std::string file = bootFile();
    set("time", "real");
    set("flash.timing", "usual");
    Process upgrade = start({"upgrade", "boot", file, "--yes"});
    // It has eight seconds of erasing in front of it.
    ASSERT_TRUE(comesTrue([this] { return flash(0).erases[0] == 1; }));
    set("power", "cycle");
    EXPECT_EQ(upgrade.wait().exitCode, 128 + SIGKILL);
    EXPECT_EQ(flash(0).erases[15], 0u);
    EXPECT_EQ(devices().powerCuts, 1u);
    set("flash.timing", "off");
    EXPECT_EQ(iodbg({"upgrade", "boot", file, "--yes"}).exitCode, 0);
}

TEST_F(UpgradeCommandsTest, AnImageAroundBadBlocksIsWholeAndMoved) {
    markBad(12, 0);
    markBad(12, 2);
    const std::string file = makeImage(300000);
    const Words lines =
        linesOf(iodbg({"upgrade", "os", file, "--bank", "0", "--yes", "--json"}).out);
    EXPECT_EQ(jsonAt(lines.back(), "/verified"), "true");
    EXPECT_EQ(jsonAt(lines.back(), "/bad_blocks"), "[0,2]");
    EXPECT_EQ(jsonAt(lines.back(), "/shifted_bytes"), "262144");
    EXPECT_EQ(stored(12, kBankBlock, kBankBlock), imageBytes(300000).substr(0, kBankBlock));
}

TEST_F(UpgradeCommandsTest, TheLargestImageFitsOnlyWithoutBadBlocks) {
    const std::string file = makeImage(kLargestImage);
    EXPECT_EQ(upgradeOs(file).exitCode, 0);
    markBad(12, 7);
    // The image ends where the copy of its header block belongs, and the two spoil each other.
    const ProcessResult result = upgradeOs(file);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("iodbg: bank 0 reads back differently: byte 0x26E0000 of the file, "
                              "at 0x2700000 in /dev/mtd12, is 0x"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("; the copy of the header block, which is read at 0x2700000, "
                              "differs; behind bad block 7 the image lies 131072 bytes further on "
                              "than without; do not start this bank: write the image again, or "
                              "use the other bank\n"),
              std::string::npos)
        << result.err;
}

TEST_F(UpgradeCommandsTest, AHeaderBlockThatLiesElsewhereIsFound) {
    // Its page fails: the tool puts it into the next block, where nothing looks for it.
    spoil("mtd12", "program", "fails=EIO", std::to_string(kHeaderPlace));
    const ProcessResult result = upgradeOs(makeImage(4096));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("the copy of the header block, which is read at 0x2700000, is empty"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(stored(12, kHeaderPlace + kBankBlock, 12), "OS image 2.5");
}

TEST_F(UpgradeCommandsTest, ABlockThatGaveUpUnmarkedIsFound) {
    spoil("mtd12", "program", "fails=EIO", std::to_string(kBankBlock + kPage));
    const ProcessResult result = upgradeOs(makeImage(300000));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("byte 0x20000 of the file, at 0x20000 in /dev/mtd12, is 0xFF "),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("block 1 reads as erased"), std::string::npos) << result.err;
}

TEST_F(UpgradeCommandsTest, FailingToolsAreTold) {
    const std::string file = makeImage(4096);
    const std::string before = imageBytes(4096);
    EXPECT_EQ(upgradeOs(file).exitCode, 0);
    flash(12).isWriteProtected = 1;
    expectFailure({"upgrade", "os", file, "--bank", "0", "--yes"}, 1,
                  {"cannot write the image into bank 0: BSP_E_FAILED",
                   "do not start this bank, and write the image again"});
    EXPECT_EQ(stored(12, 0, 4096), before);
    flash(12).isWriteProtected = 0;
    spoil("mtd12", "program", "fails=EROFS");
    expectFailure({"upgrade", "os", file, "--bank", "0", "--yes"}, 1,
                  {"BSP_E_FAILED", "byte 0x0 of the file, at 0x0 in /dev/mtd12, is 0xFF instead",
                   "the copy of the header block, which is read at 0x2700000, is empty"});
    clearFaults();
    const std::string longName = makeImage(4096, std::string(120, 'n'));
    expectFailure({"upgrade", "os", longName, "--bank", "0", "--yes"}, 1,
                  {"nothing was changed: check that the path is short enough"});
}

TEST_F(UpgradeCommandsTest, AnEraseThatFailedUnseenIsFound) {
    EXPECT_EQ(upgradeOs(makeImage(300000)).exitCode, 0);
    spoil("mtd12", "erase", "fails=EIO"); // the tool says so and exits with 0
    const std::string other = makeFile("other", std::string(300000, 'U'));
    const ProcessResult result = iodbg({"upgrade", "os", other, "--bank", "0", "--yes", "--force"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("bank 0 reads back differently: byte 0x0 of the file"),
              std::string::npos)
        << result.err;
}

TEST_F(UpgradeCommandsTest, ALongHeaderIsShownByItsStart) {
    const std::string file = makeFile("long", std::string(999, 'U') + "V");
    const ProcessResult planned =
        iodbg({"upgrade", "os", file, "--bank", "0", "--dry-run", "--json"});
    EXPECT_EQ(jsonAt(linesOf(planned.out).back(), "/file"),
              "\"" + file + ", 1000 bytes, '" + std::string(48, 'U') + "'...\"");
}

TEST_F(UpgradeCommandsTest, ReplacesTheBootLoader) {
    const std::string file = bootFile();
    const ProcessResult result = iodbg({"upgrade", "boot", file, "--yes"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Size, bytes  5080\n"
                              "Replaces     Boot loader, /dev/mtd0\n"
                              "Now          version 1.2.3\n"
                              "New          " +
                              file + ", 5080 bytes, image CRC 0x"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("Verified     read back, all bytes are the file's\n"),
              std::string::npos);
    EXPECT_EQ(linesOf(result.err), (Words{"upgrade boot: step 1 of 3, erase the partition",
                                          "upgrade boot: step 2 of 3, write the file",
                                          "upgrade boot: step 3 of 3, read back and compare"}));
    EXPECT_EQ(stored(0, 0, 5080), readFile(file));
    const Words lines = linesOf(iodbg({"upgrade", "boot", file, "--yes", "--json"}).out);
    EXPECT_EQ(jsonKeys(lines.back(), ""), (Words{"event", "size_bytes", "target", "before", "file",
                                                 "dry_run", "verified", "failures"}));
    EXPECT_EQ(iodbg({"upgrade", "boot", bootFile(1048496), "--yes"}).exitCode, 0);
}

TEST_F(UpgradeCommandsTest, ABootLoaderIsConfirmed) {
    const std::string file = bootFile();
    const ProcessResult refused = iodbg({"upgrade", "boot", file}, "n\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(refused.err.find("A board without a whole boot loader does not start: do not "
                               "interrupt the\nupgrade.\nUpgrade it now? [y/N] "),
              std::string::npos);
    EXPECT_EQ(iodbg({"upgrade", "boot", file, "--dry-run"}).exitCode, 0);
    EXPECT_EQ(flash(0).erases[0], 0u);
}

TEST_F(UpgradeCommandsTest, ABootLoaderThatWasNotWrittenIsFound) {
    const std::string file = bootFile();
    spoil("mtd0", "program", "fails=EIO"); // the library answers success
    expectFailure({"upgrade", "boot", file, "--yes"}, 3,
                  {"/dev/mtd0 reads back differently: byte 0x0 of the file, at 0x0 in /dev/mtd0, "
                   "is 0xFF",
                   "do not reset the board: repeat the upgrade until it is verified"});
    clearFaults();
    spoil("mtd0", "program", "fails=EIO", "1024");
    expectFailure({"upgrade", "boot", file, "--yes"}, 3, {"byte 0x400 of the file"});
}

TEST_F(UpgradeCommandsTest, NamesTheFieldOfABootFileThatIsWrong) {
    const std::string good = readFile(bootFile());
    const struct {
        size_t fromEnd;
        const char *text;
    } cases[] = {
        {80, "magic is '0x7E4F4F54' and must be '0x424F4F54', trailer CRC is '0x"},
        {48, "board name is '~ENTRAV48_BOOT' and must be 'ZENTRAV48_BOOT'"},
        {69, "trailer length is '126' and must be '80'"},
        {76, "no boot-loader upgrade file: trailer CRC is '0x"},
        {100, "no boot-loader upgrade file: image CRC is '0x"},
    };
    for (const auto &[fromEnd, text] : cases) {
        std::string bytes = good;
        bytes[bytes.size() - fromEnd] = '\x7E';
        expectRefusal({"upgrade", "boot", makeFile("bad", bytes), "--yes"}, 2, text);
    }
    std::string bytes = good;
    bytes.replace(bytes.size() - 48, 48, std::string(48, '\x01'));
    std::string shown;
    for (int i = 0; i < 12; ++i)
        shown += "\\x01";
    expectRefusal({"upgrade", "boot", makeFile("bad", bytes), "--yes"}, 2,
                  "board name is '" + shown + "...' and must be 'ZENTRAV48_BOOT'");
    const std::string large = bootFile(65457);
    shrink(0, 65536);
    expectRefusal({"upgrade", "boot", large, "--yes"}, 2, "has 65537 bytes; /dev/mtd0 holds 65536");
}

TEST_F(UpgradeCommandsTest, ACpldThatRefusesIsToldOf) {
    const std::string file = makeFile("cpld.vme", "logic");
    const ProcessResult refused = iodbg({"upgrade", "cpld", file}, "n\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err, "Logic of the CPLD\n"
                           "  now  version V1.2\n"
                           "  new  " +
                               file +
                               ", 5 bytes\n"
                               "The file is judged by the kernel module alone. The upgrade must "
                               "not be\ninterrupted.\n"
                               "Upgrade it now? [y/N] \niodbg: not confirmed, nothing was done\n");
    EXPECT_EQ(iodbg({"upgrade", "cpld", file, "--dry-run"}).exitCode, 0);
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Upgrade, -5));
    expectFailure({"upgrade", "cpld", file, "--yes"}, 1, {"cannot program the CPLD: "});
    EXPECT_EQ(devices().cpld.logic.programmings, 0u);
}

TEST_F(UpgradeCommandsTest, ACpldIsProgrammed) {
    const std::string file = makeFile("cpld.vme", "logic");
    EXPECT_EQ(iodbg({"upgrade", "cpld", file, "--dry-run"}).exitCode, 0);
    EXPECT_EQ(devices().cpld.logic.programmings, 0u);
    const ProcessResult done = iodbg({"upgrade", "cpld", file, "--yes"});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    EXPECT_EQ(devices().cpld.logic.programmings, 1u);
    EXPECT_EQ(devices().cpld.logic.size, 5u);
    EXPECT_NE(done.out.find("nothing reads the logic back"), std::string::npos) << done.out;
}

TEST_F(UpgradeCommandsTest, RefusesWordsAndFilesThatAreNotRight) {
    const std::string file = makeImage(4096);
    expectRefusal({"upgrade"}, 2,
                  "a command is missing: give one of os|boot|cpld; see 'iodbg upgrade --help'");
    expectRefusal({"upgrade", "os", "--bank", "0"}, 2, "FILE is required");
    expectRefusal({"upgrade", "os", file, "--yes"}, 2, "--bank is required");
    expectRefusal({"upgrade", "os", file, "--bank", "2"}, 2, "'2' is not a number from 0 to 1");
    expectRefusal({"upgrade", "os", makeImage(511, "s"), "--bank", "0", "--yes"}, 2,
                  "has 511 bytes; an operating-system image has 512 to 40894464");
    expectRefusal({"upgrade", "os", makeImage(kLargestImage + 1, "l"), "--bank", "0", "--yes"}, 2,
                  "has 40894465 bytes");
    expectRefusal({"upgrade", "os", file, "--bank", "-1"}, 2, "'-1' is not a number from 0 to 1");
    expectRefusal({"upgrade", "os", file, "--bank", "0", "1"}, 2, "not expected: 1");
    const std::pair<const char *, Words> kinds[] = {
        {"os", {"--bank", "0", "--yes"}}, {"boot", {"--yes"}}, {"cpld", {"--yes"}}};
    for (const auto &[kind, options] : kinds) {
        const auto refuses = [&, name = kind, rest = options](const std::string &path) {
            Words words = {"upgrade", name, path};
            words.insert(words.end(), rest.begin(), rest.end());
            return words;
        };
        expectRefusal({"upgrade", kind}, 2, "is required");
        expectRefusal(refuses(""), 2, "FILE: '' is not the name of a file");
        expectRefusal(refuses(hostFile("none")), 4, "No such file or directory");
        expectRefusal(refuses("/tmp"), 4, "/tmp");
        expectUnreadable(refuses(kUnreadable));
    }
    expectRefusal({"upgrade", "os", makeFile("empty", ""), "--bank", "0", "--yes"}, 4, "is empty");
    expectRefusal({"upgrade", "boot", makeFile("empty", ""), "--yes"}, 2, "has 0 bytes");
    expectRefusal({"upgrade", "cpld", makeFile("empty", ""), "--yes"}, 4, "is empty");
    expectRefusal({"upgrade", "boot", makeFile("short", "x"), "--yes"}, 2, "has 1 bytes");
    expectRefusal({"upgrade", "boot", makeFile("long", std::string(1048577, 'x')), "--yes"}, 4,
                  "is longer than 1048576 bytes");
    EXPECT_EQ(iodbg({"upgrade", "os", makeImage(512, "least"), "--bank", "0", "--yes"}).exitCode,
              0);
    shrink(14, 8 * kBankBlock);
    expectRefusal({"upgrade", "os", file, "--bank", "1", "--yes"}, 1,
                  "too few for an image and the copy of its header block");
}

} // namespace
