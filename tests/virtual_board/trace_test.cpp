// The trace: what it keeps, in words and as JSON.

#include "bsp.h"
#include "language/trace_json.h"
#include "language/trace_names.h"
#include "tests/support/json.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/board/i2c_bus.h"
#include "virtual_board/devices/cpld.h"
#include "virtual_board/devices/rtl8239/frame.h"

#include <cerrno>
#include <map>
#include <unistd.h>

namespace {

using nlohmann::json;

class TraceTest : public VirtualBoardTest {
  protected:
    /** The last request as JSON, without what differs from run to run. */
    json last() const {
        json object = language::traceJson(vb::traceAt(board().trace, board().trace.total - 1));
        EXPECT_EQ(object["pid"], getpid());
        EXPECT_EQ(object["time_ns"], now());
        object.erase("pid");
        object.erase("time_ns");
        return object;
    }
};

TEST_F(TraceTest, TheOldestRequestsAreOverwritten) {
    vb::TraceRing &ring = board().trace;
    EXPECT_EQ(vb::traceOldest(ring), 0u);
    for (uint32_t i = 0; i < vb::kTraceCapacity + 3; ++i)
        vb::traceNext(ring, vb::TraceKind::CpldRead, {}).offset = i;
    EXPECT_EQ(ring.total, vb::kTraceCapacity + 3u);
    EXPECT_EQ(vb::traceOldest(ring), 3u);
    EXPECT_EQ(vb::traceAt(ring, 3).offset, 3u);
    EXPECT_EQ(vb::traceAt(ring, ring.total - 1).offset, vb::kTraceCapacity + 2);
}

TEST_F(TraceTest, ARecordKeepsNothingOfTheOneItOverwrites) {
    vb::TraceRing &ring = board().trace;
    for (uint32_t i = 0; i < vb::kTraceCapacity; ++i)
        vb::traceNext(ring, vb::TraceKind::CpldRead, {1, 2}).value = 3;
    vb::traceNext(ring, vb::TraceKind::Sleep, {4, 5});
    const vb::TraceRecord &record = vb::traceAt(ring, ring.total - 1);
    EXPECT_EQ(record.kind, vb::TraceKind::Sleep);
    EXPECT_EQ(record.pid, 4);
    EXPECT_EQ(record.timeNs, 5u);
    EXPECT_EQ(record.value, 0u);
}

TEST_F(TraceTest, CpldRequestsAsJson) {
    uint16_t value = 0;
    bspCpldGet(2, &value);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "cpld-read", "register": 2, "name": "version",
                                      "value": 4882, "result": 0, "errno": 0})"));
    bspCpldSet(9, 0x1234);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "cpld-write", "register": 9, "name": null,
                                      "value": 4660, "ignored_bits": 0, "result": 0,
                                      "errno": 0})"));
    bspCpldSet(12, 0x00FF);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "cpld-write", "register": 12,
                                      "name": "uplink transmitters", "value": 255,
                                      "ignored_bits": 63, "result": 0, "errno": 0})"));
    bspCpldGet(64, &value);
    EXPECT_EQ(last(), json({{"kind", "cpld-read"},
                            {"register", 64},
                            {"name", nullptr},
                            {"value", nullptr},
                            {"result", -EINVAL},
                            {"errno", 0}}));
}

TEST_F(TraceTest, CpldUpgradesAsJson) {
    writeBoardFile("/tmp/bsp/cpld", "logic");
    bspImageUpgrade(BSP_IMAGE_CPLD, "/tmp/bsp/cpld", 0);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "cpld-upgrade", "path": "/tmp/bsp/cpld", "size": 5,
                                      "result": 0, "errno": 0})"));
}

TEST_F(TraceTest, I2cRequestsAsJson) {
    const uint8_t data[3] = {0x44, 0x00, 0xFF};
    bspI2cWrite(0, 0, 0x51, 0x10, 1, data, 3);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "i2c-write", "bus": 0, "channel": 0, "device": 81,
                                      "offset": 16, "offset_length": 1, "length": 3, "name": null,
                                      "data": "4400ff", "result": 0, "errno": 0})"));
    uint8_t byte = 0;
    bspI2cRead(0, 5, 0x51, 0x10, 1, &byte, 1);
    EXPECT_EQ(last()["kind"], "i2c-read");
    EXPECT_EQ(last()["channel"], 5);
    EXPECT_EQ(last()["data"], nullptr);
    EXPECT_EQ(last()["result"], -ENXIO);
}

TEST_F(TraceTest, GpioRequestsAsJson) {
    bspGpioDirectionOutput(3, 1);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "gpio-output", "line": 3, "level": 1, "result": 0,
                                      "errno": 0})"));
    uint32_t level = 0;
    bspGpioGetValue(3, &level);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "gpio-read", "line": 3, "level": 1, "result": 0,
                                      "errno": 0})"));
    bspGpioDirectionInput(3);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "gpio-input", "line": 3, "result": 0, "errno": 0})"));
}

TEST_F(TraceTest, MdioCommandsAsJson) {
    EXPECT_EQ(bsp_smi_write(0, 3, 0, 31, 0xABCD), BSP_OK);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "mdio-write", "first": 3, "second": 31,
                                      "value": 43981, "errno": 0})"));
    uint32_t value = 0;
    EXPECT_EQ(bsp_smi_read(0, 3, 0, 31, &value), BSP_OK);
    EXPECT_EQ(last(), parsedJson(R"({"kind": "mdio-read", "first": 3, "second": 31,
                                      "value": 43981, "errno": 0})"));
    world::set("mdio.state", "error");
    EXPECT_EQ(bsp_smi_read(0, 31, 0, 2, &value), BSP_E_FAILED);
    EXPECT_EQ(last(), json({{"kind", "mdio-read"},
                            {"first", 31},
                            {"second", 2},
                            {"value", nullptr},
                            {"errno", EIO}}));
    EXPECT_EQ(bsp_smi_write(0, 31, 0, 2, 1), BSP_E_FAILED);
    EXPECT_EQ(last()["kind"], "mdio-write");
    EXPECT_EQ(last()["errno"], EIO);
}

TEST_F(TraceTest, OtherRequestsOpensAndSleepsAsJson) {
    BspIoctlRecord record = {};
    bspFuncIoctl_handle(0x1777, &record);
    EXPECT_EQ(
        last(),
        json({{"kind", "request"}, {"code", 0x1777}, {"result", nullptr}, {"errno", ENOTTY}}));
    EXPECT_NE(access("/tmp/bsp/none", F_OK), 0);
    EXPECT_EQ(fopen("/tmp/bsp/none", "r"), nullptr);
    EXPECT_EQ(last(), json({{"kind", "open"}, {"path", "/tmp/bsp/none"}, {"errno", ENOENT}}));
    usleep(1500);
    EXPECT_EQ(
        language::traceJson(vb::traceAt(board().trace, board().trace.total - 1))["duration_ns"],
        1500000);
}

TEST_F(TraceTest, InWords) {
    const uint8_t data[2] = {0x44, 0x45};
    bspI2cWrite(0, 0, 0x51, 0, 1, data, 2);
    bspGpioDirectionOutput(3, 1);
    uint32_t level = 0;
    bspGpioGetValue(3, &level);
    bspGpioDirectionInput(3);
    usleep(1000);
    const timespec time = {0, 1};
    nanosleep(&time, nullptr);
    EXPECT_EQ(trace(),
              (std::vector<std::string>{"I2C write bus 0 ch 0 dev 0x51 off 0x00 len 2: 44 45",
                                        "GPIO output line 3 = 1", "GPIO read   line 3 = 1",
                                        "GPIO input  line 3", "sleep 1000 us", "sleep 1 ns"}));
}

TEST_F(TraceTest, CommandsHaveNames) {
    useModel(0x0709);
    const uint8_t status[4] = {0x42, 0x07, 0x02, 0xFF};
    const uint8_t block[6] = {0xC0, 0x81, 0xFF, 0xE0, 1, 2};
    const uint8_t unknown[2] = {0x7F, 0x00};
    uint8_t word[2] = {};
    bspI2cWrite(16, 0, 0x20, 0, 0, status, 4);
    bspI2cWrite(16, 0, 0x20, 0, 0, block, 6);
    bspI2cWrite(16, 0, 0x20, 0, 0, unknown, 2);
    bspI2cRead(0, 3, 0x58, 0x8D, 1, word, 2);
    const std::vector<std::string> lines = trace();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0],
              "I2C write bus 16 ch 0 dev 0x20 off 0x00 len 4 (PoE port status): 42 07 02 FF");
    EXPECT_EQ(lines[1],
              "I2C write bus 16 ch 0 dev 0x20 off 0x00 len 6 (PoE block of bank 1): C0 81 "
              "FF E0 01 02");
    EXPECT_EQ(lines[2],
              "I2C write bus 16 ch 0 dev 0x20 off 0x00 len 2 (PoE unknown command): 7F 00");
    EXPECT_EQ(lines[3].rfind("I2C read  bus 0 ch 3 dev 0x58 off 0x8D len 2 "
                             "(supply 2 READ_TEMPERATURE_1): ",
                             0),
              0u)
        << lines[3];
}

// The common language has its own knowledge of where things are on boards.
TEST_F(TraceTest, NamesAreThoseOfTheBoardsDevices) {
    const std::map<uint32_t, std::string> names = {
        {vb::kCpldDeviceId, "device id"},
        {vb::kCpldVersion, "version"},
        {vb::kCpldWatchdog, "watchdog"},
        {vb::kCpldReset, "reset"},
        {vb::kCpldControl, "control"},
        {vb::kCpldLamps, "lamps"},
        {vb::kCpldUplinkInputs, "uplink inputs"},
        {vb::kCpldUplinkTransmitters, "uplink transmitters"},
        {vb::kCpldPoeLamps, "PoE lamps"},
        {vb::kCpldPoeLamps + 1, "PoE lamps"},
        {vb::kCpldPoeLamps + 2, "PoE lamps"},
        {vb::kCpldSfpReceiveLoss, "SFP receive loss"},
        {vb::kCpldSfpReceiveLoss + 1, "SFP receive loss"},
        {vb::kCpldSfpReceiveLoss + 2, "SFP receive loss"},
        {vb::kCpldSfpPresence, "SFP presence"},
        {vb::kCpldSfpPresence + 1, "SFP presence"},
        {vb::kCpldSfpPresence + 2, "SFP presence"},
        {vb::kCpldSfpTransmitFault, "SFP transmit fault"},
        {vb::kCpldSfpTransmitFault + 1, "SFP transmit fault"},
        {vb::kCpldSfpTransmitFault + 2, "SFP transmit fault"},
        {vb::kCpldSfpTransmitDisable, "SFP transmit disable"},
        {vb::kCpldSfpTransmitDisable + 1, "SFP transmit disable"},
        {vb::kCpldSfpTransmitDisable + 2, "SFP transmit disable"},
        {vb::kCpldFanSpeeds, "fan speeds"},
        {vb::kCpldFanSpeeds + 1, "fan speeds"},
        {vb::kCpldSupplies, "supplies"},
        {vb::kCpldFans, "fans"}};
    for (uint32_t reg = 0; reg < 2 * vb::kCpldRegisters; ++reg) {
        const char *name = language::registerName(reg);
        const auto known = names.find(reg);
        EXPECT_EQ(name != nullptr ? name : "", known != names.end() ? known->second : "") << reg;
    }
    static_assert(language::kSystemBus == vb::kSupplyPmbus.bus);
    static_assert(language::kFirstSupplyChannel == vb::kSupplyPmbus.channel);
    static_assert(language::kPmbusDevAddr == vb::kSupplyPmbus.device);
    static_assert(language::kClimateChannel == vb::kTemperatureSensor.channel);
    static_assert(language::kClimateChannel == vb::kClockChip.channel);
    static_assert(language::kTemperatureDevAddr == vb::kTemperatureSensor.device);
    static_assert(language::kClockChipDevAddr == vb::kClockChip.device);
    static_assert(language::kModuleBus == vb::kFrontModule.bus);
    static_assert(language::kDiagnosticsDevAddr == vb::kFrontModule.device + 1);
    static_assert(language::kPoeBus == vb::kPoeController.bus);
    static_assert(language::kPoeDevAddr == vb::kPoeController.device);
    language::TraceRecord record = {};
    record.kind = language::TraceKind::I2cWrite;
    record.bus = vb::kPoeController.bus;
    record.devAddr = vb::kPoeController.device;
    record.stored = 2;
    record.data[0] = vb::kPoeMisc;
    for (const auto &[code, name] :
         {std::pair{vb::kPoeJumpToLoader, "PoE jump to loader"},
          {vb::kPoeJumpToApp, "PoE jump to application"},
          {vb::kPoeDownload, "PoE block of bank 0"},
          {static_cast<uint8_t>(vb::kPoeDownload + 3), "PoE block of bank 3"},
          {uint8_t{0x7F}, "PoE unknown command"}}) {
        record.data[1] = code;
        EXPECT_EQ(language::transferName(record), name);
    }
}

} // namespace
