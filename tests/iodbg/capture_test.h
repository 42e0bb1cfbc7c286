#pragma once
// Captures of the board that a test is attached to, made within the test.

#include "iodbg/core/console.h"
#include "iodbg/unit/capture.h"
#include "tests/support/virtual_board_test.h"

#include <cstdio>
#include <exception>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

/** Leads what the library prints to nowhere as long as it lives. */
class Quiet {
  public:
    Quiet() : out_(dup(STDOUT_FILENO)), err_(dup(STDERR_FILENO)) {
        std::fflush(stdout);
        FILE *nowhere = std::fopen("/dev/null", "we");
        dup2(fileno(nowhere), STDOUT_FILENO);
        dup2(fileno(nowhere), STDERR_FILENO);
        std::fclose(nowhere);
    }
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;
    ~Quiet() {
        std::fflush(stdout);
        dup2(out_, STDOUT_FILENO);
        dup2(err_, STDERR_FILENO);
        close(out_);
        close(err_);
    }

  private:
    int out_, err_;
};

class CaptureTest : public VirtualBoardTest {
  protected:
    explicit CaptureTest(uint32_t devId) : VirtualBoardTest(devId) {}

    /** iodbg keeps its lock file open until it ends, so all is done in a child. */
    template <typename Work>
    void inChild(Work work) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            try {
                work();
            } catch (const std::exception &failure) { // or the child went on with other tests
                ADD_FAILURE() << failure.what();
            }
            std::fflush(nullptr);
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }

    language::CapturedUnit capture(bool hasSecrets = true) {
        const Quiet quiet;
        iodbg::Console console;
        return iodbg::captureUnit(console, {.hasSecrets = hasSecrets, .hasFlash = false});
    }
};
