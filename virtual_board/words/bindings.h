#pragma once
// How this board serves the properties of the common table: inside of the words about the world.

#include "language/property_names.h"
#include "language/property_table.h"
#include "language/property_values.h"
#include "virtual_board/board/folder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vb {

/** What is done outside of a board's state: carried out when all changes have been accepted. */
struct Deed {
    std::function<void()> carryOut; // throws Refused when it cannot be done
    std::function<void()> takeBack; // empty: there is no way back, and it cannot fail
};

/** What a property's name leads to. */
struct PropertyTarget {
    const BoardFolder &folder;
    language::PropertyName name;
    std::vector<Deed> *deeds = nullptr; // of changes

    Board &board() const { return *folder.board(); }
    Devices &devices() const { return board().devices; }
    const Model &model() const { return *findModel(board().header.devId); } // who has one has that
    /** The N of "cpld.N". */
    uint32_t number() const { return name.number; }
    /** The N-th supply. */
    Supply &supply() const { return devices().supply[number() - 1]; }
    /** The board's time. */
    uint64_t now() const { return clockNow(board().clock, hostNow()); }
};

using PropertyGetter = language::Value (*)(const PropertyTarget &);
/** Takes a value that the table allows; throws Refused when this board cannot have it. */
using PropertySetter = void (*)(const PropertyTarget &, const language::Value &);
/** What else is to be known of a property on its board, or nothing. */
using PropertyNote = std::string (*)(const PropertyTarget &);

/** Who serves a row of the table. */
struct Binding {
    const language::Property *property;
    PropertyGetter get;
    PropertySetter set;
    PropertyNote note;
};

/** Binds a row by its name. What the table does not have, or does not have so, is not compiled. */
constexpr Binding bind(const char *name, bool isSettable, const Binding &binding) {
    const language::Property &property = language::propertyOf(name);
    if (property.isSettable != isSettable)
        throw "the table says otherwise of who can set it";
    return {&property, binding.get, binding.set, binding.note};
}

/** One that can be set, and one that cannot. */
constexpr Binding bind(const char *name, PropertyGetter get, PropertySetter set,
                       PropertyNote note = nullptr) {
    return bind(name, true, {nullptr, get, set, note});
}
constexpr Binding bind(const char *name, PropertyGetter get, std::nullptr_t = nullptr,
                       PropertyNote note = nullptr) {
    return bind(name, false, {nullptr, get, nullptr, note});
}

/** Whether the words of a row are those of an enumeration with a last value. */
template <typename Enumeration>
constexpr bool hasWordsUpTo(const char *name, Enumeration last) {
    return language::wordCount(name) == static_cast<uint32_t>(last) + 1;
}

/** The binding of a row. */
const Binding &bindingOf(const language::Property &property);

/** Every binding there is. */
std::vector<Binding> allBindings();

// The bindings of each source.
std::span<const Binding> boardBindings();
std::span<const Binding> registerBindings();
std::span<const Binding> supplyBindings();
std::span<const Binding> poeBindings();
std::span<const Binding> powerBindings();
std::span<const Binding> chassisBindings();
std::span<const Binding> sfpBindings();
std::span<const Binding> mdioBindings();
std::span<const Binding> flashBindings();

} // namespace vb
