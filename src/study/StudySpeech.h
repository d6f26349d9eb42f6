#pragma once

#include <wx/string.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "shell/Speech.h"
#include "store/CardUuid.h"

// The sides of a card that are spoken: none, one, or both. The numbers are those of the setting.
enum SpokenSides : int32_t { kSpeakNone = 0, kSpeakFront = 1, kSpeakBack = 2 };

// Returns the voice of a side, kSpeakFront or kSpeakBack, in a category. It is kept in the settings
// by the number of the category, so that it outlives another name.
SpeechVoice ReadVoiceSetting(SpokenSides side, int32_t categoryId);
void WriteVoiceSetting(SpokenSides side, int32_t categoryId, const SpeechVoice& voice);

// Decides what of a card is heard, and when: the side that has just come up, once, if the user
// wants that side spoken, or its sounds played. A side with sounds is not spoken besides, so that
// one thing is heard at a time. What is heard ends when the screen shows another step. A card of
// the history is heard on demand alone. Main thread only.
class StudySpeech {
  public:
    // What the study window shows.
    struct Step {
        CardUuid CardId;
        int32_t CategoryId = -1;
        wxString Front;
        wxString Back;
        // The back is the question and the front the answer.
        bool IsReverse = false;
        bool IsAnswerShown = false;
        bool IsRecent = false;
    };

    // Plays files of a card by their names; an empty list ends what is played.
    using PlaySounds = std::function<void(const std::vector<wxString>& names)>;

    // The output is not owned and must outlive this object.
    explicit StudySpeech(SpeechOutput& output, PlaySounds play = nullptr)
        : mOutput(output), mPlay(std::move(play)) {}

    // Takes a new step, or the same one drawn anew. isNewQuestion says that the card is asked now,
    // even if it was the one before.
    void Show(const Step& step, bool isNewQuestion);
    // No card is on the screen any more.
    void Leave();
    // Plays or says the side that came up last, once more.
    void SayAgain();
    // Plays its sounds, if it has any.
    void PlayAgain();
    // Returns that side, or kSpeakNone without a card.
    SpokenSides GetSide() const;

  private:
    std::vector<wxString> FindSounds(SpokenSides side) const;
    void Say(SpokenSides side, bool withSounds);
    void Silence();

    SpeechOutput& mOutput;
    const PlaySounds mPlay;
    bool mHasStep = false;
    Step mStep;
    // The card whose sides were said since it was asked, in the direction of its question; and
    // those sides, as a sum.
    CardUuid mAskedCard;
    bool mIsAskedReverse = false;
    int32_t mSaid = kSpeakNone;
};
