#include "sync/CategoryNames.h"

#include <algorithm>
#include <utility>

void CategoryNames::Set(std::vector<CategoryEvent> events) {
    *this = CategoryNames();
    std::stable_sort(
        events.begin(), events.end(),
        [](const CategoryEvent& one, const CategoryEvent& other) { return one.At < other.At; });
    // At one time a name may go from one category to another: then it is given.
    const auto note = [this](const std::string& name, const Stamp& at, bool isGiven) {
        Last& last = mLast[name];
        if (last.At < at || isGiven) {
            last = {at, isGiven};
        }
    };
    for (CategoryEvent& event : events) {
        note(event.Name, event.At, event.What == CategoryEvent::kAdded);
        if (event.What == CategoryEvent::kAdded) {
            mGiven[event.Name].push_back(event.At);
        } else if (event.What == CategoryEvent::kRenamed) {
            note(event.NewName, event.At, true);
            mGiven[event.NewName].push_back(event.At);
            mRenamingsOf[event.Name].push_back(mRenamings.size());
            mRenamings.push_back(std::move(event));
        }
    }
}

std::string CategoryNames::NameNow(const std::string& name, const Stamp& since) const {
    std::string now = name;
    Stamp known = since;
    // Renamings of one time, such as those of names that are exchanged with each other, rename a
    // card once.
    Stamp last;
    for (bool isRenamed = true; isRenamed;) {
        isRenamed = false;
        const auto renamings = mRenamingsOf.find(now);
        if (renamings == mRenamingsOf.end()) {
            break;
        }
        for (const size_t place : renamings->second) {
            const CategoryEvent& renaming = mRenamings[place];
            if (last < renaming.At && !IsGivenBetween(now, renaming.At, known)) {
                now = renaming.NewName;
                known = known < renaming.At ? renaming.At : known;
                last = renaming.At;
                isRenamed = true;
                break;
            }
        }
    }
    return now;
}

// Returns true if the name was given to a category no earlier than one time and no later than the
// other.
bool CategoryNames::IsGivenBetween(const std::string& name, const Stamp& first,
                                   const Stamp& last) const {
    const auto given = mGiven.find(name);
    return given != mGiven.end() &&
           std::any_of(given->second.begin(), given->second.end(),
                       [&](const Stamp& at) { return !(at < first) && !(last < at); });
}

bool CategoryNames::IsGiven(const std::string& name) const {
    const auto found = mLast.find(name);
    return found != mLast.end() && found->second.IsGiven;
}

std::vector<std::string> CategoryNames::GivenNames() const {
    std::vector<std::string> names;
    for (const auto& [name, last] : mLast) {
        if (last.IsGiven) {
            names.push_back(name);
        }
    }
    return names;
}

std::vector<std::string> CategoryNames::NamesThatBecame(const std::string& name) const {
    std::vector<std::string> names = {name};
    // The latest renaming first: what it renamed may have had another name before.
    for (auto renaming = mRenamings.rbegin(); renaming != mRenamings.rend(); ++renaming) {
        const bool leadsThere =
            std::find(names.begin(), names.end(), renaming->NewName) != names.end();
        if (leadsThere && std::find(names.begin(), names.end(), renaming->Name) == names.end()) {
            names.push_back(renaming->Name);
        }
    }
    return names;
}
