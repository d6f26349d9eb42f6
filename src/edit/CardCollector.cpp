#include "edit/EditForm.h"

#include <wx/intl.h>

#include <limits>
#include <list>

#include "base/Text.h"
#include "edit/EditSchedulePanel.h"
#include "shell/MessageBox.h"
#include "store/Database.h"

namespace {

constexpr const char* kDefaultCategory = "Default";

// Returns the text with line feeds only, as the store has it. Text pasted from elsewhere may end
// its lines with CR LF or CR.
wxString WithLineFeeds(wxString text) {
    text.Replace("\r\n", "\n");
    text.Replace("\r", "\n");
    return text;
}

// Checks the fields of a form, in order, up to the first fault. Each step returns 0, or -1 once the
// user has been told. Lives for one save.
class CardCollector {
  public:
    CardCollector(EditForm& form, Database& database, wxWindow& frame, FlashCard& card,
                  bool isForMany)
        : mForm(form), mDatabase(database), mFrame(frame), mCard(card), mIsForMany(isForMany) {}

    int Collect() {
        if (CollectSide(EditField::Front, mCard.Front, _("Flash cards cannot have a blank front")) <
                0 ||
            CollectSide(EditField::Back, mCard.Back, _("Flash cards cannot have a blank back")) <
                0) {
            return -1;
        }
        TakeText(EditField::Author, mCard.Author);
        TakeText(EditField::Chapter, mCard.Chapter);
        TakeText(EditField::Notes, mCard.Notes);
        mForm.TakeExclusions(mCard);
        if (mForm.GetForwardSchedule().Save(mCard.Forward) < 0 ||
            mForm.GetReverseSchedule().Save(mCard.Reverse) < 0) {
            return -1;
        }
        return CollectCategory() < 0 ? -1 : CollectOrder();
    }

  private:
    int Refuse(EditField field, const wxString& message) {
        ShowValidationMessage(message);
        mForm.PointAt(field);
        return -1;
    }

    // Returns true when the card takes the field from the form, and false when it keeps the
    // store's.
    bool IsOfForm(EditField field) const {
        return (mCard.CardId.IsZero() && !mIsForMany) || mForm.IsTouched(field);
    }
    bool StaysInMany(EditField field) const { return mIsForMany && !mForm.IsTouched(field); }

    void TakeText(EditField field, wxString& text) {
        if (IsOfForm(field)) {
            text = WithLineFeeds(mForm.GetTrimmed(field));
        }
    }

    int CollectSide(EditField field, wxString& side, const wxString& blankMessage) {
        TakeText(field, side);
        return TrimWide(side).empty() && !StaysInMany(field) ? Refuse(field, blankMessage) : 0;
    }

    int CollectCategory() {
        if (StaysInMany(EditField::Category)) {
            return 0;
        }
        // A card whose category is gone is shown in the default one, and so is saved there.
        if (!IsOfForm(EditField::Category) && HasCategory(mCard.CategoryId)) {
            return 0;
        }
        wxString name = mForm.GetTrimmed(EditField::Category);
        if (name.empty()) {
            name = kDefaultCategory;
        }
        // The name as it stands comes first, since one chosen from the list may hold a carriage
        // return.
        if (FindCategory(name) || FindCategory(WithLineFeeds(name))) {
            return 0;
        }
        name = WithLineFeeds(name);
        if (name != kDefaultCategory && !AskToCreate(name)) {
            mForm.PointAt(EditField::Category);
            return -1;
        }
        if (mDatabase.FindOrInsertCategory(name, mCard.CategoryId) < 0) {
            return Refuse(EditField::Category, _("Unable to add the category."));
        }
        return 0;
    }

    bool HasCategory(int32_t id) {
        std::list<Category> found;
        return mDatabase.SelectCategoryById(id, found) >= 0 && !found.empty();
    }

    // Puts the category of that name into the card. The store compares names by its own rules, in
    // which "7" and "007" are one. Returns false, with the card unchanged, when there is none.
    bool FindCategory(const wxString& name) {
        std::list<Category> found;
        if (mDatabase.SelectCategoryByName(name, found) < 0 || found.empty()) {
            return false;
        }
        mCard.CategoryId = found.front().Id;
        return true;
    }

    bool AskToCreate(const wxString& name) {
        const wxString question = wxString::Format(
            _("Category \"%s\" does not exist.  Would you like to create it?"), ShownName(name));
        return ShowMessageBox(question, _("Create Category?"), wxYES_NO, &mFrame) == wxYES;
    }

    int CollectOrder() {
        if (StaysInMany(EditField::IntroductionOrder)) {
            return 0;
        }
        if (!IsOfForm(EditField::IntroductionOrder) && mCard.IntroductionOrder != kBlankOrder) {
            return 0;
        }
        const wxString text = mForm.GetTrimmed(EditField::IntroductionOrder);
        if (text.empty()) {
            mCard.IntroductionOrder = mIsForMany ? kBlankOrder : NextOrder();
            return 0;
        }
        int32_t order = 0;
        if (!ParseWholeNumber(text, order) || order == kBlankOrder) {
            return Refuse(EditField::IntroductionOrder,
                          _("Introduction Order must be a whole number"));
        }
        mCard.IntroductionOrder = order;
        return 0;
    }

    // Returns the order that puts the card after all others of its category.
    int32_t NextOrder() {
        int32_t greatest = 0;
        if (mDatabase.SelectMaxIntroductionOrder(mCard.CategoryId, greatest) < 0) {
            return 1;
        }
        return greatest == std::numeric_limits<int32_t>::max() ? greatest : greatest + 1;
    }

    EditForm& mForm;
    Database& mDatabase;
    wxWindow& mFrame;
    FlashCard& mCard;
    // True for the values of many cards, of which only the touched ones are looked at.
    bool mIsForMany;
};

}  // namespace

int CollectCard(EditForm& form, Database& database, wxWindow& frame, FlashCard& card) {
    return CardCollector(form, database, frame, card, false).Collect();
}

int CollectTouched(EditForm& form, Database& database, wxWindow& frame, FlashCard& values) {
    return CardCollector(form, database, frame, values, true).Collect();
}
