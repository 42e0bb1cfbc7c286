#pragma once
// The bytes that a fuzzer has made up, taken one after the other. They mean the same on machines of
// every byte order. Behind their end there are zeros.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace fuzz {

class Input {
  public:
    Input() = default;
    Input(const uint8_t *bytes, size_t size) : next_(bytes), end_(bytes + size) {}

    bool isEmpty() const { return next_ == end_; }
    size_t size() const { return static_cast<size_t>(end_ - next_); }

    uint8_t byte() { return isEmpty() ? uint8_t{0} : *next_++; }

    /** All bits of a number, the most significant byte first. */
    template <typename Number>
    Number number() {
        uint64_t bits = 0;
        for (size_t i = 0; i < sizeof(Number); ++i)
            bits = bits << 8 | byte();
        return static_cast<Number>(bits);
    }

    uint32_t below(uint32_t limit) {
        if (limit <= 0x100)
            return byte() % limit;
        return (limit <= 0x10000 ? number<uint16_t>() : number<uint32_t>()) % limit;
    }

    /** Mostly a small number, of which a byte is enough. */
    uint32_t quantity() {
        constexpr uint8_t kLarge = 0xF8;
        const uint8_t first = byte();
        return first < kLarge ? first : number<uint32_t>();
    }

    /** Stores bytes, and zeros where there are no more. */
    void fill(void *memory, size_t size) {
        if (size == 0)
            return; // nor need there be memory
        const size_t count = std::min(size, this->size());
        std::memset(memory, 0, size);
        if (count != 0)
            std::memcpy(memory, next_, count);
        next_ += count;
    }

    /** At most so many of the bytes that are left. */
    std::vector<uint8_t> bytes(size_t most = SIZE_MAX) {
        std::vector<uint8_t> taken(std::min(most, size()));
        fill(taken.data(), taken.size());
        return taken;
    }

    /** The text up to the end of the line. */
    std::string line() {
        const uint8_t *end = std::find(next_, end_, uint8_t{'\n'});
        std::string text(next_, end);
        next_ = end == end_ ? end_ : end + 1;
        return text;
    }

  private:
    const uint8_t *next_ = nullptr;
    const uint8_t *end_ = nullptr;
};

/** Ends the program: an input has brought about what must not be. */
[[noreturn]] inline void report(const char *finding) {
    dprintf(STDERR_FILENO, "finding: %s\n", finding);
    std::abort();
}

inline void require(bool holds, const char *finding) {
    if (!holds)
        report(finding);
}

} // namespace fuzz

/** What is done with an input. */
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);
