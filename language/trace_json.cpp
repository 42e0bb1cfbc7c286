#include "language/trace_json.h"

#include "language/bytes.h"
#include "language/trace_names.h"

#include <nlohmann/json.hpp>

namespace language {

namespace {

using nlohmann::json;

bool isServed(const TraceRecord &record) {
    return record.error == 0 && record.result == 0;
}

json readValue(const TraceRecord &record) {
    return isServed(record) ? json(record.value) : json();
}

json cpldJson(const TraceRecord &record, const json &value) {
    const char *name = registerName(record.offset);
    return {{"register", record.offset},
            {"name", name != nullptr ? json(name) : json()},
            {"value", value}};
}

json cpldWriteJson(const TraceRecord &record) {
    json object = cpldJson(record, record.value);
    object["ignored_bits"] = record.length; // inputs, which the write left as they were
    return object;
}

json i2cJson(const TraceRecord &record) {
    const std::string name = transferName(record);
    return {{"name", name.empty() ? json() : json(name)},
            {"bus", record.bus},
            {"channel", record.channel},
            {"device", record.devAddr},
            {"offset", record.offset},
            {"offset_length", record.value},
            {"length", static_cast<int32_t>(record.length)},
            {"data", isServed(record) ? json(hexText({record.data, record.stored})) : json()}};
}

/** What only this kind of request has. */
json detailsJson(const TraceRecord &record) {
    switch (record.kind) {
    case TraceKind::CpldRead:
        return cpldJson(record, readValue(record));
    case TraceKind::CpldWrite:
        return cpldWriteJson(record);
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite:
        return i2cJson(record);
    case TraceKind::GpioInput:
        return {{"line", record.offset}};
    case TraceKind::GpioOutput:
        return {{"line", record.offset}, {"level", record.value}};
    case TraceKind::GpioRead:
        return {{"line", record.offset}, {"level", readValue(record)}};
    case TraceKind::CpldUpgrade:
        return {{"path", reinterpret_cast<const char *>(record.data)}, {"size", record.value}};
    case TraceKind::OtherRequest:
        return {{"code", record.offset}};
    case TraceKind::Open:
        return {{"path", reinterpret_cast<const char *>(record.data)}};
    case TraceKind::Sleep:
        return {{"duration_ns", record.sleepNs}};
    case TraceKind::MtdRead:
    case TraceKind::MtdWrite:
    case TraceKind::MtdErase:
        return {{"partition", record.devAddr},
                {"offset", record.offset},
                {"length", record.length},
                {"done", record.value},
                {"power_cut", record.result == kPowerCutResult}};
    case TraceKind::MtdInfo:
        return {{"partition", record.devAddr}};
    case TraceKind::MtdIsBad:
        return {{"partition", record.devAddr},
                {"offset", record.offset},
                {"bad", record.error == 0 ? json(record.value != 0) : json()}};
    case TraceKind::MtdMarkBad:
        return {{"partition", record.devAddr}, {"offset", record.offset}};
    case TraceKind::MtdOther:
        return {{"partition", record.devAddr}, {"code", record.offset}};
    case TraceKind::MdioRead:
    case TraceKind::MdioWrite:
        return {{"first", record.devAddr}, {"second", record.offset}, {"value", readValue(record)}};
    case TraceKind::Console:
        return {{"speed", record.value}};
    case TraceKind::Map:
        return {{"path", reinterpret_cast<const char *>(record.data)},
                {"offset", record.offset},
                {"length", record.length}};
    case TraceKind::Step:
        return {{"ends", record.value == 0 ? json() : json(waitName(record))}};
    case TraceKind::Damaged:
        break;
    }
    return json::object();
}

} // namespace

json traceJson(const TraceRecord &record) {
    json object = detailsJson(record);
    object["time_ns"] = record.timeNs;
    object["pid"] = record.pid;
    object["kind"] = kindName(record.kind);
    if (record.kind == TraceKind::Sleep || record.kind == TraceKind::Step)
        return object;
    object["errno"] = record.error;
    if (record.kind < TraceKind::Open)
        object["result"] = record.error == 0 ? json(record.result) : json();
    return object;
}

} // namespace language
