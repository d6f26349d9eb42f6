#pragma once

#include <wx/string.h>

// How a store is exchanged with other computers. The folder is that of one store, so that none ever
// goes into the folder of another; the name is that of the computer. Main thread only.
struct ExchangeSetUp {
    // Empty for a store that is not exchanged.
    wxString Folder;
    // Never empty when it was read: the computer's own name until the user gives another.
    wxString Name;
};

ExchangeSetUp ReadExchangeSetUp(const wxString& storePath);
void WriteExchangeSetUp(const wxString& storePath, const ExchangeSetUp& setUp);
// Gives a store that was moved the folder that it had. Does nothing where there is still a file.
void FollowMovedStore(const wxString& formerPath, const wxString& storePath);
