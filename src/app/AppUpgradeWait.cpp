#include "app/AppUpgradeWait.h"

#include <wx/intl.h>

#include "app/ThreadWaitDialog.h"

namespace {

constexpr int kDialogId = 10120;

}  // namespace

void AppUpgradeWait::WaitFor(wxThread& worker) {
    ThreadWaitDialog dialog(mpParent, kDialogId, wxString(), wxDefaultPosition, wxSize(400, 300),
                            wxDEFAULT_DIALOG_STYLE);
    dialog.Watch(worker);
    dialog.SetTitle(_("Upgrading Database"));
    dialog.ShowModal();
}
