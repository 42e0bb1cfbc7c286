// Names that are made up for new files and folders. The name goes back to the caller.

#include "virtual_board/os/seam.h"

#include <cerrno>
#include <cstring>

namespace {

template <typename Result, typename Make>
Result makeTemporary(char *pattern, size_t suffix, Result failed, Make make) {
    constexpr size_t kMade = 6;
    const vb::HostPath target(pattern, vb::LastLink::Kept);
    if (!target.isOfBoard())
        return vb::callWithPath(target, failed, [&](const char *) { return make(pattern); });
    if (vb::attachedFolder()->isGone()) {
        errno = ENOENT;
        return failed;
    }
    // The path on the host is in memory of our own.
    auto *host = const_cast<char *>(target.get());
    const Result result = make(host);
    const size_t length = std::strlen(pattern);
    const size_t hostLength = std::strlen(host);
    if (result != failed && length >= suffix + kMade) {
        std::memcpy(pattern + length - suffix - kMade, host + hostLength - suffix - kMade, kMade);
        vb::attachedFolder()->giveToOwner(host);
    }
    return result;
}

} // namespace

#define VB_SEAM_MKSTEMP(symbol)                                                                    \
    VB_SEAM(int, symbol, char *pattern) {                                                          \
        return makeTemporary(pattern, 0, -1, [](char *host) { return VB_NEXT(symbol)(host); });    \
    }
VB_SEAM_MKSTEMP(mkstemp)
VB_SEAM_MKSTEMP(mkstemp64)

#define VB_SEAM_MKOSTEMP(symbol)                                                                   \
    VB_SEAM(int, symbol, char *pattern, int flags) {                                               \
        return makeTemporary(pattern, 0, -1,                                                       \
                             [=](char *host) { return VB_NEXT(symbol)(host, flags); });            \
    }
VB_SEAM_MKOSTEMP(mkostemp)
VB_SEAM_MKOSTEMP(mkostemp64)

#define VB_SEAM_MKSTEMPS(symbol)                                                                   \
    VB_SEAM(int, symbol, char *pattern, int suffix) {                                              \
        return makeTemporary(pattern, static_cast<size_t>(suffix), -1,                             \
                             [=](char *host) { return VB_NEXT(symbol)(host, suffix); });           \
    }
VB_SEAM_MKSTEMPS(mkstemps)
VB_SEAM_MKSTEMPS(mkstemps64)

#define VB_SEAM_MKOSTEMPS(symbol)                                                                  \
    VB_SEAM(int, symbol, char *pattern, int suffix, int flags) {                                   \
        return makeTemporary(pattern, static_cast<size_t>(suffix), -1,                             \
                             [=](char *host) { return VB_NEXT(symbol)(host, suffix, flags); });    \
    }
VB_SEAM_MKOSTEMPS(mkostemps)
VB_SEAM_MKOSTEMPS(mkostemps64)

VB_SEAM(char *, mkdtemp, char *pattern) {
    char *made = makeTemporary(pattern, 0, static_cast<char *>(nullptr),
                               [](char *host) { return VB_NEXT(mkdtemp)(host); });
    return made != nullptr ? pattern : nullptr;
}
