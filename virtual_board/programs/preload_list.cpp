#include "virtual_board/programs/preload_list.h"

#include <alloca.h>
#include <cstring>
#include <elf.h>
#include <iterator>

namespace vb {

namespace {

constexpr char kSeparators[] = ": ";
constexpr size_t kLongestPlace = 64;

/** The folder of a machine's libraries, as multiarch systems name it. */
struct Triplet {
    Machine machine;
    const char *name;
};
constexpr Triplet kTriplets[] = {{{ELFCLASS64, ELFDATA2LSB, EM_X86_64}, "x86_64-linux-gnu"},
                                 {{ELFCLASS32, ELFDATA2LSB, EM_386}, "i386-linux-gnu"},
                                 {{ELFCLASS32, ELFDATA2LSB, EM_X86_64}, "x86_64-linux-gnux32"},
                                 {{ELFCLASS64, ELFDATA2LSB, EM_AARCH64}, "aarch64-linux-gnu"},
                                 {{ELFCLASS32, ELFDATA2LSB, EM_ARM}, "arm-linux-gnueabihf"},
                                 {{ELFCLASS32, ELFDATA2LSB, EM_ARM}, "arm-linux-gnueabi"},
                                 {{ELFCLASS32, ELFDATA2MSB, EM_MIPS}, "mips-linux-gnu"},
                                 {{ELFCLASS32, ELFDATA2LSB, EM_MIPS}, "mipsel-linux-gnu"},
                                 {{ELFCLASS64, ELFDATA2LSB, EM_MIPS}, "mips64el-linux-gnuabi64"},
                                 {{ELFCLASS64, ELFDATA2LSB, EM_PPC64}, "powerpc64le-linux-gnu"},
                                 {{ELFCLASS64, ELFDATA2LSB, EM_RISCV}, "riscv64-linux-gnu"},
                                 {{ELFCLASS64, ELFDATA2MSB, EM_S390}, "s390x-linux-gnu"}};

// Places: the library itself, the folder above it, then for each triplet a folder beside the
// library and one beside the library's own.
constexpr int kPlaces = 2 + 2 * static_cast<int>(std::size(kTriplets));

/** Whether a library for a machine may be in a place. */
bool mayHold(int place, const Machine &machine) {
    return place < 2 || kTriplets[(place - 2) / 2].machine == machine;
}

char *writePlace(char *text, const char *library, int place) {
    const char *slash = std::strrchr(library, '/');
    if (place == 0 || slash == nullptr)
        return stpcpy(text, library);
    char *end =
        static_cast<char *>(mempcpy(text, library, static_cast<size_t>(slash - library) + 1));
    if (place % 2 == 1)
        end = stpcpy(end, "../");
    if (place >= 2)
        end = stpcpy(stpcpy(end, kTriplets[(place - 2) / 2].name), "/");
    return stpcpy(end, kSeamLibrary);
}

/** The first place with a library for a machine; -1 when there is none. */
int findPlace(const char *library, const Machine &machine) {
    auto *path = static_cast<char *>(alloca(std::strlen(library) + kLongestPlace));
    for (int place = 0; place < kPlaces; ++place) {
        if (!mayHold(place, machine))
            continue;
        writePlace(path, library, place);
        if (isOfMachine(path, machine))
            return place;
    }
    return -1;
}

} // namespace

template <typename Call>
void PreloadList::eachPart(const char *list, Call call) {
    while (list != nullptr && *(list += std::strspn(list, kSeparators)) != '\0') {
        const Part part = {list, std::strcspn(list, kSeparators)};
        call(part);
        list += part.length;
    }
}

bool PreloadList::isSeam(const Part &part) {
    constexpr size_t kLength = sizeof(kSeamLibrary) - 1;
    const size_t start = part.length - kLength;
    return part.length >= kLength && std::memcmp(part.text + start, kSeamLibrary, kLength) == 0 &&
           (start == 0 || part.text[start - 1] == '/');
}

PreloadList::PreloadList(const ProgramFile &program, const char *library, const char *inherited,
                         Seam preferred)
    : library_(library), inherited_(inherited), fitness_(program.fitness) {
    std::memcpy(runtime_, program.runtime, sizeof(runtime_));
    if (preferred == Seam::Own)
        place_ = findPlace(library, program.machine);
    eachPart(inherited, [&](const Part &part) {
        // The loader does not look for a bare name in the working folder.
        const bool isPath = std::memchr(part.text, '/', part.length) != nullptr;
        if (hasSeam() || !isSeam(part) || !isPath)
            return;
        auto *path = static_cast<char *>(alloca(part.length + 1));
        *static_cast<char *>(mempcpy(path, part.text, part.length)) = '\0';
        if (isOfMachine(path, program.machine))
            seam_ = part;
    });
    if (!hasSeam())
        place_ = findPlace(library, program.machine);
}

size_t PreloadList::size() const {
    const size_t inherited = inherited_ != nullptr ? std::strlen(inherited_) : 0;
    return inherited + sizeof(runtime_) + std::strlen(library_) + kLongestPlace;
}

char *PreloadList::write(char *text) const {
    char *end = text;
    eachPart(inherited_, [&](const Part &part) {
        if (isSeam(part))
            return;
        end = static_cast<char *>(mempcpy(end, part.text, part.length));
        *end++ = ':';
    });
    if (runtime_[0] != '\0')
        end = stpcpy(stpcpy(end, runtime_), ":");
    if (seam_.length == 0)
        return writePlace(end, library_, place_ < 0 ? 0 : place_);
    end = static_cast<char *>(mempcpy(end, seam_.text, seam_.length));
    *end = '\0';
    return end;
}

} // namespace vb
