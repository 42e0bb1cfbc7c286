// The chip-independent face of PoE: choice of the driver, operations, conversions.

#include "bsp.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <cstring>

namespace {

using Lines = std::vector<std::string>;

class ServiceTest : public PoeTest {
  protected:
    Answer operate(const uint32_t *port, uint32_t operation, void *argument) {
        return answerOf([&] { return bspPoeOptDriver(port, operation, argument); });
    }
};

TEST_F(ServiceTest, DriverFollowsModelAndPresence) {
    for (const vb::Model &model : vb::kModels) {
        SCOPED_TRACE(model.devId);
        usePoeModel(model.devId);
        EXPECT_EQ(bspPoeDriverGet(), model.poePorts != 0 ? &bspPoeRtl8239Driver : nullptr);
        unplugController();
        EXPECT_EQ(bspPoeDriverGet(), nullptr);
    }
}

TEST_F(ServiceTest, DriverIsChosenAnewAtEveryCall) {
    uint32_t power = kMark;
    EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_OK);
    unplugController();
    EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_E_POE_UNAVAILABLE);
    devices().cpld.reg[6] = 0;
    EXPECT_EQ(bspPoeGlobalPowerGet(&power), BSP_OK);
}

TEST_F(ServiceTest, WithoutAReadableIdOrPresenceThereIsNoDriver) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    EXPECT_EQ(answerOf([] { return bspPoeDriverGet() == nullptr ? 0 : 1; }),
              (Answer{0, "bspPoeOnlineGet-#: bspCpldGet error. ret=5 \n"}));
    clearFaults();
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(bspPoeDriverGet(), nullptr);
}

TEST_F(ServiceTest, TableHasItsSlotsInOrder) {
    using Slot = void (*)();
    const Slot expected[] = {
        reinterpret_cast<Slot>(bspPoeRtl8239DeviceInit),
        reinterpret_cast<Slot>(bspPoeRtl8239InitStatusSet),
        reinterpret_cast<Slot>(bspPoeRtl8239InitStatusGet),
        reinterpret_cast<Slot>(bspPoeRtl8239AppStatusGet),
        reinterpret_cast<Slot>(bspPoeRtl8239McuUpgrade),
        reinterpret_cast<Slot>(bspPoeRtl8239AppVersionGet),
        reinterpret_cast<Slot>(bspPoeRtl8239GlobalMaxPowerSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortModeSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortPowerOnSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortDetectionSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortClassificationSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortPrioritySet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortMaxPowerSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortLegacyEnableSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortInrushModeSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortForceInrushSet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortMaxPowerTypeSet),
        reinterpret_cast<Slot>(bspPoeRtl8239GlobalMaxPowerGet),
        reinterpret_cast<Slot>(bspPoeRtl8239GlobalPowerGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortModeGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortCurrentGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortVoltageGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortPowerGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortMaxPowerGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortFaultGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortDetectionGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortClassificationGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortDisconnectGet),
        reinterpret_cast<Slot>(bspPoeRtl8239PortInrushModeGet),
        nullptr,
        nullptr,
        nullptr,
        reinterpret_cast<Slot>(bspPoeRtl8239DebugDispatch),
        reinterpret_cast<Slot>(bspPoeRtl8239DebugDispatchHelp),
    };
    static_assert(sizeof(expected) == sizeof(BspPoeDriver));
    Slot slots[34];
    std::memcpy(slots, &bspPoeRtl8239Driver, sizeof(slots));
    for (int i = 0; i < 34; ++i)
        EXPECT_EQ(slots[i], expected[i]) << "slot " << i;
}

/** A setting by its number: what reaches the controller, whose answer is 0x48's where it asks. */
struct Setting {
    uint32_t operation;
    bool hasPort;
    uint32_t value;
    Lines requests;
    int32_t status = BSP_OK;
};

const Setting kSettings[] = {
    {1, false, 1440000, {"04: 00 38 40 00 00"}},
    {2, false, 1, {}},
    {4, true, 2, {"08: 05 02", "01: 05 01"}},
    {5, true, 1, {"48: 05"}, BSP_E_POE_UNAVAILABLE}, // the port is in no switchable mode
    {6, true, 0, {"0A/00: 05 01"}},
    {7, true, 0, {"0B: 05 01"}},
    {8, true, 3, {"15: 05 00"}},
    {9, true, 30000, {"14: 05 4B"}},
    {10, true, 1, {"09: 05 01"}},
    {11, true, 8, {"0C: 05 09"}},
    {12, true, 1, {"0D: 05 01"}},
    {13, true, 2, {"12: 05 02"}},
    {29, false, 0, {}, BSP_E_POE_UNAVAILABLE},
    {30, true, 0, {}, BSP_E_POE_UNAVAILABLE},
    {31, false, 0, {}, BSP_E_POE_UNAVAILABLE},
    {34, false, 0, {}, BSP_E_POE_UNAVAILABLE},
    {UINT32_MAX, true, 0, {}, BSP_E_POE_UNAVAILABLE},
};

TEST_F(ServiceTest, SettingsReachTheirSlotByNumber) {
    for (const Setting &row : kSettings) {
        SCOPED_TRACE(row.operation);
        uint32_t value = row.value;
        EXPECT_EQ(operate(row.hasPort ? &kPort : nullptr, row.operation, &value),
                  (Answer{row.status, ""}));
        EXPECT_EQ(controller.requests(), row.requests);
        EXPECT_EQ(value, row.value);
    }
}

TEST_F(ServiceTest, SettingsNeedAValue) {
    for (const uint32_t operation : {1u, 2u, 4u, 5u, 8u, 9u, 10u, 11u, 12u, 13u})
        EXPECT_EQ(operate(&kPort, operation, nullptr), (Answer{BSP_E_POE_NULL, ""})) << operation;
    EXPECT_TRUE(controller.exchanges().empty());
}

/** A reading by its number. The answer tells each reading of the same request apart. */
struct Reading {
    uint32_t operation;
    bool hasPort;
    const char *request;
    const char *reply;
    uint32_t value;
    int32_t (*get)(uint32_t port, uint32_t *out); // the service operation
    uint32_t served;                              // its result, where that differs
};

template <int32_t (*get)(uint32_t *)>
int32_t withoutPort(uint32_t, uint32_t *out) {
    return get(out);
}

constexpr Reading kReadings[] = {
    {3, false, "41:", "00 00 00 01", 1, withoutPort<bspPoeInitStatusGet>, 1},
    {14, false, "4B/00:", "01 38 40", 1440000, withoutPort<bspPoeGlobalMaxPowerGet>, 1440000},
    {15, false, "41:", "00 01 00 02 00 00 03", 300, withoutPort<bspPoeGlobalPowerGet>, 300},
    {16, true, "48: 05", "05 01 02", 2, bspPoePortModeGet, 2},
    {17, true, "44: 05", "05 03 46 01 02 00 00 03 04", 258, bspPoePortCurrentGet, 258},
    {18, true, "44: 05", "05 03 46 01 02 00 00 03 04", 54009, bspPoePortVoltageGet, 54},
    {19, true, "44: 05", "05 03 46 01 02 00 00 03 04", 77200, bspPoePortPowerGet, 77200},
    {20, true, "49: 05", "05 07 00 E1", 90000, bspPoePortMaxPowerGet, 90000},
    {21, true, "42: 05", "05 04 00", 1, bspPoePortFaultGet, 1},
    {22, true, "42: 05", "05 01 35", 5, bspPoePortDetectionGet, 5},
    {23, true, "42: 05", "05 01 35", 3, bspPoePortClassificationGet, 3},
    {24, true, "42: 05", "05 01 35", 1, bspPoePortDisconnectGet, 1},
    {25, true, "49: 05", "05 09 00 E1", 8, bspPoePortInrushModeGet, 8},
};

TEST_F(ServiceTest, ReadingsReachTheirSlotByNumber) {
    for (const Reading &row : kReadings) {
        SCOPED_TRACE(row.operation);
        const uint32_t *port = row.hasPort ? &kPort : nullptr;
        uint32_t value = kMark;
        controller.answer({row.reply});
        EXPECT_EQ(operate(port, row.operation, &value), kSilentSuccess);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(controller.requests(), (Lines{row.request}));
        EXPECT_EQ(operate(port, row.operation, nullptr), (Answer{BSP_E_POE_NULL, ""}));
    }
}

TEST_F(ServiceTest, ReadingsAreServed) {
    for (const Reading &row : kReadings) {
        SCOPED_TRACE(row.operation);
        uint32_t value = kMark;
        controller.answer({row.reply});
        EXPECT_EQ(answerOf([&] { return row.get(kPort, &value); }), kSilentSuccess);
        EXPECT_EQ(value, row.served);
        EXPECT_EQ(controller.requests(), (Lines{row.request}));
        EXPECT_EQ(row.get(kPort, nullptr), BSP_E_POE_NULL);
        EXPECT_TRUE(controller.exchanges().empty());
    }
}

TEST_F(ServiceTest, FirmwareOperationsReachTheirSlotByNumber) {
    uint32_t status = kMark;
    writeBoardFile("/tmp/bsp/poeApp", "\x02");
    EXPECT_EQ(operate(nullptr, 26, &status), kSilentSuccess);
    EXPECT_EQ(status, 2u);

    char missing[] = "/tmp/bsp/no-such-image";
    EXPECT_EQ(operate(nullptr, 27, nullptr), (Answer{BSP_E_POE_NULL, ""}));
    EXPECT_EQ(operate(nullptr, 27, missing), (Answer{BSP_E_POE_INVALID, ""}));
    writeBoardFile(missing, "short");
    EXPECT_EQ(operate(nullptr, 27, missing),
              (Answer{BSP_E_POE_INVALID, "The firmware file's size is error...\r\n"}));

    char text[16] = "";
    controller.answer({"00 00 00 00 00 12 00 00 34"});
    EXPECT_EQ(operate(nullptr, 28, text), kSilentSuccess);
    EXPECT_STREQ(text, "V1.2.3.4");

    controller.answer({"01"}, 0);
    EXPECT_EQ(operate(nullptr, 0, nullptr).status, BSP_E_POE_UNAVAILABLE) << "the status is 2";
    writeBoardFile("/tmp/bsp/poeApp", "");
    controller.exchanges();
    controller.answer({"01"});
    EXPECT_EQ(operate(nullptr, 0, nullptr).status, BSP_E_POE_STATUS);
    EXPECT_EQ(controller.requests(), (Lines{"00: 00"}));
}

TEST_F(ServiceTest, DebugOperationsGetTheWordAsItIs) {
    char shell[] = "iodbg", poe[] = "poe", name[] = "poeCommand", byte[] = "50";
    char *words[] = {shell, poe, name, byte};
    const uint32_t four = 4, three = 3, none = 0, minusOne = UINT32_MAX;
    EXPECT_EQ(operate(&four, 32, words).status, BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"50:"}));
    EXPECT_EQ(operate(&three, 32, words).status, BSP_E_FAILED);
    EXPECT_EQ(operate(nullptr, 32, words), (Answer{BSP_E_POE_NULL, ""}));

    EXPECT_TRUE(operate(&none, 33, nullptr).printed.starts_with("Caution"));
    EXPECT_TRUE(operate(&minusOne, 33, nullptr).printed.starts_with("\nSupported"));
    EXPECT_EQ(operate(&four, 33, nullptr), kSilentSuccess);
    EXPECT_EQ(operate(nullptr, 33, nullptr), (Answer{BSP_E_POE_NULL, ""}));

    EXPECT_EQ(answerOf([&] { return bspPoeDebugChipDispatch(7, 4, words); }).status, BSP_OK);
    EXPECT_EQ(controller.requests(), (Lines{"50:"}));
    EXPECT_TRUE(answerOf([] {
                    return bspPoeDebugChipDispatchHelp(-1);
                }).printed.starts_with("\nSupported"));
    EXPECT_TRUE(
        answerOf([] { return bspPoeDebugChipDispatchHelp(0); }).printed.starts_with("Caution"));
}

TEST_F(ServiceTest, EmptySlotsAreUnavailable) {
    EXPECT_EQ(bspPoeDebugAllInfoGet(), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoeDebugPortInfoGet(1), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoeDebugSwVersionGet(), BSP_E_POE_UNAVAILABLE);
}

TEST_F(ServiceTest, WithoutADriverEveryOperationIsUnavailable) {
    unplugController();
    for (uint32_t operation = 0; operation < 34; ++operation)
        EXPECT_EQ(operate(nullptr, operation, nullptr), (Answer{BSP_E_POE_UNAVAILABLE, ""}));
    uint32_t volts = kMark;
    EXPECT_EQ(bspPoePortVoltageGet(1, &volts), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(volts, kMark);
    EXPECT_EQ(bspPoePortVoltageGet(1, nullptr), BSP_E_POE_UNAVAILABLE);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(ServiceTest, PortsCountFromOne) {
    const uint32_t first = 1, last = 48, below = 0, beyond = 49;
    uint32_t value = kMark;
    EXPECT_EQ(operate(&first, BSP_POE_PORT_DETECTION_SET, nullptr), kSilentSuccess);
    EXPECT_EQ(operate(&last, BSP_POE_PORT_DETECTION_SET, nullptr), kSilentSuccess);
    EXPECT_EQ(controller.requests(), (Lines{"0A/00: 00 01", "0A/00: 2F 01"}));
    for (const uint32_t *port : {&below, &beyond, static_cast<const uint32_t *>(nullptr)}) {
        EXPECT_EQ(operate(port, BSP_POE_PORT_DETECTION_SET, nullptr).status, BSP_E_POE_INVALID);
        EXPECT_EQ(operate(port, BSP_POE_PORT_MODE_GET, &value).status, BSP_E_POE_INVALID);
    }
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(ServiceTest, VoltageIsInWholeVolts) {
    for (const auto &[reply, volts] :
         {std::pair{"05 03 45", 53u}, {"05 00 0F", 0u}, {"05 00 10", 1u}, {"05 FF FF", 4223u}}) {
        uint32_t value = kMark;
        controller.answer({reply});
        EXPECT_EQ(bspPoePortVoltageGet(kPort, &value), BSP_OK);
        EXPECT_EQ(value, volts) << reply;
    }
    uint32_t value = kMark;
    controller.answer({"04"});
    EXPECT_EQ(bspPoePortVoltageGet(kPort, &value), BSP_E_POE_CONTENT);
    EXPECT_EQ(value, kMark);
    EXPECT_FALSE(controller.exchanges().empty());
    EXPECT_EQ(bspPoePortVoltageGet(kPort, nullptr), BSP_E_POE_NULL);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(ServiceTest, RatedPowerIsAFixedBudgetForEachSupply) {
    struct Case {
        uint32_t devId;
        int32_t supply, status;
    };
    constexpr Case kCases[] = {
        {0x0709, 0, BSP_E_NOT_SUPPORTED},
        {0x0709, 1, BSP_OK},
        {0x0809, 2, BSP_OK},
        {0x8709, 1, BSP_OK},
        {0x8809, 2, BSP_OK},
        {0x0709, 3, BSP_E_NOT_SUPPORTED},
        {0x0709, -1, BSP_E_NOT_SUPPORTED},
        {0x0309, 1, BSP_E_NOT_SUPPORTED},
        {0x0109, 1, BSP_E_NOT_SUPPORTED},
    };
    for (const Case &row : kCases) {
        SCOPED_TRACE(row.devId);
        usePoeModel(row.devId);
        unplugController(); // it is not asked
        uint32_t power = kMark;
        EXPECT_EQ(bspPoeGlobalRatedPowerGet(row.supply, &power), row.status);
        EXPECT_EQ(power, row.status == BSP_OK ? 1440000u : kMark);
        EXPECT_EQ(bspPoeGlobalRatedPowerGet(row.supply, nullptr), BSP_E_NULL);
    }
    addFault(openFails("/tmp/bsp/devId", EACCES));
    uint32_t power = kMark;
    EXPECT_EQ(bspPoeGlobalRatedPowerGet(1, &power), BSP_E_OPEN);
}

TEST_F(ServiceTest, PortLedIsActiveLow) {
    for (const auto &[state, level] : {std::pair{1u, 0u}, {0u, 1u}, {2u, 1u}, {UINT32_MAX, 1u}}) {
        devices().cpld.reg[14] = level == 0 ? 0xFFFF : 0;
        EXPECT_EQ(bspPoePortLedStateSet(17, state), BSP_OK);
        EXPECT_EQ(devices().cpld.reg[14], level == 0 ? 0xFFFE : 1);
    }
    EXPECT_EQ(bspPoePortLedStateSet(49, 1), BSP_E_INVALID);
    EXPECT_TRUE(controller.exchanges().empty());
}

} // namespace
