#include "app/AppStoreFileActions.h"

#include <utility>

#include "app/StoreFileDialogs.h"
#include "app/StoreLifecycle.h"

AppStoreFileActions::AppStoreFileActions(DiscardCheck discardEdits,
                                         std::function<void()> storeChanged)
    : mDiscardEdits(std::move(discardEdits)), mStoreChanged(std::move(storeChanged)) {}

wxString AppStoreFileActions::GetDefaultStorePath() {
    return ::GetDefaultStorePath();
}

bool AppStoreFileActions::ChooseToOpen(wxWindow* parent, wxString& path) {
    return ChooseStoreFileToOpen(parent, path);
}

bool AppStoreFileActions::ChooseToSave(wxWindow* parent, const wxString& title, wxString& path) {
    return ChooseStoreFileToSave(parent, title, false, path);
}

void AppStoreFileActions::OpenStoreFile(wxWindow* parent, Database& database, const wxString& path,
                                        bool mustExist) {
    ::OpenStoreFile(parent, database, path, mustExist);
    mStoreChanged();
}
