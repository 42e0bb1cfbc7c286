#include "tests/support/recorded_devices.h"

#include "tests/support/call_texts.h"

#include <algorithm>
#include <utility>

namespace {

std::string offsetText(const I2cRequest &request) {
    if (request.offsetLen == 0 && request.offset == 0)
        return "--";
    return request.offsetLen == 1 ? formatted("%02X", request.offset)
                                  : formatted("%X in %u bytes", request.offset, request.offsetLen);
}

} // namespace

std::vector<std::string> RequestLog::take() {
    return std::exchange(lines_, {});
}

int32_t RequestLog::note(const std::string &line) {
    lines_.push_back(line);
    ++count_;
    return failing_ != 0 && count_ >= failing_ ? status_ : 0;
}

int32_t MemoryDevice::write(const I2cRequest &request) {
    std::string line = "write " + offsetText(request) + ":";
    for (int32_t i = 0; i < request.length; ++i)
        line += formatted(" %02X", static_cast<unsigned>(request.data[i]));
    const int32_t status = note(line);
    if (status == 0)
        std::copy_n(request.data, request.length, bytes.data() + request.offset);
    return status;
}

int32_t MemoryDevice::read(const I2cRequest &request) {
    const int32_t status =
        note("read " + offsetText(request) + " len " + std::to_string(request.length));
    std::copy_n(bytes.data() + request.offset, status == 0 ? request.length : arriveInFailure,
                request.data);
    return status;
}

int32_t CpldRegisters::write(uint32_t number, uint32_t value) {
    const int32_t status = note(formatted("write %u = %04X", number, value));
    if (status == 0)
        reg.at(number) = static_cast<uint16_t>(value);
    return status;
}

int32_t CpldRegisters::read(uint32_t number, uint32_t *value) {
    const int32_t status = note(formatted("read %u", number));
    if (status == 0)
        *value = reg.at(number);
    return status;
}
