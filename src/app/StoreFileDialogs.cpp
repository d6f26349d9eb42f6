#include "app/StoreFileDialogs.h"

#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/intl.h>

namespace {

wxString StoreFileFilter() {
    return _("Flash Card Store Files (*.vlm)|*.vlm|All files (*.*)|*.*");
}

// Empty, for the toolkit's own choice, where the path names no directory that is there.
wxString DirectoryOf(const wxString& path) {
    const wxString directory = wxFileName(path).GetPath();
    return wxFileName::DirExists(directory) ? directory : wxString();
}

bool Ask(wxFileDialog& dialog, wxString& path) {
    if (dialog.ShowModal() != wxID_OK) {
        return false;
    }
    path = dialog.GetPath();
    return true;
}

}  // namespace

bool ChooseStoreFileToOpen(wxWindow* parent, wxString& path) {
    wxFileDialog dialog(parent, _("Open Store File"), DirectoryOf(path), wxString(),
                        StoreFileFilter(), wxFD_OPEN);
    return Ask(dialog, path);
}

bool ChooseStoreFileToSave(wxWindow* parent, const wxString& title, bool askBeforeOverwriting,
                           wxString& path) {
    const long style = wxFD_SAVE | (askBeforeOverwriting ? wxFD_OVERWRITE_PROMPT : 0);
    wxFileDialog dialog(parent, title, DirectoryOf(path), kDefaultStoreName, StoreFileFilter(),
                        style);
    return Ask(dialog, path);
}
