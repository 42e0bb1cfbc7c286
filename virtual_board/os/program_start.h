#pragma once
// What a program of a board hands on to those that it starts, so that they are on the board, too.

#include "virtual_board/programs/environment.h"
#include "virtual_board/programs/preload_list.h"

namespace vb {

/** This process has got its board from a preloaded library, and hands both on from now on. */
void handOnBoard(const char *folder);

/** A program that is about to be started with an environment. */
class ProgramStart {
  public:
    ProgramStart(int folder, const char *path, int flags, const char *const *environment);

    /** Whether it must not be started, as it would be on the host; errno and a line say so. */
    bool isRefused() const { return isRefused_; }

    /** How much memory its environment needs; 0 when that has all it needs already. */
    size_t environmentSize() const;
    /** Makes its environment in memory of that size. */
    char **makeEnvironment(void *memory) const;

    /** Changes the environment, which is this process's own. */
    void applyToOwn() const;

  private:
    ProgramStart(const char *path, const ProgramFile &program, const char *const *environment);
    bool isComplete() const;

    const char *const *environment_;
    size_t variables_ = 0;
    const char *preload_ = nullptr, *folder_ = nullptr, *allowance_ = nullptr;
    PreloadList list_;
    bool isRefused_ = false;
};

/**
 * Sees to it that a shell which the C library starts with this process's environment is on the
 * board; false when it cannot be, with errno and a line.
 */
bool putShellOnBoard();

} // namespace vb
