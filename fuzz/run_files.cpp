// Runs a target over files, and over those in folders, where there is no libFuzzer. It ends as the
// first finding ends it.

#include "fuzz/input.h"
#include "tests/support/files.h"

#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace {

bool isFile(const std::string &path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

void runFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    std::fprintf(stderr, "\r%s", path.c_str()); // that of a finding is the last
    const std::vector<uint8_t> bytes(content.begin(), content.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int argc, char **argv) {
    size_t files = 0;
    LLVMFuzzerTestOneInput(nullptr, 0); // as libFuzzer begins
    for (int i = 1; i < argc; ++i) {
        std::vector<std::string> paths = {argv[i]};
        if (!isFile(argv[i]))
            paths = pathsUnder(argv[i]);
        for (const std::string &path : paths) {
            if (!isFile(path))
                continue;
            runFile(path);
            ++files;
        }
    }
    std::fprintf(stderr, "\n%zu inputs, no finding\n", files);
    return files != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
