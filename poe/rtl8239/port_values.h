#pragma once
// What callers get of the controller's answers about a port.

#include "bsp.h"
#include "poe/rtl8239/commands.h"

#include <cstddef>
#include <cstdint>

namespace bsp::rtl8239 {

constexpr size_t kPriorityAt = 6;  // in the answer to kQuery49
constexpr uint8_t kInrushLast = 9; // the callers' BSP_POE_INRUSH_MODE_MAX

/** The mode; BSP_E_POE_CONTENT for one that nobody knows. */
inline int32_t readMode(const Rtl8239PortConfig &config, uint32_t &mode) {
    if (config.enable != 0 && config.funcMode > BSP_POE_MODE_2)
        return BSP_E_POE_CONTENT;
    mode = config.enable == 0 ? uint32_t{BSP_POE_MODE_DISABLED} : config.funcMode;
    return BSP_OK;
}

constexpr uint32_t inrushModeOf(const Rtl8239PortPowerConfig &config) {
    return config.inrushMode == kInrushLast ? BSP_POE_INRUSH_MODE_MAX : uint32_t{config.inrushMode};
}

/** A priority on the other scale: the controller's runs the other way than the callers', to 0. */
constexpr uint32_t turnedPriority(uint32_t priority) {
    return uint32_t{BSP_POE_PRIORITY_MAX} - priority;
}

constexpr uint32_t faultOf(const Rtl8239PortStatus &state) {
    constexpr uint8_t kStatusFault = 4;
    return state.status == kStatusFault ? BSP_POE_FAULT : BSP_POE_FAULT_NONE;
}

constexpr uint32_t disconnectOf(const Rtl8239PortStatus &state) {
    constexpr uint8_t kStatusDelivering = 2;
    return state.status == kStatusDelivering ? BSP_POE_DELIVERING : BSP_POE_DISCONNECTED;
}

constexpr uint32_t detectionOf(const Rtl8239PortStatus &state) {
    return state.detection <= BSP_POE_DETECTION_MAX ? state.detection
                                                    : uint32_t{BSP_POE_DETECTION_NONE};
}

constexpr uint32_t classOf(const Rtl8239PortStatus &state) {
    if (state.classification >= 1 && state.classification <= BSP_POE_CLASS_MAX)
        return state.classification;
    return state.classification == 0 || state.classification == 12 ? BSP_POE_CLASS_0_OR_12
                                                                   : BSP_POE_CLASS_NONE;
}

} // namespace bsp::rtl8239
