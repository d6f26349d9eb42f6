#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

// What stands between the columns of the delimited form, as the dialogs offer it: the index in
// their list.
enum DelimiterChoice : int {
    kDelimiterTab = 0,
    kDelimiterComma = 1,
    kDelimiterSpace = 2,
    kDelimiterSemicolon = 3,
    // The character in the text field beside the list.
    kDelimiterOther = 4
};

// The labels, in the order of the indexes.
wxArrayString DelimiterLabels();

// The help on the list of choices.
wxString DelimiterHelp();

// The delimiter of an index, where otherText is the text of the field; 0 for a field that is empty.
// Any other index gives the tab.
wchar_t DelimiterOf(int choice, const wxString& otherText);

// What is wrong with the text of the field, or nothing. A text that holds no more than a line break
// is to be taken out of the field.
wxString CheckDelimiterText(const wxString& otherText);
bool IsLineBreak(const wxString& otherText);
