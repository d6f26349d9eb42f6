#include "preferences/DayGroup.h"

#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/spinctrl.h>

#include "shell/Forms.h"
#include "shell/Settings.h"
#include "shell/StudySettings.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kGreatest = 9999;
// What the numbers begin with when a limit is switched on.
constexpr int kFirstNewCards = 10;
constexpr int kFirstEnough = 60;

}  // namespace

DayGroup::DayGroup(wxScrolledWindow& form, wxSizer& column) {
    wxBoxSizer& group = *AddFormGroup(column, form, _("Day of Study"));
    const auto add = [&](Limit& limit, int id, const wxString& label, const wxString& first,
                         const wxString& second) {
        limit.pSwitch = new wxCheckBox(&form, id, label);
        limit.pNumber = new wxSpinCtrl(&form, id + 1, wxString(), wxDefaultPosition, wxDefaultSize,
                                       wxSP_ARROW_KEYS, 1, kGreatest);
        const wxString meanings[] = {first, second};
        limit.pMeaning = MakeChoice(form, id + 2, wxArrayString(2, meanings));
        SetAccessibleName(*limit.pNumber, label);
        SetAccessibleName(*limit.pMeaning, label);
        group.Add(limit.pSwitch, FormRow(form));
        auto* const row = new wxBoxSizer(wxHORIZONTAL);
        row->Add(limit.pNumber, wxSizerFlags().CentreVertical());
        row->Add(limit.pMeaning,
                 wxSizerFlags().CentreVertical().Border(wxLEFT, form.FromDIP(kFormGap)));
        group.Add(row, FormRow(form));
        limit.pSwitch->Bind(wxEVT_CHECKBOX, [&limit](wxCommandEvent&) { Enable(limit); });
    };
    add(mNewCards, kNewCardsId, _("New cards a day, at most:"), _("in all categories together"),
        _("in each category"));
    add(mEnough, kEnoughId, _("Enough for today after:"), _("answers"), _("minutes"));
}

void DayGroup::Enable(const Limit& limit) {
    limit.pNumber->Enable(limit.pSwitch->GetValue());
    limit.pMeaning->Enable(limit.pSwitch->GetValue());
}

void DayGroup::Load() {
    const DayLimits limits = ReadDayLimits();
    const auto show = [](const Limit& limit, int number, int first, bool second) {
        limit.pSwitch->SetValue(number > 0);
        limit.pNumber->SetValue(number > 0 ? number : first);
        limit.pMeaning->SetSelection(second ? 1 : 0);
        Enable(limit);
    };
    show(mNewCards, limits.NewCards, kFirstNewCards, limits.NewCardsPerCategory);
    show(mEnough, limits.Enough, kFirstEnough, limits.EnoughIsMinutes);
}

void DayGroup::Store() const {
    const auto write = [](const Limit& limit, const char* number, const char* second) {
        WriteIntegerSetting(number, limit.pSwitch->GetValue() ? limit.pNumber->GetValue() : 0);
        WriteBooleanSetting(second, limit.pMeaning->GetSelection() == 1);
    };
    write(mNewCards, kSettingNewCardsPerDay, kSettingNewCardsPerCategory);
    write(mEnough, kSettingEnoughForToday, kSettingEnoughIsMinutes);
}
