#include <wx/intl.h>
#include <wx/menu.h>

#include "categories/CurrentCategory.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "study/StudyFrame.h"
#include "study/StudySpeech.h"
#include "study/VoicesDialog.h"

// The menu View > Speak. The speech service is first asked when the user has chosen a side to be
// spoken, or asks for speech otherwise.

void StudyFrame::AddSpeechCommands() {
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) {
            wxString label = _("Speak");
            if (!mIsSpeechInstalled) {
                label = _("Speak (no speech service is installed)");
            } else if (mSpeech.IsWithoutAnswer()) {
                label = _("Speak (the speech service does not answer)");
            }
            event.Enable(label == _("Speak"));
            if (GetMenuBar()->GetLabel(ID_SPEAK) != label) {
                event.SetText(label);
            }
        },
        ID_SPEAK);
    const auto add = [this](int id, SpokenSides side) {
        AddCommand(
            id, [this, side](bool checked) { SetSpoken(side, checked); },
            [side](wxUpdateUIEvent& event) {
                event.Check((ReadIntegerSetting(kSettingSpeakSides) & side) != 0);
            });
    };
    add(ID_SPEAK_FRONT, kSpeakFront);
    add(ID_SPEAK_BACK, kSpeakBack);
    const auto rule = [this](wxUpdateUIEvent& event) { event.Enable(HasCard()); };
    AddCommand(
        ID_SPEAK_AGAIN, [this](bool) { mStudySpeech.SayAgain(); }, rule);
    AddCommand(
        ID_VOICES, [this](bool) { ChooseVoices(); }, rule);
}

// A service that gave no answer is asked once more, so that the entry does not stay grey.
void StudyFrame::LookForSpeech() {
    mIsSpeechInstalled = Speech::IsInstalled();
    if (mIsSpeechInstalled && mSpeech.IsWithoutAnswer()) {
        mSpeech.AskForVoices();
    }
}

// A side that is on the screen is heard at once.
void StudyFrame::SetSpoken(SpokenSides side, bool isSpoken) {
    const int32_t sides = ReadIntegerSetting(kSettingSpeakSides);
    WriteIntegerSetting(kSettingSpeakSides, isSpoken ? sides | side : sides & ~side);
    if (mStudySpeech.GetSide() == side) {
        if (isSpoken) {
            mStudySpeech.SayAgain();
        } else {
            mSpeech.Silence();
        }
    }
}

void StudyFrame::UpdateSpeech(bool isNewQuestion) {
    if (!HasCard() || !IsShown()) {
        mStudySpeech.Leave();
        return;
    }
    const FlashCard& card = mpScheduler->GetCurrentCard();
    mStudySpeech.Show({card.CardId, card.CategoryId, card.Front, card.Back, mReverseStudy,
                       IsBackVisible(), IsRecent()},
                      isNewQuestion);
}

void StudyFrame::ChooseVoices() {
    if (HasCard()) {
        const int32_t category = mpScheduler->GetCurrentCard().CategoryId;
        VoicesDialog(this, mSpeech, category, GetCategoryName(*mpDatabase, category)).ShowModal();
    }
}
