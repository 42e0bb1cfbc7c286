#pragma once
// Devices of a test's own, in front of those that the virtual board has.

#include "tests/support/recorder.h"

#include <cstdint>

/** What a transfer asks of a device. */
struct I2cRequest {
    uint32_t offset;
    uint32_t offsetLen;
    uint8_t *data; // written by a read, only read by a write
    int32_t length;
};

/** A device that answers at its place on the I2C buses for as long as it exists. */
class I2cDevice {
  public:
    I2cDevice(uint32_t bus, uint32_t channel, uint32_t devAddr);
    I2cDevice(const I2cDevice &) = delete;
    I2cDevice &operator=(const I2cDevice &) = delete;
    virtual ~I2cDevice() = default;

    // Both answer the driver's result word, 0 for success.
    virtual int32_t write(const I2cRequest &request) = 0;
    virtual int32_t read(const I2cRequest &request) = 0;

  private:
    uint32_t busChannel_;
    uint32_t devAddr_;
    Recorder requests_;
};

/** Takes all requests for CPLD registers for as long as it exists. */
class CpldDevice {
  public:
    CpldDevice();
    CpldDevice(const CpldDevice &) = delete;
    CpldDevice &operator=(const CpldDevice &) = delete;
    virtual ~CpldDevice() = default;

    // Both answer the driver's result word, 0 for success.
    virtual int32_t write(uint32_t reg, uint32_t value) = 0;
    virtual int32_t read(uint32_t reg, uint32_t *value) = 0;

  private:
    Recorder requests_;
};
