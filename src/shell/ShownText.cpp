#include "shell/ShownText.h"

#include <cstddef>

namespace {

// More than any column shows.
constexpr size_t kLongestCell = 500;
constexpr size_t kLongestName = 200;

bool BreaksLine(wxUniChar character) {
    const wxUniChar::value_type code = character.GetValue();
    return code < 0x20 || code == 0x7F || code == 0x85 || code == 0x2028 || code == 0x2029;
}

wxString FirstOnOneLine(const wxString& text, size_t count) {
    wxString line = text.Left(count);
    for (wxString::iterator character = line.begin(); character != line.end(); ++character) {
        if (BreaksLine(*character)) {
            *character = ' ';
        }
    }
    return line;
}

}  // namespace

wxString CellText(const wxString& text) {
    return FirstOnOneLine(text, kLongestCell);
}

wxString ShownName(const wxString& name) {
    if (name.length() <= kLongestName) {
        return FirstOnOneLine(name, kLongestName);
    }
    return FirstOnOneLine(name, kLongestName - 1) + wxUniChar(0x2026);
}
