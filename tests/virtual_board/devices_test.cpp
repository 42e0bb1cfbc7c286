// The device models by themselves.

#include "virtual_board/devices/cpld.h"
#include "virtual_board/devices/eeprom.h"
#include "virtual_board/devices/gpio.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <vector>

namespace {

using namespace vb;

Eeprom countingEeprom(uint32_t blocks) {
    Eeprom eeprom = {blocks, {}};
    for (uint32_t i = 0; i < kEepromMaxBytes; ++i)
        eeprom.bytes[i] = static_cast<uint8_t>(i % 251);
    return eeprom;
}

TEST(EepromModel, AWriteWrapsInsideThePageOfItsFirstByte) {
    Eeprom eeprom = {1, {}};
    const uint8_t data[] = {1, 2, 3, 4};
    eepromWrite(eeprom, 0x2E, data, sizeof(data));
    EXPECT_EQ(eeprom.bytes[0x2E], 1);
    EXPECT_EQ(eeprom.bytes[0x2F], 2);
    EXPECT_EQ(eeprom.bytes[0x20], 3);
    EXPECT_EQ(eeprom.bytes[0x21], 4);
    EXPECT_EQ(eeprom.bytes[0x30], 0);
    EXPECT_EQ(eeprom.bytes[0x1F], 0);
}

TEST(EepromModel, AWriteLongerThanAPageOverwritesItsOwnStart) {
    Eeprom eeprom = {1, {}};
    std::vector<uint8_t> data(kEepromPageSize + 1);
    std::iota(data.begin(), data.end(), uint8_t{1});
    eepromWrite(eeprom, 0, data.data(), static_cast<uint32_t>(data.size()));
    EXPECT_EQ(eeprom.bytes[0], 17);
    EXPECT_EQ(eeprom.bytes[1], 2);
    EXPECT_EQ(eeprom.bytes[16], 0);
}

TEST(EepromModel, AReadGoesOnOverPagesAndBlocksAndRollsOverAtTheEnd) {
    for (const uint32_t blocks : {1u, 4u}) {
        const Eeprom eeprom = countingEeprom(blocks);
        const uint32_t size = blocks * kEepromBlockSize;
        uint8_t data[4] = {};
        eepromRead(eeprom, size - 2, data, sizeof(data));
        EXPECT_EQ(data[0], eeprom.bytes[size - 2]);
        EXPECT_EQ(data[1], eeprom.bytes[size - 1]);
        EXPECT_EQ(data[2], eeprom.bytes[0]);
        EXPECT_EQ(data[3], eeprom.bytes[1]);
    }
}

TEST(CpldModel, RegistersKeepWhatIsWritten) {
    Cpld cpld = {};
    uint16_t value = 0;
    EXPECT_TRUE(cpldWrite(cpld, 63, 0xBEEF));
    EXPECT_TRUE(cpldRead(cpld, 63, &value));
    EXPECT_EQ(value, 0xBEEF);
}

TEST(CpldModel, IdentityRegistersAreWiredToLogic) {
    Cpld cpld = {};
    cpld.reg[kCpldDeviceId] = 0x0709;
    cpld.reg[kCpldVersion] = 0x1312;
    EXPECT_TRUE(cpldWrite(cpld, kCpldDeviceId, 0));
    EXPECT_TRUE(cpldWrite(cpld, kCpldVersion, 0));
    EXPECT_EQ(cpld.reg[kCpldDeviceId], 0x0709);
    EXPECT_EQ(cpld.reg[kCpldVersion], 0x1312);
}

TEST(CpldModel, AWriteChangesOutputsAlone) {
    const std::map<uint32_t, uint16_t> inputs = {
        {1, 0xFFFF},  {2, 0xFFFF},  {6, 0x4600},  {8, 0xFFFF},  {12, 0x003F}, {16, 0xFFFF},
        {17, 0xFFFF}, {18, 0xFFFF}, {19, 0xFFFF}, {20, 0xFFFF}, {21, 0xFFFF}, {22, 0xFFFF},
        {23, 0xFFFF}, {24, 0xFFFF}, {28, 0xFFFF}, {29, 0xFFFF}, {30, 0xFFFF}, {31, 0xFFFF}};
    for (uint32_t reg = 0; reg < kCpldRegisters; ++reg) {
        const auto found = inputs.find(reg);
        const uint16_t bits = found != inputs.end() ? found->second : 0;
        EXPECT_EQ(cpldInputs(reg), bits) << reg;
        for (const uint16_t before : {uint16_t{0x0000}, uint16_t{0x5A5A}, uint16_t{0xFFFF}}) {
            Cpld cpld = {};
            cpld.reg[reg] = before;
            EXPECT_TRUE(cpldWrite(cpld, reg, static_cast<uint16_t>(~before)));
            EXPECT_EQ(cpld.reg[reg], static_cast<uint16_t>(~before ^ bits)) << reg;
        }
    }
}

TEST(CpldModel, HasSixtyFourRegisters) {
    Cpld cpld = {};
    uint16_t value = 0x5555;
    EXPECT_FALSE(cpldRead(cpld, 64, &value));
    EXPECT_FALSE(cpldWrite(cpld, 64, 1));
    EXPECT_FALSE(cpldWrite(cpld, UINT32_MAX, 1));
    EXPECT_EQ(value, 0x5555);
}

TEST(GpioModel, AnInputShowsTheBoardsLevelAndAnOutputItsOwn) {
    Gpio gpio = {};
    gpio.external[5] = 1;
    uint32_t level = 0;
    EXPECT_TRUE(gpioRead(gpio, 5, &level));
    EXPECT_EQ(level, 1u);
    EXPECT_TRUE(gpioSetOutput(gpio, 5, false));
    EXPECT_TRUE(gpioRead(gpio, 5, &level));
    EXPECT_EQ(level, 0u);
    EXPECT_TRUE(gpioSetInput(gpio, 5));
    EXPECT_TRUE(gpioRead(gpio, 5, &level));
    EXPECT_EQ(level, 1u);
}

TEST(GpioModel, HasThirtyTwoLines) {
    Gpio gpio = {};
    uint32_t level = 7;
    EXPECT_FALSE(gpioRead(gpio, 32, &level));
    EXPECT_FALSE(gpioSetInput(gpio, 32));
    EXPECT_FALSE(gpioSetOutput(gpio, 32, true));
    EXPECT_EQ(level, 7u);
}

} // namespace
