#include "language/refused.h"

#include "language/texts.h"

namespace language {

void refuse(const std::string &word, const std::string &reason) {
    throw Refused(quoted(word) + " " + reason);
}

} // namespace language
