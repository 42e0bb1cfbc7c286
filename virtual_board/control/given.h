#pragma once
// What callers take away: texts, and lists that are one block with the texts of all rows behind
// them.

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace vboard {

struct FreeGiven {
    void operator()(void *memory) const { std::free(memory); }
};

inline std::unique_ptr<char, FreeGiven> newBlock(size_t size) {
    auto *block = static_cast<char *>(std::malloc(size > 0 ? size : 1));
    if (block == nullptr)
        throw std::bad_alloc();
    return std::unique_ptr<char, FreeGiven>(block);
}

inline char *giveText(const std::string &text) {
    auto block = newBlock(text.size() + 1);
    std::memcpy(block.get(), text.c_str(), text.size() + 1);
    return block.release();
}

/** Where a row has a text. */
template <typename Row>
using TextMember = const char *Row::*;

/**
 * Gives rows away. Their texts, which somebody else owns until then, are copied; one that is null
 * stays so.
 */
template <typename Row>
Row *giveList(const std::vector<Row> &rows, std::initializer_list<TextMember<Row>> texts) {
    const auto eachText = [&](auto call) {
        for (size_t i = 0; i < rows.size(); ++i) {
            for (const TextMember<Row> text : texts) {
                if (rows[i].*text != nullptr)
                    call(i, text, std::strlen(rows[i].*text) + 1);
            }
        }
    };
    size_t size = rows.size() * sizeof(Row);
    eachText([&](size_t, TextMember<Row>, size_t length) { size += length; });
    auto block = newBlock(size);
    auto *list = static_cast<Row *>(static_cast<void *>(block.get())); // aligned as malloc does
    std::uninitialized_copy(rows.begin(), rows.end(), list);
    char *next = block.get() + rows.size() * sizeof(Row);
    eachText([&](size_t i, TextMember<Row> text, size_t length) {
        list[i].*text = static_cast<const char *>(std::memcpy(next, rows[i].*text, length));
        next += length;
    });
    return static_cast<Row *>(static_cast<void *>(block.release()));
}

} // namespace vboard
