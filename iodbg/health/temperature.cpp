#include "iodbg/health.h"

#include "bsp.h"

namespace iodbg {

namespace {

// Limits of the board's sensor, in degrees Celsius.
constexpr int32_t kColdest = 0;
constexpr int32_t kWarm = 60;
constexpr int32_t kHot = 75;

} // namespace

Findings temperatureFindings() {
    int32_t celsius = 0;
    if (const int32_t status = ioTemperGet(0, &celsius); status != BSP_OK)
        return {unreadable("temperature", status)};
    const std::string text = std::to_string(celsius) + " C";
    if (celsius > kHot)
        return {
            {"temperature", Severity::Fault, text + ", too hot", "check fans and air flow now"}};
    if (celsius > kWarm || celsius < kColdest)
        return {{"temperature", Severity::Warning, text, "check fans, air flow and the room"}};
    return {good("temperature", text)};
}

} // namespace iodbg
