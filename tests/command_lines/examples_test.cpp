// The examples that help shows: iodbg's are tried on a board, of vboard's the words are judged.

#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"
#include "tests/support/world.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

namespace {

/** The folder of a process, in which examples have their files, as long as it lives. */
class WorkingIn {
  public:
    explicit WorkingIn(const std::filesystem::path &folder)
        : before_(std::filesystem::current_path()) {
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    WorkingIn(const WorkingIn &) = delete;
    WorkingIn &operator=(const WorkingIn &) = delete;
    ~WorkingIn() { std::filesystem::current_path(before_); }

  private:
    std::filesystem::path before_;
};

/** Examples that go on until somebody stops them. */
const std::set<std::string> kEndless = {"iodbg watch", "iodbg watch --changes --only poe,fans",
                                        "iodbg watchdog feed --every 5"};

/** Whether programs can start others: an emulator starts those of its host. */
bool canBeTried(const std::string &example) {
#ifdef BSP_TEST_STARTS_PROGRAMS
    return !example.empty();
#else
    return !example.starts_with("iodbg trace");
#endif
}

class ExamplesTest : public IodbgTest {
  protected:
    void SetUp() override {
        IodbgTest::SetUp();
        const std::string programs =
            std::filesystem::path(builtProgram("iodbg")).parent_path().string();
        setenv("PATH", (programs + ":" + std::getenv("PATH")).c_str(), 1);
        world::set("sfp.49.module", "sr");
        world::set("sfp.50.module", "copper-mode4");
        world::set("poe.3.device", "class=4 draws=18000");
    }

    /** The ports as their examples want them; a reset of the board forgets it. */
    void startPoe() const {
        ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
        ASSERT_EQ(iodbg({"poe", "set", "mode", "1-8", "semi"}).exitCode, 0);
    }

    /** The files that examples read. */
    void makeFiles() const {
        std::ofstream("board.rec", std::ios::binary).write(reinterpret_cast<char *>(record()), 128);
        ASSERT_EQ(
            iodbg({"identity", "get", "record", "--index", "supply1", "--output", "supply1.rec"})
                .exitCode,
            0);
        ASSERT_EQ(iodbg({"eeprom", "dump", "--output", "board.eeprom"}).exitCode, 0);
        std::ofstream("poe.bin", std::ios::binary) << std::string(51200, 'p');
        std::ofstream("loader.raw", std::ios::binary) << "123456789";
        ASSERT_EQ(iodbg({"image", "pack-boot", "loader.raw", "loader.bin"}).exitCode, 0);
        std::ofstream("settings.bin", std::ios::binary) << std::string(256, '\0');
        std::ofstream("os.img", std::ios::binary)
            << std::string(4096 - 512, 'i') + "OS image 2.6" + std::string(500, '\0');
        ASSERT_EQ(iodbg({"upgrade", "os", "os.img", "--bank", "1", "--yes"}).exitCode, 0);
        std::ofstream("cpld.bin", std::ios::binary) << std::string(512, 'c');
    }

    int exitCodeOf(const std::string &example) const {
        Words words = wordsOf(example);
        words.erase(words.begin());
        if (!kEndless.contains(example))
            return iodbg(words, "y\n").exitCode;
        const uint64_t before = now();
        Process process = start(words);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (*const_cast<volatile uint64_t *>(&board().clock.anchorNs) < before + 20000000000u &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        process.signal(SIGINT);
        return process.wait().exitCode;
    }
};

TEST_F(ExamplesTest, EachDoesWhatItShows) {
    const WorkingIn folder(hostFile("examples"));
    makeFiles();
    std::set<std::string> tried;
    command_line::Tool tool = iodbgTool();
    for (const command_line::Command *command : commandsOf(tool)) {
        if (command->wholeName() == "iodbg poe")
            startPoe();
        for (const std::string &example : command->examples) {
            EXPECT_TRUE(example.starts_with(command->wholeName())) << example;
            if (example.ends_with("--store"))
                std::memset(record(), 0xFF, 128); // only a unit without a record gets a new one
            if (canBeTried(example)) {
                EXPECT_EQ(exitCodeOf(example), 0) << example;
            }
            EXPECT_TRUE(tried.insert(example).second) << example << " is shown twice";
        }
    }
    EXPECT_GT(tried.size(), 60u);
    for (const std::string &example : kEndless)
        EXPECT_TRUE(tried.contains(example)) << example;
}

/** Words as a shell takes them that has single quotes alone. */
Words shellWords(const std::string &line) {
    Words words(1);
    bool isQuoted = false;
    for (const char c : line) {
        if (c == '\'')
            isQuoted = !isQuoted;
        else if (c == ' ' && !isQuoted)
            words.emplace_back();
        else
            words.back() += c;
    }
    return words;
}

/** What they do is seen where documents have them. */
TEST(VboardExamplesTest, EachIsACommandLine) {
    unsigned tried = 0;
    command_line::Tool tool = kVboardTool.make();
    for (const command_line::Command *command : commandsOf(tool)) {
        for (const std::string &example : command->examples) {
            Words words = shellWords(example);
            if (words[0] != "vboard") // a shell's business
                continue;
            words.erase(words.begin());
            EXPECT_EQ(refusalOf(kVboardTool, words), "") << example;
            ++tried;
        }
    }
    EXPECT_GT(tried, 20u);
}

} // namespace
