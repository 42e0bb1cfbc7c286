// The device id and its cache.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/board/models.h"

#include <bit>
#include <filesystem>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;

constexpr char kCache[] = "/tmp/bsp/devId";
constexpr char kOpensCache[] = "open /tmp/bsp/devId";
constexpr char kReadsCpld[] = "CPLD read  reg 1 (device id) = 0x0709";

/** An id as the target's cache file holds it, or as this machine's does. */
std::string cached(char byte2, char byte3) {
    return std::endian::native == std::endian::big ? "\0\0"s + byte2 + byte3
                                                   : ""s + byte3 + byte2 + "\0\0"s;
}

class DeviceIdTest : public VirtualBoardTest {
  protected:
    void expectId(uint32_t expected, const Lines &requests) {
        uint32_t devId = 0xA5A5A5A5;
        EXPECT_EQ(answerOf([&] { return bspDevIdGet(&devId); }), Answer{BSP_OK});
        EXPECT_EQ(devId, expected);
        EXPECT_EQ(trace(), requests);
    }

    void expectFailure(const Answer &expected) {
        uint32_t devId = 0xA5A5A5A5;
        EXPECT_EQ(answerOf([&] { return bspDevIdGet(&devId); }), expected);
        EXPECT_EQ(devId, 0xA5A5A5A5);
    }
};

TEST_F(DeviceIdTest, IsReadFromTheCpldOnceAndThenFromTheCache) {
    expectId(0x0709, {kOpensCache, kReadsCpld});
    expectId(0x0709, {kOpensCache});
    EXPECT_EQ(readBoardFile(kCache), cached('\x07', '\x09'));
}

TEST_F(DeviceIdTest, IsTheWholeRegister) {
    for (const vb::Model &model : vb::kModels) {
        useModel(model.devId);
        uint32_t devId = 0xA5A5A5A5;
        EXPECT_EQ(bspDevIdGet(&devId), BSP_OK);
        EXPECT_EQ(devId, model.devId);
    }
}

TEST_F(DeviceIdTest, TheCacheIsNeverAskedWhetherItIsRight) {
    writeBoardFile(kCache, cached('\xAB', '\xCD'));
    expectId(0xABCD, {kOpensCache});
    EXPECT_EQ(readBoardFile(kCache), cached('\xAB', '\xCD'));

    // all 32 bits count, also those that no register can hold
    writeBoardFile(kCache, "\x01\x01\x01\x01");
    expectId(0x01010101, {kOpensCache});
}

TEST_F(DeviceIdTest, ACacheWithoutAnIdIsRewrittenInPlace) {
    const std::string id = cached('\x07', '\x09');
    const struct {
        std::string before, after;
    } cases[] = {
        {"", id},
        {"\x12\x34", id},
        {"\x12\x34\x56", id},
        {"\0\0\0\0"s, id},
        {"\0\0\0\0tail"s, id + "tail"},
    };
    for (const auto &expected : cases) {
        writeBoardFile(kCache, expected.before);
        expectId(0x0709, {kOpensCache, kReadsCpld});
        EXPECT_EQ(readBoardFile(kCache), expected.after);
    }
}

TEST_F(DeviceIdTest, AShortReadOfTheCacheCountsAsEmpty) {
    writeBoardFile(kCache, cached('\xAB', '\xCD'));
    addFault(shortTransfer(kCache, vb::FaultOp::Read, 2));
    expectId(0x0709, {kOpensCache, kReadsCpld});
    EXPECT_EQ(readBoardFile(kCache), cached('\x07', '\x09'));
}

TEST_F(DeviceIdTest, AFailedWriteOfTheCacheGoesUnnoticed) {
    addFault(shortTransfer(kCache, vb::FaultOp::Write, 2));
    expectId(0x0709, {kOpensCache, kReadsCpld});
    EXPECT_EQ(readBoardFile(kCache), cached('\x07', '\x09').substr(0, 2));
    expectId(0x0709, {kOpensCache, kReadsCpld});
}

TEST_F(DeviceIdTest, TheCacheIsReadableForEveryoneAndWritableForItsOwner) {
    const mode_t savedMask = umask(0);
    expectId(0x0709, {kOpensCache, kReadsCpld});
    umask(savedMask);
    struct stat info = {};
    ASSERT_EQ(stat(boardFile(kCache).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
}

TEST_F(DeviceIdTest, WithoutTheSharedFolderThereIsNoId) {
    std::filesystem::remove_all(boardFile("/tmp/bsp"));
    expectFailure({BSP_E_OPEN});
    EXPECT_EQ(requests(), Lines{});
}

TEST_F(DeviceIdTest, ACacheThatDoesNotOpenKeepsTheIdFromTheCaller) {
    writeBoardFile(kCache, cached('\xAB', '\xCD'));
    addFault(openFails(kCache, EACCES));
    expectFailure({BSP_E_OPEN});
    EXPECT_EQ(requests(), Lines{});
}

TEST_F(DeviceIdTest, ARefusedRegisterLeavesAnEmptyCache) {
    for (const int32_t result : {5, -5}) {
        clearFaults();
        addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, result));
        expectFailure({result});
        EXPECT_EQ(readBoardFile(kCache), "");
    }
    clearFaults();
    trace();
    expectId(0x0709, {kOpensCache, kReadsCpld});
}

TEST_F(DeviceIdTest, ARefusedRegisterLeavesTheCacheAsItWas) {
    writeBoardFile(kCache, "\x12\x34");
    addFault(ioctlFails(vb::FaultDevice::Cpld, vb::FaultOp::Read, EIO));
    expectFailure({-1, "ioctl fail, cmd=0x1001\n"});
    EXPECT_EQ(readBoardFile(kCache), "\x12\x34");
}

TEST_F(DeviceIdTest, WithoutTheNodeTheChannelsStatusIsAnswered) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    expectFailure({-1, "open file /dev/bspHandle fail\n"});
}

} // namespace
