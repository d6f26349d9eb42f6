#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "media/MediaLines.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"
#include "study/CardViewer.h"
#include "study/QuickScore.h"
#include "study/StudyFrame.h"

// Typing the answer: a field below the card, which has the keys until the back is shown. Then a
// line takes its place that marks letter by letter how the typed answer differs. The cursor of the
// scores, which otherwise begins at 3, begins at what the comparison proposes; the score stays the
// user's. When nothing was typed nothing is compared, and it is 3 as ever.
//
// The direction has a setting of its own, since one may want to type a language and not its
// translation. All keys of the scores are letters while the field has them. Tab goes to the scores
// and back, and Left in an empty field goes back through the cards as it does there.

namespace {

constexpr int kAnswerFieldId = 10110;
constexpr int kAnswerResultId = 10111;
// Logical pixels around the field and the line.
constexpr int kAnswerBorder = 12;
// Lines of a long comparison that are shown.
constexpr int kMostLines = 4;

const char* AnswerSetting(bool isReverse) {
    return isReverse ? kSettingTypeAnswerReverse : kSettingTypeAnswerForward;
}

std::vector<MarkedText> MarkDifferences(const AnswerCheck& check) {
    std::vector<MarkedText> texts;
    for (const AnswerPart& part : check.Parts) {
        if (part.What == AnswerPart::Wrong || part.What == AnswerPart::Extra) {
            texts.push_back({part.Typed, TextMark::Struck});
        }
        if (part.What != AnswerPart::Extra) {
            const TextMark mark = part.What == AnswerPart::Same   ? TextMark::None
                                  : part.What == AnswerPart::Near ? TextMark::Wavy
                                                                  : TextMark::Underlined;
            texts.push_back({part.Right, mark});
        }
    }
    return texts;
}

}  // namespace

void StudyFrame::CreateAnswer(wxSizer& sizer) {
    mpAnswerField = new wxTextCtrl(this, kAnswerFieldId, wxString(), wxDefaultPosition,
                                   wxDefaultSize, wxTE_PROCESS_ENTER | wxTE_CENTRE);
    mpAnswerField->SetHint(_("Type the answer"));
    SetAccessibleName(*mpAnswerField, _("Your answer"));
    TextUndo::AttachTo(*mpAnswerField);
    mpAnswerField->Bind(wxEVT_KEY_DOWN, [this](wxKeyEvent& event) {
        mLastAnswerKey = event.GetKeyCode();
        event.Skip();
    });
    mpAnswerField->Bind(wxEVT_CHAR, &StudyFrame::OnAnswerKey, this);
    mpAnswerField->Bind(wxEVT_TEXT_ENTER, &StudyFrame::OnAnswerEnter, this);
    mpAnswerResult =
        new wxStaticText(this, kAnswerResultId, wxString(), wxDefaultPosition, wxDefaultSize,
                         wxALIGN_CENTRE_HORIZONTAL | wxST_NO_AUTORESIZE);
    const int border = FromDIP(kAnswerBorder);
    sizer.Add(mpAnswerField, wxSizerFlags().Expand().Border(wxALL, border));
    sizer.Add(mpAnswerResult, wxSizerFlags().Expand().Border(wxALL, border));
    mpAnswerField->Hide();
    mpAnswerResult->Hide();
    mpCardViewer->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
        event.Skip();
        if (mpAnswerResult->IsShown()) {
            ShowDifferences();
        }
    });
    for (const bool isReverse : {false, true}) {
        mTypesAnswer[isReverse ? 1 : 0] = ReadBooleanSetting(AnswerSetting(isReverse));
    }
}

void StudyFrame::SetTypesAnswer(bool types) {
    mTypesAnswer[mReverseStudy ? 1 : 0] = types;
    WriteBooleanSetting(AnswerSetting(mReverseStudy), types);
    if (!types) {
        ForgetAnswer();
    }
    if (mpScheduler != nullptr) {
        UpdateCard(false);
    }
}

void StudyFrame::HideAnswer() {
    mpAnswerField->Hide();
    mpAnswerResult->Hide();
}

bool StudyFrame::IsTyping() const {
    return mpAnswerField->HasFocus();
}

void StudyFrame::ForgetAnswer() {
    mAnswerCheck.reset();
    if (!mpAnswerField->IsEmpty()) {
        mpAnswerField->ChangeValue(wxString());
        TextUndo::Restart(*mpAnswerField);
    }
}

void StudyFrame::CheckTypedAnswer() {
    mAnswerCheck.reset();
    const wxString typed = mpAnswerField->GetValue();
    if (TypesAnswer() && !typed.Strip(wxString::both).empty()) {
        const FlashCard& card = mpScheduler->GetCurrentCard();
        mAnswerSide = mReverseStudy ? card.Front : card.Back;
        mAnswerCheck = CheckAnswer(typed, WithoutMediaLines(mAnswerSide));
        mDefaultScore = mAnswerCheck->ProposedScore();
    }
}

void StudyFrame::UpdateAnswer() {
    const bool asks = HasCard() && TypesAnswer() && !IsBackVisible();
    const bool tells = HasCard() && mBackShown && !IsRecent() && mAnswerCheck.has_value();
    const bool asked = mpAnswerField->IsShown();
    SetAccessibleDescription(*mpQuickScore, tells ? mAnswerCheck->InWords() : wxString());
    // The card may have been edited since.
    const bool isNew = tells && mpCardViewer->GetSecondText() != mAnswerSide;
    if (isNew) {
        mAnswerSide = mpCardViewer->GetSecondText();
        mAnswerCheck = CheckAnswer(mpAnswerField->GetValue(), WithoutMediaLines(mAnswerSide));
    }
    if (asks == asked && tells == mpAnswerResult->IsShown() && !isNew) {
        return;
    }
    mpAnswerResult->Show(tells);
    mpAnswerField->Show(asks);
    if (asks != asked) {
        TakeKeys();
    }
    Layout();
    if (tells) {
        ShowDifferences();
    }
}

void StudyFrame::ShowDifferences() {
    const int width = mpCardViewer->GetSize().x - 2 * FromDIP(kAnswerBorder);
    const int height = SetMarkedText(*mpAnswerResult, MarkDifferences(*mAnswerCheck),
                                     GetBackgroundColour(), std::max(width, 1));
    const wxString words = mAnswerCheck->InWords();
    SetAccessibleName(*mpAnswerResult, words);
    mpAnswerResult->SetToolTip(words);
    // The card stays where it is when the line is no higher than the field was.
    const int32_t most = kMostLines * mpAnswerResult->GetCharHeight();
    const wxSize size(-1, std::max(std::min(height, most), mpAnswerField->GetMinHeight()));
    if (mpAnswerResult->GetMinSize() != size) {
        mpAnswerResult->SetMinSize(size);
        // The frame may be laying itself out.
        CallAfter([this] { Layout(); });
    }
}

void StudyFrame::StyleAnswer(const wxFont& font, const wxColour& text) {
    mpAnswerField->SetFont(font);
    FitTextHeights(*mpAnswerField);
    mpAnswerResult->SetFont(font);
    mpAnswerResult->SetForegroundColour(text);
    if (mpAnswerResult->IsShown()) {
        ShowDifferences();
    }
}

// Comes after input methods, which have the keys first.
void StudyFrame::OnAnswerKey(wxKeyEvent& event) {
    switch (event.GetKeyCode()) {
        case WXK_PAGEUP:
            mpCardViewer->PageUp();
            return;
        case WXK_PAGEDOWN:
            mpCardViewer->PageDown();
            return;
        case WXK_UP:
        case WXK_DOWN:
            // The platform would move the focus.
            return;
        case WXK_LEFT:
            if (mpAnswerField->IsEmpty() && !event.HasAnyModifiers()) {
                wxCommandEvent back(wxEVT_MENU, wxID_BACKWARD);
                OnBack(back);
                return;
            }
            break;
        default:
            break;
    }
    event.Skip();
}

void StudyFrame::OnAnswerEnter(wxCommandEvent& /*event*/) {
    const bool isHeld = mLastAnswerKey == WXK_RETURN;
    ShowBack();
    if (isHeld && mpQuickScore->HasFocus()) {
        // The repeats of a Return that is held down must not score.
        mpQuickScore->TakeFocusWithKey(WXK_RETURN);
    }
}
