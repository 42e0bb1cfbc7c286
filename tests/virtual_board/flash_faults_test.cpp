// Faults of flash: refused operations, worn pages, and power cuts at exact bytes.

#include "language/trace_json.h"
#include "tests/support/json.h"
#include "tests/virtual_board/flash_test.h"
#include "virtual_board/os/seam.h"

#include <cerrno>
#include <csignal>

namespace {

class FlashFaultsTest : public FlashBoardTest {
  protected:
    const vb::FaultRule &rule(uint32_t id) const { return board().faults.rule[id - 1]; }

    /** What a process that is started after the power came back finds. */
    void reattach() {
        vb::detachBoard();
        vb::FolderError error = {};
        ASSERT_TRUE(vb::attachBoard(boardFolder().c_str(), error)) << error.text;
    }
};

TEST_F(FlashFaultsTest, AFailingProgramStoresNothing) {
    addRule("mtd12", "program", "fails=EIO", "", "2", "once");
    const Node node(kNand);
    const std::string page(kPage, 'p');
    EXPECT_EQ(node.write(0, page), 0);
    EXPECT_EQ(node.write(kPage, page), EIO);
    EXPECT_EQ(node.read(kPage, kPage), erased(kPage));
    EXPECT_EQ(node.write(kPage, page), 0);
    EXPECT_EQ(Node("/dev/mtd14").write(0, page), 0);
    EXPECT_EQ(rule(1).matched, 3u);
}

TEST_F(FlashFaultsTest, AFailingEraseErasesNothing) {
    const Node node(kNor);
    node.write(0, "data");
    addRule("mtd4", "erase", "fails=EIO");
    EXPECT_EQ(node.erase(0, kNorBlock), EIO);
    EXPECT_EQ(node.read(0, 4), "data");
    EXPECT_EQ(flash(4).erases[0], 0u);
    EXPECT_EQ(node.write(4, "more"), 0);
}

TEST_F(FlashFaultsTest, ReadsAndGeometryFail) {
    addRule("mtd4", "read", "fails=EIO", "", "1", "once");
    addRule("mtd4", "info", "fails=ENODEV");
    const Node node(kNor);
    char byte = 'x';
    EXPECT_EQ(read(node.fd(), &byte, 1), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(lseek(node.fd(), 0, SEEK_CUR), 0);
    EXPECT_EQ(read(node.fd(), &byte, 1), 1);
    mtd_info_user info = {};
    EXPECT_EQ(ioctl(node.fd(), MEMGETINFO, &info), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(info.size, 0u);
}

TEST_F(FlashFaultsTest, ReadsAreCutShortOrCorrupted) {
    const Node node(kNor);
    node.write(0, "abcdef");
    addRule("mtd4", "read", "short=2", "", "1", "once");
    addRule("mtd4", "read", "corrupt=1:0x20", "", "2", "once");
    EXPECT_EQ(node.read(0, 6), "ab");
    EXPECT_EQ(node.read(0, 3), "aBc");
    EXPECT_EQ(node.read(0, 3), "abc");
}

TEST_F(FlashFaultsTest, TheNodeDoesNotOpen) {
    addRule("/dev/mtd4", "open", "open-fails=EIO", "", "1", "once");
    EXPECT_EQ(open(kNor, O_RDWR), -1);
    EXPECT_EQ(errno, EIO);
    const Node node(kNor);
}

TEST_F(FlashFaultsTest, AWornPageFailsFromTheNthProgramOn) {
    addRule("mtd12", "program", "fails=EIO", std::to_string(3 * kPage), "2", "from");
    const Node node(kNand);
    const std::string page(kPage, 'p');
    EXPECT_EQ(node.write(3 * kPage, page), 0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(node.erase(0, kNandBlock), 0);
        EXPECT_EQ(node.write(2 * kPage, page), 0);
        EXPECT_EQ(node.write(3 * kPage, page), EIO);
        EXPECT_EQ(node.write(4 * kPage, page), 0);
        EXPECT_EQ(node.write(2 * kPage, page + page), EIO); // touches it, too
    }
    EXPECT_EQ(rule(1).matched, 5u);
    EXPECT_EQ(rule(1).fired, 4u);
}

TEST_F(FlashFaultsTest, AnOffsetIsThatOfThePageOrBlockWhichIsTouched) {
    addRule("mtd4", "program", "fails=EIO", "256");
    addRule("mtd4", "erase", "fails=EPERM", "65536");
    const Node node(kNor);
    EXPECT_EQ(node.write(255, "a"), 0);
    EXPECT_EQ(node.write(255, "ab"), EIO);
    EXPECT_EQ(node.write(300, "a"), EIO); // inside the page
    EXPECT_EQ(node.write(511, "a"), EIO);
    EXPECT_EQ(node.write(512, "a"), 0);
    EXPECT_EQ(node.erase(0, kNorBlock), 0);
    EXPECT_EQ(node.erase(0, 2 * kNorBlock), EPERM);
    EXPECT_EQ(node.erase(2 * kNorBlock, kNorBlock), 0);
}

TEST_F(FlashFaultsTest, ChangeIsProgramOrErase) {
    addRule("mtd4", "change", "fails=EIO", "", "3", "once");
    const Node node(kNor);
    mtd_info_user info = {};
    EXPECT_EQ(node.write(0, "a"), 0);
    EXPECT_EQ(ioctl(node.fd(), MEMGETINFO, &info), 0);
    EXPECT_EQ(node.read(0, 1), "a");
    EXPECT_EQ(node.erase(0, kNorBlock), 0);
    EXPECT_EQ(node.write(0, "a"), EIO);
    EXPECT_EQ(node.write(0, "a"), 0);
}

TEST_F(FlashFaultsTest, AnyConcernsQuestionsAboutBadBlocksToo) {
    addRule("mtd12", "any", "fails=EIO");
    const Node node(kNand);
    __kernel_loff_t offset = 0;
    EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(ioctl(node.fd(), MEMSETBADBLOCK, &offset), -1);
    EXPECT_EQ(flash(12).isBad[0], 0);
    clearFaults();
    addRule("mtd12", "info", "fails=EIO");
    EXPECT_EQ(ioctl(node.fd(), MEMGETBADBLOCK, &offset), 0);
}

TEST_F(FlashFaultsTest, WhatTheDriverRefusesDoesNotCount) {
    addRule("mtd12", "change", "power-cut=0");
    const Node node(kNand);
    EXPECT_EQ(node.write(1, "x"), EINVAL);
    EXPECT_EQ(node.write(kNandSize, "x"), ENOSPC);
    EXPECT_EQ(node.erase(5, 5), EINVAL);
    EXPECT_EQ(rule(1).matched, 0u);
}

TEST_F(FlashFaultsTest, ThePowerGoesAmidAProgram) {
    const std::string data = "0123456789";
    for (uint32_t bytes = 0; bytes <= data.size() + 1; ++bytes) {
        const uint32_t start = kNorBlock - 4 + bytes * 100; // the first ones across two blocks
        clearFaults();
        addRule("mtd4", "program", "power-cut=" + std::to_string(bytes), "", "2");
        EXPECT_EQ(signalOf([&] {
                      const Node node(kNor);
                      node.write(0, "before");
                      node.write(start, data);
                      node.write(0x3F000, "after");
                  }),
                  SIGKILL);
        reattach();
        const Node node(kNor, O_RDONLY);
        const size_t done = std::min<size_t>(bytes, data.size());
        EXPECT_EQ(node.read(start, data.size()), data.substr(0, done) + erased(data.size() - done));
        EXPECT_EQ(node.read(0, 6), "before");
        EXPECT_EQ(node.read(0x3F000, 5), erased(5));
    }
    EXPECT_EQ(devices().powerCuts, data.size() + 2);
}

TEST_F(FlashFaultsTest, ThePowerGoesAmidAnErase) {
    const std::string block(kNorBlock, 'b');
    for (const uint32_t bytes : {0u, 1u, 4095u, 4096u, 65535u, 65536u, 65537u, 131072u}) {
        clearFaults();
        Node(kNor).erase(0, 4 * kNorBlock);
        for (uint32_t i = 0; i < 4; ++i)
            Node(kNor).write(i * kNorBlock, block);
        const uint32_t before = flash(4).erases[2];
        addRule("mtd4", "erase", "power-cut=" + std::to_string(bytes));
        EXPECT_EQ(signalOf([&] {
                      const Node node(kNor);
                      node.erase(kNorBlock, 2 * kNorBlock);
                      node.erase(0, kNorBlock);
                  }),
                  SIGKILL);
        reattach();
        const Node node(kNor, O_RDONLY);
        EXPECT_EQ(node.read(0, kNorBlock), block);
        EXPECT_EQ(node.read(kNorBlock, 2 * kNorBlock),
                  erased(bytes) + std::string(2 * kNorBlock - bytes, 'b'));
        EXPECT_EQ(node.read(3 * kNorBlock, kNorBlock), block);
        EXPECT_EQ(flash(4).erases[2], before + (bytes > kNorBlock ? 1 : 0));
    }
}

TEST_F(FlashFaultsTest, ThePowerGoesAmidAWriteOfAFile) {
    addRule("/tmp/bsp/poeApp", "write", "power-cut=3", "", "2");
    EXPECT_EQ(signalOf([&] {
                  const int fd = open("/tmp/bsp/poeApp", O_RDWR | O_CREAT, 0600);
                  (void)!write(fd, "first-", 6);
                  (void)!write(fd, "second", 6);
                  (void)!write(fd, "third", 5);
              }),
              SIGKILL);
    EXPECT_EQ(readBoardFile("/tmp/bsp/poeApp"), "first-sec");
    EXPECT_EQ(devices().powerCuts, 1u);
}

TEST_F(FlashFaultsTest, APowerCutLeavesTheBoardUsable) {
    addRule("mtd4", "change", "power-cut=1", "", "1", "once");
    EXPECT_EQ(signalOf([] { Node(kNor).write(0, "ab"); }), SIGKILL);
    EXPECT_EQ(signalOf([] { Node(kNor).write(0, "ab"); }), 0);
    EXPECT_EQ(Node(kNor).read(0, 2), "ab");
}

TEST_F(FlashFaultsTest, AreRecorded) {
    addRule("mtd4", "program", "power-cut=3", "", "1", "once");
    addRule("mtd4", "erase", "fails=EIO");
    signalOf([] { Node(kNor).write(16, "abcdef"); });
    const vb::TraceRecord cut = vb::traceAt(board().trace, board().trace.total - 1);
    signalOf([] { Node(kNor).erase(0, kNorBlock); });
    EXPECT_EQ(
        trace(),
        (Lines{"open /dev/mtd4", "MTD write mtd4 0x10+0x6 -> power cut after 0x3", "open /dev/mtd4",
               "MTD erase mtd4 0x0+0x10000 -> fails, errno 5 (Input/output error)"}));
    nlohmann::json object = language::traceJson(cut);
    object.erase("pid");
    EXPECT_EQ(object, parsedJson(R"({"kind": "mtd-write", "partition": 4, "offset": 16,
                                                "length": 6, "done": 3, "power_cut": true,
                                                "errno": 0, "time_ns": 0})"));
}

} // namespace
