#include "language/trace_parts.h"

#include "language/trace_names.h"

namespace language {

std::string partOf(const TraceRecord &record) {
    const bool isI2c = record.kind == TraceKind::I2cRead || record.kind == TraceKind::I2cWrite;
    if (isI2c && record.bus == kSystemBus && record.channel >= kFirstSupplyChannel)
        return "supply." + std::to_string(record.channel - kFirstSupplyChannel + 1);
    return "";
}

} // namespace language
