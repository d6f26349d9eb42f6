#pragma once

#include <wx/datetime.h>
#include <wx/dialog.h>

#include <cstdint>

#include "store/FlashCard.h"

struct StudyOutlook;
class Clock;
class Database;
class wxBoxSizer;
class wxScrolledWindow;
class wxStaticText;

// Tells how far the learning of one category has come: for each direction the numbers of cards that
// are ready, memorized, waiting for their first review and excluded, and below that what waits in
// all categories together. Counts once, in the constructor, and changes nothing. Main thread only.
class LearningProgress : public wxDialog {
  public:
    enum ControlId : int {
        kTotalId = 10008,
        // The first of the six numbers of all categories.
        kOutlookId = 10110,
        kNextDueId = 10116
    };
    struct NumberIds {
        int Ready;
        int Memorized;
        int Waiting;
        int Excluded;
    };
    static constexpr NumberIds kForwardIds{10001, 10002, 10003, 10000};
    static constexpr NumberIds kReverseIds{10004, 10005, 10006, 10007};

    // What is counted. The Database and the clock are used by the constructor only.
    struct Source {
        Database& Store;
        const Clock& Time;
        Category Counted;
    };
    LearningProgress(const Source& source, wxWindow* parent, wxWindowID id, const wxString& title);

  private:
    // How the cards of the category stand in one direction.
    struct Counts {
        int32_t NotExcluded = 0;
        int32_t Introduced = 0;
        int32_t Ready = 0;
    };
    // The four numbers of one direction.
    struct NumberTexts {
        wxStaticText*& Ready;
        wxStaticText*& Memorized;
        wxStaticText*& Waiting;
        wxStaticText*& Excluded;
    };

    NumberTexts ForwardTexts();
    NumberTexts ReverseTexts();
    void CreateControls(const StudyOutlook& outlook, const wxDateTime& now);
    void CreateBox(wxScrolledWindow& panel, const wxString& label, const NumberIds& ids,
                   const NumberTexts& texts);
    void CreateOutlook(wxScrolledWindow& panel, const StudyOutlook& outlook, const wxDateTime& now);
    void ShowCounts(Database& database, const Clock& clock);
    static void ShowDirection(int32_t total, const Counts& counts, const NumberTexts& texts);

    wxBoxSizer* mpLayout = nullptr;
    wxStaticText* mpCategoryText = nullptr;
    wxStaticText* mpTotalText = nullptr;
    wxStaticText* mpForwardReadyText = nullptr;
    wxStaticText* mpForwardMemorizedText = nullptr;
    wxStaticText* mpForwardWaitingText = nullptr;
    wxStaticText* mpForwardExcludedText = nullptr;
    wxStaticText* mpReverseReadyText = nullptr;
    wxStaticText* mpReverseMemorizedText = nullptr;
    wxStaticText* mpReverseWaitingText = nullptr;
    wxStaticText* mpReverseExcludedText = nullptr;
    int32_t mCategoryId = -1;
    wxString mCategoryName;
    bool mShowCategory = false;
};
