#include "list/BrowseFrame.h"

#include <wx/button.h>
#include <wx/dcclient.h>
#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/srchctrl.h>
#include <wx/stattext.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstddef>

#include "base/Text.h"
#include "categories/DropDown.h"
#include "list/SearchWords.h"
#include "shell/Settings.h"
#include "shell/TextUndo.h"
#include "shell/Toolkit.h"
#include "store/SearchQuery.h"

// The search field of the list window and its menu: what is typed, chosen and kept.

namespace {

constexpr size_t kMost = 5;

constexpr int kSearchWidth = 200;
constexpr int kWidestSearch = 400;
constexpr int kSearchCharacters = 30;

// How long the user types nothing before the list follows the search field, in milliseconds.
constexpr int kTypingPause = 200;
// A search that takes no longer is not broken off.
constexpr int kShortSearch = 50;

const wxString& OldestSearch() {
    static const wxString text(L"\u65e5\u672c\u8a9e");
    return text;
}

// A search field whose menu opens below it. On Wayland the library counts the place of the menu
// from the corner of the surrounding window and not of the field; the window around the field opens
// a menu in the right place on every platform.
class SearchField : public wxSearchCtrl {
  public:
    using wxSearchCtrl::wxSearchCtrl;

  protected:
    bool DoPopupMenu(wxMenu* menu, int x, int y) override {
        // A menu has one invoking window at a time, and gets the other one here.
        menu->SetInvokingWindow(nullptr);
        return GetParent()->PopupMenu(menu, GetPosition() + wxPoint(x, y));
    }
};

}  // namespace

bool RecentSearches::Add(const wxString& text) {
    const auto found = std::find(mTexts.begin(), mTexts.end(), text);
    if (found == mTexts.end()) {
        mTexts.insert(mTexts.begin(), text);
        mTexts.resize(std::min(mTexts.size(), kMost));
        return true;
    }
    if (found == mTexts.begin()) {
        return false;
    }
    std::rotate(mTexts.begin(), found, found + 1);
    return true;
}

void RecentSearches::Read() {
    Add(OldestSearch());
    std::vector<wxString> stored = ReadRecentTexts(kSettingRecentSearch);
    stored.resize(std::min(stored.size(), kMost - 1));
    for (auto text = stored.rbegin(); text != stored.rend(); ++text) {
        Add(*text);
    }
}

void RecentSearches::Write() const {
    std::vector<wxString> texts = mTexts;
    texts.erase(std::remove(texts.begin(), texts.end(), OldestSearch()), texts.end());
    WriteRecentTexts(kSettingRecentSearch, texts);
}

void BrowseFrame::BuildSearchField(wxSizer& row) {
    mpSearchCtrl =
        new SearchField(this, kSearchId, wxString(), wxDefaultPosition, wxSize(kSearchWidth, -1),
                        wxTE_PROCESS_ENTER, wxDefaultValidator, "searchCtrl");
    mpSearchCtrl->ShowSearchButton(true);
    mpSearchCtrl->SetMinSize(wxSize(kSearchWidth, -1));
    mpSearchCtrl->SetMaxSize(wxSize(kWidestSearch, -1));
    SetAccessibleName(*mpSearchCtrl, _("Search"));
    TextUndo::AttachTo(*mpSearchCtrl);
    row.Add(mpSearchCtrl, 5, wxEXPAND);
    mpSearchMenuButton = new wxDropDownButton(this, kSearchMenuId, wxString(), "searchMenuButton");
    mpSearchMenuButton->SetToolTip(_("Recent Searches"));
    SetAccessibleName(*mpSearchMenuButton, _("Recent Searches"));
    row.Add(mpSearchMenuButton, 0, wxEXPAND);

    // Bound to the field and not to this window, because the field handles some of these events and
    // does not pass them on.
    mpSearchCtrl->Bind(wxEVT_TEXT, &BrowseFrame::OnSearchText, this);
    mTyping.Bind(wxEVT_TIMER, &BrowseFrame::OnSearchPause, this);
    mpSearchCtrl->Bind(wxEVT_TEXT_ENTER, &BrowseFrame::OnSearchEnter, this);
    mpSearchCtrl->Bind(wxEVT_SEARCH_CANCEL, [this](wxCommandEvent&) { ClearSearch(); });
    Bind(wxEVT_MENU, &BrowseFrame::OnRecentSearch, this, kFirstRecentId, kLastRecentId);
    Bind(wxEVT_MENU, &BrowseFrame::OnSearchAll, this, kSearchAllId);
    Bind(wxEVT_MENU, &BrowseFrame::OnExactSearch, this, kExactSearchId);
    Bind(wxEVT_MENU, &BrowseFrame::OnState, this, kFirstStateId, kLastStateId);
    mpSearchMenuButton->Bind(wxEVT_BUTTON,
                             [this](wxCommandEvent&) { mpSearchCtrl->PopupSearchMenu(); });
}

void BrowseFrame::UseFont() {
    const wxFont font = ReadFontSetting(kSettingBrowseFont);
    mpSearchCtrl->SetFont(font);
    mpButton->SetFont(font);
    mpStudyButton->SetFont(font);
    wxClientDC dc(mpSearchCtrl);
    dc.SetFont(font);
    const int width = kSearchCharacters * dc.GetCharWidth();
    mpSearchCtrl->SetMinSize(wxSize(width, -1));
    mpSearchCtrl->SetMaxSize(wxSize(std::max(width, kWidestSearch), -1));
    Layout();
}

void BrowseFrame::AddRecentSearch(const wxString& text) {
    if (mRecentSearches.Add(text)) {
        mRecentSearches.Write();
        RebuildSearchMenu();
    }
}

void BrowseFrame::RebuildSearchMenu() {
    auto* const menu = new wxMenu;
    menu->Append(wxID_ANY, _("Recent Searches"))->Enable(false);
    int id = kFirstRecentId;
    for (const wxString& text : mRecentSearches.GetTexts()) {
        menu->Append(id++, wxControl::EscapeMnemonics(ShownName(text)));
    }
    menu->AppendSeparator();
    for (id = kFirstStateId; id <= kLastStateId; ++id) {
        menu->AppendCheckItem(id, NameOfState(static_cast<CardState>(id - kFirstStateId)));
    }
    menu->AppendSeparator();
    menu->AppendCheckItem(kExactSearchId, _("Exact Search"));
    menu->AppendCheckItem(kSearchAllId, _("Search in All Categories"))->Check(mSearchAll);
    mpSearchCtrl->SetMenu(menu);
    ShowStates();
}

// Ticks the mode and the states that the text in the field asks for.
void BrowseFrame::ShowStates() {
    mpSearchCtrl->GetMenu()->Check(kExactSearchId, mIsSearchExact);
    const SearchQuery query = SearchQuery::Words(mpSearchCtrl->GetValue());
    for (int id = kFirstStateId; id <= kLastStateId; ++id) {
        wxMenuItem& item = *mpSearchCtrl->GetMenu()->FindItem(id);
        const auto state = static_cast<CardState>(id - kFirstStateId);
        item.Check(!mIsSearchExact && query.Requires(state));
        item.Enable(!mIsSearchExact);
    }
}

// Says below the field which word means nothing. Returns false then: the list stays as it is.
bool BrowseFrame::CheckSearch(const wxString& text) {
    const wxString problem = mIsSearchExact ? wxString() : SearchQuery::Words(text).GetProblem();
    if (problem != mpSearchProblem->GetLabelText()) {
        mpSearchProblem->SetLabelText(problem);
        mpSearchProblem->Wrap(GetClientSize().GetWidth() - 2 * FromDIP(kGap));
        mpSearchProblem->Show(!problem.empty());
        Layout();
    }
    return problem.empty();
}

bool BrowseFrame::Search(const wxString& text) {
    mTyping.Stop();
    mpSearchCtrl->SelectAll();
    const bool isGood = CheckSearch(text);
    if (isGood) {
        mpCardList->SetSearch(text, mIsSearchExact);
    }
    return isGood;
}

void BrowseFrame::ClearSearch() {
    const wxBusyCursor busy;
    mpSearchCtrl->Clear();
    mTyping.Stop();
    CheckSearch(wxString());
    mpCardList->SetSearch(wxString(), mIsSearchExact);
}

void BrowseFrame::SetSearchAll(bool all) {
    const wxBusyCursor busy;
    mSearchAll = all;
    mpSearchCtrl->GetMenu()->Check(kSearchAllId, all);
    mpSearchCtrl->SetDescriptiveText(all ? _("Search in All Categories") : _("Search"));
    mpCardList->SetSearchAll(all);
}

// Lists the cards of the chosen category instead of every card of the store. A search goes on over
// all categories.
void BrowseFrame::ShowChosenCategory() {
    if (mSearchAll && mpSearchCtrl->IsEmpty()) {
        SetSearchAll(false);
    }
}

void BrowseFrame::OnSearchText(wxCommandEvent& event) {
    event.Skip();
    mpSearchCtrl->ShowCancelButton(!mpSearchCtrl->IsEmpty());
    mEntered.clear();
    ShowStates();
    mTyping.StartOnce(kTypingPause);
}

// Breaks a search off that takes long when the user goes on, and begins it again after the next
// pause. The text stays as it is and is not kept among the recent ones.
void BrowseFrame::OnSearchPause(wxTimerEvent&) {
    const wxLongLong begin = wxGetUTCTimeMillis();
    const auto isStopped = [begin] {
        return wxGetUTCTimeMillis() - begin > kShortSearch && HasInputWaiting();
    };
    const wxString text = mpSearchCtrl->GetValue();
    if (CheckSearch(text) && !mpCardList->TrySearch(text, mIsSearchExact, isStopped)) {
        mTyping.StartOnce(kTypingPause);
    }
}

void BrowseFrame::OnSearchEnter(wxCommandEvent&) {
    const wxBusyCursor busy;
    const wxString text = mpSearchCtrl->GetValue();
    if (!text.empty() && text == mEntered && mpCardList->GetCardCount() == 1) {
        mpCardList->EditSelected();
        return;
    }
    const bool isGood = Search(text);
    mEntered = isGood ? text : wxString();
    if (isGood && !text.empty()) {
        AddRecentSearch(text);
    }
}

void BrowseFrame::OnRecentSearch(wxCommandEvent& event) {
    const auto position = static_cast<size_t>(event.GetId() - kFirstRecentId);
    const std::vector<wxString>& texts = mRecentSearches.GetTexts();
    if (position < texts.size()) {
        const wxBusyCursor busy;
        mpSearchCtrl->SetValue(texts[position]);
        Search(texts[position]);
    }
}

void BrowseFrame::OnSearchAll(wxCommandEvent& event) {
    SetSearchAll(event.IsChecked());
    // The pointer had left the keys with the button that opens the menu.
    GiveKeysTo(*mpSearchCtrl);
}

void BrowseFrame::OnExactSearch(wxCommandEvent& event) {
    const wxBusyCursor busy;
    mIsSearchExact = event.IsChecked();
    WriteBooleanSetting(kSettingExactSearch, mIsSearchExact);
    ShowStates();
    Search(mpSearchCtrl->GetValue());
}

// A tick in the menu is a word in the field.
void BrowseFrame::OnState(wxCommandEvent& event) {
    const wxBusyCursor busy;
    const auto state = static_cast<CardState>(event.GetId() - kFirstStateId);
    mpSearchCtrl->SetValue(
        SearchQuery::Words(mpSearchCtrl->GetValue()).WithState(state, event.IsChecked()));
    Search(mpSearchCtrl->GetValue());
}
