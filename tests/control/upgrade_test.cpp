// Boards of earlier versions: those that were kept of each release, and made-up ones of each step.

#include "tests/control/held_board.h"
#include "tests/support/process.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/layouts.h"
#include "virtual_board/words/world.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path &file) {
    std::string content(static_cast<size_t>(fs::file_size(file)), '\0');
    std::ifstream(file, std::ios::binary)
        .read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
}

void store(const fs::path &file, const std::string &content) {
    std::ofstream(file, std::ios::binary) << content;
}

ControlAnswer upgrade(const std::string &folder) {
    return answerOf([&](VBoardError *error) { return vboardUpgrade(folder.c_str(), error); });
}

ControlAnswer openingOf(const std::string &folder) {
    VBoard *opened = nullptr;
    const ControlAnswer answer =
        answerOf([&](VBoardError *error) { return vboardOpen(folder.c_str(), &opened, error); });
    vboardClose(opened);
    return answer;
}

bool says(const ControlAnswer &answer, const std::string &text) {
    return answer.text.find(text) != std::string::npos;
}

// Boards of the releases

/** The versions that were released, as CHANGELOG.md has them, and one in between. */
std::vector<std::string> versions() {
    std::vector<std::string> found = {"before-1.1.0"};
    for (const std::string &line : linesOf(contentOf(BSP_TEST_SOURCE "/CHANGELOG.md"))) {
        if (line.starts_with("## ") && std::isdigit(static_cast<unsigned char>(line[3])) != 0)
            found.push_back(line.substr(3));
    }
    return found;
}

/** The board that was kept of a release, with what its own vboard told of it. */
class KeptBoard {
  public:
    explicit KeptBoard(const std::string &version) {
        const std::string archive =
            BSP_TEST_SOURCE "/tests/control/released/" + version + ".tar.gz";
        const std::string unpack =
            "tar -xzf '" + archive + "' --no-same-owner -C '" + folder_.path() + "'";
        EXPECT_EQ(std::system(unpack.c_str()), 0) << "'scripts/keep-board' keeps one";
    }

    std::string board() const { return folder_.path() + "/board"; }
    std::string told(const char *what) const { return contentOf(folder_.path() + "/" + what); }

  private:
    TemporaryFolder folder_;
};

class KeptBoardTest : public ::testing::TestWithParam<std::string> {};

/** What is told of a board otherwise than it was then. */
std::vector<std::string> changedProperties(const std::string &folder, const std::string &then) {
    vb::BoardFolder board;
    vb::FolderError error = {};
    EXPECT_TRUE(board.open(folder.c_str(), error)) << error.text;
    const std::vector<std::string> lines = linesOf(then);
    EXPECT_GT(lines.size(), 100u);
    std::vector<std::string> changed;
    for (const std::string &line : lines) {
        const std::string name = line.substr(0, line.find(' '));
        const std::string value = line.substr(line.find_first_not_of(' ', name.size()));
        const std::string now = vb::property(board, name);
        if (now != value)
            changed.push_back(name + " was " + value + " and is " + now);
    }
    return changed;
}

uint32_t layoutOf(const std::string &folder) {
    vb::BoardHeader header = {};
    const std::string state = contentOf(folder + "/board.state");
    EXPECT_GE(state.size(), sizeof(header));
    std::memcpy(&header, state.data(), std::min(state.size(), sizeof(header)));
    return header.version;
}

std::string traceOf(VBoard *board) {
    VBoardRequest *requests = nullptr;
    uint32_t count = 0;
    uint64_t position = 0;
    EXPECT_EQ(vboardTrace(board, &position, 0, &requests, &count, nullptr, nullptr), VBOARD_OK);
    const Given<VBoardRequest> list(requests);
    std::string text;
    for (uint32_t i = 0; i < count; ++i) {
        char line[64];
        std::snprintf(line, sizeof(line), "%llu.%09llu %d ",
                      static_cast<unsigned long long>(list[i].time / kSecond),
                      static_cast<unsigned long long>(list[i].time % kSecond), list[i].pid);
        text += line + std::string(list[i].text) + "\n";
    }
    return text;
}

std::string faultsOf(VBoard *board) {
    VBoardFault *faults = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(vboardFaults(board, &faults, &count, nullptr), VBOARD_OK);
    const Given<VBoardFault> list(faults);
    std::string text;
    for (uint32_t i = 0; i < count; ++i)
        text += std::to_string(list[i].id) + ": " + list[i].text + " (matched " +
                std::to_string(list[i].matched) + ", fired " + std::to_string(list[i].fired) +
                ")\n";
    return text;
}

TEST_P(KeptBoardTest, IsTakenAlongWithAllThatItHas) {
    const KeptBoard kept(GetParam());
    const std::string folder = kept.board();
    const ControlAnswer refused = openingOf(folder);
    if (std::endian::native == std::endian::big) {
        EXPECT_EQ(refused.status, VBOARD_E_VERSION) << refused;
        EXPECT_TRUE(says(refused, "the other byte order")) << refused;
        EXPECT_EQ(upgrade(folder), refused);
        return;
    }
    if (layoutOf(folder) == vb::kBoardVersion) {
        EXPECT_EQ(refused, kDone);
    } else {
        EXPECT_EQ(refused.status, VBOARD_E_VERSION) << refused;
        EXPECT_TRUE(says(refused, "take it along with: vboard upgrade " + folder)) << refused;
    }

    ASSERT_EQ(upgrade(folder), kDone);
    EXPECT_EQ(changedProperties(folder, kept.told("properties.txt")), Lines{});
    VBoard *board = nullptr;
    ASSERT_EQ(vboardOpen(folder.c_str(), &board, nullptr), VBOARD_OK);
    EXPECT_EQ(traceOf(board), kept.told("trace.txt"));
    EXPECT_EQ(faultsOf(board), kept.told("faults.txt"));
    vboardClose(board);
    EXPECT_EQ(contentOf(folder + "/root/tmp/bsp/note"), "kept\n");
    EXPECT_EQ(contentOf(folder + "/root/tmp/bsp/link"), "kept below\n");
    EXPECT_EQ(linesOf(contentOf(folder + "/root/proc/mtd")).size(), 5u);
    EXPECT_EQ(upgrade(folder), kDone) << "a second time there is nothing to do";
}

INSTANTIATE_TEST_SUITE_P(Versions, KeptBoardTest, ::testing::ValuesIn(versions()),
                         [](const auto &row) {
                             std::string name = row.param;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char c) { return c == '.' || c == '-'; }, '_');
                             return name;
                         });

// Boards of each step, made up from one of today on machines of either kind

class UpgradeTest : public ControlTest {
  protected:
    void SetUp() override {
        ControlTest::SetUp();
        ASSERT_EQ(set({{"fan.1.state", "stuck"}, {"flash.12.bad-blocks", "3"}}), kDone);
        vboardClearTrace(board, 0, nullptr);
        today_ = contentOf(state());
        becomeOlder();
    }

    std::string folder() const { return path("board"); }
    std::string state() const { return folder() + "/board.state"; }
    std::string partitionList() const { return folder() + "/root/proc/mtd"; }

    /** What it was before it became an older one, but for the count of changes. */
    std::string today() const { return today_; }

    vb::BoardHeader header() const {
        vb::BoardHeader found = {};
        std::memcpy(&found, contentOf(state()).data(), sizeof(found));
        return found;
    }

    void storeHeader(vb::BoardHeader header) const {
        header.check = vb::headerCheck(header);
        std::string content = contentOf(state());
        std::memcpy(content.data(), &header, sizeof(header));
        store(state(), content);
    }

    /** Every file of the board with its content, to see that nothing has changed. */
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> found;
        for (const auto &entry : fs::recursive_directory_iterator(folder())) {
            const bool isFlash = entry.path().parent_path().filename() == vb::kFlashFolder;
            if (!entry.is_directory() && !entry.is_fifo() && !isFlash)
                found[entry.path()] = entry.is_symlink() ? "link" : contentOf(entry.path());
        }
        return found;
    }

    void expectRefused(int32_t status, const std::string &text) const {
        const auto before = files();
        const ControlAnswer answer = upgrade(folder());
        EXPECT_EQ(answer.status, status) << answer;
        EXPECT_TRUE(says(answer, text)) << answer;
        EXPECT_EQ(files(), before);
    }

    void set8(uint32_t offset, uint8_t value) const {
        std::string content = contentOf(state());
        content[offset] = static_cast<char>(value);
        store(state(), content);
    }

  private:
    /** Takes all steps back: what a step drops was something, what it adds was not there. */
    void becomeOlder() const {
        std::string content = contentOf(state());
        for (size_t i = vb::layoutSteps().size(); i-- > 0;) {
            std::string earlier;
            size_t next = 0;
            for (const vb::LayoutRun &run : vb::layoutSteps()[i].runs) {
                earlier += run.change == vb::LayoutChange::Keep   ? content.substr(next, run.bytes)
                           : run.change == vb::LayoutChange::Drop ? std::string(run.bytes, 'x')
                                                                  : "";
                next += run.change == vb::LayoutChange::Drop ? 0 : run.bytes;
            }
            ASSERT_EQ(next, content.size());
            content = earlier;
        }
        store(state(), content);
        vb::BoardHeader older = header();
        older.version = vb::layoutSteps()[0].from;
        older.size = static_cast<uint32_t>(content.size());
        storeHeader(older);
        fs::remove(partitionList());
        fs::remove(folder() + "/wake");
    }

    std::string today_;
};

TEST_F(UpgradeTest, EachByteOfItsStateComesToItsPlace) {
    fs::permissions(state(), fs::perms(0640));
    ASSERT_EQ(upgrade(folder()), kDone);
    std::string then = today();
    std::string now = contentOf(state());
    for (std::string *content : {&then, &now}) {
        // Counts of changes, and what earlier boards did not know of the host's clocks.
        const auto forget = [&](size_t offset, size_t size) {
            std::fill_n(content->begin() + static_cast<ptrdiff_t>(offset), size, '\0');
        };
        forget(offsetof(vb::Board, changes), sizeof(vb::Changes));
        forget(offsetof(vb::Board, clock) + offsetof(vb::Clock, anchorMonotonicNs), 3 * 8);
        forget(offsetof(vb::Board, clock) + offsetof(vb::Clock, changes), 4);
    }
    EXPECT_EQ(std::mismatch(now.begin(), now.end(), then.begin(), then.end()).first - now.begin(),
              static_cast<ptrdiff_t>(now.size()));
    EXPECT_EQ(fs::status(state()).permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_fifo(folder() + "/wake"));
    EXPECT_EQ(linesOf(contentOf(partitionList()))[2], "mtd4: 00040000 00010000 \"boot-settings\"");
    EXPECT_EQ(fs::status(partitionList()).permissions(), fs::perms(0640));
    EXPECT_FALSE(fs::exists(folder() + "/board.state.old"));
    EXPECT_FALSE(fs::exists(folder() + "/board.state.new"));
}

TEST_F(UpgradeTest, AMissingPoeControllerIsStillMissing) {
    uint16_t control = 0;
    std::string content = contentOf(state());
    std::memcpy(&control, content.data() + 76, sizeof(control));
    control = static_cast<uint16_t>(control | 0x4000);
    std::memcpy(content.data() + 76, &control, sizeof(control));
    store(state(), content);
    ASSERT_EQ(upgrade(folder()), kDone);
    ASSERT_EQ(vboardOpen(folder().c_str(), &board, nullptr), VBOARD_OK);
    EXPECT_EQ(get("poe.controller"), "missing");
    EXPECT_EQ(set({{"power", "cycle"}}), kDone);
    EXPECT_EQ(get("poe.controller"), "missing");
    EXPECT_EQ(set({{"poe.controller", "present"}}), kDone);
    vboardClose(board);
}

TEST_F(UpgradeTest, WhoWasKilledAtItIsNoHindrance) {
    store(folder() + "/board.state.new", "half");
    store(folder() + "/board.state.old", "old");
    ASSERT_EQ(upgrade(folder()), kDone);
    EXPECT_FALSE(fs::exists(folder() + "/board.state.old"));
    EXPECT_FALSE(fs::exists(folder() + "/board.state.new"));
}

TEST_F(UpgradeTest, WhatAKilledOneLeavesGoesWithTheBoard) {
    store(folder() + "/board.state.new", "half");
    store(folder() + "/board.state.old", "old");
    EXPECT_EQ(vboardDelete(folder().c_str(), nullptr), VBOARD_OK);
    EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(UpgradeTest, ADamagedStateStaysAsItIs) {
    set8(210448, 7); // the console's speed
    expectRefused(VBOARD_E_DAMAGED, "impossible values (the console)");
}

TEST_F(UpgradeTest, AStateThatIsNotWholeStaysAsItIs) {
    fs::resize_file(state(), 1000000);
    expectRefused(VBOARD_E_DAMAGED, "has 1000000 of 2125264 bytes");
}

TEST_F(UpgradeTest, ABoardWithoutOneOfItsFilesStaysAsItIs) {
    fs::remove(folder() + "/registers");
    expectRefused(VBOARD_E_DAMAGED, "registers is missing");
}

TEST_F(UpgradeTest, ALinkThatLeadsOutIsNamed) {
    fs::create_symlink("/etc", folder() + "/root/tmp/bsp/out");
    expectRefused(VBOARD_E_DAMAGED, "the link root/tmp/bsp/out leads out of the board; remove it");
    fs::remove(folder() + "/root/tmp/bsp/out");
    EXPECT_EQ(upgrade(folder()), kDone);
}

TEST_F(UpgradeTest, VersionsThatWereNotReleasedAndLaterOnesAreRefused) {
    for (const uint32_t version : {1u, vb::layoutSteps()[0].from + 1, vb::kBoardVersion + 1}) {
        vb::BoardHeader other = header();
        other.version = version;
        storeHeader(other);
        expectRefused(VBOARD_E_VERSION, "create a board with the vboard of this build");
    }
}

TEST_F(UpgradeTest, AFullFileSystemLeavesItAsItWas) {
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit = {1000000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    const ControlAnswer answer = upgrade(folder());
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(answer.status, VBOARD_E_SYSTEM) << answer;
    EXPECT_FALSE(fs::exists(folder() + "/board.state.new"));
    EXPECT_FALSE(fs::exists(partitionList()));
    EXPECT_EQ(openingOf(folder()).status, VBOARD_E_VERSION);
    EXPECT_EQ(upgrade(folder()), kDone);
}

TEST_F(UpgradeTest, ABoardInUseIsLeftToItsPrograms) {
    const int file = open(state().c_str(), O_RDWR | O_CLOEXEC);
    void *mapped = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    const pid_t program = fork(); // it has mapped the state as programs of that version have
    if (program == 0) {
        pause();
        _exit(0);
    }
    expectRefused(VBOARD_E_IN_USE, "(process " + std::to_string(program) + "); end it first");
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    munmap(mapped, 4096);
    EXPECT_EQ(upgrade(folder()), kDone);
}

TEST_F(UpgradeTest, ABoardOfThisVersionIsLeftAlone) {
    newBoard("other", "0x0709", "virtual");
    const std::string before = contentOf(path("other") + "/board.state");
    EXPECT_EQ(upgrade(path("other")), kDone);
    EXPECT_EQ(contentOf(path("other") + "/board.state"), before);
}

TEST_F(UpgradeTest, WhatIsNoBoardIsNot) {
    EXPECT_EQ(upgrade(path("nowhere")).status, VBOARD_E_NO_BOARD);
    EXPECT_EQ(vboardUpgrade(nullptr, nullptr), VBOARD_E_ARGUMENT);
}

} // namespace
