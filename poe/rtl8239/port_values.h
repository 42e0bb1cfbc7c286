#pragma once
// What callers get of the controller's answers about a port.

#include "bsp.h"
#include "poe/rtl8239/commands.h"

#include <cstdint>

namespace bsp::rtl8239 {

constexpr uint32_t kModeDisabled = 5;
constexpr uint32_t kHighestMode = 2;
constexpr uint8_t kInrushLast = 9; // the callers' 8

/** The mode; BSP_E_POE_CONTENT for one that nobody knows. */
inline int32_t readMode(const Rtl8239PortConfig &config, uint32_t &mode) {
    if (config.enable != 0 && config.funcMode > kHighestMode)
        return BSP_E_POE_CONTENT;
    mode = config.enable == 0 ? kModeDisabled : config.funcMode;
    return BSP_OK;
}

constexpr uint32_t inrushModeOf(const Rtl8239PortPowerConfig &config) {
    return config.inrushMode == kInrushLast ? 8u : uint32_t{config.inrushMode};
}

constexpr uint32_t faultOf(const Rtl8239PortStatus &state) {
    constexpr uint8_t kStatusFault = 4;
    return state.status == kStatusFault ? 1u : 2u;
}

constexpr uint32_t disconnectOf(const Rtl8239PortStatus &state) {
    constexpr uint8_t kStatusDelivering = 2;
    return state.status == kStatusDelivering ? 2u : 1u;
}

constexpr uint32_t detectionOf(const Rtl8239PortStatus &state) {
    return state.detection >= 1 && state.detection <= 7 ? uint32_t{state.detection} : 0u;
}

constexpr uint32_t classOf(const Rtl8239PortStatus &state) {
    constexpr uint32_t kUnknownClass = 9;
    if (state.classification >= 1 && state.classification <= 8)
        return state.classification;
    return state.classification == 0 || state.classification == 12 ? kUnknownClass : 0;
}

} // namespace bsp::rtl8239
