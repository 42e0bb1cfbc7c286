#include "tests/sweep/functions.h"

#include "tests/support/depth.h"

#include <cstring>

namespace sweep {

namespace {

using Statuses = std::set<int32_t>;

Statuses operator+(Statuses left, const Statuses &right) {
    left.insert(right.begin(), right.end());
    return left;
}

constexpr int32_t kRefused = -5; // what the kernel module answers in the sweep

const Statuses kNothing = {};
const Statuses kUnsupported = {BSP_E_NOT_SUPPORTED};
const Statuses kRequest = {BSP_E_FAILED, kRefused};
const Statuses kDeviceId = kRequest + Statuses{BSP_E_OPEN};
const Statuses kMdio = {BSP_E_OPEN, BSP_E_MAP, BSP_E_FAILED, BSP_E_TIMEOUT};
const Statuses kEeprom = {BSP_E_FAILED};
const Statuses kTransceiver = kDeviceId + kEeprom;
const Statuses kRecordGet = kEeprom + Statuses{BSP_E_NO_MEMORY};
const Statuses kDevinfo = kDeviceId + kRecordGet;
const Statuses kPowerInfo = kDeviceId + Statuses{BSP_E_FAILED};
const Statuses kExchange = {BSP_E_POE_UNAVAILABLE, BSP_E_POE_WRITE,   BSP_E_POE_READ,
                            BSP_E_POE_FRAME,       BSP_E_POE_CONTENT, BSP_E_POE_STATUS,
                            BSP_E_POE_LOCK};
const Statuses kNoSlot = {BSP_E_POE_UNAVAILABLE}; // of the driver
const Statuses kAppStatus = {BSP_E_POE_UNAVAILABLE, BSP_E_POE_OPEN};
const Statuses kPoeInit = kExchange + kRequest + Statuses{BSP_E_POE_OPEN};
const Statuses kPoeUpgrade = kExchange + Statuses{BSP_E_POE_INVALID, BSP_E_POE_NO_MEMORY,
                                                  BSP_E_POE_OPEN, BSP_E_POE_SHORT_READ};
const Statuses kMtdWrite = {BSP_E_FAILED, BSP_E_SHORT_READ, BSP_E_WRITE};
const Statuses kMtdRead = {BSP_E_LOCK,      BSP_E_OPEN,  BSP_E_ERASE,
                           BSP_E_NO_MEMORY, BSP_E_WRITE, BSP_E_SHORT_READ};
const Statuses kShell = {-1, 1 << 8}; // what system() answers for the command that removes a file
const Statuses kOsInfo = kShell + Statuses{BSP_E_LOCK, BSP_E_FAILED, BSP_E_OPEN, BSP_E_SHORT_READ};
const Statuses kOsWrite = kShell + Statuses{BSP_E_LOCK,       BSP_E_FAILED,    BSP_E_OPEN,
                                            BSP_E_SHORT_READ, BSP_E_NO_MEMORY, BSP_E_WRITE};
const Statuses kBootWrite = {BSP_E_SHORT_READ, BSP_E_FAILED, BSP_E_NO_MEMORY, BSP_E_OPEN};

// Work of hundreds or thousands of frames, whose later calls are all alike. Its forwarders are only
// shown to forward what fails. Each step is the whole work once more.
Depth manyFrames() {
    return depthOf<Depth>({60, 333}, {12, 3330}, {60, 111}, {60, 1110});
}
Depth thousandsOfFrames() {
    return depthOf<Depth>({30, 3700}, {6, 14800}, {40, 1480}, {20, 14800});
}
Depth forwarder() {
    return depthOf<Depth>({12, 7400}, {8, 14800}, {20, 7400}, {8, 7400});
}

using Call = std::function<int32_t(Output &)>;

class Table {
  public:
    void add(const char *name, const Call &call, const Statuses &statuses,
             Exception exception = Exception::None, Depth depth = {}) {
        rows_.push_back({name, call, statuses, exception, depth});
    }
    std::vector<Function> take() { return std::move(rows_); }

  private:
    std::vector<Function> rows_;
};

} // namespace

// add(function, (arguments), statuses...): the arguments see `output`.
#define ADD(function, arguments, ...)                                                              \
    table.add(                                                                                     \
        #function, [=]([[maybe_unused]] Output &output) -> int32_t { return function arguments; }, \
        __VA_ARGS__)
// The same for both layers.
#define ADD_BOTH(stem, arguments, ...)                                                             \
    ADD(bsp##stem, arguments, __VA_ARGS__);                                                        \
    ADD(io##stem, arguments, __VA_ARGS__)

namespace {

/** How the kernel module is told to program the board's CPLD. */
const void *programmingBlock() {
    static struct {
        uint32_t words[6];
        uint32_t lines[4];
    } block = {{1, 0, 0, 5500, 0, 0}, {9, 8, 10, 11}};
    std::memset(&block.words[2], 1, 1);
    block.words[4] = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block.lines));
    return &block;
}

void addRequests(Table &table, const char *image) {
    static uint32_t word = 0;
    ADD(bspFuncIoctl_handle,
        (BSP_REQ_CPLD_READ,
         [] {
             static BspIoctlRecord record;
             record = {};
             record.slot[0] = 1;
             record.slot[1] = reinterpret_cast<uintptr_t>(&word);
             return &record;
         }()),
        Statuses{BSP_E_FAILED});
    ADD(bspFpgaGet_handle, (1, output.as<uint32_t>()), kRequest);
    ADD(bspFpgaSet_handle, (20, 1), kRequest);
    ADD(bspI2cRead_handle, (0, 0x51, 0, 1, output.as<uint8_t>(), 4), kRequest);
    ADD(bspI2cWrite_handle, (0, 0x51, 0x300, 1, "abc", 3), kRequest);
    ADD(bspSpiXfer_handle, (0, 0, 0, 0, 0, 0), // no buffer, which the driver refuses
        kRequest + Statuses{-14}, Exception::NeverSucceeds);
    ADD(bspGpioDirectionInput_handle, (5), kRequest);
    ADD(bspGpioDirectionOutput_handle, (5, 1), kRequest);
    ADD(bspGpioGetValue_handle, (5, output.as<uint32_t>()), kRequest);
    ADD(bspCpldUpgrade_handle, (programmingBlock(), image), kRequest);
    ADD(bspCpldGet, (1, output.as<uint16_t>()), kRequest);
    ADD(bspCpldSet, (20, 1), kRequest);
    ADD(bspFpgaGet, (1, output.as<uint16_t>()), kUnsupported, Exception::NeverSucceeds);
    ADD(bspFpgaSet, (1, 1), kUnsupported, Exception::NeverSucceeds);
    ADD(bspI2cRead, (0, 0, 0x51, 0, 1, output.as<uint8_t>(), 4), kRequest);
    ADD(bspI2cWrite, (0, 0, 0x51, 0x300, 1, reinterpret_cast<const uint8_t *>("abc"), 3), kRequest);
    ADD(bspGpioDirectionInput, (5), kRequest);
    ADD(bspGpioDirectionOutput, (5, 1), kRequest);
    ADD(bspGpioGetValue, (5, output.as<uint32_t>()), kRequest);
}

void addIdentity(Table &table) {
    static const uint8_t bytes[] = {1, 2, 3, 4};
    static const uint8_t mac[] = {2, 0, 0x5E, 0x10, 0, 0};
    static BspSupplyRecord supplyRecord;
    static BspDevinfo record = [] {
        BspDevinfo content{};
        std::memcpy(&content, "DEVINFO", 8);
        return content;
    }();
    ADD_BOTH(DevIdGet, (output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(DevSerialVerGet, (output.as<uint32_t>()), kRequest);
    ADD_BOTH(HwVersionGet, (output.as<char>()), kRequest);
    ADD_BOTH(CpldVersionGet, (output.as<char>()), kRequest);
    ADD_BOTH(FpgaVersionGet, (output.as<char>()), kNothing);
    ADD(bspUbootVersionGet, (output.as<char>()), Statuses{BSP_E_FAILED});
    ADD(ioBiosVersionGet, (output.as<char>()), Statuses{BSP_E_FAILED});
    ADD_BOTH(BoardSlotIdGet, (output.as<uint32_t>()), kNothing);
    ADD(ioProductIdGet, (0, output.as<uint32_t>()), kNothing);
    ADD(ioSlotIdGet, (0, output.as<uint32_t>()), kNothing);
    ADD(ioCardIdGet, (0, output.as<uint32_t>()), kNothing);
    ADD(ioFrameTypeGet, (0, output.as<uint32_t>()), kNothing);
    ADD(ioSlotTypeGet, (0, output.as<uint32_t>()), kNothing);
    ADD(ioCardTypeGet, (0, output.as<uint32_t>()), kNothing);
    ADD_BOTH(BoardDescGet, (output.as<char>()), kUnsupported, Exception::NeverSucceeds);
    ADD_BOTH(BoardDescSet, ("text"), kUnsupported, Exception::NeverSucceeds);
    ADD_BOTH(BoardPowerInfoGet, (1, output.as<void>()), kUnsupported, Exception::NeverSucceeds);
    ADD(bspI2cEepromRead, (0, 0, 0x51, 0, output.as<uint8_t>(), 40), kEeprom,
        Exception::StoresBeforeFailure);
    ADD(bspI2cEepromWrite, (0, 0, 0x50, 0x300, bytes, 4), kEeprom);
    ADD(bspLocalEepromRead, (0, output.as<uint8_t>(), 40), kEeprom, Exception::StoresBeforeFailure);
    ADD(bspLocalEepromWrite, (0x300, bytes, 4), kEeprom);
    ADD(bspPowerEepromRead, (1, 0, output.as<uint8_t>(), 40), kEeprom,
        Exception::StoresBeforeFailure);
    ADD(bspPowerEepromWrite, (1, 0, bytes, 4), kEeprom);
    ADD(bspLocalPieGet, (output.as<BspDevinfo>()), kRecordGet);
    ADD(bspLocalPieSet, (&record), kEeprom);
    ADD(bspPowerPieGet, (1, output.as<BspSupplyRecord>()), kRecordGet);
    ADD(bspPowerPieSet, (1, &supplyRecord), kEeprom);
    ADD_BOTH(DevinfoGet, (0, output.as<BspDevinfo>()), kDevinfo);
    ADD_BOTH(DevinfoSet, (0, &record), kDevinfo);
    ADD_BOTH(MacAddrGet, (0, output.as<uint8_t>()), kDevinfo);
    ADD_BOTH(MacAddrSet, (0, mac), kDevinfo);
    ADD_BOTH(SerialNumGet, (output.as<char>() + 8, output.as<uint32_t>()), kDevinfo);
    ADD_BOTH(SerialNumSet, ("SN1", 3), kDevinfo);
    ADD_BOTH(MfgDateGet, (output.as<char>()), kNothing, Exception::StoresNothing);
    ADD_BOTH(MfgDateSet, ("2026"), kNothing);
    ADD(bspLibraryVersion, () == BSP_VERSION ? BSP_OK : BSP_E_FAILED, kNothing);
    ADD(bspStatusText, (BSP_OK) != nullptr ? BSP_OK : BSP_E_FAILED, kNothing);
    ADD(bsp_crc32_cal, (0, bytes, 4) == 0 ? BSP_E_FAILED : BSP_OK, kNothing);
}

void addBootSettings(Table &table) {
    // What happens to the block is not told, by design.
    ADD_BOTH(BootModeGet, (output.as<uint32_t>()), kNothing);
    ADD_BOTH(BootModeSet, (1), kNothing);
    ADD_BOTH(BootFlagGet, (output.as<int32_t>()), Statuses{BSP_E_FAILED});
    ADD_BOTH(BootFlagSet, (1), kNothing);
    ADD_BOTH(BaudrateGet, (output.as<uint32_t>()), kNothing);
    ADD_BOTH(BaudrateSet, (9600), Statuses{BSP_E_FAILED});
    ADD_BOTH(ConsolePwdValidGet, (output.as<uint32_t>()), kNothing);
    ADD_BOTH(ConsolePwdValidSet, (1), kNothing);
    ADD_BOTH(UserPwdValidGet, (output.as<uint32_t>()), kNothing);
    ADD_BOTH(UserPwdValidSet, (0), kNothing);
    ADD_BOTH(BootPwdGet, (output.as<char>()), kNothing);
    ADD_BOTH(BootPwdSet, ("secret"), kNothing);
}

void addChassis(Table &table) {
    ADD_BOTH(PowerNumGet, (output.as<int32_t>()), kDeviceId);
    ADD_BOTH(PowerPresentGet, (1, output.as<int32_t>()), kDeviceId);
    ADD(bspPowerTypeGet, (1, output.as<int32_t>()), kDeviceId);
    ADD_BOTH(PowerStatusGet, (1, output.as<int32_t>()), kDeviceId);
    ADD_BOTH(PowerInfoGet, (1, output.as<BspPowerInfo>()), kPowerInfo,
             Exception::StoresBeforeFailure);
    ADD_BOTH(LedStateSet, (0, 1, 9, 0, 1), kDeviceId);
    ADD_BOTH(WatchdogFeed, (), kNothing);
    ADD_BOTH(WatchdogStart, (), kNothing);
    ADD_BOTH(WatchdogStop, (), kRequest);
    ADD_BOTH(WatchdogPeriodGet, (output.as<uint32_t>()), kRequest);
    ADD_BOTH(WatchdogPeriodSet, (0), kRequest);
    ADD(bspHwReboot, (), kRequest);
    ADD(ioRebootEx, (1), kNothing);
    ADD_BOTH(PtpTriggerSet, (0), kRequest);
    ADD_BOTH(SlotPresentGet, (1, output.as<uint32_t>()), kUnsupported, Exception::NeverSucceeds);
    ADD_BOTH(SlotPowerStateSet, (1, 1), kUnsupported, Exception::NeverSucceeds);
}

void addFansAndClock(Table &table) {
    static const BspCalendar calendar = {1, 2, 3, 4, 5, 126};
    ADD_BOTH(TemperGet, (0, output.as<int32_t>()), kRequest);
    ADD_BOTH(FanSpeedGet, (1, output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(FanSpeedSet, (1, 5), kRequest);
    ADD_BOTH(FanPresentGet, (1, output.as<uint32_t>()), kDeviceId);
    ADD(bsp_rtc_chip_get,
        (output.as<uint16_t>(), output.as<uint8_t>() + 2, output.as<uint8_t>() + 3,
         output.as<uint8_t>() + 4, output.as<uint8_t>() + 5, output.as<uint8_t>() + 6),
        kRequest, Exception::StoresBeforeFailure);
    ADD(bsp_rtc_chip_set, (126, 5, 4, 3, 2, 1), kRequest);
    ADD_BOTH(RealtimeGet, (output.as<BspCalendar>()), kDeviceId, Exception::StoresBeforeFailure);
    ADD_BOTH(RealtimeSet, (&calendar), kDeviceId);
    ADD(bspSysClockSync, (), kDeviceId);
    ADD(bspInit, (), kNothing);
}

void addTransceivers(Table &table) {
    constexpr uint32_t kOptical = 49, kCopper = 50; // modules of these kinds are plugged there
    static const uint8_t bytes[40] = {};
    ADD(bspLaserSfpRead, (kOptical, 0x50, 0, output.as<uint8_t>(), 40), kTransceiver,
        Exception::StoresBeforeFailure);
    ADD(bspLaserSfpWrite, (kOptical, 0x51, 128, bytes, 40), kTransceiver);
    ADD_BOTH(LaserBasicGet, (kOptical, 0, output.as<uint8_t>()), kTransceiver);
    ADD_BOTH(LaserAdvanceGet, (kOptical, 0, output.as<uint8_t>()), kTransceiver);
    ADD_BOTH(LaserPhyGet, (kCopper, 0, output.as<uint16_t>()), kTransceiver,
             Exception::StoresBeforeFailure);
    ADD_BOTH(LaserPhySet, (kCopper, 0, 1), kTransceiver);
    ADD(bspElectricModerTypeGet, (kCopper, output.as<uint16_t>()), kTransceiver,
        Exception::StoresBeforeFailure);
    ADD(bspLaserQsfpRead, (kOptical, 0, output.as<uint8_t>(), 1), kUnsupported,
        Exception::NeverSucceeds);
    ADD(bspLaserQsfpWrite, (kOptical, 0, 1), kUnsupported, Exception::NeverSucceeds);
    ADD(ioLaserQsfpGet, (kOptical, 0, output.as<uint8_t>()), kUnsupported,
        Exception::NeverSucceeds);
    ADD(ioLaserQsfpSet, (kOptical, 0, 1), kUnsupported, Exception::NeverSucceeds);
    ADD_BOTH(LaserPresentGet, (kOptical, output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(LaserControlSet, (kOptical, 1), kDeviceId);
    ADD_BOTH(LaserControlGet, (kOptical, output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(LaserRxLosGet, (kOptical, output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(LaserTxfaultGet, (kOptical, output.as<uint32_t>()), kDeviceId);
}

void addMdio(Table &table) {
    ADD(bsp_smi_read, (0, 3, 0, 5, output.as<uint32_t>()), kMdio);
    ADD(bsp_smi_write, (0, 3, 0, 5, 0x1234), kMdio);
}

void addFlash(Table &table, const Files &files) {
    const char *output1 = files.output.c_str();
    const char *image = files.bootLoader.c_str();
    ADD(bsp_mtd_write_from_file, (image, "/dev/mtd0", 1), kMtdWrite);
    ADD(bsp_mtd_read_to_file, ("/dev/mtd0", output1, 1), kMtdRead);
    ADD(bsp_mtd_erase, ("/dev/mtd0"), Statuses{BSP_E_OPEN, BSP_E_ERASE});
    const char *osImage = files.osImage.c_str();
    ADD_BOTH(OsImageInfoGet, (output.as<uint8_t>(), 0), kOsInfo, Exception::StoresBeforeFailure);
    ADD(bspImageUpgrade, (BSP_IMAGE_OS, osImage, 1), kOsWrite);
    ADD(ioImageUpgrade, (osImage, 1), kOsWrite);
    ADD(ioBiosUpgrade, (image), kBootWrite);
    ADD(ioCpldUpgrade, (image), kRequest);
}

void addPoeSettings(Table &table) {
    ADD_BOTH(PoeGlobalMaxPowerSet, (1000000), kExchange);
    ADD_BOTH(PoeInitStatusSet, (1), kExchange);
    ADD_BOTH(PoePortModeSet, (1, 1), kExchange);
    ADD_BOTH(PoePortPowerOnSet, (2, 1), kExchange);
    ADD_BOTH(PoePortDetectionSet, (1), kExchange);
    ADD_BOTH(PoePortClassificationSet, (1), kExchange);
    ADD_BOTH(PoePortPrioritySet, (1, 1), kExchange);
    ADD_BOTH(PoePortMaxPowerSet, (1, 30000), kExchange);
    ADD_BOTH(PoePortLegacyEnableSet, (1, 1), kExchange);
    ADD_BOTH(PoePortInrushModeSet, (1, 1), kExchange);
    ADD_BOTH(PoePortForceInrushSet, (1, 1), kExchange);
    ADD_BOTH(PoePortMaxPowerTypeSet, (1, 1), kExchange);
    ADD_BOTH(PoePortLedStateSet, (1, 1), kDeviceId);
}

void addPoeReadings(Table &table) {
    ADD_BOTH(PoeInitStatusGet, (output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoeGlobalMaxPowerGet, (output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoeGlobalPowerGet, (output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoeGlobalRatedPowerGet, (1, output.as<uint32_t>()), kDeviceId);
    ADD_BOTH(PoePortModeGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortVoltageGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortCurrentGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortPowerGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortMaxPowerGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortFaultGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortDetectionGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortClassificationGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortDisconnectGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortInrushModeGet, (1, output.as<uint32_t>()), kExchange);
    ADD_BOTH(PoePortStateGet, (1, output.as<BspPoePortState>()), kExchange);
    ADD_BOTH(PoePortMeasurementGet, (1, output.as<BspPoePortMeasurement>()), kExchange);
    ADD_BOTH(PoePortSettingsGet, (1, output.as<BspPoePortSettings>()), kExchange);
    ADD_BOTH(PoeAppStatusGet, (output.as<uint32_t>()), kAppStatus);
    ADD_BOTH(PoeAppVersionGet, (output.as<char>()), kExchange);
}

void addPoeService(Table &table, const Files &files) {
    static char words[3][16] = {"iodbg", "poe", "poeCommand"};
    static char digits[3][4] = {"4b", "0", "1"};
    static char *vector[] = {words[0],  words[1],  words[2], digits[0],
                             digits[1], digits[2], nullptr};
    static const uint8_t frame[] = {0x4B, 0, 1};
    const char *firmware = files.controllerFirmware.c_str();
    ADD(bspPoeOnlineGet, (output.as<uint32_t>()), kRequest);
    table.add(
        "bspPoeDriverGet", [](Output &) { return bspPoeDriverGet() != nullptr ? 0 : -1; },
        Statuses{-1});
    static const uint32_t port = 1;
    ADD(bspPoeOptDriver, (&port, BSP_POE_PORT_POWER_GET, output.as<void>()), kExchange);
    ADD_BOTH(PoeDeviceInit, (), kPoeInit, Exception::None, forwarder());
    ADD_BOTH(PoeAppUpgradeSet, (firmware), kPoeUpgrade, Exception::None, forwarder());
    ADD(bspPoeDebugAllInfoGet, (), kNoSlot, Exception::NeverSucceeds);
    ADD(bspPoeDebugPortInfoGet, (1), kNoSlot, Exception::NeverSucceeds);
    ADD(bspPoeDebugSwVersionGet, (), kNoSlot, Exception::NeverSucceeds);
    ADD(bspPoeDebugChipDispatch, (0, 6, vector), kExchange);
    ADD(bspPoeDebugChipDispatchHelp, (-1), Statuses{BSP_E_POE_UNAVAILABLE});
    ADD(bspPoeRtl8239DebugDispatch, (0, 6, vector), kExchange);
    ADD(bspPoeRtl8239DebugDispatchHelp, (-1), kNothing);
    ADD(bspPoeRtl8239DbgPoeCommand, (0, 6, vector), kExchange);
    ADD(bspPoeRtl8239DbgUdfCmd, (frame, 3), kExchange);
}

void addPoeDriver(Table &table, const Files &files) {
    const char *firmware = files.controllerFirmware.c_str();
    ADD(bspPoeRtl8239DeviceInit, (), kPoeInit, Exception::None, manyFrames());
    ADD(bspPoeRtl8239InitStatusSet, (1), kNothing);
    ADD(bspPoeRtl8239InitStatusGet, (output.as<uint32_t>()), kNothing);
    ADD(bspPoeRtl8239AppStatusGet, (output.as<uint32_t>()), Statuses{BSP_E_POE_OPEN});
    ADD(bspPoeRtl8239AppStatusSet, (0), Statuses{BSP_E_POE_OPEN});
    ADD(bspPoeRtl8239AppVersionGet, (output.as<char>()), kExchange);
    ADD(bspPoeRtl8239McuUpgrade, (firmware), kPoeUpgrade, Exception::None, thousandsOfFrames());
    ADD(bspPoeRtl8239GlobalMaxPowerSet, (1000000), kExchange);
    ADD(bspPoeRtl8239GlobalMaxPowerGet, (output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239GlobalPowerGet, (output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortModeSet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortPowerOnSet, (1, 1), kExchange);
    ADD(bspPoeRtl8239PortDetectionSet, (0), kExchange);
    ADD(bspPoeRtl8239PortClassificationSet, (0), kExchange);
    ADD(bspPoeRtl8239PortPrioritySet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortMaxPowerSet, (0, 30000), kExchange);
    ADD(bspPoeRtl8239PortLegacyEnableSet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortInrushModeSet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortForceInrushSet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortMaxPowerTypeSet, (0, 1), kExchange);
    ADD(bspPoeRtl8239PortModeGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortCurrentGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortVoltageGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortPowerGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortMaxPowerGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortFaultGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortDetectionGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortClassificationGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortDisconnectGet, (0, output.as<uint32_t>()), kExchange);
    ADD(bspPoeRtl8239PortInrushModeGet, (0, output.as<uint32_t>()), kExchange);
}

} // namespace

std::vector<Function> allFunctions(const Files &files) {
    Table table;
    addRequests(table, files.bootLoader.c_str());
    addIdentity(table);
    addBootSettings(table);
    addChassis(table);
    addFansAndClock(table);
    addTransceivers(table);
    addMdio(table);
    addFlash(table, files);
    addPoeSettings(table);
    addPoeReadings(table);
    addPoeService(table, files);
    addPoeDriver(table, files);
    return table.take();
}

} // namespace sweep
