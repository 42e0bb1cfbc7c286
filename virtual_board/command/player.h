#pragma once
// Plays scenarios: does one step behind the other.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/hands.h"
#include "virtual_board/command/program.h"
#include "virtual_board/command/scenario.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vboard {

/** What a step expects is not so. */
class NotAsExpected : public std::exception {
  public:
    explicit NotAsExpected(std::string reason) : reason_(std::move(reason)) {}
    const char *what() const noexcept override { return reason_.c_str(); }

  private:
    std::string reason_;
};

class Player {
  public:
    /** How long a program in the background may print nothing that is waited for while nobody but
     * programs moves the clock: in the host's time. */
    static constexpr std::chrono::milliseconds kMostSilence{30000};

    explicit Player(const Board &board, std::chrono::milliseconds mostSilence = kMostSilence);

    /** Does a step when its moment has come. Throws NotAsExpected, or Refused where it cannot be
     * done. */
    void play(const Step &step);

    /** Ends the programs in the background, once it is known how those have ended that did so by
     * themselves: the step of the first that did not as expected is told, with the reason. */
    const Step *finish(std::string &reason);

    /** How long it plays by now, on the board's clock. */
    uint64_t passedNs() const;

  private:
    /** A program in the background, and how far what it prints was looked at. */
    struct Running {
        const Step *step;
        std::unique_ptr<Program> program;
        size_t seen = 0;
    };

    uint64_t now() const;
    bool isTime(const std::string &mode) const;
    void settle() const;
    std::vector<Running>::iterator running(const std::string &name);

    void awaitMoment(const Step &step) const;
    void awaitTime(uint64_t time) const;
    void awaitCondition(const std::string &condition, uint64_t timeoutNs) const;

    void run(const Step &step);
    void runInForeground(const Step &step) const;
    std::string runOnce(const Step &step) const;
    void awaitEnd(Program &program, const Step &step) const;
    void awaitEndByStepping(Program &program, const Step &step) const;
    void stop(const std::string &name);
    void expect(const Step &step);
    void expectLine(const Step &step);
    void letTimePass(Program &program, uint64_t mostNs) const;

    const Board &board_;
    Hands hands_;
    const std::chrono::milliseconds mostSilence_;
    const uint64_t beganNs_;
    std::vector<Running> programs_;
};

} // namespace vboard
