#include "language/trace_replay.h"

#include "language/trace_names.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace language {

namespace {

struct ReasonWords {
    const char *name, *text;
};

constexpr ReasonWords kReasonsNotSent[] = {
    {"sent", "sent"},
    {"waits", "sleeps and steps of the clock"},
    {"files", "opens of files: how they are opened, and what is in them, is not in a trace"},
    {"content", "transfers of which a trace does not have all bytes"},
    {"rights", "refused for how the device was opened, which is not in a trace"},
    {"mappings", "mapped pages: what is done with them is not in a trace"},
    {"damaged", "damaged records"},
};

constexpr ReasonWords kVariations[] = {
    {"none", "differs"},
    {"time", "varies with time"},
    {"measured", "is measured"},
    {"unknown", "is of what no virtual board has"},
};

bool isOfI2c(const TraceRecord &record) {
    return record.kind == TraceKind::I2cRead || record.kind == TraceKind::I2cWrite;
}

bool hasAnswer(const TraceRecord &record) {
    return record.error == 0 && record.result == 0;
}

/** A transfer of more bytes than the record has. */
bool lacksData(const TraceRecord &record) {
    return static_cast<int32_t>(record.length) > 0 && record.stored < record.length;
}

NotSent transferNotSent(const TraceRecord &record) {
    return record.kind == TraceKind::I2cWrite && lacksData(record) ? NotSent::Content
                                                                   : NotSent::Sent;
}

} // namespace

NotSent notSent(const TraceRecord &record) {
    switch (record.kind) {
    case TraceKind::Sleep:
    case TraceKind::Step:
        return NotSent::Waits;
    case TraceKind::Open:
    case TraceKind::Console:
        return NotSent::File;
    case TraceKind::CpldUpgrade:
    case TraceKind::MtdWrite:
        return NotSent::Content;
    case TraceKind::Map:
        return NotSent::Mapping;
    case TraceKind::Damaged:
        return NotSent::Damaged;
    case TraceKind::MtdErase:
    case TraceKind::MtdMarkBad:
        return record.error == EPERM || record.error == EBADF ? NotSent::Rights : NotSent::Sent;
    default:
        return transferNotSent(record);
    }
}

const char *notSentName(NotSent reason) {
    return kReasonsNotSent[static_cast<size_t>(reason)].name;
}

const char *notSentText(NotSent reason) {
    return kReasonsNotSent[static_cast<size_t>(reason)].text;
}

const char *variationName(Variation variation) {
    return kVariations[static_cast<size_t>(variation)].name;
}

const char *variationText(Variation variation) {
    return kVariations[static_cast<size_t>(variation)].text;
}

namespace {

/** Bytes of a device, or answers to a command, that no two readings have alike. */
struct VaryingPlace {
    uint32_t bus, firstChannel, lastChannel, device;
    uint32_t first, last; // offsets; of the PoE controller codes of commands
    Variation variation;
};

constexpr uint32_t kAllChannels = 0xFF;
constexpr uint32_t kAllOffsets = 0xFF;

constexpr VaryingPlace kVarying[] = {
    {kSystemBus, kClimateChannel, kClimateChannel, kClockChipDevAddr, 0, kAllOffsets,
     Variation::Time},
    {kSystemBus, kClimateChannel, kClimateChannel, kTemperatureDevAddr, 0, kAllOffsets,
     Variation::Measured},
    {kSystemBus, kFirstSupplyChannel, kAllChannels, kPmbusDevAddr, 0x88, 0x8F, Variation::Measured},
    {kSystemBus, kFirstSupplyChannel, kAllChannels, kPmbusDevAddr, 0x96, 0x97, Variation::Measured},
    {kModuleBus, 0, kAllChannels, kDiagnosticsDevAddr, 96, 119, Variation::Measured},
    {kPoeBus, 0, 0, kPoeDevAddr, 0x41, 0x41, Variation::Measured}, // power totals
    {kPoeBus, 0, 0, kPoeDevAddr, 0x44, 0x44, Variation::Measured}, // port measurements
    {kPoeBus, 0, 0, kPoeDevAddr, 0x45, 0x46, Variation::Time},     // port counters and events
    {kPoeBus, 0, 0, kPoeDevAddr, 0x4F, 0x50, Variation::Measured}, // pairs and loads
};

constexpr uint32_t kFirstFanSpeed = 28;
constexpr uint32_t kLastFanSpeed = 29;

bool isOfPoe(const TraceRecord &record) {
    return record.bus == kPoeBus && record.devAddr == kPoeDevAddr;
}

/** Why a byte of a transfer may differ. */
Variation variationAt(const TraceRecord &record, uint32_t index) {
    const uint32_t what = isOfPoe(record) ? record.data[0] : record.offset + index;
    const bool isCommand = record.devAddr == kPmbusDevAddr && record.bus == kSystemBus;
    const uint32_t wanted = isCommand ? record.offset : what;
    for (const VaryingPlace &row : kVarying) {
        if (record.bus == row.bus && record.channel >= row.firstChannel &&
            record.channel <= row.lastChannel && record.devAddr == row.device &&
            wanted >= row.first && wanted <= row.last)
            return row.variation;
    }
    return Variation::None;
}

/** Whether a virtual board has anything that answers such a request. */
bool isKnown(const TraceRecord &record) {
    switch (record.kind) {
    case TraceKind::CpldRead:
        return registerName(record.offset) != nullptr;
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite:
        return record.bus == kSystemBus || record.bus == kModuleBus || record.bus == kPoeBus;
    case TraceKind::OtherRequest:
    case TraceKind::MtdOther:
        return false;
    default:
        return true;
    }
}

__attribute__((format(printf, 1, 2))) std::string worded(const char *format, ...) {
    char line[200];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    return line;
}

std::string endText(const TraceRecord &record) {
    if (record.result == kPowerCutResult && record.kind >= TraceKind::MtdRead)
        return worded("a power cut behind 0x%x", record.value);
    if (record.error != 0)
        return worded("errno %d (%s)", record.error, std::strerror(record.error));
    return record.result != 0
               ? worded("result %d (%s)", record.result,
                        std::strerror(record.result < 0 ? -record.result : record.result))
               : "success";
}

/** "bits 3 and 5 are now set"; of a register's content. */
std::string bitsText(uint32_t recorded, uint32_t answered) {
    std::string bits;
    for (uint32_t bit = 0; bit < 32; ++bit) {
        if (((recorded ^ answered) >> bit & 1) != 0)
            bits += (bits.empty() ? "" : ", ") + std::to_string(bit) +
                    ((answered >> bit & 1) != 0 ? " set" : " clear");
    }
    return bits;
}

void compareData(const TraceRecord &recorded, const TraceRecord &answered, Difference &found) {
    const uint32_t both = std::min(recorded.stored, answered.stored);
    if (recorded.stored != answered.stored)
        found.words.push_back(
            worded("%u bytes, recorded are %u", answered.stored, recorded.stored));
    Variation all = Variation::None;
    bool isSteady = recorded.stored != answered.stored;
    for (uint32_t i = 0; i < both; ++i) {
        if (recorded.data[i] == answered.data[i])
            continue;
        found.words.push_back(
            worded("byte %u is 0x%02X, recorded is 0x%02X", i, answered.data[i], recorded.data[i]));
        all = variationAt(recorded, i);
        isSteady = isSteady || all == Variation::None;
    }
    found.variation = isSteady ? Variation::None : all;
}

void compareValues(const TraceRecord &recorded, const TraceRecord &answered, Difference &found) {
    if (recorded.value == answered.value)
        return;
    switch (recorded.kind) {
    case TraceKind::CpldRead:
        found.words.push_back(
            worded("it is 0x%04X, recorded is 0x%04X: bits ", answered.value, recorded.value) +
            bitsText(recorded.value, answered.value));
        if (recorded.offset >= kFirstFanSpeed && recorded.offset <= kLastFanSpeed)
            found.variation = Variation::Measured;
        break;
    case TraceKind::MdioRead:
        found.words.push_back(
            worded("it is 0x%04X, recorded is 0x%04X: bits ", answered.value, recorded.value) +
            bitsText(recorded.value, answered.value));
        break;
    case TraceKind::GpioRead:
        found.words.push_back(
            worded("the level is %u, recorded is %u", answered.value, recorded.value));
        break;
    case TraceKind::MtdRead:
    case TraceKind::MtdErase:
        found.words.push_back(
            worded("0x%x bytes are done, recorded are 0x%x", answered.value, recorded.value));
        break;
    case TraceKind::MtdIsBad:
        found.words.emplace_back(answered.value != 0 ? "the block is bad, recorded as good"
                                                     : "the block is good, recorded as bad");
        break;
    default:
        break;
    }
}

} // namespace

Difference difference(const TraceRecord &recorded, const TraceRecord &answered) {
    Difference found;
    if (recorded.error != answered.error || recorded.result != answered.result)
        found.words.push_back("it ends with " + endText(answered) + ", recorded is " +
                              endText(recorded));
    else if (isOfI2c(recorded) && hasAnswer(recorded))
        compareData(recorded, answered, found);
    else
        compareValues(recorded, answered, found);
    if (!found.words.empty() && !isKnown(recorded))
        found.variation = Variation::Unknown;
    return found;
}

} // namespace language
