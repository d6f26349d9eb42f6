#include "base/Worker.h"

#include <wx/log.h>

void Worker::Join() {
    mJob.Join();
    const wxString failure = mJob.TakeFailure();
    if (!failure.empty()) {
        OnFailure(failure);
    }
}

void Worker::Cancel() {
    mJob.AskToStop();
    Join();
}

void Worker::OnFailure(const wxString& message) {
    wxLogError("%s", message);
}
