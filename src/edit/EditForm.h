#pragma once

#include <wx/scrolwin.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>

#include "store/FlashCard.h"

class EditSchedulePanel;
class wxBoxSizer;
class wxCheckBox;
class wxComboBox;
class wxTextEntry;

// The texts of the editor's form, in their order on it.
enum class CardField : size_t { Front, Back, Category, Author, Chapter, Notes, IntroductionOrder };
constexpr size_t kCardFieldCount = 7;

// Stands for a blank introduction order; never stored.
constexpr int32_t kBlankOrder = std::numeric_limits<int32_t>::min();

// The editor's fields, one long column that scrolls, with the buttons OK and Cancel at its end. It
// shows a card and tells what the person made of it; it knows neither store nor application. Lives
// in its frame, which owns it.
class EditForm : public wxScrolledWindow {
  public:
    explicit EditForm(wxWindow* parent);

    void Load(const FlashCard& card, const wxString& categoryName);

    // Shows the card as the store has it by now, in each field that the user has not touched. None
    // of them counts as touched by that, and the keys stay where they are.
    void Follow(const FlashCard& card, const wxString& categoryName);

    // Whether the user has touched anything: a control differs from what was put into it last.
    bool IsModified() const;
    bool IsTouched(CardField field) const;

    // A field's text without the white space at its ends. A text that was left as it was loaded is
    // the card's own, also where the toolkit cannot show every character of it.
    wxString GetTrimmed(CardField field) const;
    // Writes the exclusions that the user has touched into the card.
    void TakeExclusions(FlashCard& card) const;
    EditSchedulePanel& GetForwardSchedule() { return *mpForwardSchedule; }
    EditSchedulePanel& GetReverseSchedule() { return *mpReverseSchedule; }

    void FocusFront();
    // Gives a field the keys, with its text selected.
    void PointAt(CardField field);

    // Brings the choice of categories up to date, whatever stands in the field. Only a text that
    // names a row of the choice follows that row to its new name.
    void SetCategories(const std::list<Category>& categories);

    // The font of the texts. The order and the schedules keep the window's.
    void SetTextFont(const wxFont& font);

  private:
    // One text field. Its control is seen through the interface that all of them share.
    struct Field {
        wxWindow* Control = nullptr;
        wxTextEntry* Entry = nullptr;
        // The text that was put into the control last, and the card's own that it stands for.
        wxString Loaded;
        wxString Own;
    };
    struct Exclusion {
        wxCheckBox* Control = nullptr;
        bool Loaded = false;

        bool IsTouched() const;
        void Load(bool excluded);
    };
    using Texts = std::array<wxString, kCardFieldCount>;

    Field& At(CardField field) { return mFields.at(static_cast<size_t>(field)); }
    const Field& At(CardField field) const { return mFields.at(static_cast<size_t>(field)); }

    static Texts GetTexts(const FlashCard& card, const wxString& categoryName);

    void AddField(wxBoxSizer& column, CardField field);
    wxCheckBox* AddExclusion(wxBoxSizer& column, int id, const wxString& label,
                             const wxString& toolTip);
    void AddButtons(wxBoxSizer& column);
    void LoadField(CardField field, const wxString& own);
    void FollowField(CardField field, const wxString& own);
    void RenameRow(unsigned row, const wxString& name);
    void KeepCategoryText(const wxString& text);

    void BindFields(wxWindow& parent);
    void OnFieldChar(wxKeyEvent& event);

    std::array<Field, kCardFieldCount> mFields;
    wxComboBox* mpCategory = nullptr;
    Exclusion mForwardX;
    Exclusion mReverseX;
    EditSchedulePanel* mpForwardSchedule = nullptr;
    EditSchedulePanel* mpReverseSchedule = nullptr;
};
