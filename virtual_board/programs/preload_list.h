#pragma once
// The list of libraries to preload into a program of a board: those that its environment asks for,
// a sanitizer's, and the seam. So other interposers see each call as the program makes it.

#include "virtual_board/programs/program_file.h"

#include <cstddef>

namespace vb {

constexpr char kPreloadVariable[] = "LD_PRELOAD";
constexpr char kSeamLibrary[] = "libvboard.so";

class PreloadList {
  public:
    /** Which seam goes before another that fits as well. */
    enum class Seam : uint8_t { Inherited, Own };

    /**
     * Looks for a seam of the program's machine: in the inherited list, which may be null, and
     * around the place of a library with one.
     */
    PreloadList(const ProgramFile &program, const char *library, const char *inherited,
                Seam preferred);

    bool hasSeam() const { return seam_.length > 0 || place_ >= 0; }

    /** The program's, which fits only where there is a seam for it. */
    Fitness fitness() const {
        return fitness_ == Fitness::Fits && !hasSeam() ? Fitness::NoSeam : fitness_;
    }

    /** How much memory the text needs. */
    size_t size() const;
    /** Writes the text; its end. Without a fitting seam the library stands in the list. */
    char *write(char *text) const;

  private:
    struct Part {
        const char *text;
        size_t length;
    };
    template <typename Call>
    static void eachPart(const char *list, Call call);
    static bool isSeam(const Part &part);

    const char *library_;
    const char *inherited_;
    Fitness fitness_;
    char runtime_[ProgramFile::kMaxRuntime];
    Part seam_ = {}; // the inherited one
    int place_ = -1; // where else one is
};

} // namespace vb
