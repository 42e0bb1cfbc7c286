#pragma once
// Programs and libraries as they lie in files, of any machine. Only system calls and a small stack:
// children of vfork look at programs, too.

#include <cstddef>
#include <cstdint>
#include <elf.h>

namespace vb {

/** What programs and their libraries have in common. */
struct Machine {
    uint8_t wordSize;  // ELFCLASS32, ELFCLASS64
    uint8_t byteOrder; // ELFDATA2LSB, ELFDATA2MSB
    uint16_t number;   // EM_...

    bool operator==(const Machine &) const = default;
};

/** A file in small pieces. */
class FilePieces {
  public:
    explicit FilePieces(int fd) : fd_(fd) {}

    /** Some bytes of the file, valid until the next ones; null where it has ended. */
    const unsigned char *at(uint64_t offset, size_t length);

    /** A text with its end, if it fits. */
    bool copyText(uint64_t offset, char *text, size_t size);

  private:
    bool holds(uint64_t offset, size_t length) const;
    void load(uint64_t offset);

    static constexpr size_t kSize = 256; // the longest name of an interpreter that the kernel takes

    int fd_;
    uint64_t start_ = 0;
    size_t length_ = 0;
    unsigned char bytes_[kSize] = {};
};

/** A program or library of any machine. */
class ElfFile {
  public:
    static constexpr size_t kMaxLibrary = 48; // longer names are none that somebody looks for

    explicit ElfFile(FilePieces &pieces) : pieces_(pieces) {}

    /** False when the file is none. */
    bool readHeader();

    const Machine &machine() const { return machine_; }

    /** Fills the name of the program's loader. */
    bool findLoader(char *name, size_t size);

    /** Calls for the tag and the name of each library that this file is, or needs. */
    template <typename Call>
    void eachLibrary(Call call) {
        const Segment dynamic =
            findSegment([](const Segment &one) { return one.type == PT_DYNAMIC; });
        uint64_t names = 0;
        eachEntry(dynamic, [&](const Entry &entry) {
            if (entry.tag == DT_STRTAB)
                names = entry.value;
        });
        const Segment text = findSegment([&](const Segment &one) {
            return one.type == PT_LOAD && names - one.address < one.size;
        });
        if (text.size == 0)
            return;
        eachEntry(dynamic, [&](const Entry &entry) {
            char name[kMaxLibrary];
            const bool isName = entry.tag == DT_NEEDED || entry.tag == DT_SONAME;
            const uint64_t offset = text.offset + (names - text.address) + entry.value;
            if (isName && pieces_.copyText(offset, name, sizeof(name)))
                call(entry.tag, name);
        });
    }

  private:
    /** Where a file of a word size has what matters here. */
    struct Layout {
        size_t word;
        size_t header, segments, segmentSize, segmentCount;
        size_t offset, address, size;
    };
    static const Layout kLayouts[2];

    struct Segment {
        uint32_t type;
        uint64_t offset, address, size;
    };
    struct Entry {
        uint64_t tag, value;
    };

    uint64_t number(const unsigned char *bytes, size_t length) const;
    bool readSegment(uint64_t index, Segment &segment);
    bool readEntry(const Segment &dynamic, uint64_t index, Entry &entry);

    /** The first segment that is wanted; one of size 0 when there is none. */
    template <typename Wanted>
    Segment findSegment(Wanted isWanted) {
        Segment segment = {};
        for (uint64_t index = 0; index < segmentCount_ && readSegment(index, segment); ++index) {
            if (isWanted(segment))
                return segment;
        }
        return {};
    }

    template <typename Call>
    void eachEntry(const Segment &dynamic, Call call) {
        Entry entry = {};
        for (uint64_t index = 0; readEntry(dynamic, index, entry); ++index)
            call(entry);
    }

    FilePieces &pieces_;
    const Layout *layout_ = &kLayouts[0];
    Machine machine_ = {};
    uint64_t segments_ = 0, segmentSize_ = 0, segmentCount_ = 0;
};

} // namespace vb
