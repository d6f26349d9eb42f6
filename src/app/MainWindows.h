#pragma once

#include <functional>

class wxFrame;

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
