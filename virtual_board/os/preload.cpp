// Attaches a program that preloads this library to the board that its environment names.

#include "virtual_board/os/program_start.h"
#include "virtual_board/os/seam.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kCannotAttach = 125;

/** Going on would let the program loose on the host's own devices and files. */
[[noreturn]] void refuse(const char *reason) {
    std::fprintf(stderr, "vboard: %s\n", reason);
    _exit(kCannotAttach);
}

#ifndef VBOARD_SHELL_IS_FOREIGN
/**
 * Takes the sanitizer's library that was put before the seam out of the list: programs that this
 * one starts get their own.
 */
void disownRuntime() {
    char *list = std::getenv(vb::kPreloadVariable);
    char *seam = list != nullptr ? std::strrchr(list, ':') : nullptr;
    if (seam == nullptr)
        return;
    const vb::ProgramFile self = vb::examineProgram(AT_FDCWD, "/proc/self/exe");
    const size_t length = std::strlen(self.runtime);
    char *start = seam - length;
    const bool isIts =
        length > 0 && start >= list && std::strncmp(start, self.runtime, length) == 0;
    if (isIts && (start == list || start[-1] == ':'))
        std::memmove(start, seam + 1, std::strlen(seam + 1) + 1);
}
#endif

__attribute__((constructor)) void attachFromEnvironment() {
    // Two seams in one program would count each use twice.
    const bool bringsSeam = dlsym(RTLD_DEFAULT, "vboardSeamOfProgram") != nullptr;
    const char *folder = std::getenv(vb::kFolderVariable);
    if (folder == nullptr || *folder == '\0') {
        if (bringsSeam)
            return;
        refuse("libvboard.so is preloaded, but VBOARD_DIR names no board; start the program with "
               "'vboard run', or set what 'vboard env' prints");
    }
    vb::FolderError error = {};
    if (!bringsSeam && !vb::attachBoard(folder, error))
        refuse(error.text);
#ifndef VBOARD_SHELL_IS_FOREIGN
    disownRuntime();
    vb::handOnBoard(bringsSeam ? folder : vb::attachedFolder()->path());
#endif
}

} // namespace
