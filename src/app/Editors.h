#pragma once

#include <vector>

class AppServices;
class Database;
class EditFrame;
class wxFrame;
class wxWindow;
struct FlashCard;

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
