#include "shell/ButtonRow.h"

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/intl.h>
#include <wx/sizer.h>

wxSizer* MakeOkCancel(wxDialog& dialog) {
    auto* const row = new wxStdDialogButtonSizer();
    auto* const ok = new wxButton(&dialog, wxID_OK, _("&OK"));
    row->AddButton(ok);
    row->AddButton(new wxButton(&dialog, wxID_CANCEL, _("&Cancel")));
    row->Realize();
    ok->SetDefault();
    return row;
}
