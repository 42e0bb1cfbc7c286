#pragma once
// A board on which every function succeeds that can.

#include "tests/support/virtual_board_test.h"
#include "tests/sweep/functions.h"

#include <unistd.h>

namespace sweep {

/** Leads both standard streams to nowhere as long as it lives. */
class Silence {
  public:
    Silence();
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;
    ~Silence();

  private:
    int savedOut_ = dup(STDOUT_FILENO);
    int savedErr_ = dup(STDERR_FILENO);
};

/**
 * Has an initialised PoE controller, settings, images, an optical and a copper module, and the
 * files that functions are called with.
 */
class WorkingBoardTest : public VirtualBoardTest {
  protected:
    void SetUp() override;

    Files files_;
};

} // namespace sweep
