#pragma once

#include <wx/string.h>

#include <vector>

// The texts that were searched for last, newest first, each once, at most five. They live as long
// as their window.
class RecentSearches {
  public:
    // Puts the text in front. False when it was there already, so that nothing has changed.
    bool Add(const wxString& text);

    const std::vector<wxString>& GetTexts() const { return mTexts; }

  private:
    std::vector<wxString> mTexts;
};
