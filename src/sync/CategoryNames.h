#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "sync/Stamp.h"
#include "sync/SyncState.h"

// The categories by their names, through all that became of them on all computers. A card keeps the
// name with which it went into its category; what that is called today follows from the events, in
// whatever order they came.
class CategoryNames {
  public:
    void Set(std::vector<CategoryEvent> events);

    // Returns today's name of the category into which a card went at this time. A renaming applies
    // to a card that went in later, too, as its computer may not have known of it; unless the old
    // name was given anew in between.
    std::string NameNow(const std::string& name, const Stamp& since) const;

    // Returns true if the last event of a name gave it to a category.
    bool IsGiven(const std::string& name) const;
    // Returns the names that the events give to a category, with or without cards.
    std::vector<std::string> GivenNames() const;
    // Returns the names, at any time, of what is called this after some renaming, itself included.
    std::vector<std::string> NamesThatBecame(const std::string& name) const;

  private:
    bool IsGivenBetween(const std::string& name, const Stamp& first, const Stamp& last) const;

    struct Last {
        Stamp At;
        bool IsGiven = false;
    };

    // In the order of their stamps, all of them and those of each name.
    std::vector<CategoryEvent> mRenamings;
    std::map<std::string, std::vector<size_t>> mRenamingsOf;
    // When each name was given to a category, a new one or one that was renamed.
    std::map<std::string, std::vector<Stamp>> mGiven;
    std::map<std::string, Last> mLast;
};
