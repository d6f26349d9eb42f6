#include "list/RecentSearches.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr size_t kMost = 5;

}  // namespace

bool RecentSearches::Add(const wxString& text) {
    const auto found = std::find(mTexts.begin(), mTexts.end(), text);
    if (found == mTexts.end()) {
        mTexts.insert(mTexts.begin(), text);
        mTexts.resize(std::min(mTexts.size(), kMost));
        return true;
    }
    if (found == mTexts.begin()) {
        return false;
    }
    std::rotate(mTexts.begin(), found, found + 1);
    return true;
}
