#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

#include <array>
#include <cstdint>
#include <vector>

#include "study/StudySpeech.h"

class wxChoice;
class wxStaticText;

// The dialog that chooses the language and the voice of each side for the cards of a category. The
// service tells its voices while the dialog is open; until then, and without a service, what was
// chosen before stays. Main thread only.
class VoicesDialog : public wxDialog {
  public:
    // The ids of the choices of the front; those of the back follow them.
    enum ControlId : int { kLanguageId = 10170, kVoiceId = 10171, kBackStep = 2, kStateId = 10174 };

    // The speech is not owned and must outlive the dialog.
    VoicesDialog(wxWindow* parent, Speech& speech, int32_t categoryId,
                 const wxString& categoryName);

  private:
    struct Row {
        explicit Row(SpokenSides side) : Side(side) {}

        const SpokenSides Side;
        wxChoice* pLanguage = nullptr;
        wxChoice* pVoice = nullptr;
        // What the entries stand for. The first of each is the service's own.
        std::vector<wxString> Languages;
        std::vector<wxString> Names;
        SpeechVoice Chosen;
    };

    void FillLanguages(Row& row);
    void FillVoices(Row& row);
    // Takes the voices as soon as they are there.
    void Look();
    void OnOk(wxCommandEvent& event);

    Speech& mSpeech;
    const int32_t mCategoryId;
    std::array<Row, 2> mRows{Row(kSpeakFront), Row(kSpeakBack)};
    std::vector<SpeechVoice> mVoices;
    wxStaticText* mpState = nullptr;
    wxTimer mTimer;
};
