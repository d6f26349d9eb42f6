#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "store/CategoryChoice.h"
#include "store/FlashCard.h"

class Database;

// Choosing a category lists and studies its cards and those of all categories below it, and not the
// cards of one id only: a person who has "Languages::French" and "Languages::Greek" can go through
// both in a row without moving cards. What is below is found by the names whenever the store tells
// of a change, an undo included, so that a renamed or deleted category comes or goes at once. The
// setting keeps the chosen id alone. A new or pasted card goes into the chosen category itself.
// Each category keeps its own numbers in the list of categories, its order of introduction and its
// blocks of early review (scheduler/CardSelection.h).

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

// Returns the choice of one of these categories. An id that none of them has is a choice by itself.
CategoryChoice ChooseAmong(const std::list<Category>& categories, int32_t id);
// The same among the categories of the store; the id by itself when they cannot be read.
CategoryChoice FindChoice(Database& database, int32_t id);
