#include "iodbg/flash/claim.h"

#include "iodbg/core/shared_files.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace iodbg {

namespace {

// Each thing that can be locked is a byte of the file, which holds none.
constexpr char kClaimsFile[] = "/tmp/bsp/iodbg.lock";
constexpr off_t kHeaderByte = 0;
constexpr off_t kLongTurnByte = 1;
constexpr off_t kFirstPartition = 16;

/** In a folder that others can change the file could be anything. */
void requireSharedFolder() {
    for (const SharedFileFlaw &flaw : sharedFileFlaws()) {
        if (flaw.path == kSharedFolder)
            throw Failure(ExitCode::Host, flaw.path + " " + flaw.found +
                                              ", so that no change of flash can be kept apart from "
                                              "others; " +
                                              flaw.advice);
    }
}

std::string adviceOnOpen(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return "run iodbg as root";
    case ELOOP: // a link, a folder, a socket
    case EISDIR:
    case ENXIO:
        return "remove it as root while no upgrade is under way";
    default:
        return "see that /tmp can be written and has space";
    }
}

int openClaimsFile() {
    const int file = open(kClaimsFile, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0)
        throw Failure::file(std::string("open ") + kClaimsFile, adviceOnOpen(errno));
    return file;
}

/** The file, open up to the program's end: closing any of its descriptors would free all locks. */
int claimsFile() {
    static const bsp::Descriptor file(openClaimsFile());
    return file.get();
}

struct flock byteAt(off_t place, short type) {
    struct flock byte = {};
    byte.l_type = type;
    byte.l_whence = SEEK_SET;
    byte.l_start = place;
    byte.l_len = 1;
    return byte;
}

bool lockAt(off_t place, int command) {
    struct flock byte = byteAt(place, F_WRLCK);
    int result = 0;
    while ((result = fcntl(claimsFile(), command, &byte)) != 0 && errno == EINTR) {
    }
    return result == 0;
}

void unlockAt(off_t place) {
    struct flock byte = byteAt(place, F_UNLCK);
    fcntl(claimsFile(), F_SETLK, &byte);
}

/** The process that has locked a byte; none when it is free. */
std::optional<pid_t> holderOf(off_t place) {
    struct flock byte = byteAt(place, F_WRLCK);
    if (fcntl(claimsFile(), F_GETLK, &byte) != 0 || byte.l_type == F_UNLCK)
        return {};
    return byte.l_pid;
}

} // namespace

FlashClaim::FlashClaim(const FlashPartition &partition)
    : FlashClaim(kFirstPartition + partition.number(), partition.device()) {}

FlashClaim::FlashClaim(off_t place, const std::string &what) : place_(place) {
    requireSharedFolder();
    if (lockAt(place, F_SETLK))
        return;
    if (errno != EACCES && errno != EAGAIN)
        throw Failure::file(std::string("lock ") + kClaimsFile, "try again");
    const std::optional<pid_t> holder = holderOf(place);
    throw Failure(ExitCode::Host,
                  what + " is being changed by " +
                      (holder ? "process " + std::to_string(*holder) : "another process") +
                      "; nothing was done: wait for its end");
}

FlashClaim::~FlashClaim() {
    unlockAt(place_);
}

HeaderTurn::HeaderTurn(Length length) {
    if (!lockAt(kHeaderByte, F_SETLK)) {
        if (const std::optional<pid_t> holder = longHolder())
            std::fprintf(stderr, "iodbg: waiting for process %d, which writes an image\n",
                         static_cast<int>(*holder));
        if (!lockAt(kHeaderByte, F_SETLKW))
            throw Failure::file("wait for another process's use of an image header", "try again");
    }
    if (length == Length::Long)
        lockAt(kLongTurnByte, F_SETLK); // free: whoever has the turn has had it as well
}

std::optional<pid_t> HeaderTurn::longHolder() {
    return holderOf(kLongTurnByte);
}

HeaderTurn::~HeaderTurn() {
    unlockAt(kLongTurnByte);
    unlockAt(kHeaderByte);
}

} // namespace iodbg
