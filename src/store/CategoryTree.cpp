#include "store/CategoryTree.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <utility>

#include "base/Collator.h"
#include "base/Text.h"
#include "store/CardSort.h"
#include "store/Database.h"

namespace {

const wxString kBetween = "::";

// Returns the parts of a name.
std::vector<wxString> Split(const wxString& name) {
    std::vector<wxString> parts;
    size_t begin = 0;
    for (size_t end = 0; end != wxString::npos; begin = end + kBetween.length()) {
        end = name.find(kBetween, begin);
        parts.push_back(name.substr(begin, end == wxString::npos ? end : end - begin));
    }
    return parts;
}

// A row needs a name, so that nothing stands below another category by a blank rest of its name.
bool IsBelow(const wxString& name, const wxString& upper) {
    wxString rest;
    return name.StartsWith(upper + kBetween, &rest) && !TrimWide(rest).empty();
}

// Sorts part by part, so that "A::B" comes before "A B", which punctuation alone would not say.
void SortByParts(std::list<Category>& categories) {
    const Collator collator;
    const auto isLess = [&collator](const wxString& a, const wxString& b) {
        return collator.IsLoaded() ? collator.IsLess(a, b) : a < b;
    };
    std::vector<std::pair<std::vector<wxString>, Category>> sorted;
    for (Category& category : categories) {
        std::vector<wxString> parts = Split(category.Name);
        sorted.emplace_back(std::move(parts), std::move(category));
    }
    std::stable_sort(sorted.begin(), sorted.end(), [&isLess](const auto& a, const auto& b) {
        return std::lexicographical_compare(a.first.begin(), a.first.end(), b.first.begin(),
                                            b.first.end(), isLess);
    });
    categories.clear();
    for (auto& [parts, category] : sorted) {
        categories.push_back(std::move(category));
    }
}

}  // namespace

std::vector<CategoryPlace> ArrangeAsTree(std::list<Category> categories) {
    std::set<wxString> names;
    bool isTree = false;
    for (const Category& category : categories) {
        names.insert(category.Name);
        isTree = isTree || category.Name.Contains(kBetween);
    }
    if (isTree) {
        SortByParts(categories);
    } else {
        SortByName(categories);
    }
    std::vector<CategoryPlace> places;
    for (Category& category : categories) {
        CategoryPlace place;
        place.ShortName = category.Name;
        for (size_t end = category.Name.find(kBetween); end != wxString::npos;
             end = category.Name.find(kBetween, end + kBetween.length())) {
            const wxString rest = category.Name.substr(end + kBetween.length());
            // A row needs a name.
            if (names.count(category.Name.substr(0, end)) != 0 && !TrimWide(rest).empty()) {
                ++place.Level;
                place.ShortName = rest;
            }
        }
        place.Own = std::move(category);
        places.push_back(std::move(place));
    }
    return places;
}

CategoryChoice ChooseAmong(const std::list<Category>& categories, int32_t id) {
    CategoryChoice choice(id);
    const auto chosen = std::find_if(categories.begin(), categories.end(),
                                     [id](const Category& category) { return category.Id == id; });
    if (chosen == categories.end()) {
        return choice;
    }
    std::list<Category> below;
    std::copy_if(
        categories.begin(), categories.end(), std::back_inserter(below),
        [&chosen](const Category& category) { return IsBelow(category.Name, chosen->Name); });
    if (!below.empty()) {
        SortByParts(below);
    }
    for (const Category& category : below) {
        choice.Below.push_back(category.Id);
    }
    return choice;
}

CategoryChoice FindChoice(Database& database, int32_t id) {
    std::list<Category> categories;
    if (id != -1) {
        // The store reports a failure.
        database.SelectAllCategories(categories);
    }
    return ChooseAmong(categories, id);
}
