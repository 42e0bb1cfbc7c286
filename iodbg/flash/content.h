#pragma once
// What a flash partition should hold: a file of the host, perhaps with some bytes in front of it.

#include "iodbg/core/format.h"
#include "support/owned.h"

#include <cstdint>
#include <span>
#include <string>

namespace iodbg {

/** What a partition should hold from its start on: some bytes, and a file behind them. */
struct Content {
    Bytes front;
    std::string file;
    uint64_t fileSize;

    uint64_t size() const { return front.size() + fileSize; }
};

/** The content's bytes, piece by piece. */
class ContentReader {
  public:
    explicit ContentReader(const Content &content);

    /** Throws when the file does not give them. */
    void read(uint64_t offset, std::span<uint8_t> bytes) const;

  private:
    const Content &content_;
    bsp::Descriptor file_;
};

/** The size of a file on the host; throws for one that cannot be read or is empty. */
uint64_t hostFileSize(const std::string &path);

/** A part of the content; throws when the file does not give it. */
Bytes readContent(const Content &content, uint64_t offset, size_t length);

} // namespace iodbg
