// Programming the CPLD: the kernel module's side.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/os/seam.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/stat.h>

namespace {

class CpldUpgradeTest : public VirtualBoardTest {
  protected:
    std::string image(const std::string &content) const {
        std::ofstream file(image_);
        file << content;
        return image_;
    }
    static int32_t upgrade(const std::string &file) {
        return bspImageUpgrade(BSP_IMAGE_CPLD, file.c_str(), 0);
    }
    std::string logic() const {
        const vb::BoardFolder *folder = vb::attachedFolder();
        return vb::property(*folder, "cpld.logic");
    }
    void addRule(const std::string &op, const std::string &effect) {
        addFault(vb::parseFault({"cpld", op, "", "1", "once", effect}));
    }

  private:
    TemporaryFolder folder_;
    std::string image_ = folder_.path() + "/cpld.img";
};

TEST_F(CpldUpgradeTest, TheLogicIsTheFile) {
    EXPECT_EQ(logic(), "factory");
    const std::string file = image("123456789");
    trace();
    EXPECT_EQ(upgrade(file), BSP_OK);
    EXPECT_EQ(logic(), "9 bytes, CRC-32 0xCBF43926, programmed 1 times");
    EXPECT_EQ(trace(), Lines{"CPLD upgrade " + file + ", 9 bytes"});
    EXPECT_EQ(ioCpldUpgrade(image(std::string(10000, 'x')).c_str()), BSP_OK);
    EXPECT_EQ(logic(), "10000 bytes, CRC-32 0x0D55A4A3, programmed 2 times");
    EXPECT_EQ(devices().cpld.reg[2], 0x1312) << "what the logic does is not modelled";
}

TEST_F(CpldUpgradeTest, AFileOfTheBoardIsFoundInItsFolder) {
    writeBoardFile("/tmp/bsp/cpld", "123456789");
    trace();
    EXPECT_EQ(upgrade("/tmp/bsp/cpld"), BSP_OK);
    EXPECT_EQ(trace(), (Lines{"open /tmp/bsp/cpld", "CPLD upgrade /tmp/bsp/cpld, 9 bytes"}));
    EXPECT_EQ(logic(), "9 bytes, CRC-32 0xCBF43926, programmed 1 times");
}

TEST_F(CpldUpgradeTest, WhatCannotBeReadIsRefused) {
    const std::string file = image("");
    EXPECT_EQ(upgrade(file), -EINVAL) << "empty";
    EXPECT_EQ(upgrade(file + ".none"), -ENOENT);
    EXPECT_EQ(upgrade(boardFolder()), -EISDIR);
    EXPECT_EQ(upgrade(std::string(4096, 'x')), -EINVAL) << "too long to be a path";
    EXPECT_EQ(logic(), "factory");
}

TEST_F(CpldUpgradeTest, ABlockForAnotherChipIsRefused) {
    struct Block {
        uint32_t words[6];
        uint32_t lines[4];
    };
    const std::string file = image("logic");
    Block block = {{1, 0, 0, 5500, 0, 0}, {9, 8, 10, 11}};
    const auto first = uint8_t{1};
    std::memcpy(&block.words[2], &first, 1);
    block.words[4] = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block.lines));
    const Block good = block;
    EXPECT_EQ(bspCpldUpgrade_handle(&block, file.c_str()), BSP_OK);
    for (const size_t word : {0u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u}) {
        auto *words = reinterpret_cast<uint8_t *>(&block);
        words[word * 4] ^= 2;
        EXPECT_EQ(bspCpldUpgrade_handle(&block, file.c_str()), -EINVAL) << word;
        block = good;
    }
    const auto *nowhere = reinterpret_cast<const void *>(uintptr_t{8});
    EXPECT_EQ(bspCpldUpgrade_handle(nowhere, file.c_str()), -EFAULT);
    EXPECT_EQ(devices().cpld.logic.programmings, 1u);
}

TEST_F(CpldUpgradeTest, FailsOnCommand) {
    const std::string file = image("logic");
    addRule("upgrade", "refuse=-5");
    EXPECT_EQ(upgrade(file), -5);
    addRule("upgrade", "no-answer");
    EXPECT_EQ(upgrade(file), -EIO);
    addRule("upgrade", "ioctl-fails=ENXIO");
    EXPECT_EQ(answerOf([&] { return upgrade(file); }), (Answer{-1, "ioctl fail, cmd=0x1009\n"}));
    addRule("any", "refuse=7");
    EXPECT_EQ(upgrade(file), 7);
    EXPECT_EQ(logic(), "factory");
    addRule("write", "refuse=7");
    EXPECT_EQ(upgrade(file), BSP_OK) << "a programming is no write of a register";
}

TEST_F(CpldUpgradeTest, RulesThatCannotFireAreRefused) {
    const auto refusal = [](const vb::FaultWords &words) -> std::string {
        try {
            vb::parseFault(words);
        } catch (const vb::Refused &refused) {
            return refused.what();
        }
        return "accepted";
    };
    for (const char *device : {"gpio", "i2c", "mtd12", "/tmp/bsp/devId"}) {
        const std::string reason = refusal({device, "upgrade", "", "1", "once", "refuse=1"});
        EXPECT_NE(reason.find(" give --device cpld"), std::string::npos) << reason;
    }
    EXPECT_EQ(refusal({"cpld", "upgrade", "1", "1", "once", "refuse=1"}),
              "an upgrade is of the whole CPLD; leave out --offset");
    EXPECT_EQ(refusal({"cpld", "upgrade", "", "1", "once", "corrupt=0:1"}),
              "corrupt does not go with --op upgrade, which can have refuse, ioctl-fails and "
              "no-answer; give --op read, write or any");
}

} // namespace
