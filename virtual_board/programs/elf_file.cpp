#include "virtual_board/programs/elf_file.h"

#include <algorithm>
#include <cstring>
#include <sys/uio.h>

namespace vb {

constexpr ElfFile::Layout ElfFile::kLayouts[] = {
    {sizeof(Elf32_Word), sizeof(Elf32_Ehdr), offsetof(Elf32_Ehdr, e_phoff),
     offsetof(Elf32_Ehdr, e_phentsize), offsetof(Elf32_Ehdr, e_phnum),
     offsetof(Elf32_Phdr, p_offset), offsetof(Elf32_Phdr, p_vaddr), offsetof(Elf32_Phdr, p_filesz)},
    {sizeof(Elf64_Xword), sizeof(Elf64_Ehdr), offsetof(Elf64_Ehdr, e_phoff),
     offsetof(Elf64_Ehdr, e_phentsize), offsetof(Elf64_Ehdr, e_phnum),
     offsetof(Elf64_Phdr, p_offset), offsetof(Elf64_Phdr, p_vaddr),
     offsetof(Elf64_Phdr, p_filesz)}};

const unsigned char *FilePieces::at(uint64_t offset, size_t length) {
    if (!holds(offset, length))
        load(offset);
    return holds(offset, length) ? bytes_ + (offset - start_) : nullptr;
}

bool FilePieces::copyText(uint64_t offset, char *text, size_t size) {
    load(offset);
    const size_t length = strnlen(reinterpret_cast<const char *>(bytes_), length_);
    if (length == length_ || length >= size)
        return false;
    std::memcpy(text, bytes_, length + 1);
    return true;
}

bool FilePieces::holds(uint64_t offset, size_t length) const {
    return offset >= start_ && offset - start_ <= length_ && length <= length_ - (offset - start_);
}

void FilePieces::load(uint64_t offset) {
    // preadv, because rules for reads of the board's files are meant for programs.
    const iovec piece = {bytes_, sizeof(bytes_)};
    const bool isFar = offset > INT32_MAX; // on some systems positions end here
    const ssize_t count = isFar ? 0 : preadv(fd_, &piece, 1, static_cast<off_t>(offset));
    start_ = offset;
    length_ = count > 0 ? static_cast<size_t>(count) : 0;
}

bool ElfFile::readHeader() {
    const unsigned char *ident = pieces_.at(0, sizeof(Elf32_Ehdr));
    if (ident == nullptr || std::memcmp(ident, ELFMAG, SELFMAG) != 0)
        return false;
    machine_.wordSize = ident[EI_CLASS];
    machine_.byteOrder = ident[EI_DATA];
    if (machine_.wordSize != ELFCLASS32 && machine_.wordSize != ELFCLASS64)
        return false;
    layout_ = &kLayouts[machine_.wordSize - ELFCLASS32];
    const unsigned char *header = pieces_.at(0, layout_->header);
    if (header == nullptr)
        return false;
    const uint64_t type = number(header + offsetof(Elf32_Ehdr, e_type), sizeof(Elf32_Half));
    machine_.number =
        static_cast<uint16_t>(number(header + offsetof(Elf32_Ehdr, e_machine), sizeof(Elf32_Half)));
    segments_ = number(header + layout_->segments, layout_->word);
    segmentSize_ = number(header + layout_->segmentSize, sizeof(Elf32_Half));
    segmentCount_ = number(header + layout_->segmentCount, sizeof(Elf32_Half));
    return type == ET_EXEC || type == ET_DYN;
}

bool ElfFile::findLoader(char *name, size_t size) {
    const Segment segment = findSegment([](const Segment &one) { return one.type == PT_INTERP; });
    return segment.size > 0 && pieces_.copyText(segment.offset, name, size);
}

uint64_t ElfFile::number(const unsigned char *bytes, size_t length) const {
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value = value << 8 | bytes[machine_.byteOrder == ELFDATA2MSB ? i : length - 1 - i];
    return value;
}

bool ElfFile::readSegment(uint64_t index, Segment &segment) {
    const unsigned char *bytes =
        pieces_.at(segments_ + index * segmentSize_, layout_->size + layout_->word);
    if (bytes == nullptr)
        return false;
    segment = {static_cast<uint32_t>(number(bytes, sizeof(uint32_t))),
               number(bytes + layout_->offset, layout_->word),
               number(bytes + layout_->address, layout_->word),
               number(bytes + layout_->size, layout_->word)};
    return true;
}

/** Reads one entry of the dynamic section; false behind the last. */
bool ElfFile::readEntry(const Segment &dynamic, uint64_t index, Entry &entry) {
    constexpr uint64_t kMost = 4096; // of a file that is as it should be
    const size_t size = 2 * layout_->word;
    if (index >= std::min(dynamic.size / size, kMost))
        return false;
    const unsigned char *bytes = pieces_.at(dynamic.offset + index * size, size);
    if (bytes == nullptr)
        return false;
    entry = {number(bytes, layout_->word), number(bytes + layout_->word, layout_->word)};
    return entry.tag != DT_NULL;
}

} // namespace vb
