#include "study/StudyTexts.h"

#include <wx/intl.h>
#include <wx/statusbr.h>

#include "scheduler/Scheduler.h"

ScoreLabels GetScoreLabels(bool compact) {
    if (compact) {
        return {"5", "4", "3", "2", "1", "0"};
    }
    return {_("5 - Pass (no hesitation)"),   _("4 - Pass (some hesitation)"),
            _("3 - Pass (with difficulty)"), _("2 - Pass (not confident)"),
            _("1 - Pass (by guessing)"),     _("0 - Fail (incorrect)")};
}

wxString ShowBackLabel(bool compact) {
    return compact ? wxString(">") : _("Show Back");
}

wxString StoreEmptyMessage() {
    return _(
        "Thank you for choosing Ostrel Velomind!  Your flash card database is empty. Click the "
        "'File' menu and 'New Card' menu item to create a flash card.");
}

wxString CategoryEmptyMessage() {
    return _(
        "There are no flash cards in the current category.\nClick the 'File' menu and 'New Card' "
        "menu item to create a flash card.\nTo change the current category, click on the 'View' "
        "menu, click on the 'List View' menu item and select a category from the category drop "
        "down menu.");
}

wxString AllExcludedMessage() {
    return _(
        "All of the flash cards are excluded from review.\nTry switching review direction.  Click "
        "the 'Tools' menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

wxString CategoryExcludedMessage() {
    return _(
        "All of the flash cards in this category are excluded from review.\nTo change the current "
        "category, click on the 'View' menu, click on the 'List View' menu item and select a "
        "category from the category drop down menu.\nTo change review direction click the 'Tools' "
        "menu, click 'Study Back to Front' or 'Study Front to Back' menu item.");
}

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
