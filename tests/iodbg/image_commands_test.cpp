// iodbg image.

#include "flash/boot_loader.h"
#include "tests/iodbg/flash_commands_test.h"

#include <filesystem>

namespace {

class ImageCommandsTest : public FlashCommandsTest {
  protected:
    /** A valid upgrade file of an image of this size. */
    std::string packed(size_t size) const {
        const std::string file = hostFile("boot.bin");
        EXPECT_EQ(
            iodbg({"image", "pack-boot", makeImage(size, "boot.raw"), file, "--force"}).exitCode,
            0);
        return file;
    }
    std::string withByte(const std::string &path, size_t fromEnd, char byte) const {
        std::string bytes = readFile(path);
        bytes[bytes.size() - fromEnd] = byte;
        return makeFile("spoiled.bin", bytes);
    }
};

TEST_F(ImageCommandsTest, EmptyBanksAreSaidToBeEmpty) {
    const ProcessResult result = iodbg({"image", "info"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "Bank 0 (/dev/mtd12): empty, all 512 bytes of the header block are 0xFF\n"
              "Bank 1 (/dev/mtd14): empty, all 512 bytes of the header block are 0xFF\n");
}

TEST_F(ImageCommandsTest, ShowsAHeaderBlockInHexAndText) {
    store(14, kHeaderPlace, "OS image 2.5" + std::string(kPage - 12, '\0'));
    const Words lines = linesOf(iodbg({"image", "info", "--bank", "1"}).out);
    ASSERT_EQ(lines.size(), 33u);
    EXPECT_EQ(lines[0], "Bank 1 (/dev/mtd14): header block");
    EXPECT_EQ(lines[1],
              "0x0000  4F 53 20 69 6D 61 67 65 20 32 2E 35 00 00 00 00  |OS image 2.5....|");
    EXPECT_EQ(lines[32],
              "0x01F0  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00  |................|");
    const std::string answer = json({"image", "info"});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"banks", "failures"}));
    EXPECT_EQ(jsonKeys(answer, "/banks/0"),
              (Words{"bank", "device", "empty", "header_hex", "header_text"}));
    EXPECT_EQ(jsonAt(answer, "/banks/0/empty"), "true");
    EXPECT_EQ(jsonAt(answer, "/banks/1/empty"), "false");
    EXPECT_EQ(jsonAt(answer, "/banks/1/bank"), "1");
    EXPECT_EQ(jsonAt(answer, "/banks/1/device"), "\"/dev/mtd14\"");
    EXPECT_EQ(jsonAt(answer, "/banks/1/header_text"), "\"OS image 2.5\"");
    EXPECT_EQ(jsonAt(answer, "/banks/1/header_hex").substr(0, 9), "\"4F532069");
    EXPECT_EQ(jsonAt(answer, "/banks/1/header_hex").size(), 1026u);
}

TEST_F(ImageCommandsTest, ABankThatCannotBeReadIsAFailureOfItsOwn) {
    spoil("mtd12", "read", "fails=EIO");
    const ProcessResult result = iodbg({"image", "info"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "Bank 0 (/dev/mtd12): failed: BSP_E_FAILED (-1)\n"
                          "Bank 1 (/dev/mtd14): empty, all 512 bytes of the header block are 0xFF\n"
                          "\nFailures\n"
                          "  bank0: BSP_E_FAILED (-1), generic failure: a transfer failed, or the\n"
                          "      kernel module's node did\n"
                          "    next: see the kernel log for /dev/mtd12\n");
    const std::string answer = json({"image", "info"}, 1);
    EXPECT_EQ(jsonAt(answer, "/banks/0/empty"), "null");
    EXPECT_EQ(jsonAt(answer, "/banks/0/header_hex"), "null");
    EXPECT_EQ(jsonAt(answer, "/banks/0/header_text"), "null");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"bank0\"");
}

TEST_F(ImageCommandsTest, ComparesABankWithAFileAndWritesNothing) {
    markBad(12, 1);
    const std::string file = makeImage(300000);
    ASSERT_EQ(iodbg({"upgrade", "os", file, "--bank", "0", "--yes"}).exitCode, 0);
    const uint32_t erases = flash(12).erases[0];
    const Words lines = linesOf(iodbg({"image", "verify", file, "--bank", "0", "--json"}).out);
    EXPECT_EQ(jsonAt(lines.front(), "/task"), "\"image verify\"");
    EXPECT_EQ(jsonKeys(lines.back(), ""),
              (Words{"event", "bank", "device", "file", "size_bytes", "verified", "bad_blocks",
                     "shifted_bytes", "failures"}));
    EXPECT_EQ(jsonAt(lines.back(), "/bad_blocks"), "[1]");
    EXPECT_EQ(iodbg({"image", "verify", "-", "--bank", "0"}, imageBytes(300000)).exitCode, 0);
    std::string other = imageBytes(300000);
    other[5] = static_cast<char>(~other[5]);
    expectFailure({"image", "verify", makeFile("other.img", other), "--bank", "0"}, 3,
                  {"bank 0 does not hold '",
                   "other.img': byte 0x5 of the file, at 0x5 in /dev/mtd12",
                   "and 1 of 300000 bytes differ; behind bad block 1", "; nothing was written"});
    expectFailure({"image", "verify", file, "--bank", "1"}, 3,
                  {"the copy of the header block, which is read at 0x2700000, is empty"});
    expectFailure({"image", "verify", makeImage(511, "s"), "--bank", "0"}, 2, {"has 511 bytes"});
    EXPECT_EQ(flash(12).erases[0], erases);
}

TEST_F(ImageCommandsTest, PacksAnUpgradeFile) {
    const std::string in = makeFile("boot.raw", "123456789");
    const std::string out = hostFile("boot.bin");
    const ProcessResult result = iodbg({"image", "pack-boot", in, out});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "Saved in     " + out +
                              "\n"
                              "Size, bytes  89\n"
                              "Trailer CRC  0x973D183A\n"
                              "Image CRC    0xCBF43926\n");
    const std::string file = readFile(out);
    ASSERT_EQ(file.size(), 89u);
    EXPECT_EQ(file.substr(0, 13), "123456789BOOT");
    EXPECT_EQ(file.substr(13, 8), std::string("\0\0\0\0\0\0\0\x50", 8));
    EXPECT_EQ(file.substr(25, 8), std::string("\0\0\0\0\xCB\xF4\x39\x26", 8));
    EXPECT_EQ(file.substr(41), "ZENTRAV48_BOOT" + std::string(34, '\0'));
    EXPECT_EQ(jsonKeys(json({"image", "pack-boot", in, out, "--force"}), ""),
              (Words{"output", "size_bytes", "trailer_crc", "image_crc", "failures"}));
}

TEST_F(ImageCommandsTest, JudgesAnUpgradeFileFieldByField) {
    const std::string file = packed(1000);
    const ProcessResult good = iodbg({"image", "check", file});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_NE(good.out.find("Size, bytes               1080\n"
                            "Boot-loader upgrade file  valid\n"),
              std::string::npos)
        << good.out;
    EXPECT_NE(good.out.find("magic           0x424F4F54      0x424F4F54      right\n"
                            "board name      ZENTRAV48_BOOT  ZENTRAV48_BOOT  right\n"
                            "trailer length  80              80              right\n"),
              std::string::npos)
        << good.out;

    const struct {
        size_t fromEnd;
        const char *wrong; // the rows, of which a changed byte of the trailer always spoils the CRC
    } cases[] = {
        {80, "0 3"}, {76, "3"}, {69, "2 3"}, {68, "3"},   {60, "3 4"},
        {48, "1 3"}, {1, "3"},  {81, "4"},   {1080, "4"},
    };
    for (const auto &[fromEnd, wrong] : cases) {
        const std::string spoiled = withByte(file, fromEnd, '\x7E');
        const std::string answer = json({"image", "check", spoiled}, 4);
        EXPECT_EQ(jsonAt(answer, "/valid"), "false");
        std::string found;
        for (int row = 0; row < 5; ++row)
            if (jsonAt(answer, "/fields/" + std::to_string(row) + "/right") == "false")
                found += (found.empty() ? "" : " ") + std::to_string(row);
        EXPECT_EQ(found, wrong) << fromEnd;
    }
    EXPECT_EQ(jsonKeys(json({"image", "check", file}), ""),
              (Words{"file", "size_bytes", "valid", "fields", "failures"}));
    EXPECT_EQ(jsonKeys(json({"image", "check", file}), "/fields/0"),
              (Words{"field", "found", "wanted", "right"}));
}

TEST_F(ImageCommandsTest, TheBoardTakesWhatIsPacked) {
    for (const size_t size : {1u, 1000u, 1048496u}) {
        std::string file = readFile(packed(size));
        const auto isTaken = [&file] {
            return bsp_bios_file_check(reinterpret_cast<const uint8_t *>(file.data()),
                                       static_cast<uint32_t>(file.size())) == 0;
        };
        EXPECT_TRUE(isTaken()) << size;
        file[0] = static_cast<char>(file[0] ^ 1);
        EXPECT_FALSE(isTaken()) << size;
    }
    const std::string tooLarge = makeFile("large", std::string(1048497, 'x'));
    expectRefusal({"image", "pack-boot", tooLarge, hostFile("out")}, 4,
                  "is longer than 1048496 bytes");
    expectRefusal({"image", "check", makeFile("larger", std::string(1048577, 'x'))}, 4,
                  "is longer than 1048576 bytes");
}

TEST_F(ImageCommandsTest, RefusesWordsAndFilesThatAreNotRight) {
    const std::string empty = makeFile("empty", "");
    expectRefusal({"image"}, 2, "a command is missing: give one of info|verify|pack-boot|check");
    expectRefusal({"image", "info", "--bank", "2"}, 2, "'2' is not a number from 0 to 1");
    expectRefusal({"image", "info", "--bank", "-1"}, 2, "'-1' is not a number from 0 to 1");
    expectRefusal({"image", "info", "--bank", ""}, 2, "'' is not a number from 0 to 1");
    expectRefusal({"image", "info", "0"}, 2, "The following argument was not expected: 0");
    expectRefusal({"image", "info", "--bank", "x"}, 2, "'x' is not a number from 0 to 1");
    expectRefusal({"image", "pack-boot", empty}, 2, "OUT is required");
    expectRefusal({"image", "pack-boot", empty, hostFile("out")}, 4, "is empty");
    expectRefusal({"image", "pack-boot", hostFile("none"), hostFile("out")}, 4,
                  "No such file or directory");
    const std::string file = makeFile("a", "a");
    expectRefusal({"image", "pack-boot", file, "/none/out"}, 4, "cannot write /none/out");
    expectRefusal({"image", "pack-boot", file, "/tmp"}, 4, "/tmp is not a regular file");
    expectRefusal({"image", "pack-boot", file, ""}, 2, "OUT: '' is not the name of a file");
    expectRefusal({"image", "pack-boot", "", file}, 2, "IN: '' is not the name of a file");
    expectRefusal({"image", "pack-boot", "/tmp", hostFile("out")}, 4, "Is a directory");
    std::filesystem::create_symlink(file, hostFile("same"));
    for (const std::string &same : {file, hostFile("same")})
        expectRefusal({"image", "pack-boot", file, same}, 2,
                      same + " is the image itself, which would be lost; choose another name");
    EXPECT_EQ(readFile(file), "a");
    expectUnreadable({"image", "pack-boot", kUnreadable, hostFile("out")});
    EXPECT_FALSE(std::filesystem::exists(hostFile("out")));
    expectRefusal({"image", "check"}, 2, "FILE is required");
    expectRefusal({"image", "check", hostFile("none")}, 4, "No such file or directory");
    expectRefusal({"image", "check", "/tmp"}, 4, "Is a directory");
    expectRefusal({"image", "check", empty}, 2, "has 0 bytes");
    expectUnreadable({"image", "check", kUnreadable});
    expectRefusal({"image", "check", makeFile("short", std::string(80, 'x'))}, 2,
                  "has 80 bytes; a boot-loader upgrade file has 81 to 1048576");
}

} // namespace
