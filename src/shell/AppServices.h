#pragma once

#include <wx/string.h>

#include <cstdint>
#include <vector>

#include "base/Time.h"
#include "scheduler/Scheduler.h"
#include "store/Subject.h"

class Database;
struct FlashCard;
class wxFrame;
class wxWindow;

// The few things that a window asks of the application. The application implements it, and so do
// tests of a single window; whoever holds the reference does not own it. Main thread only.
class AppServices : public CategorySource {
  public:
    // Told when settings have changed.
    virtual Subject& GetSettingsNotifier() = 0;

    // Makes a category current if the store has it; -1 is always taken.
    virtual void SetCurrentCategoryId(Database& database, int32_t id) = 0;

    virtual const Clock& GetClock() = 0;
    virtual ReviewRandom& GetReviewRandom() = 0;
    virtual MaintenancePrompt& GetMaintenancePrompt() = 0;

    // A frame tells of its own life.
    virtual void FrameActivated(wxFrame& frame) = 0;
    virtual void FrameClosed(wxFrame& frame) = 0;

    // Opens a stored card in its editor, or raises the editor that has it.
    virtual void OpenEditor(const FlashCard& card) = 0;
    // What the commands that take cards out of the store do, with the row ids of the cards.
    // False where the command is not to be had; its menu entry is then disabled.
    virtual bool CanExportCards() const = 0;
    virtual void ExportCards(wxWindow& parent, const std::vector<int64_t>& rowIds) = 0;
    virtual bool CanPutCardsOnClipboard() const = 0;
    virtual void PutCardsOnClipboard(const std::vector<int64_t>& rowIds, bool cut) = 0;
    // Brings the cards of the clipboard, which must hold some, into a category. A cut pastes once:
    // the clipboard is emptied before its cards move, or behind them.
    enum class EmptyCut { kBefore, kAfter };
    virtual bool CanPasteCards() const = 0;
    virtual void PasteCards(int32_t categoryId, EmptyCut empty) = 0;
    virtual bool CanOpenEditor() const = 0;

    // The text of the study window's no-card states, shared with whoever wants to show it.
    virtual void SetStudyMessage(const wxString& text) = 0;
};
