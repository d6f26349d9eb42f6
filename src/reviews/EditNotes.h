#pragma once

#include <wx/string.h>

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "files/ExchangeFiles.h"
#include "reviews/ReviewLog.h"
#include "store/CardUuid.h"

struct StoreChange;

// When the user changed which fields of which cards. The notes lie beside a store that is exchanged
// with other computers, as "Words.vlm.edits" beside "Words.vlm", so that an edit of Monday that is
// sent on Friday counts as one of Monday. One line for each card and step:
//
//     1772388249123 1b4e28ba-2fa1-41d2-883f-0016d3cca427 FBN
//
// with tabs in place of the blanks: the milliseconds since 1970, the card, and a letter for each
// field.

// Their letters are F B C A H O X Y N f r D, in this order. A card that is new has all but the last
// one, and a card that is gone the last one alone.
enum class EditedField : size_t {
    kFront,
    kBack,
    kCategory,
    kAuthor,
    kChapter,
    kIntroductionOrder,
    kForwardX,
    kReverseX,
    kNotes,
    kForward,
    kReverse,
    kDeletion
};
constexpr size_t kEditedFieldCount = static_cast<size_t>(EditedField::kDeletion) + 1;
using EditedFields = std::bitset<kEditedFieldCount>;

inline bool HasField(const EditedFields& fields, EditedField field) {
    return fields.test(static_cast<size_t>(field));
}

struct EditNote {
    // Milliseconds since 1970.
    int64_t Time = 0;
    CardUuid CardId;
    EditedFields Fields;
};

// All take the path of the store.

// Returns true for a store that is exchanged with other computers.
bool IsExchanged(const wxString& storePath);

// Adds notes, in one write. Does nothing for a store that is not exchanged. Returns 0 or the
// error's number.
int AddEditNotes(const wxString& storePath, const std::vector<EditNote>& notes);

// Sets the notes aside and returns them, with those that were taken before and not dropped. Lines
// that are no notes are left out.
std::vector<EditNote> TakeEditNotes(const wxString& storePath);
// Deletes what was taken.
void DropEditNotes(const wxString& storePath);

// Notes what each step of the user has changed: the fields, while the store is exchanged, and
// always the schedules, in the log of reviews. Main thread only.
class StepNotes {
  public:
    // Takes a step that was done, taken back or done again at this time, in milliseconds since
    // 1970. A failure is traced once and otherwise ignored.
    void Take(const wxString& storePath, const StoreChange& change, int64_t milliseconds);

  private:
    ReviewLog mLog{wxString()};
    bool mHasFailed = false;
};
