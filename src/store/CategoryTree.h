#pragma once

#include <list>
#include <vector>

#include "store/FlashCard.h"

// A category among those above it: "Languages::French" stands under "Languages" by its name alone,
// and the store knows nothing of it. A name that no category has, such as "Languages" without a
// row of its own, is no category: it is never shown, and cannot be chosen.
struct CategoryPlace {
    Category Own;
    // How many categories stand above it.
    int Level = 0;
    // The name without that of the next category above.
    wxString ShortName;
};

// Sorts categories by their names, each followed by those below it.
std::vector<CategoryPlace> ArrangeAsTree(std::list<Category> categories);
