#include "tests/support/flash_board_test.h"

#include "tests/support/library_holdings.h"
#include "virtual_board/board/flash_content.h"
#include "virtual_board/os/seam.h"

#include <cstring>
#include <filesystem>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>

void FlashCallsTest::usePartition(uint32_t number, const vb::FlashGeometry &geometry) {
    vb::Flash &flash = devices().flash[vb::flashIndex(number)];
    const vb::FlashContent content(*vb::attachedFolder(), vb::flashIndex(number));
    ASSERT_TRUE(content.erase(0, flash.geometry.size));
    flash.geometry = geometry;
}

void FlashCallsTest::store(uint32_t number, uint32_t offset, const Bytes &bytes) const {
    const vb::FlashContent content(*vb::attachedFolder(), vb::flashIndex(number));
    ASSERT_TRUE(content.store(offset, bytes.data(), static_cast<uint32_t>(bytes.size())));
}

Bytes FlashCallsTest::stored(uint32_t number, uint32_t offset, uint32_t size) const {
    Bytes bytes(size);
    const vb::FlashContent content(*vb::attachedFolder(), vb::flashIndex(number));
    EXPECT_TRUE(content.load(offset, bytes.data(), size));
    return bytes;
}

void FlashCallsTest::wearOut(uint32_t number, const std::set<uint32_t> &pages) {
    for (const uint32_t page : pages) {
        vb::FaultRule rule = refuse(vb::FaultDevice::Mtd, vb::FaultOp::Program, EIO);
        rule.effect = vb::FaultEffect::Fails;
        rule.hasAddress = 1;
        rule.devAddr = number;
        rule.hasOffset = 1;
        rule.offset = page;
        addFault(rule);
    }
}

void FlashCallsTest::pretendGeometry(uint32_t size, uint32_t eraseSize, uint32_t pageSize) {
    recorder.before = [=](const SystemCall &call) -> std::optional<int64_t> {
        if (!call.is("ioctl") || call.request != MEMGETINFO)
            return std::nullopt;
        auto *info = static_cast<mtd_info_user *>(call.argument);
        std::memset(info, 0, sizeof(*info));
        info->size = size;
        info->erasesize = eraseSize;
        info->writesize = pageSize;
        return 0;
    };
}

void FlashCallsTest::useFile(const std::string &path, const Bytes &content) const {
    writeBoardFile(path, {content.begin(), content.end()});
}

Bytes FlashCallsTest::contentOf(const std::string &path) const {
    return exists(path) ? charactersOf(readBoardFile(path)) : Bytes{};
}

bool FlashCallsTest::exists(const std::string &path) const {
    return std::filesystem::exists(boardFile(path));
}

void FlashCallsTest::removeFile(const std::string &path) const {
    std::filesystem::remove(boardFile(path));
}

Answer FlashCallsTest::withoutNumber(Answer answer, const std::string &path) {
    const std::string number = "fd=" + std::to_string(libraryHas.numberOf(path)) + ")";
    if (const size_t at = answer.printed.find(number); at != std::string::npos)
        answer.printed.replace(at, number.size(), "fd=#)");
    return answer;
}

const Calls kLocking = {"open /tmp/bspFlashLockFile read-write create 0644 no-link",
                        "lock /tmp/bspFlashLockFile"};
const Calls kUnlocking = {"unlock /tmp/bspFlashLockFile"};

Calls hundredTimes(const std::string &call) {
    Calls calls;
    for (int i = 0; i < 100; ++i)
        calls.insert(calls.end(), {call, "wait 2 us"});
    return calls;
}
