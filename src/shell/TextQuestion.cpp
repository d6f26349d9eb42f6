#include "shell/TextQuestion.h"

#include <wx/sizer.h>
#include <wx/textctrl.h>

#include "shell/AccessibleName.h"
#include "shell/TextHeight.h"

TextQuestion::TextQuestion(wxWindow* parent, const wxString& question, const wxString& caption,
                           const wxString& value)
    : wxTextEntryDialog(parent, question, caption, value) {
    SetAccessibleName(*m_textctrl, question);
    FitTextHeights(*this);
    GetSizer()->SetSizeHints(this);
}
