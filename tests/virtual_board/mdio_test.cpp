// MDIO behind the mapped page, as programs use it.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/words/fault_text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using world::get;
using world::refusal;
using world::set;

constexpr off_t kPage = 0x1B000000;
constexpr uint32_t kCommand = 0x7F4;

class MdioTest : public VirtualBoardTest {
  protected:
    /** A mapping of /dev/mem at an address, with what it takes to drive the controller. */
    class Page {
      public:
        explicit Page(off_t address = kPage, size_t length = 4096, int flags = MAP_SHARED)
            : fd_(open("/dev/mem", O_RDWR)),
              memory_(mmap(nullptr, length, PROT_READ | PROT_WRITE, flags, fd_, address)),
              error_(errno), length_(length) {}
        Page(const Page &) = delete;
        Page &operator=(const Page &) = delete;
        ~Page() { unmap(); }
        void unmap() {
            if (isMapped())
                munmap(memory_, length_);
            memory_ = MAP_FAILED;
            if (fd_ >= 0)
                close(fd_);
            fd_ = -1;
        }
        bool isMapped() const { return memory_ != MAP_FAILED; }
        int error() const { return error_; }
        int fd() const { return fd_; }
        volatile uint32_t &command() const {
            return static_cast<volatile uint32_t *>(memory_)[kCommand / sizeof(uint32_t)];
        }
        /** Gives a command and polls; how many polls found it busy, up to most. */
        uint32_t run(uint32_t word, uint32_t most = 100) const {
            command() = word;
            uint32_t polls = 0;
            for (; (command() & 1) != 0 && (command() & 1u << 28) == 0 && polls < most; ++polls)
                usleep(1);
            return polls;
        }
        uint16_t data() const { return static_cast<uint16_t>(command() >> 12); }

      private:
        int fd_;
        void *memory_;
        int error_;
        size_t length_;
    };

    static uint32_t readWord(uint32_t first, uint32_t second) {
        return first << 2 | second << 7 | 1;
    }
    static uint32_t writeWord(uint32_t first, uint32_t second, uint32_t data) {
        return data << 12 | first << 2 | second << 7 | 3;
    }
};

TEST_F(MdioTest, RegistersAreReadAndWritten) {
    set("mdio.3.5", "0xBEEF");
    const Page page;
    ASSERT_TRUE(page.isMapped());
    EXPECT_EQ(page.run(0x28D), 1u);
    EXPECT_EQ(page.data(), 0xBEEF);
    EXPECT_EQ(page.command(), 0xBEEF28Cu);
    EXPECT_EQ(page.run(0x0ABCD28F), 1u);
    EXPECT_EQ(get("mdio.3.5"), "0xABCD");
    EXPECT_EQ(page.command(), 0x0ABCD28Eu);
    page.run(writeWord(31, 0, 0x1234));
    EXPECT_EQ(get("mdio.31.0"), "0x1234");
    page.run(writeWord(0, 31, 0x4321));
    EXPECT_EQ(get("mdio.0.31"), "0x4321");
    page.run(readWord(31, 0));
    EXPECT_EQ(page.data(), 0x1234);
}

TEST_F(MdioTest, TheTraceTellsOfCommands) {
    const Page page;
    page.run(writeWord(3, 5, 0xABCD));
    page.run(readWord(3, 5));
    set("mdio.state", "error");
    page.run(readWord(1, 2));
    EXPECT_EQ(trace(),
              (Lines{"open /dev/mem", "sleep 1 us", "MDIO write 3.5 = 0xABCD", "sleep 1 us",
                     "MDIO read  3.5 = 0xABCD", "sleep 1 us", "MDIO read  1.2 -> fails"}));
}

TEST_F(MdioTest, ACommandIsBusyForSomePolls) {
    const Page page;
    set("mdio.busy-polls", "7");
    EXPECT_EQ(page.run(readWord(1, 1)), 7u);
    EXPECT_EQ(page.run(readWord(1, 1)), 7u);
    set("mdio.busy-polls", "19000");
    EXPECT_EQ(page.run(readWord(1, 1), 19001), 19000u);
}

TEST_F(MdioTest, AnErrorIsToldInTheRegisterAndNothingIsDone) {
    const Page page;
    set("mdio.3.5", "0x1111");
    set("mdio.state", "error");
    page.run(writeWord(3, 5, 0x2222));
    EXPECT_EQ(page.command() & 1u << 28, 1u << 28);
    EXPECT_EQ(get("mdio.3.5"), "0x1111");
    page.run(readWord(3, 5));
    EXPECT_EQ(page.command() & 1u << 28, 1u << 28);
    set("mdio.state", "good");
    page.run(readWord(3, 5));
    EXPECT_EQ(page.command() & 1u << 28, 0u);
    EXPECT_EQ(page.data(), 0x1111);
}

TEST_F(MdioTest, AStuckControllerStaysBusyUntilItIsNot) {
    const Page page;
    set("mdio.state", "stuck");
    EXPECT_EQ(page.run(readWord(1, 1), 500), 500u);
    set("mdio.state", "good");
    usleep(1);
    EXPECT_EQ(page.command() & 1, 0u);
}

TEST_F(MdioTest, ALaterCommandReplacesTheOneUnderWay) {
    const Page page;
    set("mdio.busy-polls", "3");
    page.command() = writeWord(1, 1, 0x1111);
    usleep(1);
    EXPECT_EQ(page.run(writeWord(2, 2, 0x2222)), 3u);
    EXPECT_EQ(get("mdio.1.1"), "0x0000");
    EXPECT_EQ(get("mdio.2.2"), "0x2222");
}

TEST_F(MdioTest, ACommandThatIsTakenBackStartsAnew) {
    const Page page;
    set("mdio.busy-polls", "5");
    page.command() = readWord(1, 1);
    usleep(1);
    usleep(1);
    page.command() = 0;
    usleep(1);
    EXPECT_EQ(page.command(), 0u);
    EXPECT_EQ(page.run(readWord(1, 1)), 5u);
}

TEST_F(MdioTest, AnAnswerReplacesTheDataOfTheCommand) {
    set("mdio.3.5", "0x1234");
    const Page page;
    page.run(0xFFFFu << 12 | readWord(3, 5));
    EXPECT_EQ(page.data(), 0x1234);
}

TEST_F(MdioTest, ACommandThatNobodyWaitsForEndsAllTheSame) {
    Page page;
    set("mdio.busy-polls", "50");
    page.command() = writeWord(4, 4, 0x4444);
    page.unmap();
    EXPECT_EQ(get("mdio.4.4"), "0x4444");
    const Page next;
    EXPECT_EQ(next.command() & 1, 0u);
}

TEST_F(MdioTest, ARealClockChangesNothing) {
    set("time", "real");
    const Page page;
    page.run(writeWord(9, 8, 0x9898));
    EXPECT_EQ(get("mdio.9.8"), "0x9898");
}

TEST_F(MdioTest, SeveralMappingsAreOnePage) {
    const Page one;
    const Page other;
    one.command() = writeWord(1, 2, 0x1212);
    EXPECT_EQ(other.command(), writeWord(1, 2, 0x1212));
    usleep(1);
    EXPECT_EQ(other.command() & 1, 0u);
    std::vector<std::unique_ptr<Page>> more;
    for (int i = 0; i < 14; ++i) {
        more.push_back(std::make_unique<Page>());
        EXPECT_TRUE(more.back()->isMapped());
    }
    const Page last; // a program that forgets to unmap finds its end
    EXPECT_FALSE(last.isMapped());
    EXPECT_EQ(last.error(), ENOMEM);
}

TEST_F(MdioTest, NothingElseOfTheMemoryIsWithinReach) {
    for (const off_t address : {off_t{0}, off_t{0x1000}, kPage - 4096, kPage + 4096}) {
        const Page page(address);
        EXPECT_FALSE(page.isMapped()) << address;
        EXPECT_EQ(page.error(), EPERM) << address;
    }
    const Page two(kPage, 8192);
    EXPECT_EQ(two.error(), EPERM);
    const Page copy(kPage, 4096, MAP_PRIVATE);
    EXPECT_EQ(copy.error(), EINVAL);
    char byte = 0;
    EXPECT_EQ(read(two.fd(), &byte, 1), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(write(two.fd(), &byte, 1), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(pread(two.fd(), &byte, 1, kPage), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(pwrite(two.fd(), &byte, 1, kPage), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(fopen("/dev/mem", "r"), nullptr);
    EXPECT_EQ(errno, ENOTSUP);
    EXPECT_EQ(std::filesystem::file_size(boardFile("/dev/mem")), 0u);
}

TEST_F(MdioTest, AccessIsThatOfTheDescriptor) {
    const int fd = open("/dev/mem", O_RDONLY);
    EXPECT_EQ(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, kPage), MAP_FAILED);
    EXPECT_EQ(errno, EACCES);
    void *memory = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fd, kPage);
    EXPECT_NE(memory, MAP_FAILED);
    munmap(memory, 4096);
    close(fd);
}

TEST_F(MdioTest, OpenAndMappingCanFail) {
    addFault(vb::parseFault({"/dev/mem", "map", "", "1", "once", "fails=ENOMEM"}));
    const Page page;
    EXPECT_EQ(page.error(), ENOMEM);
    EXPECT_FALSE(page.isMapped());
    const Page next;
    EXPECT_TRUE(next.isMapped());
    addFault(vb::parseFault({"/dev/mem", "open", "", "1", "once", "open-fails=EACCES"}));
    EXPECT_EQ(open("/dev/mem", O_RDWR), -1);
    EXPECT_EQ(errno, EACCES);
    for (const char *device : {"cpld", "i2c", "gpio", "poe", "mtd12", "/tmp/bsp/x", "/dev/mtd12"})
        EXPECT_THROW(vb::parseFault({device, "map", "", "1", "once", "fails=ENOMEM"}), vb::Refused)
            << device;
    EXPECT_THROW(vb::parseFault({"/dev/mem", "read", "", "1", "once", "short=1"}), vb::Refused);
}

TEST_F(MdioTest, MappingsOfOtherFilesPassOn) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/file";
    const int fd = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    EXPECT_EQ(write(fd, "host", 4), 4);
    void *memory = mmap(nullptr, 4, PROT_READ, MAP_SHARED, fd, 0);
    ASSERT_NE(memory, MAP_FAILED);
    EXPECT_EQ(std::memcmp(memory, "host", 4), 0);
    EXPECT_EQ(munmap(memory, 4), 0);
    close(fd);
}

TEST_F(MdioTest, BadNamesAndValuesAreRefused) {
    EXPECT_NE(refusal("mdio.3.32").find("0 to 31"), std::string::npos);
    EXPECT_NE(refusal("mdio.32.0").find("0 to 31"), std::string::npos);
    EXPECT_NE(refusal("mdio.3.0", "65536").find("from 0 to 65535"), std::string::npos);
    EXPECT_NE(refusal("mdio.busy-polls", "0").find("1 to 100000"), std::string::npos);
    EXPECT_NE(refusal("mdio.state", "").find("none of good|error|stuck"), std::string::npos);
}

} // namespace
