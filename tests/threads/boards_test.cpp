// Threads that hold boards through the C interface at once, under ThreadSanitizer: on one handle,
// on several of one board, and on boards of their own. Each call is whole, and none disturbs
// another.

#include "virtual_board/include/vboard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kRounds = 40;
constexpr uint64_t kSecond = 1000000000;

/** Fails the test, from any thread, when a call does not answer what it has to. */
void expect(int32_t status, const VBoardError &error, int32_t expected = VBOARD_OK) {
    EXPECT_EQ(status, expected) << vboardStatusName(status) << ": " << error.text;
}

class ThreadsHoldBoards : public ::testing::Test {
  protected:
    ThreadsHoldBoards() {
        EXPECT_NE(mkdtemp(folder_.data()), nullptr);
        for (VBoard *&handle : handles_)
            handle =
                handle == nullptr && !fs::exists(path("board")) ? make("board") : open("board");
    }
    ~ThreadsHoldBoards() override {
        for (VBoard *handle : handles_)
            vboardClose(handle);
        fs::remove_all(folder_);
    }

    std::string path(const std::string &name) const { return folder_ + "/" + name; }

    VBoard *make(const std::string &name) const {
        VBoardError error = {};
        VBoardOptions options = {};
        options.size = sizeof(options);
        options.model = "0x0709";
        options.time = "virtual";
        expect(vboardCreate(path(name).c_str(), &options, &error), error);
        return open(name);
    }

    VBoard *open(const std::string &name) const {
        VBoardError error = {};
        VBoard *opened = nullptr;
        expect(vboardOpen(path(name).c_str(), &opened, &error), error);
        return opened;
    }

    /** Does all of it at once, each many times: with the handle that all share and with another. */
    void doAtOnce(const std::vector<std::function<void(VBoard *, int)>> &works) const {
        std::vector<std::jthread> threads;
        for (const auto &work : works) {
            for (VBoard *handle : {handles_[0], handles_[1 + threads.size() % 2]})
                threads.emplace_back([&work, handle] {
                    for (int round = 0; round < kRounds; ++round)
                        work(handle, round);
                });
        }
    }

  private:
    std::string folder_ = (fs::temp_directory_path() / "bsp-threads-XXXXXX").string();
    VBoard *handles_[3] = {};
};

/** Sets two properties to one number. */
void set(VBoard *board, int round) {
    VBoardError error = {};
    const std::string number = std::to_string(round % 50);
    const VBoardChange changes[] = {{"cpld.40", number.c_str()}, {"cpld.41", number.c_str()}};
    expect(vboardSet(board, changes, 2, &error), error);
}

/** They are never seen with two numbers. */
void get(VBoard *board, int) {
    VBoardError error = {};
    const char *const names[] = {"cpld.40", "cpld.41"};
    VBoardProperty *properties = nullptr;
    uint32_t count = 0;
    expect(vboardGet(board, names, 2, &properties, &count, &error), error);
    ASSERT_EQ(count, 2u);
    EXPECT_STREQ(properties[0].value, properties[1].value);
    vboardFree(properties);
}

void getAll(VBoard *board, int round) {
    if (round % 10 != 0)
        return;
    VBoardError error = {};
    VBoardProperty *properties = nullptr;
    uint32_t count = 0;
    expect(vboardGet(board, nullptr, 0, &properties, &count, &error), error);
    EXPECT_GT(count, 300u);
    vboardFree(properties);
}

void beRefused(VBoard *board, int) {
    VBoardError error = {};
    const VBoardChange changes[] = {{"temperature.ambient", "20"}, {"fan.9.state", "stuck"}};
    expect(vboardSet(board, changes, 2, &error), error, VBOARD_E_REFUSED);
    expect(vboardWait(board, "fan.1.speed == fast", 0, &error), error, VBOARD_E_REFUSED);
}

void advance(VBoard *board, int) {
    VBoardError error = {};
    uint64_t before = 0, after = 0;
    expect(vboardTime(board, &before, &error), error);
    expect(vboardAdvance(board, kSecond, VBOARD_USUAL_PATIENCE, &error), error);
    expect(vboardTime(board, &after, &error), error);
    EXPECT_GE(after, before + kSecond);
}

void wait(VBoard *board, int) {
    VBoardError error = {};
    expect(vboardWait(board, "temperature.ambient >= 0", kSecond, &error), error);
    expect(vboardWait(board, "fan.1.speed == 1", kSecond / 10, &error), error, VBOARD_E_TIMEOUT);
}

void awaitChange(VBoard *board, int) {
    VBoardError error = {};
    const int32_t status = vboardAwaitChange(board, vboardChanges(board), 1000000, &error);
    if (status != VBOARD_E_TIMEOUT)
        expect(status, error);
}

void fault(VBoard *board, int) {
    VBoardError error = {};
    VBoardFault rule = {};
    rule.size = sizeof(rule);
    rule.device = "cpld";
    rule.effect = "refuse=-5";
    uint32_t id = 0;
    expect(vboardAddFault(board, &rule, &id, &error), error);
    VBoardFault *faults = nullptr;
    uint32_t count = 0;
    expect(vboardFaults(board, &faults, &count, &error), error);
    bool isThere = false;
    for (uint32_t i = 0; i < count; ++i)
        isThere = isThere || faults[i].id == id;
    EXPECT_TRUE(isThere);
    vboardFree(faults);
    expect(vboardClearFaults(board, &id, 1, &error), error);
}

void trace(VBoard *board, int) {
    VBoardError error = {};
    uint64_t position = 0;
    VBoardRequest *requests = nullptr;
    uint32_t count = 0;
    expect(vboardTrace(board, &position, 0, &requests, &count, nullptr, &error), error);
    vboardFree(requests);
    expect(vboardClearTrace(board, position, &error), error);
}

void look(VBoard *board, int round) {
    if (round % 10 != 0)
        return;
    VBoardError error = {};
    char *text = nullptr;
    expect(vboardPanel(board, 0, &text, &error), error);
    vboardFree(text);
    VBoardVariable *variables = nullptr;
    uint32_t count = 0;
    expect(vboardEnvironment(board, nullptr, &variables, &count, &error), error);
    vboardFree(variables);
    VBoardModel *models = nullptr;
    expect(vboardModels(&models, &count, &error), error);
    vboardFree(models);
    expect(vboardDescribe("fan.*", &text, &error), error);
    vboardFree(text);
    VBoardPartition *partitions = nullptr;
    expect(vboardFlash(board, &partitions, &count, &error), error);
    vboardFree(partitions);
    VBoardUser *users = nullptr;
    expect(vboardUsers(board, &users, &count, &error), error);
    vboardFree(users);
    expect(vboardExpectProgram(board, getpid(), &error), error);
}

/** Opens it once more meanwhile. */
void reopen(VBoard *board, int) {
    VBoardError error = {};
    VBoard *opened = nullptr;
    expect(vboardOpen(vboardFolder(board), &opened, &error), error);
    get(opened, 0);
    vboardClose(opened);
}

TEST_F(ThreadsHoldBoards, AndDoEverythingWithOneAtOnce) {
    doAtOnce({set, get, getAll, beRefused, advance, wait, awaitChange, fault, trace, look, reopen});
}

TEST_F(ThreadsHoldBoards, AndMakeCopyUseAndRemoveTheirOwn) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this, name = "own" + std::to_string(i)] {
            VBoardError error = {};
            for (int round = 0; round < 5; ++round) {
                VBoard *board = make(name);
                set(board, round);
                const std::string copy = path(name + "-copy");
                expect(vboardCopy(path(name).c_str(), copy.c_str(), &error), error);
                expect(vboardUpgrade(copy.c_str(), &error), error);
                get(board, round);
                vboardClose(board);
                for (const std::string &folder : {path(name), copy})
                    expect(vboardDelete(folder.c_str(), &error), error);
            }
        });
    }
}

} // namespace
