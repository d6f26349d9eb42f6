#pragma once

#include <wx/dialog.h>

#include <cstdint>

#include "store/CategoryChoice.h"
#include "store/FlashCard.h"

class Clock;
class Database;
class wxBoxSizer;
class wxScrolledWindow;

// Tells how far the learning of a category and those below it has come: for each direction the
// numbers of cards that are ready, memorized, waiting for their first review and excluded, and
// below that what waits in all categories together. Counts once, in the constructor, and changes
// nothing. Main thread only.
class LearningProgress : public wxDialog {
  public:
    // The ids of the four numbers of one direction.
    struct NumberIds {
        int Ready;
        int Memorized;
        int Waiting;
        int Excluded;
    };
    static constexpr NumberIds kForwardIds = {10001, 10002, 10003, 10000};
    static constexpr NumberIds kReverseIds = {10004, 10005, 10006, 10007};
    enum ControlId : int {
        kTotalId = 10008,
        // The first of the six numbers of all categories.
        kOutlookId = 10110,
        kNextDueId = 10116
    };

    // What is counted. The Database and the clock are used by the constructor only.
    struct Source {
        Database& Store;
        const Clock& Time;
        Category Counted;
    };
    LearningProgress(const Source& source, wxWindow* parent, wxWindowID id, const wxString& title);

  private:
    // Each of these adds its part to the end of the form.
    void AddTotal(int32_t total);
    void AddDirection(const Source& source, const CategoryChoice& choice, int32_t total,
                      ReviewDirection direction);
    void AddOutlook(const Source& source);

    wxScrolledWindow* mpForm = nullptr;
    wxBoxSizer* mpLayout = nullptr;
};
