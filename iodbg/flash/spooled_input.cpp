#include "iodbg/flash/spooled_input.h"

#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"

#include <unistd.h>

namespace iodbg {

namespace {

constexpr char kSpoolAdvice[] = "choose a folder with space for it with --spool DIR";

/** Copies standard input; how many bytes there were, or one more than fits. */
uint64_t spoolInput(int file, uint64_t largest) {
    constexpr size_t kPart = 65536;
    Bytes part(kPart);
    uint64_t size = 0;
    ssize_t count = 0;
    while (size <= largest && (count = ::read(STDIN_FILENO, part.data(), part.size())) > 0) {
        if (!writeAll(file, {part.data(), static_cast<size_t>(count)}))
            throw Failure::file("spool standard input", kSpoolAdvice);
        size += static_cast<uint64_t>(count);
    }
    if (count < 0)
        throw Failure::file("read standard input", "give the name of a file instead");
    return size;
}

} // namespace

SpooledInput::SpooledInput(const FlashInput &input, uint64_t largest)
    : path_(input.file), name_(inputName(input.file)) {
    if (!isStandardStream(input.file)) {
        if (!input.spool.empty())
            throw Failure::usage("--spool is for standard input; leave it out, or give - for FILE");
        return;
    }
    if (!input.isYes && !input.isDryRun)
        throw Failure::usage("standard input has the file, so that it cannot have the answer to a "
                             "question; say --yes");
    file_.emplace(input.spool.empty() ? folderForTemporaryFiles() : input.spool,
                  "a spool file for standard input");
    const uint64_t size = spoolInput(file_->descriptor(), largest);
    if (size == 0)
        throw Failure(ExitCode::Host, name_ + " is empty; give the right file");
    if (size > largest)
        throw Failure(ExitCode::Host, name_ + " is longer than " + std::to_string(largest) +
                                          " bytes; give the right file");
    path_ = file_->path();
}

void addSpoolOption(Command &command, std::string &folder) {
    command.option("--spool", "DIR",
                   "Folder that takes standard input until it is written (default $TMPDIR, or "
                   "/tmp)",
                   fileName(folder));
}

} // namespace iodbg
