#pragma once
// The lock by which the library keeps the flash work of the board's processes apart, for what iodbg
// reads past it.

#include "support/owned.h"

namespace iodbg {

/** Held as long as it lives; others are waited for. Throws where it cannot be had. */
class LibraryFlashLock {
  public:
    LibraryFlashLock();

  private:
    bsp::Descriptor file_; // closing it frees the lock
};

} // namespace iodbg
