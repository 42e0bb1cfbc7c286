#pragma once
// What the kernel and the loader will make of a program's file: whether the seam can be loaded into
// it. Only system calls and a small stack: children of vfork look at programs, too.

#include "virtual_board/programs/elf_file.h"

#include <cstdint>

namespace vb {

enum class Fitness : uint8_t {
    NotStarted, // the kernel will say why
    Fits,       // for a seam of the same machine
    NoSeam,     // there is none of its machine; told by who looks for one
    Static,
    OtherLoader,
    OtherIds,
    Capabilities,
    Unreadable
};

/** Whether a program would be started, but not be on its board. */
constexpr bool isUnfit(Fitness fitness) {
    return fitness != Fitness::NotStarted && fitness != Fitness::Fits;
}

/** A program's file, or that of a script's interpreter. */
struct ProgramFile {
    static constexpr unsigned kMaxInterpreter = 256; // the kernel's
    static constexpr unsigned kMaxRuntime = ElfFile::kMaxLibrary;

    Fitness fitness = Fitness::NotStarted;
    Machine machine = {};
    /** What the kernel starts in place of a script; empty for other programs. */
    char interpreter[kMaxInterpreter] = {};
    /** A sanitizer's library that wants to be loaded before all others; empty when there is none.
     */
    char runtime[kMaxRuntime] = {};
};

/**
 * Looks at the file that execveat(folder, path, ..., flags) would start. Files that the kernel does
 * not know stand for scripts of the shell.
 */
ProgramFile examineProgram(int folder, const char *path, int flags = 0);

/** Whether a file is a library or program of a machine. */
bool isOfMachine(const char *path, const Machine &machine);

/** Whether the kernel would start a file, as far as its kind and mode tell. */
bool isExecutable(int folder, const char *path, int flags = 0);

/** Why a program is not started on a board: parts of one line. */
struct Refusal {
    static constexpr unsigned kParts = 6;
    const char *parts[kParts];
};
Refusal refusalOf(Fitness fitness, const char *interpreter, const char *path);

} // namespace vb
