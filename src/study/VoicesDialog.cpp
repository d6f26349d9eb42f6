#include "study/VoicesDialog.h"

#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "shell/Forms.h"
#include "shell/Toolkit.h"

namespace {

constexpr int kLookMilliseconds = 100;

// Returns "Japanese (ja)", in the words of that language, or the code alone.
wxString LanguageName(const wxString& code) {
    wxString name = code;
    name.Replace("-", "_");
    const wxLanguageInfo* const info = wxLocale::FindLanguageInfo(name);
    return info == nullptr ? code : wxString::Format("%s (%s)", info->DescriptionNative, code);
}

void Insert(std::vector<wxString>& texts, const wxString& text) {
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) {
        texts.push_back(text);
    }
}

int PlaceOf(const std::vector<wxString>& texts, const wxString& text) {
    return static_cast<int>(
        std::distance(texts.begin(), std::find(texts.begin(), texts.end(), text)));
}

}  // namespace

VoicesDialog::VoicesDialog(wxWindow* parent, Speech& speech, int32_t categoryId,
                           const wxString& categoryName)
    : wxDialog(parent, wxID_ANY, _("Voices")), mSpeech(speech), mCategoryId(categoryId) {
    wxBoxSizer& column = *MakeFormColumn(*this);
    column.Add(new wxStaticText(
        this, wxID_STATIC, wxString::Format(_("Voices of the category \"%s\":"), categoryName)));
    const wxString titles[] = {_("Front"), _("Back")};
    for (size_t i = 0; i < mRows.size(); ++i) {
        Row& row = mRows.at(i);
        const int step = static_cast<int>(i) * kBackStep;
        row.Chosen = ReadVoiceSetting(row.Side, mCategoryId);
        row.pLanguage = new wxChoice(this, kLanguageId + step);
        row.pVoice = new wxChoice(this, kVoiceId + step);
        wxBoxSizer& group = *AddFormGroup(column, *this, titles[i]);
        group.Add(MakeFormLabel(_("Language:"), *row.pLanguage, titles[i] + " " + _("Language:")),
                  FormRow(*this));
        group.Add(row.pLanguage, FormRow(*this));
        group.Add(MakeFormLabel(_("Voice:"), *row.pVoice, titles[i] + " " + _("Voice:")),
                  FormRow(*this));
        group.Add(row.pVoice, FormRow(*this));
        row.pLanguage->Bind(wxEVT_CHOICE, [this, &row](wxCommandEvent& event) {
            row.Chosen = {row.Languages.at(static_cast<size_t>(event.GetSelection())), wxString()};
            FillVoices(row);
        });
        row.pVoice->Bind(wxEVT_CHOICE, [&row](wxCommandEvent& event) {
            row.Chosen.Name = row.Names.at(static_cast<size_t>(event.GetSelection()));
        });
        FillLanguages(row);
    }
    mpState = new wxStaticText(this, kStateId, _("The speech service does not answer."));
    column.Add(mpState, FormRow(*this));
    column.Add(MakeOkCancel(*this), FormRow(*this).Border(wxTOP, FromDIP(kFormEdge)));
    GetSizer()->SetSizeHints(this);
    mpState->SetLabel(_("Waiting for the speech service..."));
    CentreOnParent();
    Bind(wxEVT_BUTTON, &VoicesDialog::OnOk, this, wxID_OK);
    mTimer.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { Look(); });
    mSpeech.AskForVoices();
    mTimer.Start(kLookMilliseconds);
}

void VoicesDialog::FillLanguages(Row& row) {
    row.Languages = {wxString()};
    for (const SpeechVoice& voice : mVoices) {
        Insert(row.Languages, voice.Language);
    }
    Insert(row.Languages, row.Chosen.Language);
    std::sort(row.Languages.begin(), row.Languages.end());
    row.pLanguage->Clear();
    for (const wxString& language : row.Languages) {
        row.pLanguage->Append(language.empty() ? _("The language of the speech service")
                                               : LanguageName(language));
    }
    row.pLanguage->SetSelection(PlaceOf(row.Languages, row.Chosen.Language));
    FillVoices(row);
}

void VoicesDialog::FillVoices(Row& row) {
    row.Names = {wxString()};
    for (const SpeechVoice& voice : mVoices) {
        if (voice.Language == row.Chosen.Language) {
            Insert(row.Names, voice.Name);
        }
    }
    Insert(row.Names, row.Chosen.Name);
    row.pVoice->Clear();
    for (const wxString& name : row.Names) {
        row.pVoice->Append(name.empty() ? _("The usual voice") : name);
    }
    row.pVoice->SetSelection(PlaceOf(row.Names, row.Chosen.Name));
}

// A service that is slow at first may still answer, so the looking goes on.
void VoicesDialog::Look() {
    if (!mSpeech.HasVoices()) {
        if (mSpeech.IsWithoutAnswer()) {
            mpState->SetLabel(_("The speech service does not answer."));
        }
        return;
    }
    mTimer.Stop();
    mpState->SetLabel(wxString());
    mVoices = mSpeech.GetVoices();
    for (Row& row : mRows) {
        FillLanguages(row);
    }
    GetSizer()->SetSizeHints(this);
}

void VoicesDialog::OnOk(wxCommandEvent& event) {
    event.Skip();
    for (const Row& row : mRows) {
        WriteVoiceSetting(row.Side, mCategoryId, row.Chosen);
    }
}
