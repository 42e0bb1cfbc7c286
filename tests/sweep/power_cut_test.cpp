// The power goes within every program and erase of an operation. What the next start finds is what
// docs/upgrade-safety.md tells the authors of management software.

#include "bsp.h"
#include "tests/virtual_board/flash_test.h"

#include <csignal>
#include <fstream>
#include <map>
#include <set>

namespace {

// Bytes of an operation that are carried out before the power goes; more than it has: all of it.
constexpr uint32_t kCuts[] = {0, 1, 100, 255, 1u << 30};

/** How often each state was found after a cut. */
using Found = std::map<std::string, uint32_t>;

class PowerCutTest : public FlashBoardTest {
  protected:
    std::string file(const char *name, const std::string &content) const {
        std::ofstream(boardFolder() + "/" + name, std::ios::binary) << content;
        return boardFolder() + "/" + name;
    }

    /**
     * Cuts the power in the n-th program or erase of a partition, for every n, behind each number
     * of bytes, and counts what is found afterwards.
     */
    template <typename Prepare, typename Operate, typename Find>
    Found sweep(const std::string &device, Prepare prepare, Operate operate, Find find) {
        Found found;
        for (const uint32_t bytes : kCuts) {
            for (uint32_t nth = 1;; ++nth) {
                clearFaults();
                printedBy(prepare);
                addRule(device, "change", "power-cut=" + std::to_string(bytes), "",
                        std::to_string(nth), "once");
                int signal = 0;
                printedBy([&] { signal = signalOf(operate); });
                if (signal == 0)
                    break; // it has fewer changes
                EXPECT_EQ(signal, SIGKILL);
                clearFaults();
                std::string state;
                printedBy([&] { state = find(); });
                ++found[state];
            }
        }
        return found;
    }
};

TEST_F(PowerCutTest, BootSettings) {
    const auto prepare = [] {
        bspBootFlagSet(7);
        bspBootPwdSet("secret");
    };
    const auto find = [] {
        int32_t flag = -2;
        char password[64] = "?";
        const bool hasFlag = bspBootFlagGet(&flag) == BSP_OK;
        bspBootPwdGet(password);
        const std::string other = password == std::string("secret") ? "others kept"
                                  : *password == '\0'               ? "others lost"
                                                                    : "others torn";
        return std::string(!hasFlag    ? "flag lost"
                           : flag == 7 ? "old flag"
                           : flag == 8 ? "new flag"
                                       : "flag torn") +
               ", " + other;
    };
    const Found found = sweep(
        "mtd4", prepare, [] { bspBootFlagSet(8); }, find);
    // One erase and one program, cut behind 0, 1, 100, 255 and all bytes.
    EXPECT_EQ(found, (Found{{"old flag, others kept", 2},  // erase: 0 and 1 byte
                            {"flag lost, others kept", 1}, // erase: 100 bytes
                            {"flag lost, others lost", 4}, // erase: 255 and all; program: 0 and 1
                            {"new flag, others lost", 1},  // program: 100 bytes
                            {"new flag, others kept", 2}}));
}

TEST_F(PowerCutTest, BootLoader) {
    const std::string oldImage(5000, 'o');
    const std::string newImage(5000, 'n');
    const std::string oldFile = file("old", oldImage);
    const std::string newFile = file("new", newImage);
    const auto stored = [] { return Node("/dev/mtd0").read(0, 5000); };
    const Found found = sweep(
        "mtd0", [&] { bsp_mtd_write_from_file(oldFile.c_str(), "/dev/mtd0", 0); },
        [&] { bsp_mtd_write_from_file(newFile.c_str(), "/dev/mtd0", 0); },
        [&] {
            const std::string image = stored();
            if (image == oldImage)
                return "old";
            return image == newImage ? "new" : "none that starts";
        });
    // 16 erases of whole blocks and 20 programs of 256 bytes; only a cut before anything was erased
    // leaves the old one, and only one behind the last byte the new one.
    EXPECT_EQ(found.at("old"), 1u);
    EXPECT_EQ(found.at("new"), 2u);
    EXPECT_EQ(found.at("none that starts"), 5u * 36 - 3);
}

TEST_F(PowerCutTest, OsImage) {
    const auto image = [](char fill) {
        return std::string(8192, fill) +
               std::string(BSP_OS_HEADER_SIZE, static_cast<char>(fill - 32));
    };
    const std::string oldFile = file("old", image('o'));
    const std::string newFile = file("new", image('n'));
    const std::string other = file("other", image('x'));
    printedBy([&] { ASSERT_EQ(bspImageUpgrade(BSP_IMAGE_OS, other.c_str(), 0), BSP_OK); });
    const auto bank = [](int32_t number) {
        std::string header(BSP_OS_HEADER_SIZE, '?');
        bspOsImageInfoGet(reinterpret_cast<uint8_t *>(header.data()), number);
        const std::string data = Node(number == 0 ? "/dev/mtd12" : "/dev/mtd14").read(0, 8192);
        const auto which = [](const std::string &bytes, char oldFill, char newFill) {
            if (bytes == std::string(bytes.size(), oldFill))
                return "old";
            if (bytes == std::string(bytes.size(), newFill))
                return "new";
            return bytes == erased(bytes.size()) ? "empty" : "torn";
        };
        return std::string(which(header, 'O', 'N')) + " header, " + which(data, 'o', 'n') +
               " image";
    };
    const Found found = sweep(
        "mtd14", [&] { bspImageUpgrade(BSP_IMAGE_OS, oldFile.c_str(), 1); },
        [&] { bspImageUpgrade(BSP_IMAGE_OS, newFile.c_str(), 1); }, [&] { return bank(1); });
    std::set<std::string> states;
    for (const auto &[state, count] : found)
        states.insert(state);
    // An old header is no proof of an old image: the erase reaches it last.
    EXPECT_EQ(states, (std::set<std::string>{"old header, old image", "old header, torn image",
                                             "empty header, empty image",
                                             "empty header, torn image", "empty header, new image",
                                             "torn header, new image", "new header, new image"}));
    // The other bank is never touched.
    std::string header(BSP_OS_HEADER_SIZE, '?');
    printedBy([&] { bspOsImageInfoGet(reinterpret_cast<uint8_t *>(header.data()), 0); });
    EXPECT_EQ(header, std::string(BSP_OS_HEADER_SIZE, 'X'));
}

TEST_F(PowerCutTest, PoeApplicationStatus) {
    // One byte in a file: the old one or the new one, and the file is gone with the power anyway.
    for (const uint32_t bytes : {0u, 1u}) {
        clearFaults();
        EXPECT_EQ(bspPoeRtl8239AppStatusSet(1), BSP_OK);
        addRule("/tmp/bsp/poeApp", "write", "power-cut=" + std::to_string(bytes), "", "1", "once");
        EXPECT_EQ(signalOf([] { bspPoeRtl8239AppStatusSet(2); }), SIGKILL);
        clearFaults();
        uint32_t status = 7;
        EXPECT_EQ(bspPoeRtl8239AppStatusGet(&status), BSP_OK);
        EXPECT_EQ(status, bytes == 0 ? 1u : 2u);
    }
}

} // namespace
