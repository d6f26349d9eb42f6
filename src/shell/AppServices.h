#pragma once

#include <wx/string.h>

#include <cstdint>
#include <vector>

#include "base/Time.h"
#include "files/StoreBackup.h"
#include "scheduler/Scheduler.h"
#include "store/Subject.h"

class CardUuid;
class Database;
class UndoHistory;
struct FlashCard;
class wxFrame;
class wxWindow;

// The few things that a window asks of the application. The application implements it, and so do
// tests of a single window. Whoever holds a reference does not own it. Main thread only.
class AppServices : public CategorySource {
  public:
    // Returns the subject that windows observe to learn of changed settings.
    virtual Subject& GetSettingsNotifier() = 0;

    // Makes a category current if the store has it; -1 is always taken.
    virtual void SetCurrentCategoryId(Database& database, int32_t id) = 0;

    virtual const Clock& GetClock() = 0;
    virtual ReviewRandom& GetReviewRandom() = 0;
    virtual MaintenancePrompt& GetMaintenancePrompt() = 0;

    // Frames call these when they are activated and while they close.
    virtual void FrameActivated(wxFrame& frame) = 0;
    virtual void FrameClosed(wxFrame& frame) = 0;

    // Opens a store, or asks how to import a file of cards, as soon as no dialog is open.
    virtual void OpenFile(const wxString& path) = 0;

    // Opens a stored card in its editor, or raises the editor that has it.
    virtual void OpenEditor(const FlashCard& card) = 0;

    // The same for many cards together, known by their row ids.
    virtual void OpenEditorOfMany(const std::vector<int64_t>& rowIds) = 0;
    // Gives the card that the list has that many rows after this one, or before it for a negative
    // number. Returns false when there is none, or when an editor that has it comes to the front.
    virtual bool FindNeighbour(const CardUuid& id, int step, FlashCard& card) = 0;
    // Lets the user say how to read a text as cards, and imports them.
    virtual void ImportText(wxWindow& parent, const wxString& text) = 0;

    // Shows a card in the list, if there is a list and the card is in it, since an editor has just
    // saved it.
    virtual void CardSaved(const CardUuid& id) = 0;

    // Asks which cards to export and how, and exports them. The selected ones have these row ids,
    // which may be none. They are offered first when that is said; else the current category is.
    enum class OfferFirst { kSelection, kCategory };
    virtual void ExportCards(wxWindow& parent, const std::vector<int64_t>& rowIds,
                             OfferFirst first) = 0;

    // Finds and replaces in the texts of the selected cards, of which there may be none, or of all
    // that the list shows.
    virtual void ReplaceInCards(wxWindow& parent, const std::vector<int64_t>& selected,
                                const std::vector<int64_t>& shown) = 0;
    // Shows cards that are the same, to merge them.
    virtual void ShowDuplicates(wxWindow& parent) = 0;

    // Puts the cards of these row ids on the clipboard. Cut cards stay in the store until they are
    // pasted.
    virtual void PutCardsOnClipboard(const std::vector<int64_t>& rowIds, bool cut) = 0;

    // True while the clipboard holds cards of this program.
    virtual bool CanPasteCards() const = 0;

    // Copies or moves the cards of the clipboard, which must hold some, into a category. A cut
    // pastes once: the clipboard is emptied before its cards move, or after.
    enum class EmptyCut { kBefore, kAfter };
    virtual void PasteCards(int32_t categoryId, EmptyCut empty) = 0;

    // What Edit > Undo of the list can take back. Each command that deletes or moves cards, or
    // renames or merges categories, adds its step.
    virtual UndoHistory& GetUndoHistory() = 0;

    // Makes a backup of the store before something large is done to it. Returns 0, or the system's
    // number of the error, which was told and is no reason to stop.
    virtual int BackUpStore(wxWindow* parent, BackupCause cause) = 0;
    // Says what the next change of the store begins, such as an import, and the bytes that it may
    // need. The backup makes itself before that change, if there is one. kDay for nothing.
    virtual void ExpectChange(BackupCause cause, uint64_t bytes) = 0;
    // Makes the backup of the day now where it takes long, before what most often is the first
    // change of a day. Events are handled meanwhile.
    virtual void BackUpDay(wxWindow* parent) = 0;

    // The direction of study, which the study window sets and lists of schedules follow.
    virtual bool IsReverseStudy() const = 0;
    virtual void SetReverseStudy(bool reverse) = 0;

    // Shares the text that the study window shows when it has no card.
    virtual void SetStudyMessage(const wxString& text) = 0;
};
