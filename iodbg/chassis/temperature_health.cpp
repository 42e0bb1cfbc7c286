#include "iodbg/chassis/health.h"

#include "bsp.h"
#include "iodbg/chassis/thresholds.h"

namespace iodbg {

Findings temperatureFindings() {
    const Subject subject = {Unit::Temperature};
    int32_t celsius = 0;
    if (const int32_t status = ioTemperGet(0, &celsius); status != BSP_OK)
        return {silent(subject, status)};
    const std::string text = std::to_string(celsius) + " C";
    if (celsius > kHot)
        return {{subject, Code::TemperatureHot, text + ", too hot"}};
    if (celsius > kWarm)
        return {{subject, Code::TemperatureWarm, text}};
    if (celsius < kColdest)
        return {{subject, Code::TemperatureCold, text}};
    return {good(subject, text)};
}

} // namespace iodbg
