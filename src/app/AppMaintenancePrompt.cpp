#include "app/AppMaintenancePrompt.h"

#include <wx/intl.h>

#include "shell/MessageBox.h"

namespace {

void Tell(const wxString& text) {
    ShowMessageBox(text, _("Periodic Maintenence"), wxOK | wxCENTRE);
}

}  // namespace

void AppMaintenancePrompt::ConfirmStart() {
    Tell(
        _("Velomind must do some database maintenance before continuing.\n"
          "Depending on your database size and computer speed, this may take several minutes to "
          "an hour.\n"
          "During this time, Velomind will appear unresponsive.\n"
          "Please do not interrupt the operation."));
}

void AppMaintenancePrompt::TellComplete() {
    Tell(_("Maintenance complete."));
}
