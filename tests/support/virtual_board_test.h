#pragma once
// A test on a virtual board of its own, with virtual time.

#include "tests/support/answer.h"
#include "virtual_board/board/create.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/** A folder that disappears with this object. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder();

    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

/** Requests as lists of lines. */
using Lines = std::vector<std::string>;

/** I2C requests in the board's words, without the bytes that travelled. */
Lines withoutData(Lines lines);

/** Takes out of a copy of a board what time alone changes, so that copies can be compared. */
void forgetTime(vb::Devices &devices);

/**
 * Attaches the test to a new board. When the test ends, every descriptor that was opened during it
 * must be closed again.
 */
class VirtualBoardTest : public ::testing::Test {
  protected:
    explicit VirtualBoardTest(uint32_t devId = 0x0709);
    ~VirtualBoardTest() override;
    void SetUp() override;
    void TearDown() override;

    /** Replaces the board by a new one of another model. */
    void useModel(uint32_t devId);

    vb::Board &board() const;
    vb::Devices &devices() const { return board().devices; }
    std::string boardFolder() const { return folder_.path() + "/board"; }

    /** Where a file of the board lies: boardFile("/tmp/bsp/devId"). */
    std::string boardFile(const std::string &pathOnBoard) const;

    std::string readBoardFile(const std::string &pathOnBoard) const;
    void writeBoardFile(const std::string &pathOnBoard, const std::string &content) const;

    /** Makes the board answer a device id, also one that no model has. */
    void pretendDeviceId(uint32_t devId) const;

    /** The requests since the last call, each in the board's words. */
    std::vector<std::string> trace();
    /** The same without opens and sleeps: what reached the driver. */
    std::vector<std::string> requests();

    /** Nanoseconds on the board's clock, which only sleeps advance. */
    uint64_t now() const { return board().clock.anchorNs; }

    void addFault(const vb::FaultRule &rule);
    void clearFaults();

    // The usual faults: the n-th request of a kind fails, and all after it.
    vb::FaultRule refuse(vb::FaultDevice device, vb::FaultOp op, int32_t result,
                         uint32_t nth = 1) const;
    vb::FaultRule ioctlFails(vb::FaultDevice device, vb::FaultOp op, int errnoValue,
                             uint32_t nth = 1) const;
    vb::FaultRule openFails(const char *path, int errnoValue) const;
    vb::FaultRule shortTransfer(const char *path, vb::FaultOp op, int32_t bytes) const;

  private:
    TemporaryFolder folder_;
    uint32_t devId_;
    uint64_t traced_ = 0;
    int openDescriptors_ = 0;
};
