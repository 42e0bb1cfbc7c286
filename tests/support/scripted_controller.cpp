#include "tests/support/scripted_controller.h"

#include "bsp.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <numeric>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kFrame = 12;
constexpr int32_t kIoError = -5;

bool isOneOf(uint8_t code, std::initializer_list<int> codes) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool isBlock(const Bytes &request) {
    return request.size() != kFrame ||
           (request[0] == 0xC0 && request[1] >= 0x80 && request[1] <= 0x83);
}

uint8_t checksum(const Bytes &frame) {
    return static_cast<uint8_t>(std::accumulate(frame.begin(), frame.begin() + kFrame - 1, 0u));
}

/** What the controller answers when all is well. */
Bytes goodReply(const Bytes &request) {
    if (isBlock(request))
        return {request.begin(), request.begin() + 4};
    Bytes reply(kFrame);
    reply[0] = request[0];
    reply[1] = request[1];
    const uint8_t code = request[0];
    if (isOneOf(code, {0x01, 0x03, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0F, 0x12, 0x14, 0x15, 0x18,
                       0x4D})) {
        for (const size_t at : {2u, 4u, 6u, 8u})
            reply[at] = request[at];
    }
    if (isOneOf(code, {0x04, 0x06, 0x42, 0x44, 0x45, 0x48, 0x49, 0x4C, 0x4E, 0x4F}))
        reply[2] = request[2];
    return reply;
}

Bytes replyTo(const Bytes &request, const ScriptedReply &answer, Spoil spoil) {
    Bytes reply = goodReply(request);
    const Bytes payload = bytesOf(answer.payload);
    std::copy_n(payload.begin(), std::min(payload.size(), reply.size() - 2), reply.begin() + 2);
    if (spoil == Spoil::CommandEcho)
        ++reply[0];
    if (spoil == Spoil::SecondByteEcho)
        ++reply[1];
    if (reply.size() == kFrame)
        reply[kFrame - 1] = checksum(reply);
    if (spoil == Spoil::Checksum)
        ++reply.back();
    return reply;
}

std::string hexadecimal(const Bytes &bytes, size_t first, size_t last) {
    std::string text;
    char digits[4];
    for (size_t i = first; i < last; ++i) {
        std::snprintf(digits, sizeof(digits), "%s%02X", i > first ? " " : "", bytes[i]);
        text += digits;
    }
    return text;
}

} // namespace

Bytes bytesOf(const std::string &hexadecimal) {
    std::istringstream stream(hexadecimal);
    Bytes bytes;
    for (unsigned byte = 0; stream >> std::hex >> byte;)
        bytes.push_back(static_cast<uint8_t>(byte));
    return bytes;
}

std::string withoutUnused(std::string text) {
    constexpr std::string_view kUnused = " FF";
    while (text.ends_with(kUnused))
        text.resize(text.size() - kUnused.size());
    return text;
}

std::string requestText(const Bytes &request) {
    if (isBlock(request))
        return hexadecimal(request, 0, request.size());
    const bool hasOwnSecondByte = isOneOf(request[0], {0x0A, 0x4B, 0xC0});
    return withoutUnused(hexadecimal(request, 0, 1) +
                         (hasOwnSecondByte ? "/" + hexadecimal(request, 1, 2) : "") + ": " +
                         hexadecimal(request, 2, kFrame - 1));
}

std::string silenceText(const std::string &code) {
    return "ERROR: rtl8239CmdMessage(#): rtl8239CmdResponse failed, cmd=0x" + code +
           ", errno is -1104.\n";
}

ScriptedController::ScriptedController() : I2cDevice(16, 0, 0x20) {}

const ScriptedReply &ScriptedController::currentAnswer() const {
    const auto scripted = script_.find(exchanges_.size() - 1);
    return scripted != script_.end() ? scripted->second : usual_;
}

bool ScriptedController::isLocked() const {
    const int fd = open(lockPath_.c_str(), O_RDWR | O_CLOEXEC);
    const bool isTaken = fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0;
    if (fd >= 0)
        close(fd);
    return isTaken;
}

int32_t ScriptedController::write(const I2cRequest &request) {
    EXPECT_EQ(request.offset, 0u);
    EXPECT_EQ(request.offsetLen, 0u);
    exchanges_.push_back({Bytes(request.data, request.data + request.length), {}, isLocked()});
    return currentAnswer().spoil == Spoil::Write ? kIoError : 0;
}

int32_t ScriptedController::read(const I2cRequest &request) {
    EXPECT_EQ(request.offset, 0u);
    EXPECT_EQ(request.offsetLen, 0u);
    if (exchanges_.empty())
        return kIoError;
    Exchange &exchange = exchanges_.back();
    exchange.readLengths.push_back(request.length);
    const ScriptedReply &answer = currentAnswer();
    const auto polls = static_cast<int>(exchange.readLengths.size());
    const Spoil spoil = polls <= answer.spoiledPolls ? answer.spoil : Spoil::Nothing;
    // A request with a wrong checksum is none.
    const bool isHeard =
        isBlock(exchange.request) || exchange.request[kFrame - 1] == checksum(exchange.request);
    if (spoil == Spoil::Read || !isHeard)
        return kIoError;
    const Bytes reply = replyTo(exchange.request, answer, spoil);
    std::copy_n(reply.begin(), std::min(reply.size(), static_cast<size_t>(request.length)),
                request.data);
    return 0;
}

std::vector<Exchange> ScriptedController::exchanges() {
    const auto first = exchanges_.begin() + static_cast<std::ptrdiff_t>(reported_);
    reported_ = exchanges_.size();
    return {first, exchanges_.end()};
}

std::vector<std::string> ScriptedController::requests() {
    std::vector<std::string> texts;
    for (const Exchange &exchange : exchanges())
        texts.push_back(requestText(exchange.request));
    return texts;
}

void PoeTest::SetUp() {
    VirtualBoardTest::SetUp();
    usePoeModel(0x0709);
}

void PoeTest::usePoeModel(uint32_t devId) {
    constexpr uint16_t kMissing = 0x4000;
    useModel(devId);
    auto &control = devices().cpld.reg[6];
    control = static_cast<uint16_t>(control & ~kMissing);
    writeBoardFile("/tmp/bspPoeLockFile", "\x0F");
    controller.watchLock(boardFile("/tmp/bspPoeLockFile"));
    uint32_t cached = 0;
    ASSERT_EQ(bspDevIdGet(&cached), BSP_OK);
    trace();
    elapsed();
}

void PoeTest::unplugController() {
    devices().cpld.reg[6] |= 0x4000;
}

uint64_t PoeTest::elapsed() {
    const uint64_t last = lastNs_;
    lastNs_ = now();
    return (lastNs_ - last) / 1000;
}
