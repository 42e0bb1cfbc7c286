#pragma once
// A test that uses the board's flash partitions as programs do.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/fault_text.h"

#include <fcntl.h>
#include <fstream>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

/** An open device node. */
class Node {
  public:
    explicit Node(const std::string &path, int flags = O_RDWR) : fd_(open(path.c_str(), flags)) {
        EXPECT_GE(fd_, 0) << path;
    }
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;
    ~Node() { close(fd_); }

    int fd() const { return fd_; }

    /** Erases by MEMERASE: 0, or errno. */
    int erase(uint32_t start, uint32_t length) const {
        erase_info_user range = {start, length};
        return errnoOf(ioctl(fd_, MEMERASE, &range));
    }
    /** Writes at an offset: 0 when everything was taken, or errno; -1 for a part. */
    int write(uint32_t offset, const std::string &data) const {
        const ssize_t count = pwrite(fd_, data.data(), data.size(), static_cast<off_t>(offset));
        return count == static_cast<ssize_t>(data.size()) ? 0 : errnoOf(count);
    }
    std::string read(uint32_t offset, size_t length) const {
        std::string data(length, '?');
        const ssize_t count = pread(fd_, data.data(), length, static_cast<off_t>(offset));
        data.resize(count > 0 ? static_cast<size_t>(count) : 0);
        return data;
    }
    template <typename Result>
    static int errnoOf(Result result) {
        if (result < 0)
            return errno;
        return result == 0 ? 0 : -1;
    }

  private:
    int fd_;
};

class FlashBoardTest : public VirtualBoardTest {
  protected:
    static constexpr char kNor[] = "/dev/mtd4";
    static constexpr char kNand[] = "/dev/mtd12";
    static constexpr uint32_t kNorBlock = 65536;
    static constexpr uint32_t kNandBlock = 131072;
    static constexpr uint32_t kPage = 2048;
    static constexpr uint32_t kNandSize = 40 * 1024 * 1024 + 4 * kNandBlock;

    vb::Flash &flash(uint32_t number) const { return devices().flash[vb::flashIndex(number)]; }

    /** Puts the test on a board of another geometry, made by the command. */
    void useGeometry(const std::string &geometry) const {
        vb::detachBoard();
        const std::string folder = boardFolder() + "-" + geometry;
        const ProcessResult made = run({builtProgram("vboard"), "create", "--model", "0x0709",
                                        "--time", "virtual", "--mtd", geometry, folder});
        ASSERT_EQ(made.exitCode, 0) << made.err;
        vb::FolderError error = {};
        ASSERT_TRUE(vb::attachBoard(folder.c_str(), error)) << error.text;
    }

    /** Stores a file beside the board's; its path. */
    std::string file(const char *name, const std::string &content) const {
        std::ofstream(boardFolder() + "/" + name, std::ios::binary) << content;
        return boardFolder() + "/" + name;
    }

    uint32_t addRule(const std::string &device, const std::string &op, const std::string &effect,
                     const std::string &offset = "", const std::string &nth = "1",
                     const std::string &when = "from") {
        return vb::addFault(board().faults,
                            vb::parseFault({device, op, offset, nth, when, effect}));
    }

    /** Runs a function in a process of its own; the signal that killed it, or 0. */
    template <typename Function>
    static int signalOf(Function function) {
        const pid_t child = fork();
        if (child == 0) {
            function();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }
};

inline std::string contentOf(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/** Bytes of erased flash. */
inline std::string erased(size_t count) {
    return std::string(count, '\xFF');
}
