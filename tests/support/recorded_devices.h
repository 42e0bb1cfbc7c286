#pragma once
// Plain devices that keep what they are told, remember what they were asked, and fail on command.

#include "tests/support/i2c_device.h"

#include <array>
#include <string>
#include <vector>

/** Requests in words, and which of them is to fail. */
class RequestLog {
  public:
    /** The n-th request from now on, counted from 1, and all behind it answer this status. */
    void fail(uint32_t nth, int32_t status) {
        failing_ = count_ + nth;
        status_ = status;
    }
    void work() { failing_ = 0; }

    /** What arrived since the last call. */
    std::vector<std::string> take();

  protected:
    /** Notes a request; the status that it gets. */
    int32_t note(const std::string &line);

  private:
    std::vector<std::string> lines_;
    uint32_t count_ = 0;
    uint32_t failing_ = 0; // 0: none
    int32_t status_ = 0;
};

/**
 * 256 bytes on an I2C branch. Its log: "read 02 len 1", "write 02: 59"; a transfer without an
 * offset is "read -- len 1" and starts at 0.
 */
class MemoryDevice : public I2cDevice, public RequestLog {
  public:
    using I2cDevice::I2cDevice;
    int32_t write(const I2cRequest &request) override;
    int32_t read(const I2cRequest &request) override;

    std::array<uint8_t, 256> bytes{};
    int32_t arriveInFailure = 0; // bytes that a failing read gives nevertheless
};

/** CPLD registers. Their log: "read 28", "write 6 = 0020". */
class CpldRegisters : public CpldDevice, public RequestLog {
  public:
    int32_t write(uint32_t number, uint32_t value) override;
    int32_t read(uint32_t number, uint32_t *value) override;

    std::array<uint16_t, 32> reg{};
};
