// What puts programs on a board.

#include "virtual_board/board/paths.h"
#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/programs/environment.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/programs/search_path.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>

namespace fs = std::filesystem;

namespace vboard {

namespace {

constexpr char kSeparators[] = ": \t\n"; // of a list of libraries to preload

/** The folder of the library, or of the program, that this code is in. */
fs::path ownFolder() {
    Dl_info info = {};
    std::error_code failure;
    const auto *self = reinterpret_cast<const void *>(&vboardEnvironment);
    const bool isLibrary =
        dladdr(self, &info) != 0 && info.dli_fname != nullptr &&
        fs::path(info.dli_fname).filename().string().find(".so") != std::string::npos;
    return isLibrary ? fs::canonical(info.dli_fname, failure).parent_path()
                     : fs::read_symlink("/proc/self/exe", failure).parent_path();
}

/** The seam: beside the control library, or where it belongs as seen from programs. */
fs::path findSeam() {
    const fs::path here = ownFolder();
    std::error_code failure;
    for (const char *libraries : {".", "..", VBOARD_LIBRARIES_FROM_PROGRAMS}) {
        fs::path library = (here / libraries / vb::kSeamLibrary).lexically_normal();
        if (fs::exists(library, failure))
            return library;
    }
    throw Failure(VBOARD_E_SYSTEM,
                  std::string(vb::kSeamLibrary) + " is not where it belongs, in " +
                      (here / VBOARD_LIBRARIES_FROM_PROGRAMS).lexically_normal().string() +
                      "; install it again");
}

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

#ifdef VBOARD_SHELL_IS_FOREIGN
/** What the emulator's host makes of a program is none of this program's business. */
vb::ProgramFile examine(const char *, const std::string &) {
    return {};
}
#else
/** Looks at the program that a name stands for where programs are searched in these folders. */
vb::ProgramFile examine(const char *name, const std::string &folders) {
    const vb::SearchPath places(name, folders.c_str());
    std::string path(places.size(), '\0');
    const auto isProgram = [](const char *place) { return vb::isExecutable(AT_FDCWD, place); };
    return places.find(path.data(), isProgram) ? vb::examineProgram(AT_FDCWD, path.c_str())
                                               : vb::ProgramFile{};
}
#endif

/** What is preloaded into a program; null: into any. */
std::string preloadList(const fs::path &seam, const char *name, const std::string &folders) {
    if (seam.string().find_first_of(kSeparators) != std::string::npos)
        throw Failure(VBOARD_E_REFUSED,
                      seam.string() + " cannot be preloaded: a path with a colon or a blank "
                                      "in it would be taken for two; install vboard elsewhere");
    const vb::ProgramFile program = name != nullptr ? examine(name, folders) : vb::ProgramFile{};
    const vb::PreloadList list(program, seam.c_str(), std::getenv(vb::kPreloadVariable),
                               vb::PreloadList::Seam::Own);
    if (vb::isUnfit(list.fitness()) && !isSet(vb::kAllowHostVariable)) {
        std::string reason;
        for (const char *part : vb::refusalOf(list.fitness(), program.interpreter, name).parts)
            reason += part;
        throw Failure(VBOARD_E_REFUSED, reason);
    }
    std::string text(list.size(), '\0');
    text.resize(static_cast<size_t>(list.write(text.data()) - text.data()));
    return text;
}

} // namespace

} // namespace vboard

int32_t vboardEnvironment(VBoard *board, const char *program, VBoardVariable **variables,
                          uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(variables, "variables");
        vboard::require(count, "count");
        const std::filesystem::path seam = vboard::findSeam();
        // Shells of the board find the tools that work on it, as programs do that run commands.
        const char *path = std::getenv("PATH");
        const std::string folders = (seam.parent_path() / vb::kToolFolder).string() + ":" +
                                    (path != nullptr ? path : vb::kUsualFolders);
        const std::string preloaded = vboard::preloadList(seam, program, folders);
        const std::vector<VBoardVariable> rows = {
            {vb::kFolderVariable, board->folder.path()},
            {vb::kPreloadVariable, preloaded.c_str()},
            {"PATH", folders.c_str()},
        };
        *variables = vboard::giveList(rows, {&VBoardVariable::name, &VBoardVariable::value});
        *count = static_cast<uint32_t>(rows.size());
    });
}
