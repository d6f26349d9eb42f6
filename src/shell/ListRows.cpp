#include "shell/ListRows.h"

#include <wx/listctrl.h>
#include <wx/panel.h>
#include <wx/settings.h>

#include "shell/AccessibleName.h"

wxWindow& GetRowsWindow(wxListCtrl& list) {
    for (wxWindow* const child : list.GetChildren()) {
        // The toolkit gives it no other sign; the titles of the columns have a name of their own.
        if (child->GetName() == wxPanelNameStr) {
            return *child;
        }
    }
    return list;
}

void KeepHeadingFont(wxListCtrl& list) {
    const wxWindow& rows = GetRowsWindow(list);
    for (wxWindow* const child : list.GetChildren()) {
        if (child != &rows) {
            child->SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
        }
    }
}

void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole) {
    wxWindow& rows = GetRowsWindow(list);
    SetAccessibleName(rows, row.empty() ? whole : row);
    SetAccessibleRole(rows, AccessibleRole::List);
}
