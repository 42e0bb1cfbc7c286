#pragma once
// The library's calls of the system in words.

#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/types.h>

std::string formatted(const char *format, ...) __attribute__((format(printf, 1, 2)));

/** How a file is opened: "read-write create 0644 no-link". */
std::string accessText(int flags, mode_t mode);

std::string ioctlText(int fd, unsigned long request, const void *argument);
std::string recordLockText(int fd, int command, const struct flock &lock);
std::string flockText(int fd, int operation);
std::string seekText(int fd, int64_t offset, int whence);
std::string transferText(const char *what, int fd, size_t size);
std::string mapText(const void *address, size_t size, int access, int flags, int fd,
                    int64_t offset);

/** Of a time with 64-bit seconds, as all systems pass it to the call that takes those. */
std::string clockText(clockid_t clock, const void *time);
