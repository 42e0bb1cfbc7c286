#pragma once

#include <unistd.h>

/** Descriptor 0 is free as long as this exists, so that the next file that is opened gets it. */
class FreeDescriptorZero {
  public:
    FreeDescriptorZero() : saved_(dup(STDIN_FILENO)) { close(STDIN_FILENO); }
    FreeDescriptorZero(const FreeDescriptorZero &) = delete;
    FreeDescriptorZero &operator=(const FreeDescriptorZero &) = delete;
    ~FreeDescriptorZero() {
        dup2(saved_, STDIN_FILENO);
        close(saved_);
    }

  private:
    int saved_;
};
