#include "iodbg/core/excerpt.h"

namespace iodbg {

namespace {

constexpr size_t kMostCharacters = 48; // a byte that cannot be printed takes four
constexpr char kMore[] = "...";

/** As much as is shown; whether that is not all. */
bool takeStart(ByteView field, std::string &start) {
    for (size_t i = 0; i < field.size() && field[i] != 0; ++i) {
        const std::string character = fieldText(field.subspan(i, 1));
        if (start.size() + character.size() > kMostCharacters)
            return true;
        start += character;
    }
    return false;
}

} // namespace

std::string excerpt(ByteView field) {
    std::string start;
    return takeStart(field, start) ? start + kMore : start;
}

std::string quotedExcerpt(ByteView field) {
    std::string start;
    return takeStart(field, start) ? "'" + start + "'" + kMore : "'" + start + "'";
}

} // namespace iodbg
