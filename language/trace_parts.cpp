#include "language/trace_parts.h"

#include "language/trace_names.h"

namespace language {

namespace {

struct NumberedPart {
    uint32_t number;
    const char *part;
};

constexpr NumberedPart kRegisterParts[] = {
    {4, "watchdog"}, {6, "fan.1"},  {7, "lamp.system"}, {13, "poe"},      {14, "poe"},
    {15, "poe"},     {28, "fan.1"}, {29, "fan.3"},      {30, "supply.1"}, {31, "fan.1"},
};

constexpr NumberedPart kLineParts[] = {{0, "watchdog"}, {19, "poe"}};

template <size_t count>
std::string partIn(const NumberedPart (&parts)[count], uint32_t number) {
    for (const NumberedPart &one : parts) {
        if (one.number == number)
            return one.part;
    }
    return "";
}

std::string partOfFrame(const TraceRecord &record) {
    const auto port = poePortOf(record);
    return port.has_value() ? "port." + std::to_string(*port + 1) : "poe";
}

std::string partOfSystemDevice(const TraceRecord &record) {
    if (record.channel >= kFirstSupplyChannel)
        return "supply." + std::to_string(record.channel - kFirstSupplyChannel + 1);
    if (record.channel != kClimateChannel)
        return "";
    if (record.devAddr == kTemperatureDevAddr)
        return "temperature";
    return record.devAddr == kClockChipDevAddr ? "calendar" : "";
}

std::string partOfModule(const TraceRecord &record, uint32_t firstUplink) {
    if (record.channel >= kFirstFrontModuleChannel)
        return "sfp." + std::to_string(record.channel - kFirstFrontModuleChannel + 1);
    return firstUplink != 0 ? "sfp." + std::to_string(firstUplink + record.channel) : "";
}

std::string partOfTransfer(const TraceRecord &record, uint32_t firstUplink) {
    if (isPoeFrame(record))
        return partOfFrame(record);
    if (record.bus == kSystemBus)
        return partOfSystemDevice(record);
    return record.bus == kModuleBus ? partOfModule(record, firstUplink) : "";
}

} // namespace

std::string partOf(const TraceRecord &record, uint32_t firstUplink) {
    switch (record.kind) {
    case TraceKind::CpldRead:
    case TraceKind::CpldWrite:
        return partIn(kRegisterParts, record.offset);
    case TraceKind::GpioInput:
    case TraceKind::GpioOutput:
    case TraceKind::GpioRead:
        return partIn(kLineParts, record.offset);
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite:
        return partOfTransfer(record, firstUplink);
    default:
        return "";
    }
}

} // namespace language
