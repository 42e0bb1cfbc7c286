#include "language/trace_reader.h"

#include "language/bytes.h"
#include "language/json_limits.h"
#include "language/refused.h"
#include "language/texts.h"
#include "language/trace_names.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

namespace language {

namespace {

using nlohmann::json;

constexpr int64_t kHighestErrno = 4095; // the kernel's
constexpr uint32_t kOffsetLengthOfOthers = 1;
constexpr size_t kMostLevels = 2, kMostMembers = 256;

/** The members of an object, each of which is asked for once. */
class Members {
  public:
    explicit Members(const json &object) : object_(object) {
        for (const auto &member : object.items())
            left_.insert(member.key());
    }

    bool has(const char *key) const { return left_.contains(key); }

    const json &take(const char *key) {
        if (left_.erase(key) == 0)
            throw Refused(std::string("it has no \"") + key + "\"");
        return object_.at(key);
    }

    /** A whole number; nothing for null where that may be. */
    std::optional<int64_t> takeNullable(const char *key, int64_t lowest, int64_t highest) {
        const json &value = take(key);
        if (value.is_null())
            return std::nullopt;
        const bool isTooLarge =
            value.is_number_unsigned() && value.get<uint64_t>() > uint64_t{INT64_MAX};
        const int64_t number = value.is_number_integer() && !isTooLarge ? value.get<int64_t>() : 0;
        if (!value.is_number_integer() || isTooLarge || number < lowest || number > highest)
            refuse(key, value,
                   "a number from " + std::to_string(lowest) + " to " + std::to_string(highest));
        return number;
    }

    template <typename Number>
    Number takeNumber(const char *key, int64_t highest = std::numeric_limits<Number>::max()) {
        constexpr int64_t kLowest = std::numeric_limits<Number>::min();
        const std::optional<int64_t> number = takeNullable(key, kLowest, highest);
        if (!number.has_value())
            refuse(key, nullptr, "a number");
        return static_cast<Number>(*number);
    }

    uint64_t takeTime(const char *key) {
        const std::optional<int64_t> number = takeNullable(key, 0, INT64_MAX);
        if (!number.has_value())
            refuse(key, nullptr, "a number");
        return static_cast<uint64_t>(*number);
    }

    std::string takeText(const char *key) {
        const json &value = take(key);
        if (!value.is_string())
            refuse(key, value, "a text");
        return value.get<std::string>();
    }

    bool takeBool(const char *key) {
        const json &value = take(key);
        if (!value.is_boolean())
            refuse(key, value, "true or false");
        return value.get<bool>();
    }

    void requireEmpty() const {
        if (!left_.empty())
            throw Refused("a request of this kind has no " + quoted(*left_.begin()));
    }

    [[noreturn]] static void refuse(const char *key, const json &value, const std::string &right) {
        const std::string word = value.dump(-1, ' ', true, json::error_handler_t::replace);
        throw Refused(std::string(key) + ": " + quoted(word) + " is not " + right);
    }

  private:
    const json &object_;
    std::set<std::string> left_;
};

bool wasServed(const TraceRecord &record) {
    return record.error == 0 && record.result == 0;
}

/** What a request that was served has read; null of others. */
void takeValue(Members &members, const char *key, TraceRecord &record) {
    const std::optional<int64_t> value = members.takeNullable(key, 0, UINT32_MAX);
    if (value.has_value() != wasServed(record))
        Members::refuse(key, value.has_value() ? json(*value) : json(),
                        wasServed(record) ? "a number" : "null, as of a request that failed");
    record.value = static_cast<uint32_t>(value.value_or(0));
}

/** A name that follows from the rest. */
void readName(Members &members) {
    const json &name = members.take("name");
    if (!name.is_null() && !name.is_string())
        Members::refuse("name", name, "a text or null");
}

void readRegister(Members &members, TraceRecord &record) {
    record.offset = members.takeNumber<uint32_t>("register");
    readName(members);
}

void readData(Members &members, TraceRecord &record) {
    const json &data = members.take("data");
    if (data.is_null() && !wasServed(record))
        return;
    if (!data.is_string() || !wasServed(record))
        Members::refuse("data", data,
                        wasServed(record) ? "a text of hexadecimal digits"
                                          : "null, as of a request that failed");
    const auto text = data.get<std::string>();
    if (text.empty())
        return;
    const Bytes bytes = about("data", [&] { return parseBytes("0x" + text); });
    if (bytes.size() > kTraceDataSize)
        throw Refused("data: a trace keeps " + std::to_string(kTraceDataSize) +
                      " bytes of a request at most");
    record.stored = static_cast<uint32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), record.data);
}

void readTransfer(Members &members, TraceRecord &record) {
    readName(members);
    record.bus = members.takeNumber<uint8_t>("bus");
    record.channel = members.takeNumber<uint8_t>("channel");
    record.devAddr = members.takeNumber<uint8_t>("device");
    record.offset = members.takeNumber<uint32_t>("offset");
    // Traces of earlier versions do not tell it: only an offset that is sent is not 0.
    if (members.has("offset_length"))
        record.value = members.takeNumber<uint32_t>("offset_length");
    else
        record.value = record.offset != 0 ? kOffsetLengthOfOthers : 0;
    record.length = static_cast<uint32_t>(members.takeNumber<int32_t>("length"));
    readData(members, record);
}

void readPath(Members &members, TraceRecord &record) {
    const std::string path = members.takeText("path");
    if (path.size() >= kTraceDataSize)
        throw Refused("path: a trace keeps " + std::to_string(kTraceDataSize - 1) +
                      " characters of it at most");
    std::memcpy(record.data, path.c_str(), path.size() + 1);
}

void readPartition(Members &members, TraceRecord &record) {
    record.devAddr = members.takeNumber<uint8_t>("partition");
}

void readFlashWork(Members &members, TraceRecord &record) {
    readPartition(members, record);
    record.offset = members.takeNumber<uint32_t>("offset");
    record.length = members.takeNumber<uint32_t>("length");
    record.value = members.takeNumber<uint32_t>("done");
    record.result = members.takeBool("power_cut") ? kPowerCutResult : 0;
}

void readBadBlock(Members &members, TraceRecord &record) {
    readPartition(members, record);
    record.offset = members.takeNumber<uint32_t>("offset");
    if (record.error == 0)
        record.value = members.takeBool("bad") ? 1 : 0;
    else if (const json &bad = members.take("bad"); !bad.is_null())
        Members::refuse("bad", bad, "null, as of a request that failed");
}

/** What only a step has: whose wait it ends. */
void readEnds(Members &members, TraceRecord &record) {
    const json &ends = members.take("ends");
    if (ends.is_null())
        return;
    const std::string name = ends.is_string() ? ends.get<std::string>() : "";
    for (record.value = 1; record.value <= static_cast<uint32_t>(StepEnds::Timer); ++record.value) {
        if (name == waitName(record))
            return;
    }
    Members::refuse("ends", ends, "what a thread waits for, or null");
}

/** What only this kind of request has. */
void readDetails(Members &members, TraceRecord &record) {
    switch (record.kind) {
    case TraceKind::CpldRead:
        readRegister(members, record);
        takeValue(members, "value", record);
        break;
    case TraceKind::CpldWrite:
        readRegister(members, record);
        record.value = members.takeNumber<uint32_t>("value");
        record.length = members.takeNumber<uint32_t>("ignored_bits");
        break;
    case TraceKind::I2cRead:
    case TraceKind::I2cWrite:
        readTransfer(members, record);
        break;
    case TraceKind::GpioInput:
        record.offset = members.takeNumber<uint32_t>("line");
        break;
    case TraceKind::GpioOutput:
        record.offset = members.takeNumber<uint32_t>("line");
        record.value = members.takeNumber<uint32_t>("level");
        break;
    case TraceKind::GpioRead:
        record.offset = members.takeNumber<uint32_t>("line");
        takeValue(members, "level", record);
        break;
    case TraceKind::CpldUpgrade:
        readPath(members, record);
        record.value = members.takeNumber<uint32_t>("size");
        break;
    case TraceKind::OtherRequest:
        record.offset = members.takeNumber<uint32_t>("code");
        break;
    case TraceKind::Open:
        readPath(members, record);
        break;
    case TraceKind::Sleep:
        record.sleepNs = members.takeTime("duration_ns");
        break;
    case TraceKind::MtdRead:
    case TraceKind::MtdWrite:
    case TraceKind::MtdErase:
        readFlashWork(members, record);
        break;
    case TraceKind::MtdInfo:
        readPartition(members, record);
        break;
    case TraceKind::MtdIsBad:
        readBadBlock(members, record);
        break;
    case TraceKind::MtdMarkBad:
        readPartition(members, record);
        record.offset = members.takeNumber<uint32_t>("offset");
        break;
    case TraceKind::MtdOther:
        readPartition(members, record);
        record.offset = members.takeNumber<uint32_t>("code");
        break;
    case TraceKind::MdioRead:
    case TraceKind::MdioWrite:
        record.devAddr = members.takeNumber<uint8_t>("first");
        record.offset = members.takeNumber<uint32_t>("second");
        takeValue(members, "value", record);
        break;
    case TraceKind::Console:
        record.value = members.takeNumber<uint32_t>("speed");
        break;
    case TraceKind::Map:
        readPath(members, record);
        record.offset = members.takeNumber<uint32_t>("offset");
        record.length = members.takeNumber<uint32_t>("length");
        break;
    case TraceKind::Step:
        readEnds(members, record);
        break;
    case TraceKind::Damaged:
        break;
    }
}

/** How the request ended: the driver's result word is null where the ioctl itself failed. */
void readEnd(Members &members, TraceRecord &record) {
    if (record.kind == TraceKind::Sleep || record.kind == TraceKind::Step)
        return;
    record.error = members.takeNumber<int32_t>("errno", kHighestErrno);
    if (record.error < 0)
        Members::refuse("errno", record.error, "the number of an error, or 0");
    if (record.kind >= TraceKind::Open)
        return;
    const std::optional<int64_t> result = members.takeNullable("result", INT32_MIN, INT32_MAX);
    if (result.has_value() != (record.error == 0))
        Members::refuse("result", result.has_value() ? json(*result) : json(),
                        record.error == 0 ? "a number" : "null, as of a request that failed");
    record.result = static_cast<int32_t>(result.value_or(0));
}

} // namespace

TraceRecord readTraceLine(const std::string &line) {
    if (line.size() > kMostTraceLine)
        throw Refused("the line is longer than any of a trace");
    requireWithin({kMostLevels, kMostMembers, kMostMembers}, line);
    const json object = json::parse(line, nullptr, false);
    if (!object.is_object())
        throw Refused("it is no JSON object; give what 'vboard trace --json' or 'iodbg trace "
                      "--json' has printed");
    Members members(object);
    TraceRecord record = {};
    record.timeNs = members.takeTime("time_ns");
    record.pid = members.takeNumber<int32_t>("pid");
    const std::string name = members.takeText("kind");
    const std::optional<TraceKind> kind = kindNamed(name);
    if (!kind.has_value())
        throw Refused("kind: " + quoted(name) + " is no kind of request");
    record.kind = *kind;
    readEnd(members, record);
    readDetails(members, record);
    members.requireEmpty();
    return record;
}

} // namespace language
