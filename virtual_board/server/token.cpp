#include "virtual_board/server/token.h"

#include "language/refused.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vboard::server {

namespace {

constexpr size_t kTokenBytes = 16;
constexpr size_t kLeast = 16;
constexpr size_t kMost = 256;

bool isTokenCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_' ||
           character == '-';
}

/** A descriptor that closes itself. */
class File {
  public:
    explicit File(const std::string &path) : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (fd_ < 0)
            throw language::Refused("cannot read " + path + ": " + std::strerror(errno));
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    ~File() { close(fd_); }

    operator int() const { return fd_; }

  private:
    const int fd_;
};

std::string firstBytesOf(int file) {
    char bytes[kMost + 2]; // with an end of line, and one too many
    size_t size = 0;
    while (size < sizeof(bytes)) {
        const ssize_t got = read(file, bytes + size, sizeof(bytes) - size);
        if (got <= 0)
            break;
        size += static_cast<size_t>(got);
    }
    return {bytes, size};
}

} // namespace

std::string makeToken() {
    unsigned char bytes[kTokenBytes];
    if (getrandom(bytes, sizeof(bytes), 0) != static_cast<ssize_t>(sizeof(bytes)))
        throw language::Refused("the system gives no random numbers for a token; give one with "
                                "--token-file");
    std::string text;
    for (const unsigned char byte : bytes) {
        constexpr char kDigits[] = "0123456789abcdef";
        constexpr unsigned kNibble = 4;
        constexpr unsigned kLowNibble = 0xF;
        text += kDigits[byte >> kNibble];
        text += kDigits[byte & kLowNibble];
    }
    return text;
}

std::string readToken(const std::string &path) {
    const File file(path);
    struct stat status = {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        throw language::Refused(path + " is not a file");
    if (status.st_uid != geteuid() || (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw language::Refused(path +
                                " can be read by others, and a token is a secret: make it "
                                "yours alone with 'chmod 600 " +
                                path + "'");
    std::string token = firstBytesOf(file);
    if (!token.empty() && token.back() == '\n')
        token.pop_back();
    if (token.size() < kLeast || token.size() > kMost ||
        !std::all_of(token.begin(), token.end(), isTokenCharacter))
        throw language::Refused(path + " has no token: it is one line of 16 to 256 letters, "
                                       "digits, '_' and '-'");
    return token;
}

bool isToken(const std::string &word, const std::string &token) {
    volatile unsigned char difference = word.size() == token.size() ? 0 : 1;
    for (size_t i = 0; i < token.size(); ++i) {
        const char other = i < word.size() ? word[i] : '\0';
        difference = difference | static_cast<unsigned char>(other ^ token[i]);
    }
    return difference == 0;
}

} // namespace vboard::server
