#include "list/ListRows.h"

#include <wx/listctrl.h>

#include "shell/AccessibleName.h"

wxWindow& GetRowsWindow(wxListCtrl& list) {
    const wxClassInfo* const kind = wxClassInfo::FindClass("wxListMainWindow");
    for (wxWindow* const child : list.GetChildren()) {
        if (kind != nullptr && child->IsKindOf(kind)) {
            return *child;
        }
    }
    return list;
}

void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole) {
    SetAccessibleName(GetRowsWindow(list), row.empty() ? whole : row);
}
