#pragma once
// The boot loader's upgrade file: the image, and behind it a trailer with the board's name and the
// checksums of both.

#include "iodbg/core/format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

/** A field of the trailer: what it holds, and what it must. */
struct BootField {
    std::string name;
    std::string found;
    std::string wanted;

    bool isRight() const { return found == wanted; }
};

/** The fields that are checked, of a file that is large enough for a trailer. */
std::vector<BootField> bootFields(ByteView file);

/** An upgrade file of an image. */
Bytes packBootFile(ByteView image);

/** Reads an upgrade file; throws for one that cannot be one by its size. name: in messages. */
Bytes readBootFile(const std::string &path, const std::string &name);

} // namespace iodbg
