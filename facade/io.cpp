// The interface that management software calls: each function is the bsp function of its stem.

#include "bsp.h"

#include <unistd.h>

// Device identity and versions
int32_t ioDevIdGet(uint32_t *devId) {
    return bspDevIdGet(devId);
}
int32_t ioDevSerialVerGet(uint32_t *ver) {
    return bspDevSerialVerGet(ver);
}
int32_t ioHwVersionGet(char *text) {
    return bspHwVersionGet(text);
}
int32_t ioCpldVersionGet(char *text) {
    return bspCpldVersionGet(text);
}
int32_t ioFpgaVersionGet(char *text) {
    return bspFpgaVersionGet(text);
}
int32_t ioBiosVersionGet(char *version) {
    return bspUbootVersionGet(version);
}
int32_t ioBoardSlotIdGet(uint32_t *slotId) {
    return bspBoardSlotIdGet(slotId);
}
int32_t ioBoardDescGet(char *desc) {
    return bspBoardDescGet(desc);
}
int32_t ioBoardDescSet(const char *desc) {
    return bspBoardDescSet(desc);
}
int32_t ioBoardPowerInfoGet(uint32_t index, void *info) {
    return bspBoardPowerInfoGet(index, info);
}

// Device information, MAC address and serial number
int32_t ioDevinfoGet(uint32_t index, BspDevinfo *record) {
    return bspDevinfoGet(index, record);
}
int32_t ioDevinfoSet(uint32_t index, BspDevinfo *record) {
    return bspDevinfoSet(index, record);
}
int32_t ioMacAddrGet(uint32_t index, uint8_t *mac) {
    return bspMacAddrGet(index, mac);
}
int32_t ioMacAddrSet(uint32_t index, const uint8_t *mac) {
    return bspMacAddrSet(index, mac);
}
int32_t ioSerialNumGet(char *serial, uint32_t *len) {
    return bspSerialNumGet(serial, len);
}
int32_t ioSerialNumSet(const char *serial, int32_t len) {
    return bspSerialNumSet(serial, len);
}
int32_t ioMfgDateGet(char *date) {
    return bspMfgDateGet(date);
}
int32_t ioMfgDateSet(const char *date) {
    return bspMfgDateSet(date);
}

// Boot settings
int32_t ioBootModeGet(uint32_t *mode) {
    return bspBootModeGet(mode);
}
int32_t ioBootModeSet(int32_t mode) {
    return bspBootModeSet(mode);
}
int32_t ioBootFlagGet(int32_t *flag) {
    return bspBootFlagGet(flag);
}
int32_t ioBootFlagSet(int32_t flag) {
    return bspBootFlagSet(flag);
}
int32_t ioBaudrateGet(uint32_t *baud) {
    return bspBaudrateGet(baud);
}
int32_t ioBaudrateSet(uint32_t baud) {
    return bspBaudrateSet(baud);
}
int32_t ioConsolePwdValidGet(uint32_t *valid) {
    return bspConsolePwdValidGet(valid);
}
int32_t ioConsolePwdValidSet(int32_t valid) {
    return bspConsolePwdValidSet(valid);
}
int32_t ioUserPwdValidGet(uint32_t *valid) {
    return bspUserPwdValidGet(valid);
}
int32_t ioUserPwdValidSet(int32_t valid) {
    return bspUserPwdValidSet(valid);
}
int32_t ioBootPwdGet(char *pwd) {
    return bspBootPwdGet(pwd);
}
int32_t ioBootPwdSet(const char *pwd) {
    return bspBootPwdSet(pwd);
}

// Images and upgrades
int32_t ioOsImageInfoGet(uint8_t *header, int32_t bank) {
    return bspOsImageInfoGet(header, bank);
}
int32_t ioImageUpgrade(const char *file, int32_t bank) {
    return bspImageUpgrade(BSP_IMAGE_OS, file, bank);
}
int32_t ioBiosUpgrade(const char *file) {
    return bspImageUpgrade(BSP_IMAGE_BOOT, file, 0);
}
int32_t ioCpldUpgrade(const char *file) {
    return bspImageUpgrade(BSP_IMAGE_CPLD, file, 0);
}

// The reset follows whether or not the flag is stored, and its own failure is not told either:
// whoever sees this function come back knows that the board still runs.
int32_t ioRebootEx(int32_t flag) {
    ioBootFlagSet(flag);
    sleep(1);
    bspHwReboot();
    return BSP_OK;
}

// Power supplies, LEDs, watchdog, PTP trigger, slots
int32_t ioPowerNumGet(int32_t *out) {
    return bspPowerNumGet(out);
}
int32_t ioPowerPresentGet(int32_t index, int32_t *out) {
    return bspPowerPresentGet(index, out);
}
int32_t ioPowerStatusGet(int32_t index, int32_t *out) {
    return bspPowerStatusGet(index, out);
}
int32_t ioPowerInfoGet(int32_t index, BspPowerInfo *info) {
    return bspPowerInfoGet(index, info);
}
int32_t ioLedStateSet(uint32_t unit, uint32_t index, uint32_t kind, uint32_t colour,
                      uint32_t state) {
    return bspLedStateSet(unit, index, kind, colour, state);
}
int32_t ioWatchdogFeed(void) {
    return bspWatchdogFeed();
}
int32_t ioWatchdogStart(void) {
    return bspWatchdogStart();
}
int32_t ioWatchdogStop(void) {
    return bspWatchdogStop();
}
int32_t ioWatchdogPeriodGet(uint32_t *period) {
    return bspWatchdogPeriodGet(period);
}
int32_t ioWatchdogPeriodSet(uint32_t period) {
    return bspWatchdogPeriodSet(period);
}
int32_t ioPtpTriggerSet(uint32_t value) {
    return bspPtpTriggerSet(value);
}
int32_t ioSlotPresentGet(uint32_t slot, uint32_t *out) {
    return bspSlotPresentGet(slot, out);
}
int32_t ioSlotPowerStateSet(uint32_t slot, uint32_t state) {
    return bspSlotPowerStateSet(slot, state);
}

// Fans, temperature, clock
int32_t ioFanSpeedGet(uint32_t fan, uint32_t *rpm) {
    return bspFanSpeedGet(fan, rpm);
}
int32_t ioFanSpeedSet(uint32_t fan, int32_t level) {
    return bspFanSpeedSet(fan, level);
}
int32_t ioFanPresentGet(int32_t fan, uint32_t *out) {
    return bspFanPresentGet(fan, out);
}
int32_t ioTemperGet(uint32_t sensor, int32_t *celsius) {
    return bspTemperGet(sensor, celsius);
}
int32_t ioRealtimeGet(BspCalendar *record) {
    return bspRealtimeGet(record);
}
int32_t ioRealtimeSet(const BspCalendar *record) {
    return bspRealtimeSet(record);
}

// Pluggable transceivers
int32_t ioLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte) {
    return bspLaserBasicGet(port, offset, byte);
}
int32_t ioLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte) {
    return bspLaserAdvanceGet(port, offset, byte);
}
int32_t ioLaserPresentGet(uint32_t port, uint32_t *out) {
    return bspLaserPresentGet(port, out);
}
int32_t ioLaserControlSet(uint32_t port, uint32_t state) {
    return bspLaserControlSet(port, state);
}
int32_t ioLaserControlGet(uint32_t port, uint32_t *out) {
    return bspLaserControlGet(port, out);
}
int32_t ioLaserRxLosGet(uint32_t port, uint32_t *out) {
    return bspLaserRxLosGet(port, out);
}
int32_t ioLaserTxfaultGet(uint32_t port, uint32_t *out) {
    return bspLaserTxfaultGet(port, out);
}
int32_t ioLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value) {
    return bspLaserPhyGet(port, reg, value);
}
int32_t ioLaserPhySet(uint32_t port, uint32_t reg, uint32_t value) {
    return bspLaserPhySet(port, reg, value & 0xFFFF);
}
int32_t ioLaserQsfpGet(uint32_t port, uint32_t offset, uint8_t *buf) {
    return bspLaserQsfpRead(port, offset, buf, 1);
}
int32_t ioLaserQsfpSet(uint32_t port, uint32_t offset, uint32_t value) {
    return bspLaserQsfpWrite(port, offset, value & 0xFF);
}

// Power over Ethernet
int32_t ioPoeDeviceInit(void) {
    return bspPoeDeviceInit();
}
int32_t ioPoeInitStatusSet(uint32_t status) {
    return bspPoeInitStatusSet(status);
}
int32_t ioPoeInitStatusGet(uint32_t *out) {
    return bspPoeInitStatusGet(out);
}
int32_t ioPoeGlobalMaxPowerSet(uint32_t milliwatts) {
    return bspPoeGlobalMaxPowerSet(milliwatts);
}
int32_t ioPoePortModeSet(uint32_t port, uint32_t mode) {
    return bspPoePortModeSet(port, mode);
}
int32_t ioPoePortPowerOnSet(uint32_t port, uint32_t on) {
    return bspPoePortPowerOnSet(port, on);
}
int32_t ioPoePortDetectionSet(uint32_t port) {
    return bspPoePortDetectionSet(port);
}
int32_t ioPoePortClassificationSet(uint32_t port) {
    return bspPoePortClassificationSet(port);
}
int32_t ioPoePortPrioritySet(uint32_t port, uint32_t priority) {
    return bspPoePortPrioritySet(port, priority);
}
int32_t ioPoePortMaxPowerSet(uint32_t port, uint32_t milliwatts) {
    return bspPoePortMaxPowerSet(port, milliwatts);
}
int32_t ioPoePortLegacyEnableSet(uint32_t port, uint32_t enable) {
    return bspPoePortLegacyEnableSet(port, enable);
}
int32_t ioPoePortInrushModeSet(uint32_t port, uint32_t mode) {
    return bspPoePortInrushModeSet(port, mode);
}
int32_t ioPoePortForceInrushSet(uint32_t port, uint32_t force) {
    return bspPoePortForceInrushSet(port, force);
}
int32_t ioPoePortMaxPowerTypeSet(uint32_t port, uint32_t type) {
    return bspPoePortMaxPowerTypeSet(port, type);
}
int32_t ioPoePortLedStateSet(uint32_t port, uint32_t state) {
    return bspPoePortLedStateSet(port, state);
}
int32_t ioPoeGlobalMaxPowerGet(uint32_t *milliwatts) {
    return bspPoeGlobalMaxPowerGet(milliwatts);
}
int32_t ioPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *milliwatts) {
    return bspPoeGlobalRatedPowerGet(supplyIndex, milliwatts);
}
int32_t ioPoeGlobalPowerGet(uint32_t *milliwatts) {
    return bspPoeGlobalPowerGet(milliwatts);
}
int32_t ioPoePortModeGet(uint32_t port, uint32_t *out) {
    return bspPoePortModeGet(port, out);
}
int32_t ioPoePortCurrentGet(uint32_t port, uint32_t *milliamperes) {
    return bspPoePortCurrentGet(port, milliamperes);
}
int32_t ioPoePortVoltageGet(uint32_t port, uint32_t *volts) {
    return bspPoePortVoltageGet(port, volts);
}
int32_t ioPoePortPowerGet(uint32_t port, uint32_t *milliwatts) {
    return bspPoePortPowerGet(port, milliwatts);
}
int32_t ioPoePortMaxPowerGet(uint32_t port, uint32_t *milliwatts) {
    return bspPoePortMaxPowerGet(port, milliwatts);
}
int32_t ioPoePortFaultGet(uint32_t port, uint32_t *out) {
    return bspPoePortFaultGet(port, out);
}
int32_t ioPoePortDetectionGet(uint32_t port, uint32_t *out) {
    return bspPoePortDetectionGet(port, out);
}
int32_t ioPoePortClassificationGet(uint32_t port, uint32_t *out) {
    return bspPoePortClassificationGet(port, out);
}
int32_t ioPoePortDisconnectGet(uint32_t port, uint32_t *out) {
    return bspPoePortDisconnectGet(port, out);
}
int32_t ioPoePortInrushModeGet(uint32_t port, uint32_t *out) {
    return bspPoePortInrushModeGet(port, out);
}
int32_t ioPoeAppStatusGet(uint32_t *out) {
    return bspPoeAppStatusGet(out);
}
int32_t ioPoeAppUpgradeSet(const char *file) {
    return bspPoeAppUpgradeSet(file);
}
int32_t ioPoeAppVersionGet(char *text) {
    return bspPoeAppVersionGet(text);
}
int32_t ioPoePortStateGet(uint32_t port, BspPoePortState *state) {
    return bspPoePortStateGet(port, state);
}
int32_t ioPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement) {
    return bspPoePortMeasurementGet(port, measurement);
}
int32_t ioPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings) {
    return bspPoePortSettingsGet(port, settings);
}
