#include "iodbg/core/items.h"

#include "iodbg/core/format.h"

#include <array>

namespace iodbg {

void addItems(Report &report, Section &section, std::span<const Item> items) {
    for (const Item &item : items) {
        Cell cell;
        const int32_t status = item.read(cell);
        section.add(item.key, item.label, report.tried(section.path(item.key), status, cell));
    }
}

int32_t readText(int32_t (*get)(char *), Cell &cell) {
    std::array<char, 32> text{}; // more than any of the library's texts
    const int32_t status = get(text.data());
    cell = textCell(fieldText({reinterpret_cast<const uint8_t *>(text.data()), text.size()}));
    return status;
}

} // namespace iodbg
