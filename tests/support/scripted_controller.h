#pragma once
// A PoE controller that accepts every request unless a test's script says otherwise, and remembers
// what it was sent.

#include "tests/support/i2c_device.h"
#include "tests/support/virtual_board_test.h"

#include <climits>
#include <map>

/** What is wrong with an exchange. */
enum class Spoil { Nothing, Write, Read, CommandEcho, SecondByteEcho, Checksum };

/** How an exchange goes. */
struct ScriptedReply {
    std::string payload; // the reply's bytes from 2 on, in hexadecimal; then those of a good reply
    Spoil spoil = Spoil::Nothing;
    int spoiledPolls = INT_MAX; // how many reads the trouble lasts
};

/** One request that arrived. */
struct Exchange {
    std::vector<uint8_t> request;
    std::vector<int32_t> readLengths; // of the polls that followed
    bool isLocked;                    // the PoE lock was held
};

/**
 * A request in words: the command, its second byte where that is not a sequence number, and the
 * payload without the unused bytes at its end: "09: 2D 01 2E 01", "0A/00: 05 01", "41:". A block of
 * firmware is shown whole.
 */
std::string requestText(const std::vector<uint8_t> &request);

/** A text of bytes without the unused ones, FF, at its end. */
std::string withoutUnused(std::string text);

/** "0A 1F" as bytes. */
std::vector<uint8_t> bytesOf(const std::string &hexadecimal);

class ScriptedController : public I2cDevice {
  public:
    ScriptedController();

    int32_t write(const I2cRequest &request) override;
    int32_t read(const I2cRequest &request) override;

    /** The next exchange, or one that comes a number of exchanges later. */
    void answer(const ScriptedReply &answer, size_t later = 0) {
        script_[exchanges_.size() + later] = answer;
    }
    /** From the next exchange on. */
    void answerAlways(const ScriptedReply &answer) { usual_ = answer; }

    /** What arrived since the last call. */
    std::vector<Exchange> exchanges();
    /** The same as requestText(). */
    std::vector<std::string> requests();

    /** The path of the lock file, for Exchange::isLocked. */
    void watchLock(const std::string &path) { lockPath_ = path; }

  private:
    const ScriptedReply &currentAnswer() const;
    bool isLocked() const;

    std::string lockPath_;
    std::vector<Exchange> exchanges_;
    size_t reported_ = 0;
    ScriptedReply usual_;
    std::map<size_t, ScriptedReply> script_;
};

/**
 * A PoE model whose controller is scripted. The lock file exists and counts from 0x10; the device
 * id is cached.
 */
class PoeTest : public VirtualBoardTest {
  protected:
    void SetUp() override;

    void usePoeModel(uint32_t devId);
    void unplugController();

    /** Microseconds on the board's clock since the last call. */
    uint64_t elapsed();

    ScriptedController controller;
    Recorder recorder;

  private:
    uint64_t lastNs_ = 0;
};

// What the transport prints of a controller that stays silent; the command as in "9".
std::string silenceText(const std::string &code);
