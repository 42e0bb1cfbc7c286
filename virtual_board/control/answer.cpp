#include "virtual_board/control/answer.h"

#include "language/refused.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>

namespace vboard {

namespace {

int32_t tell(VBoardError *error, int32_t status, const char *text, int osError = 0) {
    if (error != nullptr) {
        error->status = status;
        error->osError = osError;
        const size_t length = std::min<size_t>(std::strlen(text), VBOARD_ERROR_TEXT_SIZE - 1);
        std::memcpy(error->text, text, length);
        error->text[length] = '\0';
    }
    return status;
}

constexpr const char *kNames[] = {
    "VBOARD_OK",        "VBOARD_E_ARGUMENT",  "VBOARD_E_REFUSED",    "VBOARD_E_NO_BOARD",
    "VBOARD_E_DAMAGED", "VBOARD_E_VERSION",   "VBOARD_E_PERMISSION", "VBOARD_E_EXISTS",
    "VBOARD_E_GONE",    "VBOARD_E_TIMEOUT",   "VBOARD_E_IN_USE",     "VBOARD_E_FULL",
    "VBOARD_E_SYSTEM",  "VBOARD_E_NO_MEMORY", "VBOARD_E_BUSY",
};
static_assert(std::size(kNames) == VBOARD_E_BUSY + 1);

} // namespace

int32_t tellFailure(VBoardError *error) noexcept {
    try {
        throw;
    } catch (const Failure &failure) {
        return tell(error, failure.status(), failure.what(), failure.osError());
    } catch (const language::Refused &refusal) {
        return tell(error, VBOARD_E_REFUSED, refusal.what());
    } catch (const std::bad_alloc &) {
        return tell(error, VBOARD_E_NO_MEMORY, "there is not enough memory", ENOMEM);
    } catch (const std::system_error &failure) {
        return tell(error, VBOARD_E_SYSTEM, failure.what(), failure.code().value());
    } catch (const std::exception &failure) {
        return tell(error, VBOARD_E_SYSTEM, failure.what());
    }
}

void requireSize(uint32_t size, uint32_t known, const char *name) {
    if (size != known)
        throw Failure(VBOARD_E_ARGUMENT, std::string(name) + " has a size of " +
                                             std::to_string(size) + " bytes; this library knows " +
                                             std::to_string(known));
}

} // namespace vboard

const char *vboardStatusName(int32_t status) {
    const auto index = static_cast<size_t>(status);
    return index < std::size(vboard::kNames) ? vboard::kNames[index] : "";
}

void vboardFree(void *given) {
    std::free(given);
}
