#pragma once
// The quill's registers, and the bytes of its requests and answers.
//
// request  register (and 0x80 for a write), index, number of data bytes, data, CRC-8
// answer   register as in the request, result, data, CRC-8

#include <cstddef>
#include <cstdint>
#include <span>

namespace quill {

using Bytes = std::span<const uint8_t>;

enum Register : uint8_t {
    kVersion = 0x00, // two bytes
    kRun = 0x01,     // 0: no port is served
    kBudget = 0x02,  // milliwatts, 4 bytes
    kDrawn = 0x03,   // milliwatts, 4 bytes
    kMode = 0x10,    // of the port that the index names: a value of Mode
    kSwitch = 0x11,  // 0, 1: power of a port in the mode kOnCommand
    kLimit = 0x12,   // milliwatts, 4 bytes
    kState = 0x13,   // phase, detection, class
    kMeasured = 0x14 // millivolts and milliamperes, 2 bytes each, milliwatts, 4 bytes
};

constexpr uint8_t kWrite = 0x80;

enum Mode : uint8_t { kOff = 0, kAutomatic = 1, kOnCommand = 2 };
enum Phase : uint8_t { kIdle = 0, kDelivering = 1, kFaulty = 2 };

constexpr uint8_t kNoClass = 0xFF;

constexpr size_t kHeader = 3;
constexpr size_t kMostData = 8;
constexpr size_t kAnswerHeader = 2;
constexpr size_t kLongest = kHeader + kMostData + 1;

/** Of the polynomial 0x31, most significant bit first. */
constexpr uint8_t crc8(Bytes bytes) {
    constexpr unsigned kPolynomial = 0x31;
    unsigned crc = 0;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x80) != 0 ? crc << 1 ^ kPolynomial : crc << 1;
    }
    return static_cast<uint8_t>(crc);
}

/** Whether an answer is whole, and of the register that a request was for. */
constexpr bool answers(Bytes request, Bytes answer) {
    return !request.empty() && answer.size() > kAnswerHeader && answer[0] == request[0] &&
           answer.back() == crc8(answer.first(answer.size() - 1));
}

} // namespace quill
