#include "study/StudyStatus.h"

#include <wx/intl.h>
#include <wx/statusbr.h>

#include "scheduler/Scheduler.h"

namespace {

bool IsAsWideAsField(const wxString& text, const wxStatusBar& bar, int field) {
    wxRect rectangle;
    bar.GetFieldRect(field, rectangle);
    // In the frame's own font, which is the one of the whole window.
    return bar.GetParent()->GetTextExtent(text).GetWidth() >= rectangle.GetWidth();
}

}  // namespace

wxString StudyStepText(const Scheduler& scheduler, bool backShown, const wxStatusBar& bar) {
    const int position = scheduler.GetHistoryIndex();
    if (position < 0) {
        return backShown ? _("Score yourself") : _("Try to remember");
    }
    const bool narrow = IsAsWideAsField(_("Recently studied 00/00"), bar, kStepField);
    return wxString::Format(narrow ? _("Recent %i/%i") : _("Recently studied %i/%i"), position + 1,
                            scheduler.GetHistoryCount());
}

wxString StudyReadyText(Scheduler& scheduler, const wxStatusBar& bar) {
    if (scheduler.IsBreakTime()) {
        return _("Break Time");
    }
    const bool narrow = IsAsWideAsField(_("Ready for Review: 0000"), bar, kReadyField);
    return wxString::Format(narrow ? _("Ready: %i") : _("Ready for Review: %i"),
                            scheduler.GetReadyCount());
}
