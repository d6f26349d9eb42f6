#pragma once

#include <wx/modalhook.h>

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

class AppServices;
class CardUuid;
class Database;
class EditFrame;
struct FlashCard;
class wxFrame;
class wxTopLevelWindow;
class wxWindow;

// The two main windows of the program, list and study. Each is created when it is first shown, and
// showing one hides the other, which stays alive. The windows delete themselves; when one closes,
// its owner calls Forget. Main thread only.
class MainWindows {
  public:
    using Maker = std::function<wxFrame*()>;

    MainWindows(Maker makeList, Maker makeStudy);

    // Show the window, which is created the first time, and hide the other.
    wxFrame& ShowList() { return Show(mList, mStudy); }
    wxFrame& ShowStudy() { return Show(mStudy, mList); }

    // Return the window, which may be hidden, or null.
    wxFrame* GetList() const { return mList.Frame; }
    wxFrame* GetStudy() const { return mStudy.Frame; }
    // Returns the window that is on the screen, or null.
    wxFrame* GetShown() const;

    // Call this while a frame closes, whichever frame it is. If no window stays on the screen, the
    // hidden main window is closed too: the user could not reach it any more, and it would keep the
    // program running.
    void Forget(wxFrame& frame);

    // Closes both, the list first; each may refuse.
    void CloseAll();

  private:
    // One of the two windows, null until it is created and after it is gone.
    struct Place {
        Maker Make;
        wxFrame* Frame = nullptr;
    };

    static wxFrame& Show(Place& wanted, Place& other);

    Place mList;
    Place mStudy;
};

// Raises a window and restores it if it is minimised. A hidden window stays hidden.
void BringToFront(wxTopLevelWindow& window);

// The open editors of the program: any number for new cards, and at most one for each stored card.
// The windows delete themselves; when one closes, its owner calls Forget. Main thread only.
class Editors {
  public:
    // The services are not owned and must outlive this object and its windows.
    explicit Editors(AppServices& services) : mServices(services) {}

    void OpenNew(Database& database);

    // Opens a card as the store has it now, or brings the editor that has it to the front. Does
    // nothing if the card is gone from the store.
    void Open(const FlashCard& card, Database& database);

    // Opens the cards of these rows to change them together, or brings the editor that has just
    // these to the front.
    void OpenMany(const std::vector<int64_t>& rowIds, Database& database);
    // Brings the editor of that card to the front. Returns false when there is none.
    bool Raise(const CardUuid& id);

    // Call it when the store was changed from another computer, before the others are told: cards
    // that are gone, and whose editors have unsaved changes, can still be saved.
    void KeepUnsaved();

    // Call this while a frame closes. Returns false when the frame is no editor.
    bool Forget(const wxFrame& frame);

    // Closes all, in the order in which they were opened. Returns false when the user chose to keep
    // one; the editors after it are then untouched.
    bool CloseAll();

    // Call this before another store is opened. Asks whether unsaved changes may be discarded, if
    // there are any, and closes all editors by force. Returns false when the user refused; all are
    // then untouched.
    bool DiscardAll(wxWindow* parent);

  private:
    EditFrame& Make(Database& database);

    AppServices& mServices;
    std::vector<EditFrame*> mFrames;
};

// Counts the dialogs and message boxes that wait for the user. Main thread only.
class OpenDialogs : private wxModalDialogHook {
  public:
    OpenDialogs() { Register(); }
    ~OpenDialogs() override { Unregister(); }
    OpenDialogs(const OpenDialogs&) = delete;
    OpenDialogs& operator=(const OpenDialogs&) = delete;

    bool IsAnyOpen() const { return mCount > 0; }
    // Called before a dialog opens; may be empty.
    void SetBeforeDialog(std::function<void()> hook) { mBeforeDialog = std::move(hook); }

  private:
    int Enter(wxDialog*) override {
        ++mCount;
        if (mBeforeDialog) {
            mBeforeDialog();
        }
        return wxID_NONE;
    }
    void Exit(wxDialog*) override { --mCount; }

    int mCount = 0;
    std::function<void()> mBeforeDialog;
};
