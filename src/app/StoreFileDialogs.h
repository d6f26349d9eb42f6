#pragma once

#include <wx/string.h>

class wxWindow;

// The name that a store file has unless somebody says otherwise.
constexpr char kDefaultStoreName[] = "FlashCards2.vlm";

// Both take the path of a store, in whose directory the person begins, and give true and the path
// that was chosen, or false with path unchanged.
bool ChooseStoreFileToOpen(wxWindow* parent, wxString& path);
bool ChooseStoreFileToSave(wxWindow* parent, const wxString& title, bool askBeforeOverwriting,
                           wxString& path);
