#include "tests/support/library_holdings.h"

#include <algorithm>
#include <gtest/gtest.h>

LibraryHoldings libraryHas;

size_t LibraryHoldings::openDescriptors() const {
    return static_cast<size_t>(
        std::count_if(descriptors.begin(), descriptors.end(),
                      [](const auto &descriptor) { return descriptor.second.isOpen; }));
}

std::string LibraryHoldings::nameOf(int fd) const {
    if (fd == -1)
        return "no descriptor";
    const auto found = descriptors.find(fd);
    if (found == descriptors.end())
        return "unknown descriptor";
    return found->second.path + (found->second.isOpen ? "" : " after its close");
}

int LibraryHoldings::numberOf(const std::string &path) const {
    for (const auto &[fd, file] : descriptors)
        if (file.path == path)
            return fd;
    return -1;
}

void LibraryHoldings::expectNothing() const {
    for (const auto &[fd, file] : descriptors)
        EXPECT_FALSE(file.isOpen) << file.path << " is still open";
    EXPECT_EQ(files.size(), 0u) << "files are not closed";
    EXPECT_EQ(buffers.size(), 0u) << "buffers are not freed";
    EXPECT_EQ(mappings.size(), 0u) << "mappings are not given back";
    EXPECT_EQ(strayCloses, 0u) << "other descriptors were closed";
    // A close gives up the process's locks on the file, so a lock must have been released before.
    for (const std::string &path : locks)
        ADD_FAILURE() << path << " is still locked";
}
