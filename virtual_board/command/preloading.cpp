#include "virtual_board/command/preloading.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/programs/environment.h"
#include "virtual_board/programs/preload_list.h"
#include "virtual_board/words/values.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace vboard {

namespace {

constexpr char kSeparators[] = ": \t\n"; // of a list of libraries to preload

/** The library, if it can be preloaded. */
std::string findPreloadable() {
    std::string library = findLibrary();
    if (library.find_first_of(kSeparators) != std::string::npos)
        throw vb::Refused(library + " cannot be preloaded: a path with a colon or a blank in it "
                                    "would be taken for two; install vboard elsewhere");
    return library;
}

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

} // namespace

std::string absoluteFolder(const std::string &folder) {
    vb::BoardFolder board;
    openBoard(board, folder);
    return board.path();
}

std::string findLibrary() {
    std::error_code failure;
    const fs::path programs = fs::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char *libraries : {"..", VBOARD_LIBRARIES_FROM_PROGRAMS}) {
        const fs::path library = (programs / libraries / vb::kSeamLibrary).lexically_normal();
        if (fs::exists(library, failure))
            return library.string();
    }
    throw vb::Refused(std::string(vb::kSeamLibrary) + " is not where it belongs, in " +
                      (programs / VBOARD_LIBRARIES_FROM_PROGRAMS).lexically_normal().string() +
                      "; install it again");
}

std::string preloadList(const vb::ProgramFile &program, const std::string &name) {
    const std::string library = findPreloadable();
    const vb::PreloadList list(program, library.c_str(), std::getenv(vb::kPreloadVariable),
                               vb::PreloadList::Seam::Own);
    if (vb::isUnfit(list.fitness()) && !isSet(vb::kAllowHostVariable)) {
        const vb::Refusal refusal =
            vb::refusalOf(list.fitness(), program.interpreter, name.c_str());
        std::string reason;
        for (const char *part : refusal.parts)
            reason += part;
        throw NotOnBoard(reason);
    }
    std::string text(list.size(), '\0');
    text.resize(static_cast<size_t>(list.write(text.data()) - text.data()));
    return text;
}

} // namespace vboard
