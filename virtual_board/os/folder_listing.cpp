// Listing the host's folders in which the board has files: /dev, /proc and /tmp show the board's
// instead of the host's of the same names.

#include "virtual_board/board/paths.h"
#include "virtual_board/os/descriptor_link.h"
#include "virtual_board/os/seam.h"

#include <atomic>
#include <dirent.h>
#include <iterator>

namespace {

/** A folder of the host that is being listed, and the board's folder that is shown behind it. */
struct Listing {
    std::atomic<DIR *> host;
    DIR *board;
    bool isHostShown; // whether the host's entries are all out
    char folder[16];
};

Listing listings[32];

Listing *listingOf(DIR *host) {
    if (vb::attachedFolder() == nullptr)
        return nullptr;
    for (Listing &listing : listings) {
        if (listing.host.load(std::memory_order_acquire) == host)
            return &listing;
    }
    return nullptr;
}

bool isShared(const char *folder) {
    constexpr const char *kShared[] = {"/dev", "/proc", "/tmp"};
    return std::any_of(std::begin(kShared), std::end(kShared),
                       [folder](const char *shared) { return std::strcmp(folder, shared) == 0; });
}

/** Whether an entry of a folder has a path that is the board's own. */
bool isOfBoard(const char *folder, const char *name) {
    char path[sizeof(Listing::folder) + 1 + NAME_MAX + 1];
    stpcpy(stpcpy(stpcpy(path, folder), "/"), name);
    return vb::isBoardPath(path);
}

template <typename Entry, typename Read>
Entry *nextEntry(DIR *host, Read read) {
    Listing *listing = listingOf(host);
    if (listing == nullptr)
        return read(host);
    while (!listing->isHostShown) {
        Entry *entry = read(host);
        listing->isHostShown = entry == nullptr;
        if (entry != nullptr && !isOfBoard(listing->folder, entry->d_name))
            return entry;
    }
    constexpr char kNodes[] = "/dev";
    Entry *entry = nullptr;
    while ((entry = read(listing->board)) != nullptr) {
        if (!isOfBoard(listing->folder, entry->d_name))
            continue;
        if (std::strcmp(listing->folder, kNodes) == 0)
            entry->d_type = DT_CHR;
        return entry;
    }
    return nullptr;
}

} // namespace

// The ways on that a listing of two folders takes by itself

VB_SEAM(int, closedir, DIR *host) {
    if (Listing *listing = listingOf(host); listing != nullptr) {
        VB_NEXT(closedir)(listing->board);
        listing->host.store(nullptr, std::memory_order_release);
    }
    return VB_NEXT(closedir)(host);
}

VB_SEAM(void, rewinddir, DIR *host) {
    VB_NEXT(rewinddir)(host);
    if (Listing *listing = listingOf(host); listing != nullptr) {
        VB_NEXT(rewinddir)(listing->board);
        listing->isHostShown = false;
    }
}

VB_SEAM(void, seekdir, DIR *host, long position) {
    VB_NEXT(seekdir)(host, position);
    if (Listing *listing = listingOf(host); listing != nullptr) {
        VB_NEXT(rewinddir)(listing->board);
        listing->isHostShown = false;
    }
}

VB_SEAM(dirent *, readdir, DIR *host) {
    return nextEntry<dirent>(host, [](DIR *folder) { return VB_NEXT(readdir)(folder); });
}

VB_SEAM(dirent64 *, readdir64, DIR *host) {
    return nextEntry<dirent64>(host, [](DIR *folder) { return VB_NEXT(readdir64)(folder); });
}

namespace {

/** Opens the board's folder of a path. */
template <typename Open>
DIR *openOwn(const vb::BoardFolder &board, const char *folder, Open open) {
    vb::Scratch scratch;
    static_assert(sizeof(vb::HostPathBuffer) <= vb::Scratch::kSize);
    auto *path = static_cast<char *>(scratch.take());
    if (path == nullptr)
        return nullptr;
    stpcpy(stpcpy(path, board.rootPath()), folder);
    return open(path);
}

/** Shows the board's files in a folder of the host that has been opened, if it has some there. */
template <typename Open>
DIR *shared(DIR *host, Open open) {
    const vb::BoardFolder *board = vb::attachedFolder();
    if (host == nullptr || board == nullptr)
        return host;
    const int savedErrno = errno;
    char folder[sizeof(Listing::folder)] = {};
    const ssize_t length = vb::kernel::readLink(AT_FDCWD, vb::DescriptorLink(dirfd(host)).text,
                                                folder, sizeof(folder) - 1);
    DIR *own = nullptr;
    if (length > 0 && isShared(folder))
        own = openOwn(*board, folder, open);
    for (Listing &listing : listings) {
        DIR *none = nullptr;
        if (own == nullptr || !listing.host.compare_exchange_strong(none, host))
            continue;
        listing.board = own;
        listing.isHostShown = false;
        std::memcpy(listing.folder, folder, sizeof(folder));
        own = nullptr;
    }
    if (own != nullptr)
        VB_NEXT(closedir)(own); // more are listed at once than anybody does
    errno = savedErrno;
    return host;
}

} // namespace

VB_SEAM(DIR *, opendir, const char *path) {
    const auto open = [](const char *host) { return VB_NEXT(opendir)(host); };
    return shared(vb::callWithPath(vb::HostPath(path), static_cast<DIR *>(nullptr), open), open);
}

VB_SEAM(DIR *, fdopendir, int fd) {
    return shared(VB_NEXT(fdopendir)(fd), [](const char *own) { return VB_NEXT(opendir)(own); });
}
