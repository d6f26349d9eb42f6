#include "study/StudySpeech.h"

#include "base/Text.h"
#include "media/MediaLines.h"
#include "shell/Settings.h"

namespace {

wxString VoiceKey(SpokenSides side, int32_t categoryId) {
    return wxString::Format(side == kSpeakFront ? "VoiceFront%i" : "VoiceBack%i", categoryId);
}

}  // namespace

// A language has no blank, a name may have some: "ja Hana Ito".
SpeechVoice ReadVoiceSetting(SpokenSides side, int32_t categoryId) {
    const wxString text = ReadStringSetting(VoiceKey(side, categoryId));
    return {text.BeforeFirst(' '), text.AfterFirst(' ')};
}

void WriteVoiceSetting(SpokenSides side, int32_t categoryId, const SpeechVoice& voice) {
    if (voice == SpeechVoice()) {
        RemoveSetting(VoiceKey(side, categoryId));
    } else {
        WriteStringSetting(VoiceKey(side, categoryId), voice.Language + " " + voice.Name);
    }
}

void StudySpeech::Show(const Step& step, bool isNewQuestion) {
    const bool isSameCard = mHasStep && step.CardId == mStep.CardId &&
                            step.IsReverse == mStep.IsReverse && step.IsRecent == mStep.IsRecent;
    const bool isSame = isSameCard && step.IsAnswerShown == mStep.IsAnswerShown && !isNewQuestion;
    mStep = step;
    mHasStep = true;
    if (isSame) {
        return;
    }
    Silence();
    if (step.IsRecent) {
        return;
    }
    if (isNewQuestion || step.CardId != mAskedCard || step.IsReverse != mIsAskedReverse) {
        mAskedCard = step.CardId;
        mIsAskedReverse = step.IsReverse;
        mSaid = kSpeakNone;
    }
    const SpokenSides side = GetSide();
    const bool plays = ReadBooleanSetting(kSettingPlaySounds) && !FindSounds(side).empty();
    if ((mSaid & side) == 0 && (plays || (ReadIntegerSetting(kSettingSpeakSides) & side) != 0)) {
        Say(side, plays);
    }
}

void StudySpeech::Leave() {
    if (mHasStep) {
        mHasStep = false;
        Silence();
    }
}

void StudySpeech::SayAgain() {
    if (mHasStep) {
        Say(GetSide(), true);
    }
}

void StudySpeech::PlayAgain() {
    if (mHasStep && !FindSounds(GetSide()).empty()) {
        Say(GetSide(), true);
    }
}

void StudySpeech::Silence() {
    mOutput.Silence();
    if (mPlay) {
        mPlay({});
    }
}

std::vector<wxString> StudySpeech::FindSounds(SpokenSides side) const {
    std::vector<wxString> names;
    if (mPlay) {
        for (const MediaLine& line :
             FindMediaLines(side == kSpeakFront ? mStep.Front : mStep.Back)) {
            if (line.Kind == MediaKind::kSound) {
                names.push_back(line.Name);
            }
        }
    }
    return names;
}

SpokenSides StudySpeech::GetSide() const {
    if (!mHasStep) {
        return kSpeakNone;
    }
    return mStep.IsReverse == mStep.IsAnswerShown ? kSpeakFront : kSpeakBack;
}

void StudySpeech::Say(SpokenSides side, bool withSounds) {
    if (!mStep.IsRecent) {
        mSaid |= side;
    }
    const std::vector<wxString> sounds = withSounds ? FindSounds(side) : std::vector<wxString>();
    if (!sounds.empty()) {
        mOutput.Silence();
        mPlay(sounds);
        return;
    }
    const wxString text = WithoutMediaLines(side == kSpeakFront ? mStep.Front : mStep.Back);
    if (!TrimWide(text).empty()) {
        mOutput.Say(text, ReadVoiceSetting(side, mStep.CategoryId));
    }
}
