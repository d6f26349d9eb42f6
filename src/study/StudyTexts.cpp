#include "study/StudyTexts.h"

#include <wx/intl.h>

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
