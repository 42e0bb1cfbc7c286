#include "iodbg/flash/content.h"

#include "iodbg/core/failure.h"
#include "iodbg/core/host_file.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace iodbg {

ContentReader::ContentReader(const Content &content)
    : content_(content), file_(open(content.file.c_str(), O_RDONLY | O_CLOEXEC)) {}

void ContentReader::read(uint64_t offset, std::span<uint8_t> bytes) const {
    const size_t front = content_.front.size();
    while (!bytes.empty() && offset < front) {
        bytes[0] = content_.front[static_cast<size_t>(offset++)];
        bytes = bytes.subspan(1);
    }
    if (!file_.isOpen() || !readAt(file_.get(), offset - front, bytes))
        throw Failure::file("read " + content_.file,
                            "what is in flash could not be compared with it");
}

uint64_t hostFileSize(const std::string &path) {
    requireNamedFile(path);
    struct stat info = {};
    const bsp::Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen() || fstat(file.get(), &info) != 0)
        throw Failure::file("open " + path, "give a file that can be read");
    if (!S_ISREG(info.st_mode))
        throw Failure(ExitCode::Host, path + " is not a regular file; give the right file");
    if (info.st_size == 0)
        throw Failure(ExitCode::Host, path + " is empty; give the right file");
    return static_cast<uint64_t>(info.st_size);
}

Bytes readContent(const Content &content, uint64_t offset, size_t length) {
    Bytes bytes(length);
    ContentReader(content).read(offset, bytes);
    return bytes;
}

} // namespace iodbg
