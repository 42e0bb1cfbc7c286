#include "language/trace_text.h"

#include "language/trace_names.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace language {

namespace {

__attribute__((format(printf, 1, 2))) std::string text(const char *format, ...) {
    char line[160];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    return line;
}

std::string registerText(const TraceRecord &record) {
    const char *name = registerName(record.offset);
    return text("reg %u", record.offset) + (name != nullptr ? text(" (%s)", name) : "");
}

/** The bits that a write would have changed if they were outputs. */
std::string ignoredText(const TraceRecord &record) {
    return record.length != 0 ? text(" (no effect on input bits 0x%04X)", record.length) : "";
}

std::string dataText(const TraceRecord &record) {
    std::string bytes = record.stored > 0 ? ":" : "";
    for (uint32_t i = 0; i < record.stored; ++i)
        bytes += text(" %02X", record.data[i]);
    return bytes + (record.stored > 0 && record.stored < record.length ? " ..." : "");
}

std::string i2cText(const TraceRecord &record) {
    const std::string name = transferName(record);
    return text("bus %u ch %u dev 0x%02X off 0x%02X len %d", record.bus, record.channel,
                record.devAddr, record.offset, static_cast<int32_t>(record.length)) +
           (name.empty() ? "" : " (" + name + ")") + dataText(record);
}

std::string mdioText(const TraceRecord &record) {
    return text("%u.%u", record.devAddr, record.offset) +
           (record.error == 0 ? text(" = 0x%04X", record.value) : "");
}

bool isMdio(const TraceRecord &record) {
    return record.kind == TraceKind::MdioRead || record.kind == TraceKind::MdioWrite;
}

std::string flashText(const TraceRecord &record) {
    return text("mtd%u 0x%x+0x%x", record.devAddr, record.offset, record.length);
}

bool isTransfer(const TraceRecord &record) {
    return record.kind == TraceKind::MtdRead || record.kind == TraceKind::MtdWrite;
}

bool isOfFlash(const TraceRecord &record) {
    return record.kind >= TraceKind::MtdRead && record.kind <= TraceKind::MtdOther;
}

std::string sleepText(const TraceRecord &record) {
    constexpr uint64_t kNsPerUs = 1000;
    return record.sleepNs % kNsPerUs == 0
               ? text("sleep %llu us", static_cast<unsigned long long>(record.sleepNs / kNsPerUs))
               : text("sleep %llu ns", static_cast<unsigned long long>(record.sleepNs));
}

std::string requestText(const TraceRecord &record) {
    switch (record.kind) {
    case TraceKind::CpldRead:
        return "CPLD read  " + registerText(record) + text(" = 0x%04X", record.value);
    case TraceKind::CpldWrite:
        return "CPLD write " + registerText(record) + text(" = 0x%04X", record.value) +
               ignoredText(record);
    case TraceKind::I2cRead:
        return "I2C read  " + i2cText(record);
    case TraceKind::I2cWrite:
        return "I2C write " + i2cText(record);
    case TraceKind::GpioInput:
        return text("GPIO input  line %u", record.offset);
    case TraceKind::GpioOutput:
        return text("GPIO output line %u = %u", record.offset, record.value);
    case TraceKind::GpioRead:
        return text("GPIO read   line %u = %u", record.offset, record.value);
    case TraceKind::CpldUpgrade:
        return text("CPLD upgrade %s, %u bytes", reinterpret_cast<const char *>(record.data),
                    record.value);
    case TraceKind::OtherRequest:
        return text("request 0x%X", record.offset);
    case TraceKind::Open:
        return text("open %s", reinterpret_cast<const char *>(record.data));
    case TraceKind::Sleep:
        return sleepText(record);
    case TraceKind::MtdRead:
        return "MTD read " + flashText(record);
    case TraceKind::MtdWrite:
        return "MTD write " + flashText(record);
    case TraceKind::MtdErase:
        return "MTD erase " + flashText(record);
    case TraceKind::MtdInfo:
        return text("MTD info mtd%u", record.devAddr);
    case TraceKind::MtdIsBad:
        return text("MTD is-bad mtd%u 0x%x", record.devAddr, record.offset) +
               (record.error == 0 ? text(" = %u", record.value) : "");
    case TraceKind::MtdMarkBad:
        return text("MTD mark-bad mtd%u 0x%x", record.devAddr, record.offset);
    case TraceKind::MtdOther:
        return text("MTD request 0x%X mtd%u", record.offset, record.devAddr);
    case TraceKind::MdioRead:
        return "MDIO read  " + mdioText(record);
    case TraceKind::MdioWrite:
        return "MDIO write " + mdioText(record);
    case TraceKind::Console:
        return text("console speed %u", record.value);
    case TraceKind::Map:
        return text("map %s 0x%x+0x%x", reinterpret_cast<const char *>(record.data), record.offset,
                    record.length);
    case TraceKind::Step:
        return record.value == 0 ? "step"
                                 : std::string("step, ends a wait for ") + waitName(record);
    case TraceKind::Damaged:
        break;
    }
    return "damaged record";
}

/** How a request went when it did not go well. */
std::string failureText(const TraceRecord &record) {
    if (record.kind == TraceKind::Damaged)
        return "";
    if (isOfFlash(record) && record.result == kPowerCutResult)
        return text(" -> power cut after 0x%x", record.value);
    if (record.error != 0 && isMdio(record))
        return " -> fails";
    const bool isNoRequest = record.kind == TraceKind::Open || record.kind == TraceKind::Map ||
                             record.kind == TraceKind::Console;
    if (record.error != 0 && (isNoRequest || isOfFlash(record)))
        return text(" -> fails, errno %d (%s)", record.error, std::strerror(record.error));
    if (isTransfer(record) && record.value != record.length)
        return text(" -> 0x%x", record.value);
    if (record.error != 0)
        return text(" -> ioctl fails, errno %d (%s)", record.error, std::strerror(record.error));
    return record.result != 0 ? text(" -> refused, result %d", record.result) : "";
}

} // namespace

std::string traceText(const TraceRecord &record) {
    return requestText(record) + failureText(record);
}

} // namespace language
