// Many boards side by side, each with a program on it: none takes what is another's. What a board
// costs is printed, for the document.

#include "tests/control/held_board.h"
#include "tests/support/depth.h"
#include "tests/support/process.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <list>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/** What the files of a folder take up, in KiB. */
double diskOf(const fs::path &folder) {
    double blocks = 0;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        struct stat info = {};
        EXPECT_EQ(lstat(entry.path().c_str(), &info), 0) << entry.path();
        blocks += static_cast<double>(info.st_blocks);
    }
    return blocks / 2;
}

/** A process's share of the memory, in KiB: what several use counts in parts. */
double memoryOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string word; file >> word;) {
        double size = 0;
        if (word == "Pss:" && file >> size)
            return size;
    }
    return 0;
}

class ManyBoardsTest : public ControlTest {
  protected:
    /** The lamps' register, by which each board is known. */
    static uint32_t markOf(uint32_t number) { return number + 1; }

    std::string name(uint32_t number) const { return "board" + std::to_string(number); }

    /** Makes a board; of models in turn. */
    void make(uint32_t number) const {
        constexpr const char *kModels[] = {"0x0109", "0x0509", "0x0809"};
        VBoardOptions options = {};
        options.size = sizeof(options);
        options.model = kModels[number % std::size(kModels)];
        options.time = "real";
        ASSERT_EQ(answerOf([&](VBoardError *error) {
                      return vboardCreate(path(name(number)).c_str(), &options, error);
                  }),
                  kDone);
        VBoard *opened = nullptr;
        ASSERT_EQ(vboardOpen(path(name(number)).c_str(), &opened, nullptr), VBOARD_OK);
        const std::string mark = std::to_string(markOf(number));
        const VBoardChange lamps = {"cpld.7", mark.c_str()};
        EXPECT_EQ(vboardSet(opened, &lamps, 1, nullptr), VBOARD_OK);
        vboardClose(opened);
    }
};

TEST_F(ManyBoardsTest, AreAllRightSideBySide) {
    const auto boards = depthOf<uint32_t>(2, 2, 500, 50);
    Clock::time_point start = Clock::now();
    for (uint32_t i = 0; i < boards; ++i)
        make(i);
    const double made = millisecondsSince(start) / boards;

    // They watch their unit for as long as they are let.
    start = Clock::now();
    std::list<Process> programs;
    for (uint32_t i = 0; i < boards; ++i)
        programs.emplace_back(std::vector<std::string>{builtProgram("iodbg"), "watch", "--json",
                                                       "--interval", "3600"},
                              boardEnvironment(path(name(i))));
    for (const Process &program : programs)
        EXPECT_TRUE(comesTrue([&] { return program.output().ends_with("\n"); }))
            << program.output() << program.errors();
    const double started = millisecondsSince(start) / boards;

    double memory = 0, disk = 0;
    uint32_t number = 0;
    for (Process &program : programs) {
        memory += memoryOf(program.pid());
        disk += diskOf(path(name(number)));
        program.signal(SIGINT);
        const ProcessResult ended = program.wait();
        EXPECT_EQ(ended.exitCode, 0) << ended.err;
        const auto round = nlohmann::json::parse(ended.out, nullptr, false);
        ASSERT_TRUE(round.is_object()) << ended.out;
        EXPECT_EQ(round["panel"]["register_7"], markOf(number));
        EXPECT_EQ(round["failures"].size(), 0u) << ended.out;
        ++number;
    }
    std::printf(
        "%u boards: %.1f ms to make one, %.1f ms for its program to have looked at all of it, "
        "%.0f KiB on disk, %.0f KiB of memory with its program\n",
        boards, made, started, disk / boards, memory / boards);
}

} // namespace
