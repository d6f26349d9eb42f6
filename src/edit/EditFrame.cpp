#include "edit/EditFrame.h"

#include <wx/accel.h>
#include <wx/clipbrd.h>
#include <wx/display.h>
#include <wx/log.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/tokenzr.h>
#include <wx/toolbar.h>
#include <wx/utils.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <utility>
#include <vector>

#include "base/Job.h"
#include "base/Text.h"
#include "edit/CardLife.h"
#include "edit/EditForm.h"
#include "edit/EditSchedulePanel.h"
#include "edit/ManyCards.h"
#include "edit/SameFront.h"
#include "resources/ResourceBitmap.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/Forms.h"
#include "shell/MenuBar.h"
#include "shell/MessageBox.h"
#include "shell/ProgramInfo.h"
#include "shell/Settings.h"
#include "store/CardSort.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

constexpr int kToolBarId = 10108;

// The commands of other windows, and the one that the OK button stands for.
constexpr int kForeignCommands[] = {
    wxID_OPEN,  ID_STUDY_FORWARD, ID_STUDY_REVERSE, ID_CUSTOMIZE_MENU, ID_NEW_CATEGORY,
    wxID_NEW,   ID_SAVE_CLOSE,    wxID_FIND,        ID_OPEN_STORE,     ID_RECENT_STORES,
    ID_REPLACE, ID_DUPLICATES,    wxID_PRINT};

// The keys of the commands that the menus of the other windows show and this one's leave out.
const wxAcceleratorEntry kKeys[] = {{wxACCEL_CTRL, 'W', wxID_CLOSE},
                                    {wxACCEL_CTRL, 'Q', wxID_EXIT},
                                    {wxACCEL_CTRL, '1', ID_WINDOW_LIST},
                                    {wxACCEL_CTRL, '2', ID_WINDOW_STUDY},
                                    {wxACCEL_CTRL, 'F', wxID_FIND},
                                    {wxACCEL_CTRL, 'N', wxID_NEW},
                                    {wxACCEL_CTRL | wxACCEL_SHIFT, 'N', ID_NEW_CATEGORY},
                                    {wxACCEL_CTRL, 'E', wxID_OPEN}};

// Returns the name of the user, who is the author of new cards.
wxString GetOwnerName() {
    const wxString name = wxGetUserName();
    return name.empty() ? wxGetUserId() : name;
}

// Returns true for a line with a front, a tab or a dash between blanks, and a back.
bool IsCardLine(const wxString& line) {
    const wchar_t* const separators[] = {L"\t", L" - ", L" \u2013 ", L" \u2014 "};
    return std::any_of(std::begin(separators), std::end(separators), [&](const wchar_t* text) {
        const size_t place = line.find(text);
        return place != wxString::npos && !TrimWide(line.Left(place)).empty() &&
               !TrimWide(line.Mid(place + 1)).empty();
    });
}

// Returns the number of lines when each of them could be a card, and else 0.
int CountCardLines(const wxString& text) {
    const wxArrayString lines = wxStringTokenize(text, "\r\n", wxTOKEN_STRTOK);
    return std::all_of(lines.begin(), lines.end(), IsCardLine) ? static_cast<int>(lines.size()) : 0;
}

}  // namespace

EditFrame::EditFrame(AppServices& services)
    : wxFrame(nullptr, ID_WINDOW_EDIT, _("Edit - Velomind"), wxDefaultPosition, wxSize(400, 300),
              wxDEFAULT_FRAME_STYLE, "frame"),
      mServices(services) {
    InitFrame(*this, "editcard");
    TrimMenuBar();
    SetAcceleratorTable(wxAcceleratorTable(WXSIZEOF(kKeys), kKeys));
    CreateToolBar();
    CreateForm();
    ApplyFont();
    Centre(wxBOTH);
    RestoreWindowPosition(kSettingEditFramePosition, kApplicationName, *this);
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), this);
    BindCommands();
    mpForm->FocusFront();
}

EditFrame::~EditFrame() = default;

void EditFrame::TrimMenuBar() {
    for (const int id : kForeignCommands) {
        RemoveMenuItem(*GetMenuBar(), id);
    }
    RemoveMenuOf(*GetMenuBar(), ID_WINDOW_LIST);
}

void EditFrame::CreateToolBar() {
    auto* const bar = new wxToolBar(this, kToolBarId, wxDefaultPosition, wxDefaultSize,
                                    wxTB_HORIZONTAL | wxTB_FLAT | wxTB_TEXT);
    bar->SetToolBitmapSize(wxSize(16, 16));
    bar->AddTool(ID_SAVE_CLOSE, _("Save && Close"), LoadResourceBitmap("icons/save_tool.png"));
    bar->AddTool(ID_SAVE_NEW, _("Save && New"), LoadResourceBitmap("icons/save_new_tool.png"));
    bar->Realize();
    SetToolBar(bar);
}

// Makes the form, which scrolls, and below it the buttons, which stay in sight.
void EditFrame::CreateForm() {
    // Tab goes round within a panel.
    auto* const panel = new wxPanel(this);
    mpForm = new EditForm(panel);
    mpSameFront =
        std::make_unique<SameFront>(mServices, mpForm->GetFront(), mpForm->GetLinkBelowFront());
    auto* const column = new wxBoxSizer(wxVERTICAL);
    column->Add(mpForm, wxSizerFlags(1).Expand());
    column->Add(MakeOkCancel(*panel), wxSizerFlags().Expand().Border(wxALL, FromDIP(kFormEdge)));
    panel->SetSizer(column);
}

void EditFrame::BindCommands() {
    Bind(wxEVT_CLOSE_WINDOW, &EditFrame::OnClose, this);
    Bind(wxEVT_ACTIVATE, &EditFrame::OnActivate, this);
    Bind(wxEVT_CHAR_HOOK, &EditFrame::OnCharHook, this);
    const auto saveAndClose = [this](wxCommandEvent&) { SaveAndClose(); };
    Bind(wxEVT_BUTTON, saveAndClose, wxID_OK);
    Bind(wxEVT_MENU, saveAndClose, ID_SAVE_CLOSE);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { SaveAndNew(); }, ID_SAVE_NEW);
    const auto close = [this](wxCommandEvent&) { Close(false); };
    Bind(wxEVT_BUTTON, close, wxID_CANCEL);
    Bind(wxEVT_MENU, close, wxID_CLOSE);
    Bind(wxEVT_MENU, &EditFrame::OnExport, this, ID_EXPORT);
    Bind(wxEVT_TEXT_PASTE, &EditFrame::OnPaste, this);
    Bind(
        wxEVT_UPDATE_UI,
        [this](wxUpdateUIEvent& event) {
            event.Enable(mpDatabase != nullptr && !mpDatabase->IsEmpty());
        },
        ID_EXPORT);
}

void EditFrame::ApplyFont() {
    mpForm->SetTextFont(ReadFontSetting(kSettingBrowseFont));
    FitToForm();
}

// Grows the window to the size of the form. A form that is too tall for the screen scrolls, and the
// window then takes a good part of the screen's height, and no more of its width.
void EditFrame::FitToForm() {
    constexpr double kPartOfScreen = 0.75;
    wxSize largest = wxDisplay(this).GetClientArea().GetSize();
    largest.Scale(kPartOfScreen, kPartOfScreen);
    // The form itself has no least size, so this is what the buttons need.
    const int buttons = mpForm->GetParent()->GetSizer()->CalcMin().y;
    const int bars = ClientToWindowSize(wxSize(0, 0)).y;
    largest.y -= bars + buttons;
    wxSize content = mpForm->GetWantedSize(largest);
    content.y += buttons;
    content.IncTo(GetClientSize());
    SetClientSize(content);
}

void EditFrame::SetDatabase(Database* database) {
    if (database == mpDatabase) {
        return;
    }
    mpDatabase = database;
    mpSameFront->Watch(database, mCard.CardId);
    mpForm->SetStore(database == nullptr ? wxString() : database->GetPath());
    mStoreAttachment.Attach(database, this);
    if (database != nullptr) {
        Refresh();
    }
}

void EditFrame::SetCard(const FlashCard& card) {
    mCard = card;
    mpMany.reset();
    SetTitle(_("Edit - Velomind"));
    mpSameFront->Watch(mpDatabase, mCard.CardId);
    mpLife.reset();
    ShowReviews({});
    mpForm->SetStore(mpDatabase == nullptr ? wxString() : mpDatabase->GetPath());
    mpForm->Load(mCard, GetCategoryName(mCard.CategoryId));
}

void EditFrame::SetCards(const std::vector<int64_t>& rowIds) {
    mCard = FlashCard();
    mpMany = std::make_unique<ManyCards>(*mpDatabase, rowIds);
    // A front that many cards get is meant to be the same.
    mpSameFront->Watch(nullptr, CardUuid());
    FollowMany(true);
    FitToForm();
}

bool EditFrame::HasCards(const std::vector<int64_t>& rowIds) const {
    return mpMany != nullptr && mpMany->GetRowIds() == rowIds;
}

// Shows what the cards have in common by now.
void EditFrame::FollowMany(bool isFirst) {
    CommonCard common;
    if (mpMany->FindStored(*mpDatabase) < 0 ||
        mpDatabase->SelectCommonParts(mpMany->GetRowIds(), common) < 0 || common.Count == 0) {
        return;
    }
    SetTitle(wxString::Format(wxPLURAL("Edit %i Card - Velomind", "Edit %i Cards - Velomind",
                                       static_cast<unsigned>(common.Count)),
                              static_cast<int>(common.Count)));
    const wxString category = GetCategoryName(common.Card.CategoryId);
    mpForm->SetStore(mpDatabase->GetPath());
    isFirst ? mpForm->LoadMany(common, category) : mpForm->FollowMany(common, category);
}

// Shows the card as the store has it now.
void EditFrame::Follow(const FlashCard& stored) {
    mpForm->Follow(stored, GetCategoryName(stored.CategoryId));
    const std::pair reviewed(stored.Forward.LastReview, stored.Reverse.LastReview);
    if (mpLife == nullptr || reviewed != mLifeUntil) {
        mLifeUntil = reviewed;
        ReadLife();
    }
}

void EditFrame::New() {
    FlashCard card;
    card.CategoryId = mServices.GetCurrentCategoryId(*mpDatabase);
    card.IntroductionOrder = kBlankOrder;
    card.Author = GetOwnerName();
    SetCard(card);
}

wxString EditFrame::GetCategoryName(int32_t id) {
    std::list<Category> found;
    if (mpDatabase->SelectCategoryById(id, found) < 0) {
        wxLogError("%s", _("Unable to get category list"));
    }
    return found.empty() ? wxString("Default") : found.front().Name;
}

bool EditFrame::IsModified() const {
    return mpForm->IsModified();
}

void EditFrame::Update(Subject* subject) {
    if (subject == &mServices.GetSettingsNotifier()) {
        SaveWindowPosition(kSettingEditFramePosition, kApplicationName, *this);
        ApplyFont();
        RestoreWindowPosition(kSettingEditFramePosition, kApplicationName, *this);
    } else {
        Refresh();
    }
}

int EditFrame::FindStored(std::list<FlashCard>& found) {
    return mpDatabase->SelectCardById(mCard.CardId, found);
}

void EditFrame::StayIfGone() {
    std::list<FlashCard> found;
    mIsGone =
        !IsNew() && mpMany == nullptr && IsModified() && FindStored(found) >= 0 && found.empty();
}

void EditFrame::Refresh() {
    std::list<FlashCard> found;
    if (!IsNew() && mpMany == nullptr) {
        if (FindStored(found) < 0) {
            wxLogError("%s", _("Unable to search for card"));
        } else if (found.empty() && !mIsGone) {
            // The card was deleted in another window.
            Leave();
            return;
        }
    }
    std::list<Category> categories;
    if (mpDatabase->SelectAllCategories(categories) < 0) {
        wxLogError("%s", _("Unable to get category list"));
        return;
    }
    SortByName(categories);
    mpForm->SetCategories(categories);
    if (mpMany != nullptr) {
        FollowMany(false);
        if (mpMany->IsEmpty()) {
            Leave();
            return;
        }
    }
    if (!found.empty()) {
        Follow(found.front());
    }
}

// Reads the card again when the user comes back to this window, since a score notifies nobody. A
// failure is silent: closing its message would activate the window and bring the message back for
// ever. A save reports it.
void EditFrame::FollowStored() {
    std::list<FlashCard> found;
    if (mpMany != nullptr) {
        FollowMany(false);
    } else if (!IsNew() && FindStored(found) >= 0 && !found.empty()) {
        Follow(found.front());
    }
}

void EditFrame::ReadLife() {
    mpLife.reset();
    const wxString path = ReviewLogPath(mpDatabase->GetPath());
    mpLife = std::make_unique<Job>(
        [this, path, id = mCard.CardId](const std::atomic<bool>& isCancelled) {
            mReviews = ReadCardReviews(path, id, isCancelled);
        },
        [this] { CallAfter(&EditFrame::ShowLife); });
    // Without a thread the plots stay as they are.
    mpLife->Start();
}

void EditFrame::ShowLife() {
    // The card may have turned to a new one meanwhile, or be read again.
    if (mHasLeft || mpLife == nullptr || !mpLife->IsFinished()) {
        return;
    }
    mpLife->Join();
    const wxString failure = mpLife->TakeFailure();
    if (failure.empty()) {
        ShowReviews(mReviews);
    } else {
        wxLogError("%s", failure);
    }
}

// Shows a plot beside both schedules, so that their fields stay side by side, or beside neither. A
// window that shows the whole form grows with it. One that the user made smaller stays so.
void EditFrame::ShowReviews(const std::vector<ReviewRecord>& reviews) {
    const bool showsAll = mpForm->GetVirtualSize().y <= mpForm->GetClientSize().y;
    const auto show = [&reviews](EditSchedulePanel& panel, ReviewDirection direction) {
        return panel.ShowLife(MakeCardLifePlot(_("Reviews of this card"), reviews, direction),
                              !reviews.empty());
    };
    const bool forward = show(mpForm->GetForwardSchedule(), kReviewForward);
    const bool reverse = show(mpForm->GetReverseSchedule(), kReviewReverse);
    if (forward || reverse) {
        if (showsAll) {
            FitToForm();
        }
        mpForm->FitInside();
    }
}

int EditFrame::Save() {
    if (mpMany != nullptr) {
        return SaveMany();
    }
    mServices.BackUpDay(this);
    FlashCard card = mCard;
    std::list<FlashCard> found;
    if (!IsNew()) {
        if (FindStored(found) < 0 || (found.empty() && !mIsGone)) {
            ShowValidationMessage(
                _("The flash card is no longer in the store, so it was not saved."));
            return -1;
        }
        card = found.empty() ? mCard : found.front();
    }
    if (CollectCard(*mpForm, *mpDatabase, *this, card) < 0) {
        return -1;
    }
    Database& database = *mpDatabase;
    FollowCard(card.CategoryId);
    // A write that fails is reported by the store itself.
    if (!found.empty()) {
        database.UpdateDifferences(found.front(), card);
    } else if (!IsNew() || GenerateUuid(card.CardId) == 0) {
        database.InsertFlashCard(card);
    } else {
        ShowValidationMessage(_("No id could be made for the new card, so it was not saved."));
        return -1;
    }
    mCard = card;
    mIsGone = false;
    NoteStep(found);
    database.Notify();
    mServices.CardSaved(card.CardId);
    return 0;
}

void EditFrame::FollowCard(int32_t categoryId) {
    // A card in a category below the current one is in view already.
    if (ReadBooleanSetting(kSettingFollowSavedCards) &&
        !mServices.GetCurrentChoice(*mpDatabase).Has(categoryId)) {
        mServices.SetCurrentCategoryId(*mpDatabase, categoryId);
    }
}

// Writes what was touched into all cards that are still in the store.
int EditFrame::SaveMany() {
    mServices.BackUpDay(this);
    Database& database = *mpDatabase;
    if (mpMany->FindStored(database) < 0 || mpMany->IsEmpty()) {
        ShowValidationMessage(
            _("The flash cards are no longer in the store, so they were not"
              " saved."));
        return -1;
    }
    FlashCard values;
    if (CollectTouched(*mpForm, database, *this, values) < 0) {
        return -1;
    }
    const CardParts parts = mpForm->GetTouched();
    StoreChange change;
    wxString notice;
    {
        const wxBusyCursor busy;
        // The store itself reports a failure; the other cards are changed all the same.
        mpMany->Write(database, values, parts, change);
        notice = DescribeWithoutUndo(change);
        mServices.GetUndoHistory().Add(std::move(change));
        if (HasPart(parts, CardPart::kCategory)) {
            FollowCard(values.CategoryId);
        }
        database.Notify();
    }
    if (mpMany->CountGone() > 0) {
        const auto gone = static_cast<unsigned>(mpMany->CountGone());
        notice = wxString::Format(wxPLURAL("%i of the cards is no longer in the store.",
                                           "%i of the cards are no longer in the store.", gone),
                                  static_cast<int>(gone)) +
                 (notice.empty() ? "" : "\n") + notice;
    }
    if (!notice.empty()) {
        ShowValidationMessage(notice);
    }
    return 0;
}

// Lets the list take the save back. The card before it is none for a new one. Reads the card again,
// as the store may have changed its values.
void EditFrame::NoteStep(const std::list<FlashCard>& before) {
    std::list<FlashCard> after;
    if (FindStored(after) >= 0 && !after.empty()) {
        mServices.GetUndoHistory().Add(before.empty() ? NoteNewCard(after.front())
                                                      : NoteEdit(before.front(), after.front()));
    }
}

void EditFrame::SaveAndClose() {
    if (!IsModified() || Save() == 0) {
        Leave();
    }
}

void EditFrame::SaveAndNew() {
    if (Save() == 0 && !mHasLeft) {
        const FlashCard saved = mCard;
        New();
        if (!saved.CardId.IsZero()) {
            // The next card belongs where this one does.
            FlashCard next = mCard;
            next.CategoryId = saved.CategoryId;
            next.Chapter = saved.Chapter;
            SetCard(next);
        }
    }
    mpForm->FocusFront();
}

// Lets go of everything at once: the toolkit deletes the frame at the next idle moment, and the
// store may be gone before that.
void EditFrame::Leave() {
    if (mHasLeft) {
        return;
    }
    mHasLeft = true;
    SaveWindowPosition(kSettingEditFramePosition, kApplicationName, *this);
    mSettingsAttachment.Detach();
    SetDatabase(nullptr);
    mServices.FrameClosed(*this);
    Destroy();
}

bool EditFrame::MayLeaveCard() {
    if (!IsModified()) {
        return true;
    }
    const wxString question = mpMany == nullptr
                                  ? _("Do you want to save changes to this flash card?")
                                  : _("Do you want to save changes to these flash cards?");
    const int answer = ShowMessageBox(question, kApplicationName, wxYES_NO | wxCANCEL, this);
    return answer == wxNO || (answer == wxYES && Save() == 0);
}

void EditFrame::OnClose(wxCloseEvent& event) {
    if (event.CanVeto() && !MayLeaveCard()) {
        event.Veto();
        return;
    }
    Leave();
}

// Shows the card that the list has some rows further on. The present place in the list counts, as a
// save may move the card.
void EditFrame::GoToNeighbour(int step) {
    FlashCard next;
    if (mCard.CardId.IsZero() || !mServices.FindNeighbour(mCard.CardId, step, next) ||
        !MayLeaveCard() || mHasLeft) {
        return;
    }
    std::list<FlashCard> found;
    if (mpDatabase->SelectCardById(next.CardId, found) >= 0 && !found.empty()) {
        SetCard(found.front());
        FollowStored();
        mServices.CardSaved(next.CardId);
    }
}

void EditFrame::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (event.GetActive() && !mHasLeft) {
        mServices.FrameActivated(*this);
        FollowStored();
    }
}

// Takes the keys of the two saves before a text field sees them, which would insert a line break.
void EditFrame::OnCharHook(wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    const bool isEnter = key == WXK_RETURN || key == WXK_NUMPAD_ENTER;
    if (isEnter && event.GetModifiers() == wxMOD_CONTROL) {
        SaveAndClose();
    } else if (isEnter && event.GetModifiers() == wxMOD_ALT) {
        SaveAndNew();
    } else if ((key == WXK_PAGEDOWN || key == WXK_PAGEUP) &&
               event.GetModifiers() == wxMOD_CONTROL) {
        GoToNeighbour(key == WXK_PAGEDOWN ? 1 : -1);
    } else {
        event.Skip();
    }
}

// A list of fronts and backs that goes into an empty new card may be meant as so many cards.
void EditFrame::OnPaste(wxClipboardTextEvent& event) {
    event.Skip();
    auto* const field = dynamic_cast<wxWindow*>(event.GetEventObject());
    const bool isFront = field != nullptr && field->GetId() == EditForm::ID_FRONT;
    if (mPastesText || !isFront || !IsNew() || !mpForm->GetTrimmed(EditField::Front).empty() ||
        !mpForm->GetTrimmed(EditField::Back).empty()) {
        return;
    }
    wxTextDataObject data;
    const wxClipboardLocker lock;
    if (!!lock && wxTheClipboard->GetData(data) && CountCardLines(data.GetText()) > 1) {
        event.Skip(false);
        // The toolkit is in the middle of the paste.
        CallAfter([this, field, text = data.GetText()] { OfferToImport(*field, text); });
    }
}

void EditFrame::OfferToImport(wxWindow& field, const wxString& text) {
    const int lines = CountCardLines(text);
    const int answer = ShowMessageBox(
        wxString::Format(wxPLURAL("The text has %i line with a front and a back. Do you want to"
                                  " make a card of it?",
                                  "The text has %i lines with a front and a back. Do you want to"
                                  " make a card of each?",
                                  static_cast<unsigned>(lines)),
                         lines),
        _("Paste"), wxYES_NO | wxCANCEL, this);
    if (answer == wxYES) {
        mServices.ImportText(*this, text);
    } else if (answer == wxNO) {
        mPastesText = true;
        dynamic_cast<wxTextEntry&>(field).Paste();
        mPastesText = false;
    }
}

void EditFrame::OnExport(wxCommandEvent&) {
    std::vector<int64_t> rowIds = mpMany == nullptr ? std::vector<int64_t>() : mpMany->GetRowIds();
    if (mpMany == nullptr) {
        // A failure is reported by the store itself.
        mpDatabase->SelectRowIdById(mCard.CardId, rowIds);
    }
    mServices.ExportCards(*this, rowIds, AppServices::OfferFirst::kSelection);
}
