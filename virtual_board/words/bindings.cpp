#include "virtual_board/words/bindings.h"

#include <stdexcept>

namespace vb {

std::vector<Binding> allBindings() {
    std::vector<Binding> all;
    for (const auto bindings :
         {boardBindings(), registerBindings(), supplyBindings(), poeBindings(), powerBindings(),
          chassisBindings(), sfpBindings(), mdioBindings(), flashBindings()})
        all.insert(all.end(), bindings.begin(), bindings.end());
    return all;
}

const Binding &bindingOf(const language::Property &property) {
    static const std::vector<Binding> all = allBindings();
    for (const Binding &binding : all) {
        if (binding.property == &property)
            return binding;
    }
    throw std::logic_error(std::string("nobody serves ") + property.name);
}

} // namespace vb
