#include "edit/FormLabel.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include "shell/AccessibleName.h"

void AddFormLabel(wxSizer& column, const wxString& text, wxWindow& control,
                  const wxString& spokenName, LabelPlace place) {
    auto* const label = new wxStaticText(control.GetParent(), wxID_STATIC, text);
    // The key that it underlines gives the focus to what follows it.
    label->MoveBeforeInTabOrder(&control);
    SetAccessibleName(control, spokenName);
    const int sides = place == LabelPlace::First ? int{wxALL} : kFieldSides;
    column.Add(label, wxSizerFlags().Border(sides, kFormBorder));
}
