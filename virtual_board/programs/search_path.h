#pragma once
// Where the C library looks for a program that is named without a folder.

#include <cstdlib>
#include <cstring>

namespace vb {

constexpr char kUsualFolders[] = "/bin:/usr/bin"; // without PATH

class SearchPath {
  public:
    explicit SearchPath(const char *name, const char *folders = std::getenv("PATH"))
        : name_(name), folders_(folders) {
        if (folders_ == nullptr)
            folders_ = kUsualFolders;
        if (std::strchr(name, '/') != nullptr)
            folders_ = ""; // the name is a path
    }

    /** How much memory the longest path needs. */
    size_t size() const { return std::strlen(folders_) + std::strlen(name_) + 2; }

    /** Writes the paths that the name may stand for, one after the other, up to a wanted one. */
    template <typename Wanted>
    bool find(char *path, Wanted isWanted) const {
        for (const char *folder = folders_;; ++folder) {
            const size_t length = std::strcspn(folder, ":");
            char *end = static_cast<char *>(mempcpy(path, folder, length));
            stpcpy(length > 0 ? stpcpy(end, "/") : end, name_);
            if (isWanted(path))
                return true;
            folder += length;
            if (*folder == '\0')
                return false;
        }
    }

  private:
    const char *name_;
    const char *folders_;
};

} // namespace vb
