#include "iodbg/core/progress.h"

#include "command_line/screen.h"
#include "iodbg/core/console.h"
#include "iodbg/core/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <unistd.h>
#include <utility>

namespace iodbg {

namespace {

constexpr size_t kWidestBar = 30;
constexpr size_t kNarrowestBar = 10; // a shorter one tells less than the percentage
constexpr char kStartLineOver[] = "\r\x1b[K";

/** As much of a bar as a line has room for beside its text. */
std::string barBeside(size_t textWidth, size_t room, uint32_t percent) {
    constexpr size_t kFrame = 3; // brackets and a blank
    if (room < textWidth + kFrame + kNarrowestBar)
        return "";
    const size_t width = std::min(room - textWidth - kFrame, kWidestBar);
    const size_t filled = percent * width / 100;
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "] ";
}

} // namespace

uint32_t msFor(uint64_t bytes, uint32_t bytesPerMs) {
    return static_cast<uint32_t>(bytes / bytesPerMs) + 1;
}

std::string durationText(uint32_t seconds) {
    const std::string rest = std::to_string(seconds % 60) + " s";
    return seconds < 60 ? rest : std::to_string(seconds / 60) + " min " + rest;
}

Progress::Progress(Console &console, std::string task, const std::vector<WorkStep> &steps)
    : console_(console), task_(std::move(task)), steps_(steps), printedStep_(steps.size()) {
    for (const WorkStep &step : steps_)
        totalMs_ += step.leastMs;
}

void Progress::hide() noexcept {
    if (hasBar_)
        std::fputs(kStartLineOver, stderr);
    hasBar_ = false;
}

double Progress::secondsElapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

Progress::Position Progress::positionOf(size_t step, uint32_t msIntoStep) const {
    uint32_t doneMs = std::min(msIntoStep, steps_[step].leastMs);
    for (size_t i = 0; i < step; ++i)
        doneMs += steps_[i].leastMs;
    // What has been done took its time; the rest will take as much for each of its milliseconds.
    const double secondsPerMs = doneMs == 0 ? 0.001 : secondsElapsed() / doneMs;
    return {step, static_cast<uint32_t>(uint64_t{doneMs} * 100 / totalMs_),
            static_cast<uint32_t>(std::lround((totalMs_ - doneMs) * secondsPerMs))};
}

void Progress::reach(size_t step, uint32_t msIntoStep) noexcept {
    try {
        const Position position = positionOf(step, msIntoStep);
        if (position.step != printedStep_ || position.percent != printedPercent_)
            print(position);
        printedStep_ = position.step;
        printedPercent_ = position.percent;
    } catch (const std::exception &) {
        // The work itself is what counts.
    }
}

void Progress::print(const Position &position) {
    if (console_.form() == AnswerForm::JsonLines) {
        const Section section = {"",
                                 "",
                                 {{"event", "", textCell("progress")},
                                  {"task", "", textCell(task_)},
                                  {"step", "", numberCell(static_cast<int64_t>(position.step) + 1)},
                                  {"steps", "", numberCell(static_cast<int64_t>(steps_.size()))},
                                  {"name", "", textCell(steps_[position.step].name)},
                                  {"percent", "", numberCell(position.percent)},
                                  {"seconds_left", "", numberCell(position.secondsLeft)}}};
        console_.printText(toJsonLine(section));
    } else if (const auto terminal = terminal::sizeOf(STDERR_FILENO)) {
        std::fputs((kStartLineOver + barText(position, terminal->columns)).c_str(), stderr);
        std::fflush(stderr);
        hasBar_ = true;
    } else if (position.step != printedStep_) {
        std::fprintf(stderr, "%s: %s\n", task_.c_str(), stepText(position).c_str());
    }
}

std::string Progress::stepText(const Position &position) const {
    return "step " + std::to_string(position.step + 1) + " of " + std::to_string(steps_.size()) +
           ", " + steps_[position.step].name;
}

std::string Progress::barText(const Position &position, size_t columns) const {
    // Only a line that ends before the last column can be started over on every terminal.
    const size_t room = columns - 1;
    const std::string text = std::to_string(position.percent) + " %  " +
                             durationText(position.secondsLeft) + " left  " + stepText(position);
    return (barBeside(text.size(), room, position.percent) + text).substr(0, room);
}

} // namespace iodbg
