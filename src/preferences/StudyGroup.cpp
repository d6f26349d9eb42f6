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

StudyGroup::StudyGroup(wxScrolledWindow& form, wxSizer& column) {
    wxBoxSizer& group = *AddFormGroup(column, form, _("Study"));
    const wxString choices[] = {_("Begin again"), _("Keep a quarter of its interval"),
                                _("Keep half of its interval")};
    static_assert(std::size(choices) == std::size(kRelearnShares));
    mpRelearning = MakeChoice(form, kRelearningId, wxArrayString(std::size(choices), choices));
    group.Add(MakeFormLabel(_("After a card was forgotten:"), *mpRelearning), FormRow(form));
    group.Add(mpRelearning, wxSizerFlags().Border(wxTOP, form.FromDIP(kFormGap)));
}

void StudyGroup::Load() {
    const auto* const share = std::find(std::begin(kRelearnShares), std::end(kRelearnShares),
                                        ReadIntegerSetting(kSettingRelearnShare));
    mpRelearning->SetSelection(
        share == std::end(kRelearnShares)
            ? 0
            : static_cast<int>(std::distance(std::begin(kRelearnShares), share)));
}

void StudyGroup::Store() const {
    WriteIntegerSetting(kSettingRelearnShare, kRelearnShares[mpRelearning->GetSelection()]);
}
