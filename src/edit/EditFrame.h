#pragma once

#include <wx/frame.h>
#include <wx/textctrl.h>

#include <list>
#include <memory>
#include <utility>
#include <vector>

#include "store/FlashCard.h"
#include "store/Subject.h"

class AppServices;
class Database;
class EditForm;
class Job;
class ManyCards;
class SameFront;
struct ReviewRecord;

// The window in which one card is written or changed, or many cards together. Nothing reaches the
// store before a save, and a save writes only the fields that the user has touched. The others keep
// what the store has by then, for instance a score that was given in the study window meanwhile. A
// card without an id is new. Several editors may be open; each deletes itself when it closes. Main
// thread only.
class EditFrame : public wxFrame, private Observer {
  public:
    // The services are not owned and must outlive the frame.
    explicit EditFrame(AppServices& services);

    ~EditFrame() override;

    // Sets the store, which is not owned. Null detaches the editor from the present one.
    void SetDatabase(Database* database);

    // Shows a stored card.
    void SetCard(const FlashCard& card);

    // Shows the stored cards of these rows, to change all of them together.
    void SetCards(const std::vector<int64_t>& rowIds);
    // Returns true when the window shows just these.
    bool HasCards(const std::vector<int64_t>& rowIds) const;

    // Begins a new card in the current category.
    void New();

    // Returns true when a field differs from the card as it was shown. A save does not change that.
    bool IsModified() const;

    // Call it when the store was changed from another computer, before the others are told: an
    // editor whose unsaved card is gone then stays, and a save brings the card back.
    void StayIfGone();

    // All zero while the card is new, and for many cards.
    const CardUuid& GetCardId() const { return mCard.CardId; }

  private:
    void Update(Subject* subject) override;

    void TrimMenuBar();
    void CreateToolBar();
    void CreateForm();
    void BindCommands();
    void ApplyFont();
    void FitToForm();
    wxString GetCategoryName(int32_t id);
    bool IsNew() const { return mCard.CardId.IsZero() && mpMany == nullptr; }
    void FollowMany(bool isFirst);
    int FindStored(std::list<FlashCard>& found);
    void Follow(const FlashCard& stored);
    void Refresh();
    void FollowStored();

    // Reads the card's reviews from the log and shows them when they are there.
    void ReadLife();
    void ShowLife();
    void ShowReviews(const std::vector<ReviewRecord>& reviews);

    int Save();
    int SaveMany();
    // Makes the category of a saved card current, where the settings say so.
    void FollowCard(int32_t categoryId);
    // Asks what becomes of the changes. Returns false when the user stays at the card.
    bool MayLeaveCard();
    void GoToNeighbour(int step);
    void NoteStep(const std::list<FlashCard>& before);
    void SaveAndClose();
    void SaveAndNew();
    void Leave();

    void OnClose(wxCloseEvent& event);
    void OnActivate(wxActivateEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnPaste(wxClipboardTextEvent& event);
    void OfferToImport(wxWindow& field, const wxString& text);
    void OnExport(wxCommandEvent& event);

    AppServices& mServices;
    EditForm* mpForm = nullptr;
    std::unique_ptr<SameFront> mpSameFront;
    Database* mpDatabase = nullptr;
    // The card as it was first shown or last saved. Only its id matters for a stored card, since a
    // save reads the rest again.
    FlashCard mCard;
    bool mIsGone = false;
    // The cards that are changed together, or null for one card.
    std::unique_ptr<ManyCards> mpMany;
    // True while a text goes into the field that the user did not want as cards.
    bool mPastesText = false;
    // The reviews of the card, and when its last ones were when that read them from the log, which
    // may be huge. The worker writes them, and the main thread reads them after Join.
    std::vector<ReviewRecord> mReviews;
    std::unique_ptr<Job> mpLife;
    std::pair<wxDateTime, wxDateTime> mLifeUntil;
    // True once the window has closed and only waits for the toolkit to delete it.
    bool mHasLeft = false;
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;
};
