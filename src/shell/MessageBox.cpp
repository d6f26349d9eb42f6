#include "shell/MessageBox.h"

#include <wx/intl.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>
#include <wx/textctrl.h>

#include "shell/TextUndo.h"
#include "shell/Toolkit.h"

int ShowMessageBox(const wxString& text, const wxString& caption, long style, wxWindow* parent) {
    wxMessageDialog box(parent, text, caption, style);
    // The native window, and with it the title, exists only while the box runs.
    box.CallAfter([&box, &caption] { box.wxTopLevelWindow::SetTitle(caption); });
    switch (box.ShowModal()) {
        case wxID_YES:
            return wxYES;
        case wxID_NO:
            return wxNO;
        case wxID_CANCEL:
            return wxCANCEL;
        case wxID_HELP:
            return wxHELP;
        default:
            return wxOK;
    }
}

wxString AboutCards(int count) {
    return wxString::Format("\n" + wxPLURAL("It concerns %i card.", "It concerns %i cards.",
                                            static_cast<unsigned>(count)),
                            count);
}

void ShowValidationMessage(const wxString& text) {
    ShowMessageBox(text, _("Message"), wxOK);
}

TextQuestion::TextQuestion(wxWindow* parent, const wxString& question, const wxString& caption,
                           const wxString& value)
    : wxTextEntryDialog(parent, question, caption, value) {
    SetAccessibleName(*m_textctrl, question);
    TextUndo::AttachTo(*this);
    FitTextHeights(*this);
    GetSizer()->SetSizeHints(this);
}
