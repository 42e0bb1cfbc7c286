// The library's PoE operations on the virtual board's controller.

#include "tests/support/firmware.h"
#include "tests/virtual_board/poe_test.h"
#include "virtual_board/words/fault_text.h"

#include <fstream>

namespace {

class PoeLibraryTest : public PoeTest {
  protected:
    static uint32_t reading(int32_t (*get)(uint32_t, uint32_t *), uint32_t port) {
        uint32_t value = 0xEEEE;
        EXPECT_EQ(get(port, &value), BSP_OK);
        return value;
    }
    static bool isDelivering(uint32_t port) { return reading(bspPoePortDisconnectGet, port) == 2; }

    /** An image file whose version is V1.2.3.4. */
    std::string image(size_t size) {
        const std::string path = boardFolder() + "/image";
        std::ofstream(path, std::ios::binary) << firmwareImage(size);
        return path;
    }
    static int32_t upgrade(const std::string &path) {
        std::string argument = path;
        return bspPoeAppUpgradeSet(argument.data());
    }
    static std::string version() {
        char text[32] = {};
        EXPECT_EQ(bspPoeAppVersionGet(text), BSP_OK);
        return text;
    }
};

TEST_F(PoeLibraryTest, InitialisesBothTables) {
    const struct {
        uint32_t model, ports;
    } cases[] = {{0x0709, 48}, {0x0809, 24}, {0x8709, 24}, {0x8809, 48}};
    for (const auto &[model, ports] : cases) {
        useModel(model);
        uint32_t isInitialised = 7;
        EXPECT_EQ(bspPoeInitStatusGet(&isInitialised), BSP_OK);
        EXPECT_EQ(isInitialised, 0u);
        ASSERT_EQ(bspPoeDeviceInit(), BSP_OK) << std::hex << model;
        EXPECT_EQ(bspPoeInitStatusGet(&isInitialised), BSP_OK);
        EXPECT_EQ(isInitialised, 1u);

        for (uint32_t port = 0; port < 48; ++port)
            plug(port, good(4, 25500, 18000));
        sleepMs(1000);
        EXPECT_TRUE(isDelivering(1));
        EXPECT_TRUE(isDelivering(ports));
        uint32_t drawn = 0;
        EXPECT_EQ(bspPoeGlobalPowerGet(&drawn), BSP_OK);
        EXPECT_EQ(drawn, ports * 18000);
    }
}

TEST_F(PoeLibraryTest, APortIsReadAndSwitched) {
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    plug(4, good(6, 51000, 40000));
    sleepMs(1000);
    EXPECT_TRUE(isDelivering(5));
    EXPECT_EQ(reading(bspPoePortDetectionGet, 5), 4u);
    EXPECT_EQ(reading(bspPoePortClassificationGet, 5), 6u);
    EXPECT_EQ(reading(bspPoePortPowerGet, 5), 40000u);
    EXPECT_NEAR(reading(bspPoePortVoltageGet, 5), 54, 1);
    EXPECT_NEAR(reading(bspPoePortCurrentGet, 5), 740, 5);
    EXPECT_EQ(reading(bspPoePortFaultGet, 5), 2u);
    EXPECT_EQ(reading(bspPoePortMaxPowerGet, 5), 90000u);

    EXPECT_EQ(bspPoePortModeSet(5, 5), BSP_OK);
    EXPECT_EQ(reading(bspPoePortModeGet, 5), 5u);
    EXPECT_FALSE(isDelivering(5));
    EXPECT_EQ(bspPoePortModeSet(5, 1), BSP_OK);
    sleepMs(2000);
    EXPECT_FALSE(isDelivering(5));
    EXPECT_EQ(bspPoePortPowerOnSet(5, 1), BSP_OK);
    sleepMs(1000);
    EXPECT_TRUE(isDelivering(5));
    EXPECT_EQ(bspPoePortPowerOnSet(5, 2), BSP_OK);
    sleepMs(1000);
    EXPECT_FALSE(isDelivering(5));
    EXPECT_EQ(bspPoePortModeSet(5, 2), BSP_OK);
    EXPECT_EQ(bspPoePortPowerOnSet(5, 1), BSP_OK);
    sleepMs(1000);
    EXPECT_TRUE(isDelivering(5));
}

TEST_F(PoeLibraryTest, TheBudgetGoesToTheImportant) {
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    EXPECT_EQ(bspPoeGlobalMaxPowerSet(60000), BSP_OK);
    EXPECT_EQ(bspPoePortPrioritySet(1, 3), BSP_OK); // the least important of 1 to 3
    EXPECT_EQ(bspPoePortPrioritySet(2, 2), BSP_OK);
    EXPECT_EQ(bspPoePortPrioritySet(3, 1), BSP_OK);
    for (uint32_t port = 0; port < 2; ++port)
        plug(port, good(4, 30000, 30000));
    sleepMs(1000);
    EXPECT_TRUE(isDelivering(1));
    EXPECT_TRUE(isDelivering(2));
    plug(2, good(4, 30000, 30000));
    sleepMs(1000);
    EXPECT_FALSE(isDelivering(1));
    EXPECT_TRUE(isDelivering(2));
    EXPECT_TRUE(isDelivering(3));
    plug(1, {});
    sleepMs(1000);
    EXPECT_TRUE(isDelivering(1));
}

TEST_F(PoeLibraryTest, AnUpgradeStartsTheNewApplication) {
    EXPECT_EQ(version(), "V1.0.0.0");
    EXPECT_EQ(upgrade(image(51200)), BSP_OK);
    EXPECT_EQ(version(), "V1.2.3.4");
    EXPECT_EQ(poe().image.size, 51200u);
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
}

TEST_F(PoeLibraryTest, AnInterruptedUpgradeIsMadeGoodByTheNext) {
    vb::FaultRule cut = refuse(vb::FaultDevice::I2c, vb::FaultOp::Write, -5, 800);
    addFault(cut);
    const std::string path = image(51200);
    std::string printed = printedBy([&] { EXPECT_EQ(upgrade(path), BSP_E_POE_WRITE); });
    EXPECT_NE(printed.find("firmware download failed"), std::string::npos);
    clearFaults();
    uint32_t appStatus = 0;
    EXPECT_EQ(bspPoeAppStatusGet(&appStatus), BSP_OK);
    EXPECT_EQ(appStatus, 2u);
    printed = printedBy([&] { EXPECT_EQ(bspPoeDeviceInit(), BSP_E_POE_UNAVAILABLE); });

    EXPECT_EQ(bspPoeRtl8239AppStatusSet(0), BSP_OK); // as somebody would who forces it
    printed = printedBy([&] { EXPECT_EQ(bspPoeDeviceInit(), BSP_E_POE_FRAME); });
    printed = printedBy([&] { EXPECT_EQ(upgrade(path), BSP_OK); });
    EXPECT_EQ(version(), "V1.2.3.4");
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
}

TEST_F(PoeLibraryTest, ALossOfPowerInADownloadLeavesTheLoader) {
    addFault(vb::parseFault({"poe", "write", "0xC0", "800", "once", "power-loss"}));
    const std::string path = image(51200);
    printedBy([&] { EXPECT_EQ(upgrade(path), BSP_E_POE_WRITE); });
    uint32_t appStatus = 0;
    EXPECT_EQ(bspPoeAppStatusGet(&appStatus), BSP_OK);
    EXPECT_EQ(appStatus, 2u);
    EXPECT_EQ(poe().mode, vb::PoeMode::Loader);
    EXPECT_FALSE(vb::poeIsWhole(poe().image));
    printedBy([&] { EXPECT_EQ(upgrade(path), BSP_OK); });
    EXPECT_EQ(version(), "V1.2.3.4");
}

TEST_F(PoeLibraryTest, ALossOfPowerForgetsTheSettings) {
    ASSERT_EQ(bspPoeDeviceInit(), BSP_OK);
    addFault(vb::parseFault({"poe", "write", "0x41", "1", "once", "power-loss"}));
    uint32_t power = 0;
    printedBy([&] { EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_E_POE_WRITE); });
    sleepMs(1000);
    uint32_t isInitialised = 7;
    EXPECT_EQ(bspPoeInitStatusGet(&isInitialised), BSP_OK);
    EXPECT_EQ(isInitialised, 0u);
}

TEST_F(PoeLibraryTest, ALateAnswerIsWaitedForAndATooLateOneIsNot) {
    uint32_t power = 0;
    addFault(vb::parseFault({"poe", "write", "", "1", "from", "late-answer=5"}));
    const uint64_t start = now();
    EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_OK);
    EXPECT_EQ(now() - start, 600000000u);
    clearFaults();
    addFault(vb::parseFault({"poe", "write", "", "1", "from", "late-answer=6"}));
    printedBy([&] { EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_E_POE_FRAME); });
}

} // namespace
