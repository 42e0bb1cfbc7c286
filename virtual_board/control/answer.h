#pragma once
// How calls of the C interface end: nothing is thrown through it.

#include "virtual_board/include/vboard.h"

#include <stdexcept>
#include <string>

namespace vboard {

/** A failure with its status. */
class Failure : public std::runtime_error {
  public:
    Failure(int32_t status, const std::string &text, int osError = 0)
        : std::runtime_error(text), status_(status), osError_(osError) {}

    int32_t status() const { return status_; }
    int osError() const { return osError_; }

  private:
    int32_t status_;
    int osError_;
};

/** Tells the exception that is being handled; its status. */
int32_t tellFailure(VBoardError *error) noexcept;

/** Does what a call shall do. */
template <typename Work>
int32_t answer(VBoardError *error, Work work) noexcept {
    try {
        work();
        return VBOARD_OK;
    } catch (...) {
        return tellFailure(error);
    }
}

/** Fails without a pointer that is required; it is named as in the header. */
inline void require(const void *pointer, const char *name) {
    if (pointer == nullptr)
        throw Failure(VBOARD_E_ARGUMENT, std::string(name) + " is null");
}

/** Fails where a structure is none that this library knows. */
void requireSize(uint32_t size, uint32_t known, const char *name);

} // namespace vboard
