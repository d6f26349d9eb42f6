#include "preferences/StudyGroup.h"

#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <iterator>

#include "scheduler/ReviewArithmetic.h"
#include "shell/Forms.h"
#include "shell/Settings.h"

namespace {

constexpr int32_t kMinutesOfDay = 24 * 60;
constexpr int32_t kStepOfMinutes = 30;

}  // namespace

StudyGroup::StudyGroup(wxScrolledWindow& form, wxSizer& column) {
    wxBoxSizer& group = *AddFormGroup(column, form, _("Study"));
    const wxString choices[] = {_("Begin again"), _("Keep a quarter of its interval"),
                                _("Keep half of its interval")};
    static_assert(std::size(choices) == std::size(kRelearnShares));
    mpRelearning = MakeChoice(form, kRelearningId, wxArrayString(std::size(choices), choices));
    group.Add(MakeFormLabel(_("After a card was forgotten:"), *mpRelearning), FormRow(form));
    group.Add(mpRelearning, wxSizerFlags().Border(wxTOP, form.FromDIP(kFormGap)));

    mpReminder = MakeChoice(form, kReminderId, wxArrayString());
    group.Add(MakeFormLabel(_("Remind me of due cards while Velomind runs:"), *mpReminder),
              FormRow(form));
    group.Add(mpReminder, wxSizerFlags().Border(wxTOP, form.FromDIP(kFormGap)));
}

// The stored minute may be one that the list does not offer.
void StudyGroup::ShowMinutes() {
    const int32_t stored = ReadIntegerSetting(kSettingReminderMinute);
    mMinutes = {-1};
    for (int32_t minute = 0; minute < kMinutesOfDay; ++minute) {
        if (minute % kStepOfMinutes == 0 || minute == stored) {
            mMinutes.push_back(minute);
        }
    }
    mpReminder->Clear();
    for (const int32_t minute : mMinutes) {
        mpReminder->Append(minute < 0 ? _("Never")
                                      : wxString::Format("%i:%02i", minute / 60, minute % 60));
    }
    const auto found = std::find(mMinutes.begin(), mMinutes.end(), stored);
    mpReminder->SetSelection(
        found == mMinutes.end() ? 0 : static_cast<int>(std::distance(mMinutes.begin(), found)));
}

void StudyGroup::Load() {
    ShowMinutes();
    const auto* const share = std::find(std::begin(kRelearnShares), std::end(kRelearnShares),
                                        ReadIntegerSetting(kSettingRelearnShare));
    mpRelearning->SetSelection(
        share == std::end(kRelearnShares)
            ? 0
            : static_cast<int>(std::distance(std::begin(kRelearnShares), share)));
}

void StudyGroup::Store() const {
    WriteIntegerSetting(kSettingRelearnShare, kRelearnShares[mpRelearning->GetSelection()]);
    WriteIntegerSetting(kSettingReminderMinute,
                        mMinutes.at(static_cast<size_t>(mpReminder->GetSelection())));
}
