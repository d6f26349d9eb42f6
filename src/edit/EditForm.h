#pragma once

#include <wx/checkbox.h>
#include <wx/scrolwin.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>

#include "store/CardParts.h"
#include "store/FlashCard.h"

class Database;
class EditSchedulePanel;
class MediaStrip;
class wxBoxSizer;
class wxComboBox;
class wxFlexGridSizer;
class wxHyperlinkCtrl;
class wxStaticText;
class wxTextCtrl;
class wxTextEntry;

// The texts of the editor's form, in their order on it, which is that of the parts of a card.
enum class EditField : size_t { Front, Back, Category, Author, Chapter, Notes, IntroductionOrder };
constexpr size_t kCardFieldCount = 7;

// Stands for a blank introduction order; never stored.
constexpr int32_t kBlankOrder = std::numeric_limits<int32_t>::min();

// The fields of the editor in a column that scrolls: the texts, the details, and the two schedules,
// which stand side by side where there is room. Shows a card, and says which fields the user has
// touched since then; knows neither the store nor the application. Owned by its frame.
class EditForm : public wxScrolledWindow {
  public:
    enum ControlId : int {
        ID_REVERSE_SCHEDULE = 10000,
        ID_FRONT = 10001,
        ID_BACK = 10002,
        ID_AUTHOR = 10003,
        ID_INTRODUCTION_ORDER = 10004,
        ID_FORWARD_SCHEDULE = 10005,
        ID_REVERSE_X = 10006,
        ID_FORWARD_X = 10008,
        ID_CHAPTER = 10009,
        ID_NOTES = 10010,
        ID_CATEGORY = 10013,
        ID_SAME_FRONT = 10014
    };

    explicit EditForm(wxWindow* parent);

    // Shows a card in all fields. None of them counts as touched.
    void Load(const FlashCard& card, const wxString& categoryName);
    // The same for many cards. A field in which they differ says so and is empty; it counts as
    // touched once the user has changed it, even when it is empty again.
    void LoadMany(const CommonCard& cards, const wxString& categoryName);

    // Shows the stored card in each field that the user has not touched. These fields stay
    // untouched, and the focus stays where it is.
    void Follow(const FlashCard& card, const wxString& categoryName);
    void FollowMany(const CommonCard& cards, const wxString& categoryName);

    // Returns true when the user has touched anything, that is when a control differs from what was
    // put into it last.
    bool IsModified() const;
    bool IsTouched(EditField field) const;
    CardParts GetTouched() const;

    // Returns the text of a field without the white space at its ends. An untouched field gives the
    // card's own text, even when the toolkit cannot show every character of it.
    wxString GetTrimmed(EditField field) const;
    // Writes the exclusions that the user has touched into the card.
    void TakeExclusions(FlashCard& card) const;
    EditSchedulePanel& GetForwardSchedule() { return *mpForwardSchedule; }
    EditSchedulePanel& GetReverseSchedule() { return *mpReverseSchedule; }
    // The front and the hidden link below it, for SameFront.
    wxTextCtrl& GetFront();
    wxHyperlinkCtrl& GetLinkBelowFront() { return *mpSameFront; }

    void FocusFront();
    // Moves the focus to a field and selects its text.
    void PointAt(EditField field);

    // Says where the pictures and sounds of the cards are.
    void SetStore(const wxString& storePath);

    // Updates the list of categories to choose from. The text in the field stays, except that the
    // name of a renamed category is renamed there too.
    void SetCategories(const std::list<Category>& categories);

    // Returns the size that shows all fields without scrolling. When that is too high, returns the
    // size with the schedules side by side, unless that is too wide. Cuts either to the height.
    wxSize GetWantedSize(const wxSize& largest);

    // Sets the font of the texts. The introduction order and the schedules keep the window's font.
    void SetTextFont(const wxFont& font);

  private:
    struct Field {
        wxStaticText* Label = nullptr;
        wxWindow* Control = nullptr;
        // The same control, as a text.
        wxTextEntry* Entry = nullptr;
        // The text last put into the control, and the card's own text. They differ where the
        // toolkit cannot show a character.
        wxString Loaded;
        wxString Own;
        // True while many cards are shown that differ in it.
        bool IsSeveral = false;

        bool IsTouched() const;
        void SayWhetherSeveral() const;
    };
    struct Exclusion {
        wxCheckBox* Control = nullptr;
        wxCheckBoxState Loaded = wxCHK_UNCHECKED;

        bool IsTouched() const;
        void Load(bool excluded, bool isSeveral = false);
    };
    using Texts = std::array<wxString, kCardFieldCount>;

    Field& At(EditField field) { return mFields.at(static_cast<size_t>(field)); }
    const Field& At(EditField field) const { return mFields.at(static_cast<size_t>(field)); }

    static Texts GetTexts(const FlashCard& card, const wxString& categoryName);

    void AddFields(wxBoxSizer& column, const wxString& title, EditField first, EditField last);
    void CreateControl(EditField field);
    void AddField(wxFlexGridSizer& grid, EditField field);
    void AddExclusions(wxFlexGridSizer& grid);
    void AlignLabels();
    void AddSchedules(wxBoxSizer& column);
    void ArrangeSchedules();
    void LoadField(EditField field, const wxString& own, bool isSeveral = false);
    void FollowField(EditField field, const wxString& own, bool isSeveral = false);
    void RenameRow(unsigned row, const wxString& name);
    void KeepCategoryText(const wxString& text);

    void BindFields(wxWindow& parent);
    void OnFieldChar(wxKeyEvent& event);

    std::array<Field, kCardFieldCount> mFields;
    wxComboBox* mpCategory = nullptr;
    wxHyperlinkCtrl* mpSameFront = nullptr;
    // They stand below the front and the back.
    std::array<MediaStrip*, 2> mStrips{};
    std::array<wxWindow*, 2> mStripButtons{};
    Exclusion mForwardX;
    Exclusion mReverseX;
    wxBoxSizer* mpSchedules = nullptr;
    EditSchedulePanel* mpForwardSchedule = nullptr;
    EditSchedulePanel* mpReverseSchedule = nullptr;
};

// Checks what the user typed into the form and writes it into a card that is about to be stored.
// Pass a new card without an id: it takes every field from the form. Pass any other card as the
// store has it now: it keeps each field that the user did not touch. Carriage returns in typed
// texts become line feeds. The frame is the parent of questions.
//
// Returns 0, or -1 when the user was told of a fault or declined to create the category; the focus
// is then on the field in question. The card may hold some of the new values by then, and a
// category that was created stays.
int CollectCard(EditForm& form, Database& database, wxWindow& frame, FlashCard& card);

// The same for a form that shows many cards: writes what the user has touched into values. A blank
// introduction order becomes kBlankOrder.
int CollectTouched(EditForm& form, Database& database, wxWindow& frame, FlashCard& values);
