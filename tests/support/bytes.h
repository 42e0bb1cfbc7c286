#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

/** So many bytes that differ from page to page. */
inline Bytes patterned(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i % 251);
    return bytes;
}

/** The characters of a text, without a zero behind them. */
inline Bytes charactersOf(const std::string &text) {
    return {text.begin(), text.end()};
}

/** Several lists, one behind the other. */
template <typename List>
List joinedLists(std::initializer_list<List> lists) {
    List all;
    for (const List &list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}
inline Bytes joined(std::initializer_list<Bytes> pieces) {
    return joinedLists(pieces);
}
inline std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> steps) {
    return joinedLists(steps);
}
