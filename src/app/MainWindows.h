#pragma once

#include <functional>
#include <vector>

class AppServices;
class Database;
class EditFrame;
struct FlashCard;
class wxFrame;
class wxWindow;

// The two main windows of the program, list and study. Each is made when it is first wanted, and
// when one is shown the other stays alive behind, hidden. The windows own themselves; a window that
// closes is to be told here.
class MainWindows {
  public:
    using Maker = std::function<wxFrame*()>;

    MainWindows(Maker makeList, Maker makeStudy);

    // Both give the window, made if need be and on the screen.
    wxFrame& ShowList();
    wxFrame& ShowStudy();

    // The one that is on the screen, or null.
    wxFrame* GetShown() const;

    // The frame is closing. When it leaves nothing on the screen but hidden windows, these are
    // closed too: nobody could ever reach them again, and they would keep the program running.
    void Forget(wxFrame& frame);

    // Closes both, the list first; each may refuse.
    void CloseAll();

  private:
    // One of the two.
    struct Place {
        Maker Make;
        wxFrame* Frame = nullptr;
    };

    static wxFrame& Show(Place& wanted, Place& other);
    void CloseHidden();

    Place mList;
    Place mStudy;
};

// Brings a window that is on the screen to the front, out of its icon if need be. A hidden one
// stays hidden.
void BringToFront(wxFrame& frame);

// The open editors of the program: any number for new cards, and one for each stored card. The
// windows own themselves; one that closes is to be told here. Main thread only.
class Editors {
  public:
    // The services are not owned; they must outlive this and its windows.
    explicit Editors(AppServices& services) : mServices(services) {}

    void OpenNew(Database& database);

    // Opens a card as the store has it now, or brings the editor to the front that has it. Without
    // effect on a card that is gone from the store.
    void Open(const FlashCard& card, Database& database);

    // The frame is closing. False when it is no editor.
    bool Forget(const wxFrame& frame);

    // Closes all, in the order in which they were opened. False when one has refused, as the
    // person would keep it; those after it are then untouched.
    bool CloseAll();

    // Before another store is taken: asks whether unsaved changes may be discarded, if there are
    // any, and closes all editors by force. False when the person refused; all are then untouched.
    bool DiscardAll(wxWindow* parent);

  private:
    EditFrame& Make(Database& database);

    AppServices& mServices;
    std::vector<EditFrame*> mFrames;
};
