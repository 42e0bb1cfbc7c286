// Several processes that write and read one partition at once. The flash lock is all that keeps
// their work apart.

#include "bsp.h"
#include "tests/virtual_board/flash_test.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <sys/mman.h>

namespace {

constexpr char kLockFile[] = "/tmp/bspFlashLockFile";
constexpr char kDevice[] = "/dev/mtd0";
constexpr char kGeometry[] = "0:size=65536,erase=16384,page=2048,spare=64,type=nand";
constexpr uint32_t kSize = 65536;
constexpr uint32_t kPages = 32;
constexpr uint32_t kBlocks = 4;

constexpr uint32_t kWriters = 4;
constexpr uint32_t kReaders = 4;
constexpr uint32_t kRounds = 12; // of each process: the board's trace holds them all

/** What one call of the library did to the partition. */
struct Operation {
    pid_t pid;
    uint32_t reads = 0, erases = 0, writes = 0;
    bool isCut = false;       // the power went
    bool isDisturbed = false; // another process came between

    bool isWholeWrite() const { return erases == kBlocks && writes == kPages && reads == 0; }
    bool isWholeRead() const { return reads == kPages && erases == 0 && writes == 0; }
};

/** Whether a content is one image: the same byte everywhere, which one of the writers stores. */
bool isOneImage(const std::string &content) {
    return content.size() == kSize && content[0] >= 'A' &&
           content[0] < static_cast<char>('A' + kWriters) &&
           content.find_first_not_of(content[0]) == std::string::npos;
}

class FlashProcessesTest : public FlashBoardTest {
  protected:
    void SetUp() override {
        FlashBoardTest::SetUp();
        ASSERT_NO_FATAL_FAILURE(useGeometry(kGeometry));
        for (uint32_t writer = 0; writer < kWriters; ++writer)
            images_.push_back(file(("image" + std::to_string(writer)).c_str(),
                                   std::string(kSize, static_cast<char>('A' + writer))));
        ASSERT_TRUE(write(0)); // the first reader finds one, too
        ASSERT_EQ(pipe2(gate_, O_CLOEXEC), 0);
    }
    void TearDown() override {
        close(gate_[0]);
        FlashBoardTest::TearDown();
    }

    bool write(uint32_t writer) const {
        return bsp_mtd_write_from_file(images_[writer].c_str(), kDevice, 0) == BSP_OK;
    }
    /** Reads the partition into a file of its own, in memory: the library writes synchronously. */
    static std::string read() {
        const int copy = memfd_create("copy", MFD_CLOEXEC);
        const std::string path = "/proc/self/fd/" + std::to_string(copy);
        const bool isDone = bsp_mtd_read_to_file(kDevice, path.c_str(), 0) == BSP_OK;
        const std::string content = isDone ? contentOf(path) : "";
        close(copy);
        return content;
    }

    /** Starts a process that goes its rounds once all are there. It ends with code 0 when each is
     * good and no descriptor was left open. */
    template <typename GoRound>
    void start(GoRound goRound) {
        const pid_t child = fork();
        if (child != 0) {
            children_.push_back(child);
            return;
        }
        close(gate_[1]);
        char byte = 0;
        (void)!::read(gate_[0], &byte, 1); // until the gate is opened
        const int before = lowestFreeDescriptor();
        bool isGood = true;
        for (uint32_t round = 0; round < kRounds; ++round)
            isGood &= goRound();
        _exit(isGood && lowestFreeDescriptor() == before ? 0 : 1);
    }
    /** Lets all run; the ends of those that did not end well, by process. */
    std::vector<std::pair<pid_t, int>> finish() {
        close(gate_[1]);
        std::vector<std::pair<pid_t, int>> ends;
        for (const pid_t child : children_) {
            int status = -1;
            waitpid(child, &status, 0);
            if (status != 0)
                ends.emplace_back(child, status);
        }
        return ends;
    }

    /** What was done to the partition, in the order of the requests. */
    std::vector<Operation> operations() const {
        EXPECT_EQ(vb::traceOldest(board().trace), 0u) << "the trace has lost requests";
        std::vector<Operation> found;
        for (uint64_t i = 0; i < board().trace.total; ++i) {
            const vb::TraceRecord &record = vb::traceAt(board().trace, i);
            const bool isOpen = record.kind == vb::TraceKind::Open;
            if (isOpen && std::strcmp(reinterpret_cast<const char *>(record.data), kDevice) != 0)
                continue;
            if (isOpen) {
                found.push_back({record.pid});
                continue;
            }
            Operation &last = found.back();
            last.isDisturbed |= record.pid != last.pid;
            last.isCut |= record.result == vb::kPowerCutResult;
            last.reads += record.kind == vb::TraceKind::MtdRead ? 1 : 0;
            last.erases += record.kind == vb::TraceKind::MtdErase ? 1 : 0;
            last.writes += record.kind == vb::TraceKind::MtdWrite ? 1 : 0;
        }
        return found;
    }
    /** Expects that each operation is whole, but for the one in which the power went. */
    static void expectApart(const std::vector<Operation> &all) {
        for (size_t i = 0; i < all.size(); ++i) {
            const Operation &one = all[i];
            ASSERT_FALSE(one.isDisturbed) << "operation " << i;
            ASSERT_TRUE(one.isWholeRead() || one.isWholeWrite() || one.isCut)
                << "operation " << i << ": " << listed({one.erases, one.writes, one.reads});
        }
    }

    bool isFlashLockFree() const {
        const int fd = open(boardFile(kLockFile).c_str(), O_RDWR | O_CLOEXEC);
        struct flock wholeFile = {};
        wholeFile.l_type = F_WRLCK;
        wholeFile.l_whence = SEEK_SET;
        const bool isFree = fcntl(fd, F_SETLK, &wholeFile) == 0;
        close(fd);
        return isFree;
    }

  private:
    /** A descriptor that was left open moves it up. */
    static int lowestFreeDescriptor() {
        const int fd = dup(STDIN_FILENO);
        close(fd);
        return fd;
    }

    std::vector<std::string> images_;
    std::vector<pid_t> children_;
    int gate_[2] = {-1, -1};
};

TEST_F(FlashProcessesTest, EveryReaderFindsOneImage) {
    for (uint32_t writer = 0; writer < kWriters; ++writer)
        start([this, writer] { return write(writer); });
    for (uint32_t reader = 0; reader < kReaders; ++reader)
        start([] { return isOneImage(read()); });
    for (const auto &[pid, status] : finish())
        ADD_FAILURE() << "process " << pid
                      << " failed, found a mix, or left a descriptor open: " << status;

    const std::vector<Operation> all = operations();
    EXPECT_EQ(all.size(), 1 + (kWriters + kReaders) * kRounds);
    expectApart(all);
    uint32_t changes = 0;
    for (size_t i = 1; i < all.size(); ++i) {
        if (all[i].pid != all[i - 1].pid)
            ++changes;
    }
    EXPECT_GT(changes, kWriters + kReaders) << "the processes ran one after the other";
    EXPECT_TRUE(isFlashLockFree());
}

TEST_F(FlashProcessesTest, AKilledWriterLeavesTheLockToTheOthers) {
    constexpr uint32_t kCutWrite = 10 * kPages + kPages / 2;
    addRule("mtd0", "program", "power-cut=100", "", std::to_string(kCutWrite), "once");
    for (uint32_t writer = 0; writer < kWriters; ++writer)
        start([this, writer] { return write(writer); });
    const std::vector<std::pair<pid_t, int>> ends = finish();
    ASSERT_EQ(ends.size(), 1u);
    const auto [victim, status] = ends.front();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;

    const std::vector<Operation> all = operations();
    expectApart(all);
    // One was written before the processes started, ten by them.
    ASSERT_GT(all.size(), 12u) << "nobody wrote afterwards";
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const auto &one) { return one.isCut; }), 1);
    EXPECT_TRUE(all[11].isCut);
    EXPECT_EQ(all[11].pid, victim);
    EXPECT_EQ(all[11].writes, kPages / 2);
    EXPECT_NE(all[12].pid, victim);
    EXPECT_TRUE(isOneImage(read()));
    EXPECT_TRUE(isFlashLockFree());
}

} // namespace
