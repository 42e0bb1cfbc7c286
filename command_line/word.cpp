#include "command_line/word.h"

namespace command_line {

Word &Word::usually(const std::string &value) {
    usual = value;
    return *this;
}

Word &Word::repeatable() {
    isMany = true;
    return *this;
}

Word &Word::notWith(const std::string &option) {
    others.push_back(option);
    return *this;
}

Word &Word::onlyWith(const std::string &option) {
    condition = option;
    return *this;
}

} // namespace command_line
