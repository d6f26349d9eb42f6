#include "edit/FormLabel.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include "shell/AccessibleName.h"

void AddFormLabel(wxSizer& column, const wxString& text, const wxWindow& control,
                  const wxString& spokenName, LabelPlace place) {
    auto* const label = new wxStaticText(control.GetParent(), wxID_STATIC, text);
    LabelControl(*label, control);
    SetAccessibleName(control, spokenName);
    const int sides = place == LabelPlace::First ? int{wxALL} : kFieldSides;
    column.Add(label, wxSizerFlags().Border(sides, kFormBorder));
}
