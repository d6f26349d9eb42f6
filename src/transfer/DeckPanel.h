#pragma once

#include <wx/panel.h>

#include <functional>
#include <memory>
#include <vector>

#include "exchange/ImportJob.h"
#include "formats/decks/DeckSurvey.h"

class Database;
class FatalErrorReport;
class wxCheckBox;
class wxChoice;
class wxFlexGridSizer;
class wxListBox;
class wxScrolledWindow;

// What the import dialog asks about a deck: how its categories are named, whether its schedules
// come along, and what each field of its kinds of notes becomes. Lists below them, before anything
// is written, what of the deck is lost. Main thread only; a worker reads the deck.
class DeckPanel : public wxPanel {
  public:
    enum ControlId : int {
        ID_NAMES = 10301,
        ID_SCHEDULES = 10302,
        ID_TYPE = 10303,
        ID_SUMMARY = 10304,
        // The first of the choices of fields.
        ID_FIRST_FIELD = 10320
    };

    // The function is called after each choice of the user. The database and the report are not
    // owned.
    DeckPanel(wxWindow* parent, Database& database, FatalErrorReport& report,
              std::function<void()> onChange);

    // Unpacks the deck and reads it once, behind a progress window when that takes long.
    void Open(const wxString& path);
    // Returns what is wrong with the deck, or nothing.
    const wxString& GetFault() const { return mSurvey.Failure; }
    // Returns the attributes of the first card with the present choices.
    const std::vector<CardAttribute>& GetFirstRecord() const { return mSurvey.FirstRecord; }
    // Makes readers with the present choices. They may outlive the panel.
    // The pictures and sounds that come along; null for none.
    std::shared_ptr<MediaSource> GetMedia() const {
        return mFile == nullptr ? nullptr : mFile->GetMedia();
    }
    DeckReaderMaker GetReaderMaker() const;

  private:
    void MakeControls();
    void ShowFields();
    void ChooseRole(size_t field, int role);
    void Survey(const wxString& path);
    void ReadDeck(const wxString& path);
    bool AskAboutSize();
    wxWindow* FindParent();
    DeckOptions GetOptions() const;
    void OnChoice();

    Database& mDatabase;
    FatalErrorReport& mReport;
    std::function<void()> mOnChange;
    std::shared_ptr<DeckFile> mFile;
    DeckSurvey mSurvey;
    std::vector<DeckNoteType> mTypes;
    // True for each type whose roles the user has changed.
    std::vector<bool> mIsChosen;
    // Whether the user was asked about a deck beyond the bounds, and has agreed to it.
    bool mWasAsked = false;
    bool mMayBeLarge = false;

    wxChoice* mpNames = nullptr;
    wxCheckBox* mpSchedules = nullptr;
    wxChoice* mpType = nullptr;
    wxScrolledWindow* mpFields = nullptr;
    wxFlexGridSizer* mpFieldGrid = nullptr;
    wxListBox* mpSummary = nullptr;
};
