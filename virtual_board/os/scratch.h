#pragma once
// Memory for one use of the seam. Programs call the seam on stacks of any size, from signal
// handlers and from children of vfork, so that neither the stack nor the heap can be had.

#include <cstddef>

namespace vb {

class Scratch {
  public:
    static constexpr size_t kSize = 26624;

    Scratch() = default;
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch() { giveBack(); }

    /** Null when the system has no memory left. */
    void *take();
    void giveBack();

  private:
    void *memory_ = nullptr;
};

} // namespace vb
