#include "study/StudySpeech.h"

#include "support/GuiTest.h"

namespace {

struct RecordingOutput : SpeechOutput {
    void Say(const wxString& text, const SpeechVoice& voice) override {
        Log << text << (voice.Language.empty() ? "" : "@") << voice.Language << "/" << voice.Name
            << " ";
    }
    void Silence() override { Log << ". "; }

    wxString Log;
};

struct StudySpeechTest : GuiTest {
    // Asks a card and then shows its answer.
    static void ShowBoth(StudySpeech& speech, StudySpeech::Step& step, bool saysAgain = false) {
        step.CardId = MakeCard("", "").CardId;
        speech.Show(step, true);
        if (saysAgain) {
            speech.SayAgain();
        }
        step.IsAnswerShown = true;
        speech.Show(step, false);
    }
};

// "q1" asks card 1, "a1" shows its answer, "=" draws again, "h2" shows card 2 of the history, "c1"
// goes back to the question of card 1 and "d1" to its answer, "x" leaves, "8" is the key.
TEST_F(StudySpeechTest, ASideIsSaidOnceWhenItComesUp) {
    struct Row {
        const char* What;
        int32_t Sides;
        bool IsReverse;
        const char* Script;
        const char* Log;
    };
    const Row rows[] = {
        {"both", 3, false, "q1 a1 q2", ". f1/ . b1/ . f2/ "},
        {"the front", 1, false, "q1 a1 q2", ". f1/ . . f2/ "},
        {"the back", 2, false, "q1 a1 q2", ". . b1/ . "},
        {"none, but for the key", 0, false, "q1 8 a1 8", ". f1/ . b1/ "},
        {"the front is the answer", 1, true, "q1 a1", ". . f1/ "},
        {"drawn again", 3, false, "q1 = a1 = =", ". f1/ . b1/ "},
        {"the same card asked anew", 3, false, "q1 a1 q1", ". f1/ . b1/ . f1/ "},
        {"through the history", 3, false, "q1 h2 c1 a1 h2 8 d1", ". f1/ . . . b1/ . b2/ . "},
        {"the window left and shown again", 3, false, "q1 x x c1 a1", ". f1/ . . . b1/ "},
        {"the key before the side", 3, false, "q1 8 =", ". f1/ f1/ "},
        {"a blank side", 3, false, "q3 a3", ". . b3/ "}};
    for (const Row& row : rows) {
        WriteIntegerSetting(kSettingSpeakSides, row.Sides);
        RecordingOutput output;
        StudySpeech speech(output);
        StudySpeech::Step step;
        const CardUuid cards[] = {CardUuid(), MakeCard("", "").CardId, MakeCard("", "").CardId,
                                  MakeCard("", "").CardId};
        for (const wxString& word : wxSplit(row.Script, ' ')) {
            if (word == "8") {
                speech.SayAgain();
                continue;
            }
            if (word == "x") {
                speech.Leave();
                continue;
            }
            if (word != "=") {
                const wxString card = word.Mid(1);
                step.CardId = cards[wxAtoi(card)];
                step.Front = card == "3" ? wxString(" \n") : "f" + card;
                step.Back = "b" + card;
                step.IsReverse = row.IsReverse;
                step.IsRecent = word[0] == 'h';
                step.IsAnswerShown = word[0] == 'a' || word[0] == 'd' || step.IsRecent;
            }
            speech.Show(step, word[0] == 'q');
        }
        EXPECT_EQ(output.Log, row.Log) << row.What;
    }
}

TEST_F(StudySpeechTest, ASideWithSoundsIsPlayedAndNotSpoken) {
    const struct {
        const char* What;
        bool Plays;
        int32_t Sides;
        const char* Log;
    } rows[] = {{"both wanted", true, 3, ". - . [a.ogg b.ogg] . [a.ogg b.ogg] . - word/ "},
                {"sounds alone", true, 0, ". - . [a.ogg b.ogg] . [a.ogg b.ogg] . - "},
                {"speech alone", false, 3, ". - . [a.ogg b.ogg] . - word/ "},
                {"the key alone", false, 0, ". - . [a.ogg b.ogg] . - "}};
    for (const auto& row : rows) {
        WriteIntegerSetting(kSettingSpeakSides, row.Sides);
        WriteBooleanSetting(kSettingPlaySounds, row.Plays);
        RecordingOutput output;
        StudySpeech speech(output, [&output](const std::vector<wxString>& names) {
            output.Log += names.empty() ? wxString("- ") : "[" + names[0] + " " + names[1] + "] ";
        });
        StudySpeech::Step step;
        step.Front = "[sound: a.ogg]\n[sound: b.ogg]";
        step.Back = "word\n[picture: c.png]";
        ShowBoth(speech, step, true);
        EXPECT_EQ(output.Log, row.Log) << row.What;
    }
}

TEST_F(StudySpeechTest, EachSideOfACategoryHasItsVoice) {
    WriteIntegerSetting(kSettingSpeakSides, kSpeakFront | kSpeakBack);
    WriteVoiceSetting(kSpeakFront, 1, {"ja", "Hana Ito"});
    WriteVoiceSetting(kSpeakBack, 1, {"de", ""});
    WriteVoiceSetting(kSpeakBack, 2, {"en", "Alice"});
    WriteVoiceSetting(kSpeakBack, 2, {});
    RecordingOutput output;
    StudySpeech speech(output);
    for (const int32_t category : {1, 2}) {
        StudySpeech::Step step;
        step.CategoryId = category;
        step.Front = "f";
        step.Back = "b";
        ShowBoth(speech, step);
    }
    EXPECT_EQ(output.Log, ". f@ja/Hana Ito . b@de/ . f/ . b/ ");
}

}  // namespace
