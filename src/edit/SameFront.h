#pragma once

#include <wx/event.h>
#include <wx/timer.h>

#include <memory>

#include "store/FlashCard.h"

class AppServices;
class Database;
class wxHyperlinkCtrl;
class wxTextCtrl;
struct SameFrontSearch;

// Says below the front of a card, shortly after it was typed, that another card has that front, by
// a link that opens it. A worker looks for it, so nothing waits. Main thread only.
class SameFront : public wxEvtHandler {
  public:
    // The controls belong to the form. The link is hidden until there is a card to open.
    SameFront(AppServices& services, wxTextCtrl& front, wxHyperlinkCtrl& link);
    ~SameFront() override;

    // Looks in that store for cards other than that one. Null ends the search that runs.
    void Watch(Database* database, const CardUuid& except);

  private:
    void Search();
    void ShowFound();
    void Show(const wxString& text);

    AppServices& mServices;
    wxTextCtrl& mFront;
    wxHyperlinkCtrl& mLink;
    Database* mpDatabase = nullptr;
    CardUuid mExcept;
    FlashCard mFound;
    wxTimer mPause;
    // The search that runs, or null.
    std::unique_ptr<SameFrontSearch> mpSearch;
};
