// What becomes of the library's work on flash as real units have it: large pages, bad blocks, worn
// ones. Each call here answers success. tests/kernel_driver/ sees most of it on a real kernel's
// driver with the real tools; only a block that fails to erase is erased there all the same.

#include "bsp.h"
#include "language/trace_text.h"
#include "tests/virtual_board/flash_test.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

namespace {

constexpr uint32_t kHeaderAt = 0x2700000; // behind the largest image
constexpr uint32_t kHeaderSize = BSP_OS_HEADER_SIZE;

/** Bytes that no other seed gives, and no other place of the content has. */
std::string patterned(size_t size, uint32_t seed) {
    std::string bytes(size, '\0');
    for (char &byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

/** What two programs without an erase between them leave. */
std::string mixed(const std::string &first, const std::string &second) {
    std::string bytes = first;
    std::transform(first.begin(), first.end(), second.begin(), bytes.begin(), std::bit_and<char>());
    return bytes;
}

/** What two files leave of each other in one block of a partition. */
std::string mixedInBlock(uint32_t block, uint32_t blockSize, const std::string &first,
                         std::string second) {
    const size_t start = size_t{block} * blockSize;
    return second.replace(start, blockSize,
                          mixed(first.substr(start, blockSize), second.substr(start, blockSize)));
}

/** Contents are too large to be shown: where they start to differ is. */
void expectBytes(const std::string &seen, const std::string &expected) {
    const size_t common = std::min(seen.size(), expected.size());
    const auto end = seen.begin() + static_cast<std::ptrdiff_t>(common);
    const auto start = std::mismatch(seen.begin(), end, expected.begin()).first - seen.begin();
    EXPECT_TRUE(seen == expected) << seen.size() << " bytes instead of " << expected.size()
                                  << ", equal up to byte " << start;
}

class FlashTrapsTest : public FlashBoardTest {
  protected:
    /** Expects a call to answer success, and the tools that it runs to print nothing but this. */
    static void expectSuccess(const std::function<int32_t()> &call, const std::string &complaint) {
        Answer answer = {-1};
        EXPECT_EQ(complainedBy([&] { answer = answerOf(call); }), complaint);
        EXPECT_EQ(answer, kSilentSuccess);
    }
};

// Boot settings

struct Setter {
    const char *call;
    int32_t (*set)();
};
constexpr Setter kSetters[] = {
    {"bspBootModeSet", [] { return bspBootModeSet(1); }},
    {"bspBootFlagSet", [] { return bspBootFlagSet(-7); }},
    {"bspBaudrateSet", [] { return bspBaudrateSet(19200); }},
    {"bspConsolePwdValidSet", [] { return bspConsolePwdValidSet(1); }},
    {"bspUserPwdValidSet", [] { return bspUserPwdValidSet(0); }},
    {"bspBootPwdSet", [] { return bspBootPwdSet("secret"); }},
};

/** All settings, as the getters tell them; a dash for one that is not there. */
std::string settingsTold() {
    uint32_t mode = 9, rate = 9, console = 9, user = 9;
    int32_t flag = 9;
    char password[64] = "?";
    const bool hasFlag = bspBootFlagGet(&flag) == BSP_OK;
    EXPECT_EQ(bspBootModeGet(&mode), BSP_OK);
    EXPECT_EQ(bspBaudrateGet(&rate), BSP_OK);
    EXPECT_EQ(bspConsolePwdValidGet(&console), BSP_OK);
    EXPECT_EQ(bspUserPwdValidGet(&user), BSP_OK);
    EXPECT_EQ(bspBootPwdGet(password), BSP_OK);
    return std::to_string(mode) + (hasFlag ? " " + std::to_string(flag) : " -") + " " +
           listed({rate, console, user}) + " '" + password + "'";
}
constexpr char kDefaults[] = "0 - 115200 0 1 ''";
constexpr char kStored[] = "1 -7 19200 1 0 'secret'";

/** Stores settings as a boot loader does, which writes whole pages. */
void storeSettings(uint32_t blockSize, uint32_t pageSize) {
    std::string page(pageSize, '\0');
    for (const auto &[offset, text] : {std::pair(0, "main_system=1"),
                                       {32, "boot_type=-7"},
                                       {64, "baudrate=19200"},
                                       {96, "password=1"},
                                       {128, "user_pwd=0"},
                                       {192, "boot_pwd=secret"}})
        page.replace(static_cast<size_t>(offset), std::strlen(text), text);
    const Node node("/dev/mtd4");
    node.erase(0, blockSize);
    EXPECT_EQ(node.write(0, page), 0);
}

TEST_F(FlashTrapsTest, OnNandASetterLosesAllBootSettings) {
    const struct {
        const char *geometry;
        uint32_t blockSize, pageSize;
    } cases[] = {{"4:size=262144,erase=131072,page=2048,spare=64,type=nand", 131072, 2048},
                 {"4:size=262144,erase=16384,page=512,spare=16,type=nand", 16384, 512}};
    for (const auto &[geometry, blockSize, pageSize] : cases) {
        ASSERT_NO_FATAL_FAILURE(useGeometry(geometry));
        for (const Setter &setter : kSetters) {
            storeSettings(blockSize, pageSize);
            EXPECT_EQ(settingsTold(), kStored);
            expectSuccess(setter.set, "");
            EXPECT_EQ(language::traceText(vb::traceAt(board().trace, board().trace.total - 1)),
                      "MTD write mtd4 0x0+0x100 -> fails, errno 22 (Invalid argument)")
                << setter.call;
            EXPECT_EQ(Node("/dev/mtd4").read(0, blockSize), erased(blockSize)) << setter.call;
            EXPECT_EQ(settingsTold(), kDefaults) << setter.call;
        }
    }
}

TEST_F(FlashTrapsTest, InABadBlockBootSettingsStayAsTheyWere) {
    ASSERT_NO_FATAL_FAILURE(useGeometry("4:size=262144,erase=131072,page=2048,spare=64,type=nand"));
    storeSettings(kNandBlock, kPage);
    flash(4).isBad[0] = 1;
    expectSuccess([] { return bspBootModeSet(0); }, "");
    EXPECT_EQ(settingsTold(), kStored);
}

// Files in partitions

class FileTrapsTest : public FlashTrapsTest {
  protected:
    static constexpr uint32_t kSize = 65536;
    static constexpr uint32_t kBlockSize = 16384;
    static constexpr uint32_t kBlock = 2; // the one that is not good
    static constexpr char kDevice[] = "/dev/mtd0";

    void SetUp() override {
        FlashTrapsTest::SetUp();
        ASSERT_NO_FATAL_FAILURE(
            useGeometry("0:size=65536,erase=16384,page=2048,spare=64,type=nand"));
    }

    void store(const std::string &content) const {
        const std::string path = file("content", content);
        expectSuccess([&] { return bsp_mtd_write_from_file(path.c_str(), kDevice, 0); }, "");
    }
    void expectStored(const std::string &expected) const {
        expectBytes(Node(kDevice).read(0, kSize), expected);
        const std::string copy = file("copy", "");
        expectSuccess([&] { return bsp_mtd_read_to_file(kDevice, copy.c_str(), 0); }, "");
        expectBytes(contentOf(copy), expected);
    }

    const std::string first_ = patterned(kSize, 1), second_ = patterned(kSize, 2);
};

TEST_F(FileTrapsTest, ASecondFileOverABadBlockIsMixedWithTheFirst) {
    flash(0).isBad[kBlock] = 1;
    store(first_);
    expectStored(first_);
    store(second_);
    expectStored(mixedInBlock(kBlock, kBlockSize, first_, second_));
}

TEST_F(FileTrapsTest, SoItIsOverABlockThatCannotBeErasedAnyMore) {
    store(first_);
    addRule("mtd0", "erase", "fails=EIO", std::to_string(kBlock * kBlockSize));
    store(second_);
    expectStored(mixedInBlock(kBlock, kBlockSize, first_, second_));
}

TEST_F(FileTrapsTest, AWornPageMovesWhatFollows) {
    constexpr uint32_t kPages = 10;
    const std::string content = first_.substr(0, kPages * kPage);
    addRule("mtd0", "program", "fails=EIO", std::to_string(4 * kPage));
    store(content);
    expectStored(content.substr(0, 4 * kPage) + erased(kPage) + content.substr(4 * kPage) +
                 erased(kSize - (kPages + 1) * kPage));
}

// Operating-system images

/** What flash_erase says of a bank that it cannot erase in one request. */
constexpr char kNotInOneGo[] =
    "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 0 (mtd12)\n"
    "        error 5 (Input/output error)\n"
    "flash_erase: error!: /dev/mtd12: MTD Erase entire chip failureTrying one by one each sector.\n"
    "             error 5 (Input/output error)\n";

class ImageTrapsTest : public FlashTrapsTest {
  protected:
    static constexpr uint32_t kHeaderBlock = kHeaderAt / kNandBlock;
    static constexpr uint32_t kImageSize = 3 * kNandBlock + 1000;

    void upgrade(const std::string &image, const std::string &complaint) const {
        const std::string path = file("image", image);
        expectSuccess([&] { return bspImageUpgrade(BSP_IMAGE_OS, path.c_str(), 0); }, complaint);
    }
    static std::string headerOf(const std::string &image) {
        return image.substr(image.size() - kHeaderSize);
    }
    static std::string bank(uint32_t offset, size_t length) {
        return Node(kNand, O_RDONLY).read(offset, length);
    }
    /** The header that the library tells. */
    static std::string headerTold() {
        std::string header(kHeaderSize, '?');
        expectSuccess(
            [&] { return bspOsImageInfoGet(reinterpret_cast<uint8_t *>(header.data()), 0); }, "");
        return header;
    }

    const std::string first_ = patterned(kImageSize, 1), second_ = patterned(kImageSize, 2);
};

TEST_F(ImageTrapsTest, AnImageWhoseNameLooksLikeAnOptionIsWritten) {
    const std::filesystem::path folder = std::filesystem::current_path();
    std::filesystem::current_path(boardFolder());
    for (const char *name : {"--help", "-m", "-"}) {
        const std::string image = patterned(kPage, static_cast<uint32_t>(name[1]));
        file(name, image);
        expectSuccess([&] { return bspImageUpgrade(BSP_IMAGE_OS, name, 0); }, "");
        expectBytes(bank(0, 2 * kPage), image + erased(kPage));
        expectBytes(headerTold(), headerOf(image));
    }
    std::filesystem::current_path(folder);
}

TEST_F(ImageTrapsTest, ABadBlockMovesAnImageOnButNotItsHeader) {
    flash(12).isBad[2] = 1;
    upgrade(first_, kNotInOneGo);
    expectBytes(bank(0, 5 * kNandBlock), first_.substr(0, 2 * kNandBlock) + erased(kNandBlock) +
                                             first_.substr(2 * kNandBlock) +
                                             erased(kNandBlock - 1000));
    expectBytes(bank(kHeaderAt, kPage), headerOf(first_) + erased(kPage - kHeaderSize));
    expectBytes(headerTold(), headerOf(first_));
}

TEST_F(ImageTrapsTest, TheLargestImageRunsIntoItsHeader) {
    const std::string largest = patterned(kHeaderAt, 3);
    const std::string last = largest.substr(kHeaderAt - kNandBlock);
    const std::string spoiled = mixed(last.substr(0, kHeaderSize), headerOf(largest));
    const struct {
        std::vector<uint32_t> badBlocks;
        uint32_t headerBlock;
    } cases[] = {
        {{2}, kHeaderBlock},
        {{2, kHeaderBlock}, kHeaderBlock + 1},
    };
    for (const auto &[badBlocks, headerBlock] : cases) {
        for (const uint32_t block : badBlocks)
            flash(12).isBad[block] = 1;
        upgrade(largest, kNotInOneGo);
        expectBytes(bank(headerBlock * kNandBlock, kNandBlock), spoiled + last.substr(kHeaderSize));
        expectBytes(headerTold(), spoiled);
        std::fill(std::begin(flash(12).isBad), std::end(flash(12).isBad), uint8_t{0});
    }
}

TEST_F(ImageTrapsTest, AHeaderWhoseBlockIsBadLiesBehindItsPlace) {
    flash(12).isBad[kHeaderBlock] = 1;
    upgrade(first_, kNotInOneGo);
    expectBytes(bank(kHeaderAt, kPage), erased(kPage));
    expectBytes(bank(kHeaderAt + kNandBlock, kHeaderSize), headerOf(first_));
    expectBytes(headerTold(), headerOf(first_)); // nanddump passes over the block, too
    // A block that turned bad after the upgrade hides a header that was stored in it.
    flash(12).isBad[kHeaderBlock] = 0;
    upgrade(second_, "");
    flash(12).isBad[kHeaderBlock] = 1;
    expectBytes(bank(kHeaderAt, kHeaderSize), headerOf(second_));
    expectBytes(headerTold(), erased(kHeaderSize));
}

TEST_F(ImageTrapsTest, OverABlockThatCannotBeErasedImagesAreMixed) {
    upgrade(first_, "");
    addRule("mtd12", "erase", "fails=EIO", std::to_string(kNandBlock));
    upgrade(second_, std::string(kNotInOneGo) +
                         "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 1 (mtd12)\n"
                         "        error 5 (Input/output error)\n"
                         "flash_erase: error!: /dev/mtd12: MTD Erase failure\n"
                         "             error 5 (Input/output error)\n");
    expectBytes(bank(0, kImageSize), mixedInBlock(1, kNandBlock, first_, second_));
    expectBytes(headerTold(), headerOf(second_)); // nothing of this shows
}

TEST_F(ImageTrapsTest, AWornPageLeavesAGapThatNoReaderKnowsOf) {
    addRule("mtd12", "program", "fails=EIO", std::to_string(70 * kPage));
    upgrade(first_,
            "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 1, offset 12288)\n"
            "        error 5 (Input/output error)\n"
            "Erasing failed write from 0x020000 to 0x03ffff\n");
    const std::string stored =
        first_.substr(0, kNandBlock) + erased(kNandBlock) + first_.substr(kNandBlock);
    expectBytes(bank(0, stored.size()), stored);
    EXPECT_EQ(flash(12).isBad[1], 0);
    const std::string copy = file("copy", "");
    EXPECT_EQ(
        std::system(
            ("nanddump -q -l " + std::to_string(stored.size()) + " /dev/mtd12 -f " + copy).c_str()),
        0);
    expectBytes(contentOf(copy), stored);
    expectBytes(headerTold(), headerOf(first_));
}

TEST_F(ImageTrapsTest, ADeadBlockKeepsWhatItTook) {
    addRule("mtd12", "program", "fails=EIO", std::to_string(70 * kPage));
    // The bank is erased in one request and, as that fails, block by block; then the dead block.
    addRule("mtd12", "erase", "fails=EIO", std::to_string(kNandBlock));
    upgrade(first_, std::string(kNotInOneGo) +
                        "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 1 (mtd12)\n"
                        "        error 5 (Input/output error)\n"
                        "flash_erase: error!: /dev/mtd12: MTD Erase failure\n"
                        "             error 5 (Input/output error)\n"
                        "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 1, offset "
                        "12288)\n"
                        "        error 5 (Input/output error)\n"
                        "Erasing failed write from 0x020000 to 0x03ffff\n"
                        "libmtd: error!: MEMERASE64 ioctl failed for eraseblock 1 (mtd12)\n"
                        "        error 5 (Input/output error)\n"
                        "nandwrite: error!: /dev/mtd12: MTD Erase failure\n"
                        "           error 5 (Input/output error)\n");
    expectBytes(bank(0, kNandBlock + kImageSize),
                first_.substr(0, 70 * kPage) + erased(58 * kPage) + first_.substr(kNandBlock));
    expectBytes(headerTold(), headerOf(first_));
}

TEST_F(ImageTrapsTest, AHeaderOnAWornPageIsNotFound) {
    upgrade(first_, "");
    expectBytes(headerTold(), headerOf(first_));
    addRule("mtd12", "program", "fails=EIO", std::to_string(kHeaderAt));
    upgrade(second_, "libmtd: error!: cannot write 2048 bytes to mtd12 (eraseblock 312, offset 0)\n"
                     "        error 5 (Input/output error)\n"
                     "Erasing failed write from 0x2700000 to 0x271ffff\n");
    expectBytes(bank(kHeaderAt + kNandBlock, kHeaderSize), headerOf(second_));
    expectBytes(headerTold(), erased(kHeaderSize)); // the bank looks empty
    expectBytes(bank(0, kImageSize), second_);      // and is not
}

} // namespace
