// The trace read back from its JSON.

#include "language/trace_reader.h"

#include "language/refused.h"
#include "language/trace_json.h"
#include "language/trace_names.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using language::readTraceLine;
using language::TraceKind;
using language::TraceRecord;
using nlohmann::json;

std::string refusalOf(const std::string &line) {
    try {
        readTraceLine(line);
    } catch (const language::Refused &refusal) {
        return refusal.what();
    }
    return "";
}

/** A record in which every field holds something that its kind can have. */
TraceRecord filled(TraceKind kind, int32_t error, int32_t result) {
    TraceRecord record = {};
    record.timeNs = 0x1122334455667788;
    record.pid = 4711;
    record.kind = kind;
    record.bus = 16;
    record.channel = 255;
    record.devAddr = 0x20;
    record.offset = 0xFFFFFFFF;
    record.length = 0x80000000;
    record.value = 1;
    record.error = error;
    record.result = kind < TraceKind::Open ? result : 0;
    record.sleepNs = 1;
    if (kind == TraceKind::I2cRead || kind == TraceKind::I2cWrite) {
        record.stored = error == 0 && result == 0 ? language::kTraceDataSize : 0;
        std::memset(record.data, 0xA5, sizeof(record.data));
    } else {
        std::strcpy(reinterpret_cast<char *>(record.data), "/dev/mem");
    }
    return record;
}

TEST(TraceReader, ReadsWhatIsWritten) {
    for (int number = 0; number <= static_cast<int>(TraceKind::Damaged); ++number) {
        const auto kind = static_cast<TraceKind>(number);
        SCOPED_TRACE(language::kindName(kind));
        for (const auto &[error, result] : {std::pair{0, 0}, {0, -EIO}, {ENOTTY, 0}}) {
            const json written = language::traceJson(filled(kind, error, result));
            EXPECT_EQ(language::traceJson(readTraceLine(written.dump())), written);
        }
    }
}

TEST(TraceReader, KeepsWhatWasTransferred) {
    const TraceRecord record =
        readTraceLine(R"({"time_ns":5,"pid":6,"kind":"i2c-write","name":null,"bus":16,"channel":1,)"
                      R"("device":32,"offset":7,"offset_length":2,"length":3,"data":"00ff10",)"
                      R"("result":0,"errno":0})");
    EXPECT_EQ(record.kind, TraceKind::I2cWrite);
    EXPECT_EQ(record.timeNs, 5u);
    EXPECT_EQ(record.pid, 6);
    EXPECT_EQ(record.bus, 16);
    EXPECT_EQ(record.channel, 1);
    EXPECT_EQ(record.devAddr, 32);
    EXPECT_EQ(record.offset, 7u);
    EXPECT_EQ(record.value, 2u);
    EXPECT_EQ(record.length, 3u);
    ASSERT_EQ(record.stored, 3u);
    EXPECT_EQ(record.data[1], 0xFF);
}

TEST(TraceReader, OlderTracesDoNotTellHowLongAnOffsetIs) {
    const auto offsetLength = [](const std::string &offset) {
        return readTraceLine(
                   R"({"time_ns":0,"pid":1,"kind":"i2c-read","name":null,"bus":0,"channel":0,)"
                   R"("device":80,"offset":)" +
                   offset + R"(,"length":1,"data":"00","result":0,"errno":0})")
            .value;
    };
    EXPECT_EQ(offsetLength("0"), 0u);
    EXPECT_EQ(offsetLength("16"), 1u);
}

TEST(TraceReader, RefusesOtherLines) {
    const std::string sleep = R"({"time_ns":0,"pid":1,"kind":"sleep","duration_ns":)";
    const std::string read = R"({"time_ns":0,"pid":1,"kind":"cpld-read","register":2,"name":null,)";
    const std::string i2c = R"({"time_ns":0,"pid":1,"kind":"i2c-read","name":null,"bus":0,)"
                            R"("channel":0,"device":80,"offset":0,"length":1,)";
    const struct {
        std::string line, reason;
    } kRows[] = {
        {"", "it is no JSON object; give what 'vboard trace --json' or 'iodbg trace --json' has "
             "printed"},
        {"[1]", "it is no JSON object; give what 'vboard trace --json' or 'iodbg trace --json' has "
                "printed"},
        {R"({"pid":1,"pid":2})", "'pid' stands there twice"},
        {"{}", "it has no \"time_ns\""},
        {std::string(5000, ' '), "the line is longer than any of a trace"},
        {R"({"time_ns":-1,"pid":1,"kind":"sleep"})",
         "time_ns: '-1' is not a number from 0 to 9223372036854775807"},
        {R"({"time_ns":18446744073709551615,"pid":1,"kind":"sleep"})",
         "time_ns: '18446744073709551615' is not a number from 0 to 9223372036854775807"},
        {R"({"time_ns":0,"pid":"1","kind":"sleep"})",
         "pid: '\"1\"' is not a number from -2147483648 to 2147483647"},
        {R"({"time_ns":0,"pid":1.5,"kind":"sleep"})",
         "pid: '1.5' is not a number from -2147483648 to 2147483647"},
        {R"({"time_ns":0,"pid":1,"kind":"nap"})", "kind: 'nap' is no kind of request"},
        {R"({"time_ns":0,"pid":1,"kind":7})", "kind: '7' is not a text"},
        {sleep + "null}", "duration_ns: 'null' is not a number"},
        {sleep + "1,\"more\":1}", "a request of this kind has no 'more'"},
        {read + R"("value":1,"result":0,"errno":-1})",
         "errno: '-1' is not the number of an error, or 0"},
        {read + R"("value":1,"result":0,"errno":4096})",
         "errno: '4096' is not a number from -2147483648 to 4095"},
        {read + R"("value":1,"result":null,"errno":0})", "result: 'null' is not a number"},
        {read + R"("value":null,"result":0,"errno":5})",
         "result: '0' is not null, as of a request that failed"},
        {read + R"("value":null,"result":0,"errno":0})", "value: 'null' is not a number"},
        {read + R"("value":1,"result":-5,"errno":0})",
         "value: '1' is not null, as of a request that failed"},
        {i2c + R"("data":null,"result":0,"errno":0})",
         "data: 'null' is not a text of hexadecimal digits"},
        {i2c + R"("data":"00","result":-5,"errno":0})",
         "data: '\"00\"' is not null, as of a request that failed"},
        {i2c + "\"data\":\"" + std::string(130, '0') + "\",\"result\":0,\"errno\":0}",
         "data: a trace keeps 64 bytes of a request at most"},
        {R"({"time_ns":0,"pid":1,"kind":"open","errno":0,"path":")" + std::string(64, 'x') + "\"}",
         "path: a trace keeps 63 characters of it at most"},
        {R"({"time_ns":0,"pid":1,"kind":"step","ends":"noise"})",
         "ends: '\"noise\"' is not what a thread waits for, or null"},
    };
    for (const auto &row : kRows)
        EXPECT_EQ(refusalOf(row.line), row.reason) << row.line;
    EXPECT_NE(refusalOf(i2c + R"("data":"0","result":0,"errno":0})"), "");
}

} // namespace
