#include "virtual_board/command/whole_file.h"

#include "language/refused.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vboard {

namespace {

/** A file beside the one that it becomes; gone again when it does not. */
class NewFile {
  public:
    explicit NewFile(const std::string &file) : file_(file), path_(file + ".XXXXXX") {
        descriptor_ = mkstemp(path_.data());
        if (descriptor_ < 0)
            fail();
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile() {
        close(descriptor_);
        if (!isKept_)
            unlink(path_.c_str());
    }

    void write(const std::string &content) const {
        for (size_t done = 0; done < content.size();) {
            const ssize_t count =
                ::write(descriptor_, content.data() + done, content.size() - done);
            if (count < 0)
                fail();
            done += static_cast<size_t>(count);
        }
    }

    void keep() {
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(descriptor_, 0666 & ~mask) != 0 || rename(path_.c_str(), file_.c_str()) != 0)
            fail();
        isKept_ = true;
    }

  private:
    [[noreturn]] void fail() const {
        throw language::Refused("cannot write " + file_ + ": " + std::strerror(errno));
    }

    const std::string &file_;
    std::string path_;
    int descriptor_ = -1;
    bool isKept_ = false;
};

} // namespace

void writeWhole(const std::string &file, const std::string &content, bool isForced) {
    if (file == kStandardOutput) {
        std::fwrite(content.data(), 1, content.size(), stdout);
        return;
    }
    std::error_code failure;
    if (!isForced && std::filesystem::exists(file, failure))
        throw language::Refused(file + " exists; choose another name, or replace it with --force");
    NewFile made(file);
    made.write(content);
    made.keep();
}

} // namespace vboard
