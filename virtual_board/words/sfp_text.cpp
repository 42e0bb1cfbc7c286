#include "virtual_board/words/sfp_text.h"

#include "virtual_board/words/values.h"

namespace vb {

namespace {

constexpr const char *kKinds[kSfpKinds] = {
    "none",          "sx",           "sr",           "lr",   "dac", "copper-mode4",
    "copper-mode12", "copper-other", "bad-checksum", "dead", "slow"};

} // namespace

const char *sfpKindText(SfpKind kind) {
    return kKinds[static_cast<size_t>(kind)];
}

SfpKind sfpKindOf(const std::string &text) {
    return static_cast<SfpKind>(language::parseChoice(text, kKinds));
}

} // namespace vb
