#include "iodbg/host_file.h"

#include "iodbg/failure.h"
#include "support/owned.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace iodbg {

namespace {

/** A file beside the final one, removed again unless it takes that one's place. */
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string &finalPath)
        : finalPath_(finalPath), path_(finalPath + ".new-XXXXXX"), file_(mkstemp(path_.data())) {}
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile() {
        if (file_.isOpen() && !isFinal_)
            unlink(path_.c_str());
    }

    bool write(ByteView content) {
        return file_.isOpen() && writeAll(file_.get(), content) && makeReadable() &&
               fsync(file_.get()) == 0;
    }

    bool takePlace() {
        isFinal_ = std::rename(path_.c_str(), finalPath_.c_str()) == 0;
        return isFinal_;
    }

  private:
    /** mkstemp keeps others out; the final file gets the permissions that any new file has. */
    bool makeReadable() {
        const mode_t mask = umask(0);
        umask(mask);
        return fchmod(file_.get(), 0666 & ~mask) == 0;
    }

    std::string finalPath_;
    std::string path_;
    bsp::Descriptor file_;
    bool isFinal_ = false;
};

/** Only files are replaced: a rename would put a file in the place of a device node. */
bool isReplaceable(const std::string &path) {
    struct stat info = {};
    return stat(path.c_str(), &info) != 0 || S_ISREG(info.st_mode);
}

} // namespace

Bytes readHostFile(const std::string &path, size_t maxSize) {
    const bsp::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
        throw Failure::file("open " + path, "give a file that can be read");
    // One byte more than fits tells a file that is too long.
    Bytes content(maxSize + 1);
    size_t size = 0;
    ssize_t count = 0;
    while (size < content.size() &&
           (count = read(file.get(), content.data() + size, content.size() - size)) > 0)
        size += static_cast<size_t>(count);
    if (count < 0)
        throw Failure::file("read " + path, "give a file that can be read");
    if (size > maxSize)
        throw Failure(ExitCode::Host, path + " is longer than " + std::to_string(maxSize) +
                                          " bytes; give the right file");
    content.resize(size);
    return content;
}

bool writeAll(int file, ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0)
            return false;
        bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return true;
}

void writeHostFile(const std::string &path, ByteView content) {
    if (!isReplaceable(path))
        throw Failure(ExitCode::Host, path + " is not a regular file; choose another name");
    TemporaryFile file(path);
    if (!file.write(content) || !file.takePlace())
        throw Failure::file("write " + path, "choose a folder that can be written and has space");
}

} // namespace iodbg
