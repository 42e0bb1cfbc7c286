// Copies of boards, their end, and who has them in use.

#include "tests/control/held_board.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class ControlFoldersTest : public ControlTest {
  protected:
    ControlAnswer copy(const std::string &from, const std::string &to) const {
        return answerOf([&](VBoardError *error) {
            return vboardCopy(path(from).c_str(), path(to).c_str(), error);
        });
    }

    ControlAnswer remove(const std::string &name) const {
        return answerOf(
            [&](VBoardError *error) { return vboardDelete(path(name).c_str(), error); });
    }

    std::string inBoard(const std::string &file) const { return path("board") + "/root" + file; }

    VBoard *open(const std::string &name) const {
        VBoard *opened = nullptr;
        EXPECT_EQ(answerOf([&](VBoardError *error) {
                      return vboardOpen(path(name).c_str(), &opened, error);
                  }),
                  kDone);
        return opened;
    }

    /** The names of the processes that have the board in use. */
    std::vector<std::string> users() const {
        VBoardUser *users = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(
            answerOf([&](VBoardError *error) { return vboardUsers(board, &users, &count, error); }),
            kDone);
        const Given<VBoardUser> list(users);
        std::vector<std::string> names;
        for (uint32_t i = 0; i < count; ++i)
            names.push_back(std::to_string(list[i].pid) + " " + list[i].program);
        return names;
    }
};

/** A process that does nothing but hold the boards that this one holds. */
class Holder {
  public:
    Holder() : pid_(fork()) {
        if (pid_ == 0) {
            pause();
            _exit(0);
        }
    }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;
    ~Holder() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }

    pid_t pid() const { return pid_; }

  private:
    pid_t pid_;
};

/** This program, as the system calls it: an emulator has a name of its own. */
std::string thisProgram() {
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    return name;
}

TEST_F(ControlFoldersTest, ACopyIsTheBoardAsItWas) {
    ASSERT_EQ(set({{"fan.1.state", "stuck"},
                   {"flash.12.content@0x20000", "00ff12"},
                   {"identity.serial", "SN42"}}),
              kDone);
    std::ofstream(inBoard("/tmp/bsp/devId")) << "id";
    fs::create_directory(inBoard("/tmp/own"));
    fs::permissions(inBoard("/tmp/own"), fs::perms(0700));
    std::ofstream(inBoard("/tmp/own/secret")) << "x";
    fs::permissions(inBoard("/tmp/own/secret"), fs::perms(0640));
    fs::create_symlink("devId", inBoard("/tmp/bsp/link"));
    ASSERT_EQ(mkfifo(inBoard("/tmp/pipe").c_str(), 0600), 0);

    ASSERT_EQ(copy("board", "copy"), kDone);
    ASSERT_EQ(set({{"fan.1.state", "good"}, {"flash.12.content@0x20000", "11"}}), kDone);

    VBoard *const original = board;
    board = open("copy");
    EXPECT_EQ(get({"fan.1.state", "identity.serial", "flash.12.content@0x20000+4"}),
              (std::map<std::string, std::string>{{"fan.1.state", "stuck"},
                                                  {"identity.serial", "SN42"},
                                                  {"flash.12.content", "00ff12ff"}}));
    vboardClose(board);
    board = original;

    const std::string root = path("copy") + "/root";
    EXPECT_EQ(fs::read_symlink(root + "/tmp/bsp/link"), "devId");
    EXPECT_EQ(fs::status(root + "/tmp/own").permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(root + "/tmp/own/secret").permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_fifo(root + "/tmp/pipe"));
    EXPECT_TRUE(fs::exists(root + "/tmp/bsp/devId"));
}

TEST_F(ControlFoldersTest, ACopyKeepsTheHolesOfTheFlash) {
    ASSERT_EQ(set({{"flash.12.content@0x2000000", "00"}}), kDone);
    ASSERT_EQ(copy("board", "copy"), kDone);
    struct stat info = {};
    ASSERT_EQ(stat((path("copy") + "/flash/mtd12").c_str(), &info), 0);
    EXPECT_EQ(info.st_size, 42467328);
    EXPECT_LT(info.st_blocks * 512, 1 << 20);
}

TEST_F(ControlFoldersTest, ACopyThatIsNoneLeavesNothing) {
    EXPECT_EQ(copy("board", "board").status, VBOARD_E_EXISTS);
    EXPECT_EQ(copy("nowhere", "copy").status, VBOARD_E_NO_BOARD);
    fs::create_symlink(inBoard("/tmp/bsp"), inBoard("/tmp/absolute"));
    const ControlAnswer answer = copy("board", "copy");
    EXPECT_EQ(answer.status, VBOARD_E_DAMAGED);
    EXPECT_NE(answer.text.find("leads out of the board"), std::string::npos) << answer;
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(path("")))
        names.push_back(entry.path().filename());
    EXPECT_EQ(names, std::vector<std::string>{"board"});
}

TEST_F(ControlFoldersTest, ABoardIsRemovedWithAllThatIsOnIt) {
    std::ofstream(inBoard("/tmp/own")) << "x";
    fs::create_symlink("/", inBoard("/tmp/away"));
    EXPECT_EQ(remove("board"), kDone);
    EXPECT_FALSE(fs::exists(path("board")));
    EXPECT_TRUE(fs::exists("/usr"));
    EXPECT_EQ(remove("board").status, VBOARD_E_NO_BOARD);
}

TEST_F(ControlFoldersTest, WhatIsNotOfTheBoardIsNotRemoved) {
    std::ofstream(path("board") + "/notes.txt") << "x";
    const ControlAnswer answer = remove("board");
    EXPECT_EQ(answer.status, VBOARD_E_REFUSED);
    EXPECT_NE(answer.text.find("notes.txt"), std::string::npos) << answer;
    EXPECT_EQ(get("model"), "0x0709");

    fs::create_directory(path("mine"));
    std::ofstream(path("mine") + "/board.state") << "mine";
    EXPECT_EQ(remove("mine").status, VBOARD_E_NO_BOARD);
    EXPECT_TRUE(fs::exists(path("mine") + "/board.state"));
}

TEST_F(ControlFoldersTest, DamagedBoardsAreRemovedToo) {
    fs::resize_file(path("board") + "/board.state", 64);
    EXPECT_EQ(remove("board"), kDone);
    EXPECT_FALSE(fs::exists(path("board")));
}

TEST_F(ControlFoldersTest, ABoardInUseIsNotRemoved) {
    EXPECT_EQ(users(), std::vector<std::string>{});
    {
        const Holder holder;
        EXPECT_EQ(users(),
                  std::vector<std::string>{std::to_string(holder.pid()) + " " + thisProgram()});
        const ControlAnswer answer = remove("board");
        EXPECT_EQ(answer.status, VBOARD_E_IN_USE);
        EXPECT_NE(
            answer.text.find(thisProgram() + " (process " + std::to_string(holder.pid()) + ")"),
            std::string::npos)
            << answer;
        EXPECT_EQ(copy("board", "copy"), kDone) << "a copy disturbs nobody";
    }
    EXPECT_EQ(remove("board"), kDone);
}

TEST_F(ControlFoldersTest, BoardsBelowAFolderAreListed) {
    ASSERT_EQ(copy("board", "another"), kDone);
    fs::create_directory(path("deep"));
    ASSERT_EQ(copy("board", "deep/damaged"), kDone);
    fs::resize_file(path("deep/damaged") + "/board.state", 64);
    fs::create_directory(path("empty"));
    fs::create_directory_symlink(path("board"), path("link"));
    const Holder holder;

    VBoardListed *boards = nullptr;
    uint32_t count = 0;
    ASSERT_EQ(answerOf([&](VBoardError *error) {
                  return vboardList(path("").c_str(), &boards, &count, error);
              }),
              kDone);
    const Given<VBoardListed> list(boards);
    ASSERT_EQ(count, 3u);
    const auto isListed = [&](uint32_t index, const std::string &name, const std::string &users) {
        EXPECT_EQ(list[index].folder, path(name));
        EXPECT_EQ(list[index].status, VBOARD_OK);
        EXPECT_STREQ(list[index].model, "0x0709");
        EXPECT_STREQ(list[index].time, "virtual");
        EXPECT_STREQ(list[index].problem, "");
        EXPECT_EQ(list[index].users, users);
    };
    isListed(0, "another", "");
    isListed(1, "board", thisProgram() + " " + std::to_string(holder.pid()));
    EXPECT_EQ(list[2].folder, path("deep/damaged"));
    EXPECT_EQ(list[2].status, VBOARD_E_DAMAGED);
    EXPECT_STREQ(list[2].model, "");
    EXPECT_NE(std::string(list[2].problem).find("has 64 of"), std::string::npos) << list[2].problem;
}

TEST_F(ControlFoldersTest, NothingIsListedBelowWhatIsNoFolder) {
    VBoardListed *boards = nullptr;
    uint32_t count = 7;
    EXPECT_EQ(vboardList(path("nowhere").c_str(), &boards, &count, nullptr), VBOARD_E_REFUSED);
    EXPECT_EQ(count, 7u);
}

} // namespace
