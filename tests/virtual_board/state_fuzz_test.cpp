// States with random damage, each opened and used in every way that there is: refused, or harmless.
// A state that is neither ends the process that uses it, and is told by its number. Variables:
//
//   BSP_TEST_SECONDS  how long, instead of the usual time
//   BSP_TEST_FIRST    the number of the first state

#include "tests/support/depth.h"
#include "tests/support/files.h"
#include "tests/support/host_clock.h"
#include "tests/support/virtual_board_test.h"
#include "tests/virtual_board/state_uses.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <span>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef BSP_TEST_SANITIZED
/** A damaged length must not make anybody ask for more memory than a board has. */
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() {
    return "max_allocation_size_mb=256";
}
#endif

namespace {

constexpr uint64_t kSeed = 20261122;
constexpr uint32_t kModels[] = {0x0709, 0x0509, 0x0109};
constexpr uint64_t kStatesOfABoard = 500; // before a new one is made, of the next model
constexpr unsigned kSecondsOfAState = 60; // it hangs when it takes longer
constexpr size_t kMostFailures = 5;
constexpr uint32_t kRequests = 40; // in the trace of a good state

using State = std::span<uint8_t>;
using Clock = std::chrono::steady_clock;

// Damage

/** A part of the state, and how often it is hit. */
struct Region {
    size_t offset, size;
    uint32_t weight;
};

constexpr size_t kDevices = offsetof(vb::Board, devices);
constexpr size_t kImage = offsetof(vb::Board, devices.poe.image);
constexpr size_t kConsole = offsetof(vb::Board, devices.console);
constexpr size_t kFlash = offsetof(vb::Board, devices.flash);
constexpr size_t kClimate = offsetof(vb::Board, devices.climate);
constexpr size_t kModules = offsetof(vb::Board, devices.sfp);
constexpr size_t kMdio = offsetof(vb::Board, devices.mdio);
constexpr size_t kFaults = offsetof(vb::Board, faults);
constexpr size_t kTrace = offsetof(vb::Board, trace);

// What indexes, divides and counts is hit more often than what is merely stored.
constexpr Region kRegions[] = {
    {0, sizeof(vb::Board), 10},
    {0, sizeof(vb::BoardHeader), 3},
    {offsetof(vb::Board, clock), sizeof(vb::Clock), 8},
    {kDevices, kImage - kDevices, 30},
    {kImage, offsetof(vb::PoeImage, written), 4},
    {kConsole, sizeof(vb::Console), 1},
    {kFlash, offsetof(vb::Flash, erases), 3},
    {kFlash + 2 * sizeof(vb::Flash), offsetof(vb::Flash, erases), 3},
    {kFlash, kClimate - kFlash, 2},
    {kClimate, kModules - kClimate, 12},
    {kModules, kMdio - kModules, 5},
    {kModules + 48 * sizeof(vb::SfpModule), offsetof(vb::SfpModule, id), 3},
    {kModules + 49 * sizeof(vb::SfpModule), offsetof(vb::SfpModule, id), 3},
    {kMdio + offsetof(vb::Mdio, state), sizeof(vb::Mdio) - offsetof(vb::Mdio, state), 4},
    {kFaults, offsetof(vb::FaultTable, rule) + 8 * sizeof(vb::FaultRule), 12},
    {kTrace, sizeof(uint64_t), 4},
    {kTrace + sizeof(uint64_t), kRequests * sizeof(vb::TraceRecord), 12},
};

const Region &chosenRegion(Random &random) {
    uint32_t all = 0;
    for (const Region &region : kRegions)
        all += region.weight;
    uint32_t at = below(random, all);
    const Region *region = kRegions;
    for (; at >= region->weight; ++region)
        at -= region->weight;
    return *region;
}

/** A value at the edge of something, a small one, or any. */
uint64_t chosenValue(Random &random) {
    constexpr uint64_t kEdges[] = {0,       0x80,       0x100,       0x8000,
                                   0x10000, 0x80000000, 0x100000000, 0x8000000000000000};
    switch (below(random, 4)) {
    case 0:
        return random();
    case 1:
        return below(random, 70);
    default:
        return kEdges[below(random, std::size(kEdges))] + below(random, 3) - 1;
    }
}

/** Turns a bit over, or overwrites a byte or a word. */
void damage(State state, Random &random) {
    const Region &region = chosenRegion(random);
    const uint32_t size = 1u << below(random, 4);
    const size_t place = region.offset + below(random, region.size);
    const size_t at = std::min(place / size * size, state.size() - size);
    if (below(random, 8) == 0) {
        state[at] = static_cast<uint8_t>(state[at] ^ 1u << below(random, 8));
        return;
    }
    const uint64_t value = chosenValue(random);
    std::memcpy(&state[at], &value, size);
}

/** Of a header whose check value does not fit nothing else is looked at. */
void mendHeader(State state) {
    vb::BoardHeader header;
    std::memcpy(&header, state.data(), sizeof(header));
    header.check = vb::headerCheck(header);
    std::memcpy(state.data(), &header, sizeof(header));
}

// The process that uses the states

/** What is known of its work when a process has ended. */
struct Progress {
    uint64_t state; // that is under way
    uint64_t states, opened, uses;
    char use[64]; // that is under way
};

/** Sends away what the commands print; what a sanitizer reports goes to a file. */
void redirectOutput(const std::string &reports) {
    const int file = open(reports.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || dup2(file, STDERR_FILENO) < 0)
        _exit(EXIT_FAILURE);
    close(file);
    silence();
}

class User {
  public:
    User(std::string board, Progress &progress) : board_(std::move(board)), progress_(progress) {
        prepare();
        const int file = open((board_ + "/board.state").c_str(), O_RDWR | O_CLOEXEC);
        void *memory =
            mmap(nullptr, sizeof(vb::Board), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (memory == MAP_FAILED)
            throw std::runtime_error("the state cannot be mapped");
        close(file);
        keepRequests(static_cast<vb::Board *>(memory)->trace);
        state_ = State(static_cast<uint8_t *>(memory), sizeof(vb::Board));
        good_.assign(state_.begin(), state_.end());
    }
    User(const User &) = delete;
    User &operator=(const User &) = delete;
    ~User() { munmap(state_.data(), state_.size()); }

    /** Damages the state in the way of a number, and uses it. */
    void useState(uint64_t number) {
        Random random(kSeed + number);
        std::copy(good_.begin(), good_.end(), state_.begin());
        for (uint32_t count = 1 + below(random, 4); count > 0; --count)
            damage(state_, random);
        if (below(random, 2) == 0)
            mendHeader(state_);
        if (below(random, 4) == 0)
            damageRegisterPage(random);
        ++progress_.states;
        if (!canBeOpened())
            return;
        ++progress_.opened;
        const std::vector<StateUse> &all = stateUses();
        if (below(random, 50) == 0) {
            for (const StateUse &use : all)
                carryOut(use, random);
        }
        carryOut(all[below(random, all.size())], random);
        carryOut(all[below(random, all.size())], random);
    }

  private:
    /** Something of everything that a board can have, and requests of all kinds in its trace. */
    void prepare() {
        constexpr const char *kThings[][2] = {
            {"poe.1.device", "class=4"},       {"poe.48.device", "class=8 draws=90000"},
            {"sfp.49.module", "sr"},           {"sfp.49.link", "up"},
            {"sfp.50.module", "copper-mode4"}, {"sfp.1.module", "lr"},
            {"supply.2.present", "no"},        {"fan.1.state", "failing"},
            {"flash.12.bad-blocks", "3"},      {"flash.4.content@0", "6d61696e5f73797374656d3d31"},
        };
        for (const auto &[name, value] : kThings) {
            try {
                vboard::setProperties(board_, {{name, value}});
            } catch (const vb::Refused &) { // models do not have everything
            }
        }
        Random random(kSeed);
        for (const StateUse &use : stateUses()) {
            if (std::strcmp(use.name, "set") != 0 && std::strstr(use.name, "clear") == nullptr)
                carryOut(use, random);
        }
    }

    /** Leaves so few requests, of all kinds, that damage hits what is shown. */
    static void keepRequests(vb::TraceRing &ring) {
        for (uint32_t i = 0; i < kRequests; ++i)
            ring.record[i] = ring.record[ring.total * i / kRequests];
        ring.total = kRequests;
    }

    bool canBeOpened() {
        std::strcpy(progress_.use, "open");
        vb::BoardFolder folder;
        vb::FolderError error = {};
        return folder.open(board_.c_str(), error);
    }

    void carryOut(const StateUse &use, Random &random) {
        std::strncpy(progress_.use, use.name, sizeof(progress_.use) - 1);
        try {
            use.use(board_, random);
        } catch (const vb::Refused &) { // a use before this one has made the board unusable for it
        }
        ++progress_.uses;
    }

    void damageRegisterPage(Random &random) const {
        std::fstream page(board_ + "/registers", std::ios::in | std::ios::out | std::ios::binary);
        const auto command = static_cast<uint32_t>(chosenValue(random));
        page.seekp(vb::kMdioCommand);
        page.write(reinterpret_cast<const char *>(&command), sizeof(command));
    }

    std::string board_;
    Progress &progress_;
    State state_;
    std::vector<uint8_t> good_;
};

// What starts the processes

class StateFuzzTest : public ::testing::Test {
  protected:
    StateFuzzTest() {
        protectHostClock();
        void *memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        progress_ = static_cast<Progress *>(memory);
    }
    ~StateFuzzTest() override { munmap(progress_, sizeof(Progress)); }

    /** Lets a process use states on a new board; how it ended. */
    int useStates(uint64_t first, uint64_t behind, Clock::time_point end) {
        removeFolder(board());
        vb::BoardOptions options;
        options.devId = kModels[first / kStatesOfABoard % std::size(kModels)];
        options.pace = {vb::TimeMode::Virtual};
        vb::FolderError error = {};
        EXPECT_TRUE(vb::createBoard(board(), options, error)) << error.text;
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0)
            work(first, behind, end);
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }

    /** What the process does. What a command throws but refusals ends it with a report. */
    [[noreturn]] void work(uint64_t first, uint64_t behind, Clock::time_point end) const noexcept {
        redirectOutput(reports());
        progress_->state = first;
        alarm(kSecondsOfAState);
        User user(board(), *progress_);
        for (uint64_t number = first; number < behind && Clock::now() < end; ++number) {
            progress_->state = number;
            alarm(kSecondsOfAState);
            user.useState(number);
        }
        _exit(EXIT_SUCCESS);
    }

    /** Whether a rule has cut the power, of which the process dies. */
    bool isPowerCut() const {
        return std::string(progress_->use) == "files" ||
               std::string(progress_->use) == "flash partitions";
    }

    std::string report() const {
        std::ifstream file(reports());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string board() const { return folder_.path() + "/board"; }
    std::string reports() const { return folder_.path() + "/reports"; }

    TemporaryFolder folder_;
    Progress *progress_;
};

uint64_t numberFromEnvironment(const char *name, uint64_t usual) {
    const char *text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : usual;
}

TEST_F(StateFuzzTest, DamagedStatesAreRefusedOrHarmless) {
    const uint64_t seconds =
        numberFromEnvironment("BSP_TEST_SECONDS", depthOf<uint64_t>(2, 2, 60, 60));
    const uint64_t first = numberFromEnvironment("BSP_TEST_FIRST", 0);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    size_t failures = 0, powerCuts = 0;
    for (uint64_t next = first; Clock::now() < end && failures < kMostFailures;) {
        const uint64_t behind = (next / kStatesOfABoard + 1) * kStatesOfABoard;
        const int status = useStates(next, behind, end);
        next = progress_->state + 1;
        if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS)
            continue;
        if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL && isPowerCut()) {
            ++powerCuts;
            continue;
        }
        ++failures;
        ADD_FAILURE() << "state " << progress_->state << ", " << progress_->use << ": "
                      << (WIFSIGNALED(status) ? "signal " : "exit code ")
                      << (WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status))
                      << "; again with BSP_TEST_FIRST=" << progress_->state << "\n"
                      << report();
    }
    std::printf(
        "seed %llu, %llu states from %llu on: %llu opened, %llu uses, %zu power cuts\n",
        static_cast<unsigned long long>(kSeed), static_cast<unsigned long long>(progress_->states),
        static_cast<unsigned long long>(first), static_cast<unsigned long long>(progress_->opened),
        static_cast<unsigned long long>(progress_->uses), powerCuts);
    EXPECT_GT(progress_->opened, 0u);
    EXPECT_LT(progress_->opened, progress_->states) << "nothing was refused";
}

} // namespace
