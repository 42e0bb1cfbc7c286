#pragma once
// What ends a command before its time.

#include "iodbg/core/exit_code.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace iodbg {

/** One line that says what failed and what to do, and the exit code. */
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string &message) : std::runtime_error(message), code_(code) {}
    Failure(ExitCode code, const std::string &problem, const std::string &advice)
        : std::runtime_error(problem + "; " + advice), code_(code), problem_(problem),
          advice_(advice) {}

    /** The library answered a status that is not BSP_OK. hint replaces the status's own advice. */
    static Failure board(const std::string &what, int32_t status, const std::string &hint = "");
    /** The same of a number or a word that this board does not have: wrong usage. */
    static Failure refused(const std::string &what, int32_t status, const std::string &hint = "");
    static Failure usage(const std::string &message) { return {ExitCode::Usage, message}; }
    /** A system call on a file of this host failed; the reason is in errno. */
    static Failure file(const std::string &what, const std::string &hint);

    /** The same with more to do about it. */
    Failure with(const std::string &hint) const;

    ExitCode code() const { return code_; }
    std::optional<int32_t> status() const { return status_; }
    /** What failed, and what to do about it, of failures that tell them apart. */
    const std::string &problem() const { return problem_; }
    const std::string &advice() const { return advice_; }

  private:
    static Failure of(ExitCode code, const std::string &what, int32_t status,
                      const std::string &hint);

    ExitCode code_;
    std::string problem_;
    std::string advice_;
    std::optional<int32_t> status_;
};

/** Throws unless a call of the library succeeded. what: "read CPLD register 6". */
void require(int32_t status, const std::string &what);
/** Throws wrong usage when the answer is that a number of the user's is out of range. */
void refuseOutOfRange(int32_t status, const std::string &what);
/** Both. */
void requireInRange(int32_t status, const std::string &what);

} // namespace iodbg
