#include "iodbg/poe/cells.h"

#include "bsp.h"
#include "iodbg/core/format.h"

#include <iterator>
#include <string>

namespace iodbg {

Cell poeNumberCell(uint32_t number) {
    return numberCell(number);
}

// The words for modes and detections are the virtual controller's.

Cell poeModeCell(uint32_t mode) {
    switch (mode) {
    case BSP_POE_MODE_0:
        return textCell("auto");
    case BSP_POE_MODE_1:
        return textCell("semi");
    case BSP_POE_MODE_2:
        return textCell("manual");
    default:
        return textCell("disabled");
    }
}

Cell poeDetectionCell(uint32_t detection) {
    constexpr const char *kWords[] = {"none", "short", "legacy", "bad", "good", "", "open", ""};
    const std::string word = detection < std::size(kWords) ? kWords[detection] : "";
    return {std::to_string(detection) + (word.empty() ? "" : " " + word), int64_t{detection}};
}

Cell poeClassCell(uint32_t deviceClass) {
    if (deviceClass == BSP_POE_CLASS_NONE)
        return {"-", int64_t{deviceClass}};
    return {deviceClass == BSP_POE_CLASS_0_OR_12 ? kUnknownClassText : std::to_string(deviceClass),
            int64_t{deviceClass}};
}

Cell poeDeliveringCell(uint32_t disconnect) {
    return flagCell(disconnect == BSP_POE_DELIVERING, "on", "off");
}

Cell milliCell(uint32_t thousandthsOfUnit) {
    return {thousandths(thousandthsOfUnit), int64_t{thousandthsOfUnit}};
}

} // namespace iodbg
