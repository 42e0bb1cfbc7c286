#pragma once
// How far long work has come: a bar on a terminal, a line for each step elsewhere, and one JSON
// object a line for programs.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

class Console;

/** A part of long work. */
struct WorkStep {
    std::string name;
    uint32_t leastMs; // what it takes at least
};

class Progress {
  public:
    Progress(Console &console, std::string task, const std::vector<WorkStep> &steps);
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress() { hide(); }

    /** The work has come to a step and is some milliseconds, of those that it takes at least, into
     * it. What cannot be printed is left out. */
    void reach(size_t step, uint32_t msIntoStep) noexcept;
    /** Takes the bar off the terminal until the next step. */
    void hide() noexcept;

  private:
    struct Position {
        size_t step;
        uint32_t percent;
        uint32_t secondsLeft;
    };

    double secondsElapsed() const;
    Position positionOf(size_t step, uint32_t msIntoStep) const;
    void print(const Position &position);
    std::string barText(const Position &position, size_t columns) const;
    std::string stepText(const Position &position) const;

    Console &console_;
    std::string task_;
    std::vector<WorkStep> steps_;
    uint32_t totalMs_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool hasBar_ = false;
    size_t printedStep_;
    uint32_t printedPercent_ = 0;
};

/** What so many bytes take at least, of work that does so many in a millisecond. */
uint32_t msFor(uint64_t bytes, uint32_t bytesPerMs);

/** "13 min 5 s" */
std::string durationText(uint32_t seconds);

} // namespace iodbg
