#include "virtual_board/command/complaints.h"

#include "language/texts.h"

#include <algorithm>

namespace vboard {

void Complaints::refuse(const std::string &file) {
    if (found_.empty())
        return;
    std::stable_sort(found_.begin(), found_.end(),
                     [](const Complaint &a, const Complaint &b) { return a.place < b.place; });
    std::string text;
    for (const Complaint &complaint : found_)
        text += (text.empty() ? "" : "\n") + file + ":" + std::to_string(complaint.place.line) +
                ":" + std::to_string(complaint.place.column) + ": " +
                language::printable(complaint.text);
    throw language::Refused(text);
}

} // namespace vboard
