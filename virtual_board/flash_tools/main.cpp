// One program under the names of all tools. A program's shell commands find it in the folder that
// comes first in their search path.

#include "virtual_board/flash_tools/help.h"
#include "virtual_board/flash_tools/tools.h"
#include "virtual_board/os/seam.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <unistd.h>

// Tells a preloaded library that this program brings the seam along.
extern "C" __attribute__((visibility("default"))) const char vboardSeamOfProgram;
const char vboardSeamOfProgram = 1;

namespace flash_tools {

namespace {

constexpr int kNoBoard = 125;
constexpr int kNoTool = 127;

struct Tool {
    const char *name;
    int (*run)(const Arguments &arguments);
};

constexpr Tool kTools[] = {{"flash_erase", eraseFlash},
                           {"nandwrite", writeNand},
                           {"nanddump", dumpNand},
                           {"stty", setTerminal},
                           {"rm", removeFiles}};

std::string nameOf(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

const Tool *findTool(const std::string &name) {
    for (const Tool &tool : kTools) {
        if (name == tool.name)
            return &tool;
    }
    return nullptr;
}

/** The search path without the folder of this program. */
std::string systemPath() {
    const char *path = std::getenv("PATH");
    std::string rest = path != nullptr ? path : "/usr/bin:/bin";
    vb::HostPathBuffer own;
    if (!vb::findTools(own))
        return rest;
    std::string kept;
    for (size_t start = 0; start <= rest.size();) {
        const size_t end = std::min(rest.find(':', start), rest.size());
        const std::string folder = rest.substr(start, end - start);
        if (folder != own.text)
            kept += (kept.empty() ? "" : ":") + folder;
        start = end + 1;
    }
    return kept;
}

int runTool(Arguments arguments) {
    arguments[0] = nameOf(arguments[0]);
    if (findTool(arguments[0]) == nullptr && arguments.size() > 1)
        arguments.erase(arguments.begin()); // started under its own name
    const Tool *tool = findTool(arguments[0]);
    if (tool == nullptr) {
        std::fprintf(stderr, "%s is no tool of a virtual board\n", arguments[0].c_str());
        return kNoTool;
    }
    if (answersAboutItself(arguments))
        return kDone;
    const char *board = std::getenv("VBOARD_DIR");
    if (board == nullptr)
        return runSystemTool(arguments);
    vb::FolderError error = {};
    if (!vb::attachBoard(board, error)) {
        std::fprintf(stderr, "vboard: %s\n", error.text);
        return kNoBoard;
    }
    return tool->run(arguments);
}

} // namespace

int runSystemTool(const Arguments &arguments) {
    setenv("PATH", systemPath().c_str(), 1);
    std::vector<char *> words;
    words.reserve(arguments.size() + 1);
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    std::fprintf(stderr, "%s: %s\n", words[0], std::strerror(errno));
    return kNoTool;
}

} // namespace flash_tools

int main(int argc, char **argv) {
    try {
        return flash_tools::runTool({argv, argv + argc});
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return flash_tools::kError;
    }
}
