#include "exchange/DelimiterChoice.h"

#include <wx/intl.h>
#include <wx/translation.h>

#include <iterator>

namespace {

struct Choice {
    const char* Label;
    wchar_t Delimiter;
};

// The last is the one whose delimiter is typed.
constexpr Choice kChoices[] = {{wxTRANSLATE("tab"), L'\t'},
                               {wxTRANSLATE("comma"), L','},
                               {wxTRANSLATE("space"), L' '},
                               {wxTRANSLATE("semi-colon"), L';'},
                               {wxTRANSLATE("other"), L'\0'}};

}  // namespace

wxArrayString DelimiterLabels() {
    wxArrayString labels;
    for (const Choice& choice : kChoices) {
        labels.push_back(wxGetTranslation(choice.Label));
    }
    return labels;
}

wxString DelimiterHelp() {
    return _("This setting controls the character that\nis used to separate columns.");
}

wchar_t DelimiterOf(int choice, const wxString& otherText) {
    if (choice == kDelimiterOther) {
        return otherText.empty() ? L'\0' : static_cast<wchar_t>(otherText[0].GetValue());
    }
    const bool isKnown = choice >= 0 && choice < static_cast<int>(std::size(kChoices));
    return isKnown ? kChoices[choice].Delimiter : L'\t';
}

wxString CheckDelimiterText(const wxString& otherText) {
    if (otherText.empty() || IsLineBreak(otherText)) {
        return _("You must specify a delimiter.");
    }
    if (otherText.length() > 1) {
        return _("You can only have a one character delimiter");
    }
    if (otherText == "\"") {
        return _("\" cannot be used as a delimiter.");
    }
    return wxString();
}

bool IsLineBreak(const wxString& otherText) {
    return otherText == "\n" || otherText == "\r";
}
