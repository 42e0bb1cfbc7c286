// The library's calls on a board whose controller is the quill.

#include "bsp.h"
#include "poe/controllers.h"
#include "poe/port_map.h"
#include "tests/second_controller/catalogues/models.h"
#include "tests/second_controller/library/driver.h"
#include "tests/second_controller/virtual_board/kind.h"
#include "tests/support/answer.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/words/fault_text.h"

#include <algorithm>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

constexpr uint32_t kMark = 0x5A5A5A5A;

class SecondControllerTest : public VirtualBoardTest {
  protected:
    SecondControllerTest() : VirtualBoardTest(kQuillModel) {}

    /** A controller that serves its ports, after a time in which they have come up. */
    static void initialise() {
        ASSERT_EQ(answerOf(ioPoeDeviceInit), kSilentSuccess);
        settle();
    }
    static void settle() { usleep(1000000); }

    void spoil(const std::string &effect, const std::string &command = "") {
        addFault(vb::parseFault({"poe", "write", command, "1", "from", effect}));
    }

    static uint32_t valueOf(int32_t (*get)(uint32_t, uint32_t *), uint32_t port) {
        uint32_t value = kMark;
        EXPECT_EQ(get(port, &value), BSP_OK);
        return value;
    }
    static uint32_t valueOf(int32_t (*get)(uint32_t *)) {
        uint32_t value = kMark;
        EXPECT_EQ(get(&value), BSP_OK);
        return value;
    }
};

TEST_F(SecondControllerTest, TheModelsRowChoosesTheDriver) {
    EXPECT_EQ(bspPoeDriverGet(), &quill::kDriver);
    useModel(kFamilyModel);
    EXPECT_EQ(bspPoeDriverGet(), &bspPoeRtl8239Driver);
    uint32_t drawn = kMark;
    EXPECT_EQ(ioPoeGlobalPowerGet(&drawn), BSP_OK) << "which its own virtual controller answers";
    useModel(kStrangeModel);
    EXPECT_EQ(bspPoeDriverGet(), nullptr) << "no driver of this build is for its controller";
    EXPECT_EQ(ioPoeGlobalPowerGet(&drawn), BSP_E_POE_UNAVAILABLE);
    BspPoePortState state{};
    EXPECT_EQ(ioPoePortStateGet(1, &state), BSP_E_POE_UNAVAILABLE);
}

TEST_F(SecondControllerTest, PortsWithoutAMapAreNotServed) {
    useModel(kOddModel);
    EXPECT_EQ(bsp::poePortMap(), nullptr);
    requests();
    EXPECT_EQ(answerOf(ioPoeDeviceInit), (Answer{BSP_E_POE_UNAVAILABLE, ""}));
    for (const std::string &request : requests())
        EXPECT_EQ(request.find("I2C"), std::string::npos) << request;
    useModel(kFamilyModel);
    ASSERT_NE(bsp::poePortMap(), nullptr);
    EXPECT_EQ(bsp::poePortMap()->portCount, 24);
}

TEST_F(SecondControllerTest, NeedsToBePresent) {
    world::set("poe.controller", "missing");
    EXPECT_EQ(bspPoeDriverGet(), nullptr);
    uint32_t drawn = kMark;
    EXPECT_EQ(ioPoeGlobalPowerGet(&drawn), BSP_E_POE_UNAVAILABLE);
    world::set("poe.controller", "present");
    EXPECT_EQ(ioPoeGlobalPowerGet(&drawn), BSP_OK);
}

TEST_F(SecondControllerTest, Starts) {
    EXPECT_EQ(valueOf(ioPoeInitStatusGet), uint32_t{BSP_POE_NOT_INITIALISED});
    requests();
    const uint64_t before = now();
    ASSERT_EQ(answerOf(ioPoeDeviceInit), kSilentSuccess);
    EXPECT_EQ((now() - before) / 1000000, 2000u + 50 * 2u) << "a reset, and 50 requests";
    const Lines lines = withoutData(requests());
    const std::string write = "I2C write bus 16 ch 0 dev 0x20";
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [&](const std::string &line) { return line.starts_with(write); }),
              1 + 2 * 24 + 1);
    EXPECT_EQ(valueOf(ioPoeInitStatusGet), uint32_t{BSP_POE_INITIALISED});
    EXPECT_EQ(valueOf(ioPoeGlobalMaxPowerGet), 3000000u);
    for (const uint32_t port : {1u, 24u}) {
        EXPECT_EQ(valueOf(ioPoePortModeGet, port), uint32_t{BSP_POE_MODE_0});
        EXPECT_EQ(valueOf(ioPoePortMaxPowerGet, port), 90000u);
    }
    EXPECT_EQ(valueOf(ioPoePortModeGet, 25), uint32_t{BSP_POE_MODE_DISABLED});
}

TEST_F(SecondControllerTest, TellsOfItself) {
    char version[BSP_POE_APP_VERSION_SIZE] = "";
    EXPECT_EQ(ioPoeAppVersionGet(version), BSP_OK);
    EXPECT_STREQ(version, "Q2.7");
    EXPECT_EQ(valueOf(ioPoeAppStatusGet), uint32_t{BSP_POE_APP_USABLE});
    writeBoardFile("/tmp/bsp/poeApp", "\2");
    EXPECT_EQ(valueOf(ioPoeAppStatusGet), uint32_t{BSP_POE_APP_UPGRADE_FAILED});
    uint32_t rated = 0;
    EXPECT_EQ(ioPoeGlobalRatedPowerGet(1, &rated), BSP_OK);
    EXPECT_EQ(rated, uint32_t{BSP_POE_RATED_POWER_MW});
}

TEST_F(SecondControllerTest, TellsTheStateOfAPort) {
    initialise();
    world::set("poe.3.device", "class=4 requests=19000 draws=18000");
    world::set("poe.4.device", "class=0 over-current");
    settle();
    BspPoePortState state{};
    EXPECT_EQ(answerOf([&] { return ioPoePortStateGet(3, &state); }), kSilentSuccess);
    EXPECT_EQ(listed({state.detection, state.classification, state.fault, state.disconnect}),
              listed({4, 4, BSP_POE_FAULT_NONE, BSP_POE_DELIVERING}));
    EXPECT_EQ(ioPoePortStateGet(4, &state), BSP_OK);
    EXPECT_EQ(listed({state.classification, state.fault, state.disconnect}),
              listed({BSP_POE_CLASS_0_OR_12, BSP_POE_FAULT, BSP_POE_DISCONNECTED}));
    EXPECT_EQ(valueOf(ioPoePortDetectionGet, 3), 4u);
    EXPECT_EQ(valueOf(ioPoePortClassificationGet, 3), 4u);
    EXPECT_EQ(valueOf(ioPoePortFaultGet, 3), uint32_t{BSP_POE_FAULT_NONE});
    EXPECT_EQ(valueOf(ioPoePortDisconnectGet, 3), uint32_t{BSP_POE_DELIVERING});
    EXPECT_EQ(valueOf(ioPoePortClassificationGet, 5), uint32_t{BSP_POE_CLASS_NONE});
}

TEST_F(SecondControllerTest, MeasuresPorts) {
    initialise();
    world::set("poe.3.device", "class=4 requests=19000 draws=18000");
    settle();
    BspPoePortMeasurement record{};
    ASSERT_EQ(answerOf([&] { return ioPoePortMeasurementGet(3, &record); }), kSilentSuccess);
    EXPECT_EQ(record.powerMw, 18000u);
    EXPECT_NEAR(record.voltageMv, 54009, 130);
    EXPECT_EQ(record.voltageV, record.voltageMv / 1000);
    EXPECT_NEAR(record.currentMa, 18000000.0 / record.voltageMv, 1.0);
    EXPECT_EQ(record.temperature, BSP_POE_TEMPERATURE_UNKNOWN);
    EXPECT_EQ(valueOf(ioPoePortVoltageGet, 3), record.voltageMv / 1000);
    EXPECT_NEAR(valueOf(ioPoePortCurrentGet, 3), record.currentMa, 2);
    EXPECT_EQ(valueOf(ioPoePortPowerGet, 3), 18000u);
    EXPECT_EQ(valueOf(ioPoeGlobalPowerGet), 18000u);
}

TEST_F(SecondControllerTest, KeepsModesAndLimits) {
    initialise();
    for (const uint32_t mode : {BSP_POE_MODE_0, BSP_POE_MODE_1, BSP_POE_MODE_DISABLED}) {
        EXPECT_EQ(ioPoePortModeSet(24, mode), BSP_OK);
        EXPECT_EQ(valueOf(ioPoePortModeGet, 24), mode);
    }
    EXPECT_EQ(ioPoePortMaxPowerSet(24, 30001), BSP_OK);
    EXPECT_EQ(valueOf(ioPoePortMaxPowerGet, 24), 30001u);
    BspPoePortSettings settings{};
    EXPECT_EQ(answerOf([&] { return ioPoePortSettingsGet(24, &settings); }), kSilentSuccess);
    EXPECT_EQ(listed({settings.modeStatus, settings.mode, settings.powerStatus,
                      settings.powerLimitMw, settings.inrushMode}),
              listed({BSP_OK, BSP_POE_MODE_DISABLED, BSP_OK, 30001, UINT32_MAX}));
}

TEST_F(SecondControllerTest, SwitchesPortsOnCommand) {
    initialise();
    world::set("poe.3.device", "class=4 requests=19000 draws=18000");
    EXPECT_EQ(ioPoePortPowerOnSet(3, BSP_POE_ON), BSP_E_POE_STATUS) << "it does so by itself";
    EXPECT_EQ(ioPoePortModeSet(3, BSP_POE_MODE_1), BSP_OK);
    settle();
    EXPECT_EQ(world::get("poe.3.state"), "held");
    EXPECT_EQ(ioPoePortPowerOnSet(3, BSP_POE_ON), BSP_OK);
    settle();
    EXPECT_EQ(world::get("poe.3.state"), "delivering");
    EXPECT_EQ(ioPoePortPowerOnSet(3, BSP_POE_OFF), BSP_OK);
    settle();
    EXPECT_EQ(world::get("poe.3.state"), "held");
}

TEST_F(SecondControllerTest, KeepsTheBudget) {
    initialise();
    EXPECT_EQ(ioPoeGlobalMaxPowerSet(40001), BSP_OK);
    EXPECT_EQ(valueOf(ioPoeGlobalMaxPowerGet), 40001u);
    world::set("poe.3.device", "class=4 requests=25000 draws=18000");
    settle();
    world::set("poe.4.device", "class=4 requests=25000 draws=18000");
    settle();
    EXPECT_EQ(world::get("poe.3.state"), "delivering");
    EXPECT_EQ(world::get("poe.4.state"), "denied");
    EXPECT_EQ(ioPoeGlobalMaxPowerSet(50000), BSP_OK);
    settle();
    EXPECT_EQ(world::get("poe.4.state"), "delivering");
    EXPECT_EQ(ioPoePortMaxPowerSet(4, 10000), BSP_OK);
    settle();
    EXPECT_EQ(world::get("poe.4.state"), "fault") << "it draws more than its limit";
}

TEST_F(SecondControllerTest, HasNotWhatItHasNot) {
    initialise();
    requests();
    char *words[] = {nullptr};
    for (const int32_t status :
         {ioPoeInitStatusSet(1), ioPoePortDetectionSet(1), ioPoePortClassificationSet(1),
          ioPoePortPrioritySet(1, 1), ioPoePortLegacyEnableSet(1, 1), ioPoePortInrushModeSet(1, 0),
          ioPoePortForceInrushSet(1, 1), ioPoePortMaxPowerTypeSet(1, 1),
          ioPoeAppUpgradeSet("/nowhere"), bspPoeDebugAllInfoGet(), bspPoeDebugPortInfoGet(1),
          bspPoeDebugSwVersionGet(), bspPoeDebugChipDispatch(0, 0, words),
          bspPoeDebugChipDispatchHelp(-1)})
        EXPECT_EQ(status, BSP_E_POE_UNAVAILABLE);
    uint32_t value = kMark;
    EXPECT_EQ(ioPoePortInrushModeGet(1, &value), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(value, kMark);
    for (const std::string &line : requests())
        EXPECT_FALSE(line.starts_with("I2C")) << line;
}

TEST_F(SecondControllerTest, RefusesWhatIsOutOfRange) {
    initialise();
    uint32_t value = kMark;
    for (const uint32_t port : {0u, 49u, UINT32_MAX}) {
        EXPECT_EQ(ioPoePortModeGet(port, &value), BSP_E_POE_INVALID);
        EXPECT_EQ(ioPoePortMaxPowerSet(port, 1), BSP_E_POE_INVALID);
    }
    EXPECT_EQ(ioPoePortModeSet(1, BSP_POE_MODE_2), BSP_E_POE_INVALID);
    EXPECT_EQ(ioPoePortPowerOnSet(1, 3), BSP_E_POE_INVALID);
    EXPECT_EQ(ioPoePortMaxPowerSet(1, BSP_POE_PORT_LIMIT_MAX_MW + 1), BSP_E_POE_INVALID);
    EXPECT_EQ(ioPoeGlobalMaxPowerSet(BSP_POE_BUDGET_MAX_MW + 1), BSP_E_POE_INVALID);
    EXPECT_EQ(value, kMark);
    EXPECT_EQ(ioPoePortModeGet(1, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(ioPoePortPowerGet(1, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(ioPoePortFaultGet(1, nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(ioPoeGlobalPowerGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(ioPoeAppVersionGet(nullptr), BSP_E_POE_NULL);
    EXPECT_EQ(ioPoeInitStatusGet(nullptr), BSP_E_POE_NULL);
}

TEST_F(SecondControllerTest, TellsWhatIsWrongWithAnAnswer) {
    initialise();
    const std::pair<const char *, int32_t> rows[] = {
        {"no-answer", BSP_E_POE_FRAME},      {"wrong-echo", BSP_E_POE_FRAME},
        {"wrong-checksum", BSP_E_POE_FRAME}, {"late-answer=4", BSP_E_POE_FRAME},
        {"late-answer=3", BSP_OK},           {"bad-port=2", BSP_E_POE_STATUS},
        {"power-loss", BSP_E_POE_WRITE}};
    for (const auto &[effect, status] : rows) {
        SCOPED_TRACE(effect);
        spoil(effect);
        uint32_t limit = kMark;
        EXPECT_EQ(ioPoePortMaxPowerGet(3, &limit), status);
        EXPECT_EQ(limit == kMark, status != BSP_OK);
        clearFaults();
    }
    settle();
    EXPECT_EQ(valueOf(ioPoeInitStatusGet), uint32_t{BSP_POE_NOT_INITIALISED}) << "it began anew";
    spoil("no-answer");
    uint32_t status = 7;
    EXPECT_EQ(ioPoeInitStatusGet(&status), BSP_OK);
    EXPECT_EQ(status, 7u) << "silence says nothing of it";
}

TEST_F(SecondControllerTest, AWriteWithoutEffectIsSeenInWhatReadsBack) {
    initialise();
    spoil("no-effect", "0x92"); // of limits
    EXPECT_EQ(ioPoePortMaxPowerSet(3, 1000), BSP_OK);
    EXPECT_EQ(valueOf(ioPoePortMaxPowerGet, 3), 90000u);
}

TEST_F(SecondControllerTest, SharesTheLockOfAllControllers) {
    initialise();
    trace();
    (void)valueOf(ioPoePortModeGet, 1);
    EXPECT_TRUE(access(boardFile("/tmp/bspPoeLockFile").c_str(), F_OK) == 0);
    const Lines lines = trace();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string &line) {
        return line.find("/tmp/bspPoeLockFile") != std::string::npos;
    }));
}

TEST_F(SecondControllerTest, ABoardWhoseControllerIsImpossibleIsRefused) {
    initialise();
    vb::FolderError error = {};
    const auto isRefused = [&] {
        vb::detachBoard();
        const bool isAttached = vb::attachBoard(boardFolder().c_str(), error);
        return !isAttached &&
               std::string(error.text).find("the PoE controller") != std::string::npos;
    };
    vb::quillMemory(devices().poe).port[47].mode = 3;
    EXPECT_TRUE(isRefused()) << error.text;
}

} // namespace
