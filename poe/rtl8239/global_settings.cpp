// Settings of the whole controller.

#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/exchange.h"

namespace {

using namespace bsp::rtl8239;

constexpr int32_t kHighestBank = 7;
constexpr int32_t kDevices = 12;
constexpr int32_t kChannels = 8;
constexpr int32_t kNone = 255; // a channel or chip address that is not there

// Limits of the voltage thresholds in millivolts; a code counts from the lowest.
constexpr uint32_t kLowThresholdMin = 33000;
constexpr uint32_t kLowThresholdMax = 49000;
constexpr uint32_t kHighThresholdMin = 57000;
constexpr uint32_t kHighThresholdMax = 73000;

constexpr bool isChannel(int32_t channel) {
    return isWithin(channel, 0, kChannels - 1);
}

constexpr uint8_t thresholdCode(uint32_t millivolts, uint32_t lowest) {
    return static_cast<uint8_t>(ceilDivide(uint64_t{millivolts - lowest} * 1000, kVoltageUnit));
}

int32_t setByte2(Command code, uint8_t value, bsp::CallSite site = bsp::CallSite::here()) {
    Frame request = requestFrame(code);
    request[2] = value;
    return command(request, 2, site);
}

int32_t misc(Misc subCommand, bsp::CallSite site = bsp::CallSite::here()) {
    return command(requestFrame(kMisc, subCommand), 2, site);
}

} // namespace

int32_t rtl8239CmdGlobalEnableSet(int32_t enable) {
    return setByte2(kGlobalEnable, asFlag(enable));
}

int32_t rtl8239CmdGlobalResetSet(int32_t reset) {
    return setByte2(kGlobalReset, asFlag(reset));
}

int32_t rtl8239CmdGlobalPowerSourceSet(int32_t bank, uint32_t power, uint32_t reservePower) {
    const uint64_t code = ceilDivide(power, kPowerUnit);
    const uint64_t reserveCode = ceilDivide(reservePower, kPowerUnit);
    if (!isWithin(bank, 0, kHighestBank) || code > UINT16_MAX || reserveCode > UINT16_MAX)
        return BSP_E_POE_INVALID;
    Frame request = requestFrame(kGlobalPowerSource);
    request[2] = static_cast<uint8_t>(bank);
    storeWord(request, 3, static_cast<uint32_t>(code));
    storeWord(request, 5, static_cast<uint32_t>(reserveCode));
    Frame reply = blankFrame();
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;
    const bool isAccepted = reply[2] == bank && reply[3] == 0;
    return isAccepted ? BSP_OK : statusCheckFailed(bsp::CallSite::here());
}

int32_t rtl8239CmdPortMappingEnableSet(int32_t enable, int32_t portCount) {
    if (!isWithin(portCount, 0, BSP_POE_PORTS_MAX))
        return BSP_E_POE_INVALID;
    Frame request = requestFrame(kPortMappingEnable);
    request[2] = asFlag(enable);
    request[3] = static_cast<uint8_t>(portCount);
    Frame reply = blankFrame();
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;
    const bool isAccepted = reply[2] == 0 && reply[3] == 0;
    return isAccepted ? BSP_OK : statusCheckFailed(bsp::CallSite::here());
}

int32_t rtl8239CmdPortPairMappingSet(int32_t port, int32_t isFourPair, int32_t deviceIndex,
                                     int32_t primaryChannel, int32_t secondaryChannel,
                                     int32_t chipAddress) {
    const bool hasSecondary = secondaryChannel != kNone;
    if (!isPort(port) || !isWithin(deviceIndex, 0, kDevices - 1) || !isChannel(primaryChannel) ||
        (hasSecondary && !isChannel(secondaryChannel)) || !isWithin(chipAddress, 0, kNone))
        return BSP_E_POE_INVALID;
    Frame request = requestFrame(kPortPairMapping);
    request[2] = static_cast<uint8_t>(port);
    request[3] = asFlag(isFourPair);
    request[4] = static_cast<uint8_t>(deviceIndex);
    request[5] = static_cast<uint8_t>(primaryChannel);
    request[6] = static_cast<uint8_t>(secondaryChannel);
    request[10] = static_cast<uint8_t>(chipAddress);
    Frame reply = blankFrame();
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;

    const bool isMapped = reply[2] == port && reply[3] == 0 && reply[4] == 0 && reply[5] == 0 &&
                          (!hasSecondary || reply[6] == 0);
    if (!isMapped) {
        bsp::reportError(bsp::CallSite::here(),
                         "response status check failed, port=%d, 4-pair=%d, dev id=%d, "
                         "pri chl=%d, sec chl=%d.\n",
                         reply[2], reply[3], reply[4], reply[5], reply[6]);
        return BSP_E_POE_STATUS;
    }
    if (chipAddress != kNone && reply[10] != 0) {
        bsp::reportError(bsp::CallSite::here(), "response status check failed, chip_addr=%d.\n",
                         reply[10]);
        return BSP_E_POE_STATUS;
    }
    return BSP_OK;
}

int32_t rtl8239CmdGlobalParamSet(uint32_t lowThreshold, uint32_t highThreshold) {
    if (lowThreshold < kLowThresholdMin || lowThreshold > kLowThresholdMax ||
        highThreshold < kHighThresholdMin || highThreshold > kHighThresholdMax)
        return BSP_E_POE_INVALID;
    Frame request = requestFrame(kGlobalParam);
    request[2] = thresholdCode(lowThreshold, kLowThresholdMin);
    request[4] = thresholdCode(highThreshold, kHighThresholdMin);
    return command(request);
}

int32_t rtl8239CmdGlobalPmModeSet(int32_t mode) {
    if (!isWithin(mode, 0, 4))
        return BSP_E_POE_INVALID;
    return setByte2(kGlobalPmMode, static_cast<uint8_t>(mode));
}

int32_t rtl8239CmdGlobalPmModeExtSet(int32_t mode) {
    if (!isWithin(mode, 0, 1))
        return BSP_E_POE_INVALID;
    return setByte2(kGlobalPmModeExt, static_cast<uint8_t>(mode));
}

int32_t rtl8239CmdGlobalPortEventMaskSet(int32_t first, int32_t second) {
    const int mask = (first != 0 ? 1 << 1 : 0) | (second != 0 ? 1 << 2 : 0);
    return setByte2(kGlobalPortEventMask, static_cast<uint8_t>(mask));
}

int32_t rtl8239CmdMiscConfigInfoSave(void) {
    return misc(kConfigSave);
}
int32_t rtl8239CmdMiscConfigInfoClear(void) {
    return misc(kConfigClear);
}
int32_t rtl8239CmdMiscConfigInfoReset(void) {
    return misc(kConfigReset);
}
int32_t rtl8239CmdMiscConfigInfoInit(void) {
    return misc(kConfigInit);
}
