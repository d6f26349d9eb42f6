#include "transfer/FormatRows.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "shell/Forms.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kDelimitedFormat = 1;
// The entry after the listed delimiters, for one that is typed.
constexpr int kOther = static_cast<int>(std::size(FormatRows::kListed));

constexpr int kOtherWidth = 40;

wxArrayString DelimiterLabels() {
    wxArrayString labels;
    labels.push_back(_("tab"));
    labels.push_back(_("comma"));
    labels.push_back(_("space"));
    labels.push_back(_("semi-colon"));
    labels.push_back(_("other"));
    return labels;
}

bool IsLineBreak(const wxString& typed) {
    return typed == "\n" || typed == "\r";
}

// Returns what is wrong with a delimiter that the user typed, or nothing.
wxString FindFault(const wxString& typed) {
    if (typed.empty() || IsLineBreak(typed)) {
        return _("You must specify a delimiter.");
    }
    if (typed.length() > 1) {
        return _("You can only have a one character delimiter");
    }
    if (typed == "\"") {
        return _("\" cannot be used as a delimiter.");
    }
    return wxString();
}

}  // namespace

FormatRows::FormatRows(wxWindow& dialog, wxFlexGridSizer& grid, const Setup& setup,
                       std::function<void()> onChange)
    : mDialog(dialog), mFurther(setup.FurtherDelimiters) {
    AddFormat(grid, setup);
    AddDelimiter(grid, setup);
    const auto change = [this, onChange = std::move(onChange)](wxCommandEvent&) {
        ShowDelimiter();
        onChange();
    };
    mpFormat->Bind(wxEVT_CHOICE, change);
    mpDelimiter->Bind(wxEVT_CHOICE, change);
    mpOther->Bind(wxEVT_TEXT, change);
}

void FormatRows::AddFormat(wxFlexGridSizer& grid, const Setup& setup) {
    mpFormat = MakeChoice(mDialog, setup.FormatId, setup.Formats);
    AddFormRow(grid, setup.FormatLabel, *mpFormat,
               *MakeHelpButton(mDialog, setup.FormatHelpId, _("Format Help"), setup.FormatHelp));
}

void FormatRows::AddDelimiter(wxFlexGridSizer& grid, const Setup& setup) {
    mpDelimiter = MakeChoice(mDialog, kDelimiterId, DelimiterLabels());
    mpDelimiter->Append(setup.FurtherLabels);
    mpOther = new wxTextCtrl(&mDialog, setup.OtherId, wxString(), wxDefaultPosition,
                             mDialog.FromDIP(wxSize(kOtherWidth, -1)));
    SetAccessibleName(*mpOther, setup.DelimiterLabel);
    TextUndo::AttachTo(*mpOther);
    mpDelimiterHelp =
        MakeHelpButton(mDialog, setup.DelimiterHelpId, _("Delimiter Help"),
                       _("This setting controls the character that\nis used to separate columns."));
    auto* const field = new wxBoxSizer(wxHORIZONTAL);
    field->Add(mpDelimiter, wxSizerFlags(1).CentreVertical());
    field->Add(mpOther, wxSizerFlags().CentreVertical().Border(wxLEFT, mDialog.FromDIP(kFormGap)));
    mpDelimiterLabel =
        AddFormRow(grid, setup.DelimiterLabel, *mpDelimiter, *mpDelimiterHelp, field);
    mpDelimiterLabel->SetId(setup.DelimiterLabelId);
}

int FormatRows::GetFormat() const {
    return mpFormat->GetSelection();
}

bool FormatRows::IsDelimited() const {
    return GetFormat() == kDelimitedFormat;
}

void FormatRows::ChooseDelimited(wchar_t listed) {
    const auto* const found = std::find(std::begin(kListed), std::end(kListed), listed);
    mpDelimiter->SetSelection(static_cast<int>(found - std::begin(kListed)));
    mpFormat->SetSelection(kDelimitedFormat);
    ShowDelimiter();
}

void FormatRows::ChooseSeparator(const std::wstring& separator) {
    const auto further = std::find(mFurther.begin(), mFurther.end(), separator);
    const auto* const listed =
        std::find(std::begin(kListed), std::end(kListed), separator.empty() ? L'\t' : separator[0]);
    if (further != mFurther.end()) {
        mpDelimiter->SetSelection(kOther + 1 + static_cast<int>(further - mFurther.begin()));
    } else {
        mpDelimiter->SetSelection(static_cast<int>(listed - std::begin(kListed)));
    }
    if (IsDelimiterTyped()) {
        mpOther->ChangeValue(separator);
        TextUndo::Restart(*mpOther);
    }
    mpFormat->SetSelection(kDelimitedFormat);
    ShowDelimiter();
}

void FormatRows::ChooseFormat(int index) {
    mpFormat->SetSelection(index);
    ShowDelimiter();
}

void FormatRows::ShowDelimiter() {
    const bool isDelimited = IsDelimited();
    mpDelimiterLabel->Show(isDelimited);
    mpDelimiter->Show(isDelimited);
    mpOther->Show(isDelimited && IsDelimiterTyped());
    mpDelimiterHelp->Show(isDelimited);
}

bool FormatRows::IsDelimiterTyped() const {
    return mpDelimiter->GetSelection() == kOther;
}

wchar_t FormatRows::GetDelimiter() const {
    const int selection = mpDelimiter->GetSelection();
    if (selection > kOther) {
        return GetSeparator().front();
    }
    if (!IsDelimiterTyped()) {
        return kListed[selection];
    }
    const wxString typed = mpOther->GetValue();
    return typed.empty() ? L'\0' : static_cast<wchar_t>(typed[0].GetValue());
}

std::wstring FormatRows::GetSeparator() const {
    const int selection = mpDelimiter->GetSelection();
    return selection > kOther ? mFurther[static_cast<size_t>(selection - kOther - 1)]
                              : std::wstring(1, GetDelimiter());
}

wxString FormatRows::CheckDelimiter() {
    if (!IsDelimited() || !IsDelimiterTyped()) {
        return wxString();
    }
    const wxString typed = mpOther->GetValue();
    if (IsLineBreak(typed)) {
        mpOther->ChangeValue(wxString());
        TextUndo::Restart(*mpOther);
    }
    return FindFault(typed);
}

void FormatRows::FocusTypedDelimiter() {
    mpOther->SelectAll();
    mpOther->SetFocus();
}
