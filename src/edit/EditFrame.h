#pragma once

#include <wx/frame.h>

#include <list>

#include "store/FlashCard.h"
#include "store/Subject.h"

class AppServices;
class Database;
class EditForm;

// The window in which one card is written or changed. Nothing reaches the store before a save, and
// a save writes only the fields that the user has touched: the others keep what the store has by
// then, such as the score of a study that went on beside. A card without an id is a new one. Any
// number of these windows may be open, made by the application and owned by nobody, as any frame.
class EditFrame : public wxFrame, private Observer {
  public:
    // The services are not owned and must outlive the frame.
    explicit EditFrame(AppServices& services);

    // Takes over another store, which is not owned. Null lets go of the present one.
    void SetDatabase(Database* database);

    // Shows a stored card.
    void SetCard(const FlashCard& card);

    // Begins a new card, in the current category.
    void New();

    // Whether a field differs from the card as it was shown. A save alone changes nothing in that.
    bool IsModified() const;

    // All zero while the card is new.
    const CardUuid& GetCardId() const { return mCard.CardId; }

  private:
    void Update(Subject* subject) override;

    void TrimMenuBar();
    void CreateToolBar();
    void BindCommands();
    void ApplyFont();
    void FitToForm();
    wxString GetCategoryName(int32_t id);
    bool IsNew() const { return mCard.CardId.IsZero(); }
    int FindStored(std::list<FlashCard>& found);
    void Refresh();
    void FollowStored();

    int Save();
    void SaveAndClose();
    void SaveAndNew();
    void Leave();

    void OnClose(wxCloseEvent& event);
    void OnActivate(wxActivateEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnExport(wxCommandEvent& event);

    AppServices& mServices;
    EditForm* mpForm = nullptr;
    Database* mpDatabase = nullptr;
    // As it was shown first, or stored last. Its id tells which card this is; a save reads the rest
    // of a stored card anew.
    FlashCard mCard;
    // The application has forgotten the window, which only waits for its end.
    bool mHasLeft = false;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
