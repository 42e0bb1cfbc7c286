#include "tests/second_controller/library/exchange.h"

#include "bsp.h"
#include "language/formats/byte_order.h"
#include "poe/bus.h"
#include "poe/lock_file.h"

#include <algorithm>
#include <unistd.h>

namespace quill {

namespace {

constexpr useconds_t kPoll = 2000;
constexpr int kPolls = 3;
constexpr uint8_t kDone = 0;

int32_t awaitAnswer(Bytes request, std::span<uint8_t> answer) {
    int32_t status = BSP_OK;
    for (int i = 0; i < kPolls; ++i) {
        usleep(kPoll);
        status = bsp::poeRead(answer.data(), static_cast<int32_t>(answer.size()));
        if (status == BSP_OK && !answers(request, answer))
            status = BSP_E_POE_FRAME;
        if (status == BSP_OK)
            return answer[1] == kDone ? int32_t{BSP_OK} : int32_t{BSP_E_POE_STATUS};
    }
    return status;
}

int32_t exchange(uint8_t number, uint32_t index, Bytes sent, std::span<uint8_t> received) {
    if (index >= BSP_POE_PORTS_MAX)
        return BSP_E_POE_INVALID;
    uint8_t request[kLongest] = {number, static_cast<uint8_t>(index),
                                 static_cast<uint8_t>(sent.size())};
    std::copy(sent.begin(), sent.end(), request + kHeader);
    const size_t length = kHeader + sent.size();
    request[length] = crc8({request, length});

    const bsp::PoeLock lock;
    if (lock.isRefused())
        return BSP_E_POE_LOCK;
    const Bytes whole(request, length + 1);
    if (const int32_t status = bsp::poeWrite(whole.data(), static_cast<int32_t>(whole.size()));
        status != BSP_OK)
        return status;
    uint8_t answer[kLongest] = {};
    const int32_t status = awaitAnswer(whole, {answer, kAnswerHeader + received.size() + 1});
    if (status == BSP_OK)
        std::copy_n(answer + kAnswerHeader, received.size(), received.begin());
    return status;
}

} // namespace

int32_t readRegister(Register number, uint32_t index, std::span<uint8_t> data) {
    return exchange(number, index, {}, data);
}

int32_t writeRegister(Register number, uint32_t index, Bytes data) {
    return exchange(number | kWrite, index, data, {});
}

int32_t readLong(Register number, uint32_t index, uint32_t *value) {
    uint8_t bytes[4] = {};
    if (const int32_t status = readRegister(number, index, bytes); status != BSP_OK)
        return status;
    *value = formats::loadBe32(bytes);
    return BSP_OK;
}

int32_t writeLong(Register number, uint32_t index, uint32_t value) {
    uint8_t bytes[4] = {};
    formats::storeBe32(bytes, value);
    return writeRegister(number, index, bytes);
}

} // namespace quill
