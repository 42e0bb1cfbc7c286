#pragma once
// Moving the clock of a board with stepped time.

#include "virtual_board/board/folder.h"
#include "virtual_board/control/descriptor.h"
#include "virtual_board/control/threads.h"

#include <cstdint>
#include <vector>

namespace vboard {

/**
 * Moves the clock from deadline to deadline. At each the thread that waits for it goes on, and the
 * next one when all threads of the board's programs wait again. One at a time does this; another
 * waits until it has ended.
 */
class Stepper {
  public:
    /** For a thread that does not come to rest there is so much of the host's patience. */
    Stepper(const vb::BoardFolder &folder, uint64_t patienceNs);
    Stepper(const Stepper &) = delete;
    Stepper &operator=(const Stepper &) = delete;
    ~Stepper();

    /** Moves it. Throws Failure when a thread does not come to rest. */
    void advanceBy(uint64_t ns);

    /** Waits until all threads wait. */
    void settle() const;

  private:
    struct Look {
        std::vector<Thread> threads;
        std::vector<uint64_t> waits; // by thread: which of its waits, or none
        bool isQuiet;
        bool operator==(const Look &other) const = default;
    };

    Look look() const;
    void advanceTo(uint64_t ns);
    bool callNext(uint64_t until) const;
    void step(uint64_t ns, int32_t pid, language::StepEnds ends) const;
    void forgetLeftBehind(const Look &look) const;
    bool forgetStrangers() const;
    [[noreturn]] void failBusy(const Look &look) const;

    const vb::BoardFolder &folder_;
    const uint64_t patienceNs_;
    Descriptor turn_;
};

} // namespace vboard
