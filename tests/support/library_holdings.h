#pragma once
// What the library has from the system, and has not given back.

#include <cstdio>
#include <map>
#include <set>
#include <string>

struct LibraryHoldings {
    struct OpenFile {
        std::string path;
        bool isOpen = true;
    };
    std::map<int, OpenFile> descriptors; // and what was closed
    std::map<std::FILE *, std::string> files;
    std::set<void *> buffers;
    std::map<void *, bool> mappings; // whether they were really made
    std::set<std::string> locks;     // the paths that they are on
    size_t strayCloses = 0;          // of descriptors that it did not have

    size_t openDescriptors() const;

    /** The path that is open under a number, or why there is none. */
    std::string nameOf(int fd) const;
    /** The number that a path was opened under. */
    int numberOf(const std::string &path) const;

    /** Fails the test for everything that is left. */
    void expectNothing() const;
};
extern LibraryHoldings libraryHas;
