#pragma once
// Where answers go. Standard output carries nothing else, so that it can be piped: the library
// prints its diagnostics there too, and these are led to standard error.

#include "iodbg/exit_code.h"
#include "iodbg/report.h"
#include "support/owned.h"

#include <string>

namespace iodbg {

class Failure;

class Console {
  public:
    /** Takes standard output over. */
    Console();

    /** Whether answers are for programs. */
    bool &isJson() { return isJson_; }

    /** Prints an answer; its exit code. */
    ExitCode print(const Report &report) const { return print(report, report.toText()); }
    /** The same with another form of it for people. */
    ExitCode print(const Report &report, const std::string &text) const;

    void printText(const std::string &text) const;

    /** Prints why there is no answer: a line on standard error, and an object for programs. */
    ExitCode print(const Failure &failure) const;

  private:
    bsp::Descriptor out_;
    bool isJson_ = false;
};

} // namespace iodbg
