// Processes that share a board and are killed at random moments, amid requests and changes of all
// kinds. BSP_TEST_SECONDS says how long, instead of the usual time.

#include "bsp.h"
#include "language/trace_json.h"
#include "language/trace_text.h"
#include "tests/support/depth.h"
#include "tests/support/json.h"
#include "tests/support/virtual_board_test.h"
#include "tests/virtual_board/state_uses.h"
#include "virtual_board/board/consistency.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr uint64_t kSeedOfAll = 20261122;
constexpr size_t kWorkers = 4;

using std::chrono::steady_clock;

class KilledProcessesTest : public VirtualBoardTest {
  protected:
    KilledProcessesTest() {
        void *memory = mmap(nullptr, sizeof(Complaint), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        complaint_ = static_cast<Complaint *>(memory);
    }
    ~KilledProcessesTest() override { munmap(complaint_, sizeof(Complaint)); }

    /** Starts a process that uses the board until it is killed. */
    pid_t startWorker(uint64_t number) {
        const pid_t child = fork();
        if (child == 0)
            work(number);
        return child;
    }

    /** What a process says that found the board unusable. */
    std::string complaint() const { return complaint_->text; }

    bool isLockFree() const {
        const int fd = open((boardFolder() + "/lock").c_str(), O_RDWR | O_CLOEXEC);
        const bool isFree = flock(fd, LOCK_EX | LOCK_NB) == 0;
        close(fd);
        return isFree;
    }

  private:
    struct Complaint {
        char text[512];
    };

    [[noreturn]] void work(uint64_t number) const {
        silence();
        Random random(kSeedOfAll + number);
        for (;;) {
            const StateUse &use = stateUses()[below(random, stateUses().size())];
            if (use.name == std::string("trace --clear"))
                continue; // the trace is judged at the end
            try {
                use.use(boardFolder(), random);
            } catch (const vb::Refused &refusal) {
                const std::string reason = refusal.what();
                // A table may be full and a model may lack something, but the board is whole.
                if (reason.find("damaged") != std::string::npos)
                    std::strncpy(complaint_->text, (use.name + (": " + reason)).c_str(),
                                 sizeof(complaint_->text) - 1);
            }
        }
    }

    Complaint *complaint_;
};

/** Waits up to some milliseconds, in real time also on a board. */
void waitFor(uint32_t ms) {
    poll(nullptr, 0, static_cast<int>(ms));
}

TEST_F(KilledProcessesTest, LeaveABoardThatWorks) {
    const char *told = std::getenv("BSP_TEST_SECONDS");
    const long seconds = told != nullptr ? std::atol(told) : depthOf<long>(2, 2, 10, 10);
    const auto end = steady_clock::now() + std::chrono::seconds(seconds);
    vb::detachBoard(); // so that a worker attaches as a program does
    Random random(kSeedOfAll);
    uint64_t started = 0, killed = 0;
    pid_t workers[kWorkers] = {};
    for (pid_t &worker : workers)
        worker = startWorker(started++);
    while (steady_clock::now() < end && complaint().empty()) {
        waitFor(below(random, 15));
        pid_t &victim = workers[below(random, kWorkers)];
        kill(victim, SIGKILL);
        int status = 0;
        waitpid(victim, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        ++killed;
        victim = startWorker(started++);
    }
    for (const pid_t worker : workers) {
        kill(worker, SIGKILL);
        waitpid(worker, nullptr, 0);
    }
    EXPECT_EQ(complaint(), "");
    EXPECT_GT(killed, 5u);
    EXPECT_TRUE(isLockFree());

    vb::FolderError error = {};
    ASSERT_TRUE(vb::attachBoard(boardFolder().c_str(), error)) << error.text;
    EXPECT_EQ(vb::damagedPart(board(), vb::hostNow()), nullptr);
    std::map<vb::TraceKind, size_t> kinds;
    for (uint64_t i = vb::traceOldest(board().trace); i < board().trace.total; ++i) {
        const vb::TraceRecord record = vb::traceAt(board().trace, i);
        ++kinds[record.kind];
        EXPECT_NE(language::traceText(record), "");
        EXPECT_NE(language::traceJson(record)["kind"], "damaged");
    }
    EXPECT_GT(kinds.size(), 10u) << "the processes have done next to nothing";
    const auto fileRules =
        std::count_if(std::begin(board().faults.rule), std::end(board().faults.rule),
                      [](const vb::FaultRule &rule) {
                          return rule.id != 0 && rule.device == vb::FaultDevice::File;
                      });
    EXPECT_EQ(board().faults.fileRules, fileRules);
    vboard::clearFaults(boardFolder(), {});
    uint16_t content = 0;
    EXPECT_EQ(bspCpldSet(10, 0x1234), BSP_OK);
    EXPECT_EQ(bspCpldGet(10, &content), BSP_OK);
    EXPECT_EQ(content, 0x1234);
    RecordProperty("killed", static_cast<int>(killed));
}

} // namespace
