#include "study/StudyFrame.h"

#include <wx/accel.h>
#include <wx/panel.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>
#include <wx/toolbar.h>
#include <wx/utils.h>

#include <algorithm>
#include <cmath>
#include <list>

#include "base/Process.h"
#include "base/Text.h"
#include "categories/CategoryList.h"
#include "media/windows/SoundPlayer.h"
#include "resources/ResourceBitmap.h"
#include "shell/AppServices.h"
#include "shell/CommandIds.h"
#include "shell/MenuBar.h"
#include "shell/Settings.h"
#include "shell/StudySettings.h"
#include "shell/Toolkit.h"
#include "study/CardViewer.h"
#include "study/QuickScore.h"
#include "study/StudyPanels.h"
#include "study/StudyTexts.h"

namespace {

constexpr int kStatusBarId = 10099;
// The tool bar and the viewer share it.
constexpr int kPanelId = 12000;

constexpr int kHighestScore = kScoreCount - 1;
constexpr int kStartScore = 3;

constexpr int kMessageWidth = 230;
// Lines of text, in any font, that both sides of a card together always have room for.
constexpr int kLeastLines = 4;
// Characters of a side that are told to a screen reader, about two hours of speech.
constexpr size_t kMostSpoken = 100000;
// Logical pixels around the scores.
constexpr int kScoreBorder = 6;
constexpr int kNormalMargin = 1;
constexpr int kCompactMargin = 3;

const char* const kSettingsName = "Velomind";

// In less room the words on the scores are cut, or no line of a card is seen.
const wxSize kSmallestSize(240, 320);

// Further keys for menu entries, besides those that the entries show. Ctrl+W stands for the entry
// that this window leaves out.
const wxAcceleratorEntry kKeys[] = {{wxACCEL_CTRL, 'W', wxID_CLOSE},
                                    {wxACCEL_CTRL, 'Q', wxID_EXIT},
                                    {wxACCEL_CTRL, '=', wxID_ZOOM_IN},
                                    {wxACCEL_CTRL, WXK_NUMPAD_ADD, wxID_ZOOM_IN},
                                    {wxACCEL_CTRL, WXK_NUMPAD_SUBTRACT, wxID_ZOOM_OUT},
                                    {wxACCEL_CTRL, WXK_NUMPAD0, wxID_ZOOM_100},
                                    // Its entry is grey without a speech service.
                                    {wxACCEL_NORMAL, WXK_F8, ID_SPEAK_AGAIN}};

// Each step makes the text of the cards a tenth larger.
constexpr double kTextStep = 1.1;
constexpr double kSmallestText = 4.0;
constexpr double kLargestText = 300.0;

// The font of the settings at the size that the user has chosen in this window.
wxFont CardFont() {
    wxFont font = ReadFontSetting(kSettingFont);
    const int32_t step = ReadIntegerSetting(kSettingStudyTextStep);
    if (step != 0) {
        const double size = font.GetFractionalPointSize() * std::pow(kTextStep, step);
        font.SetFractionalPointSize(std::clamp(size, kSmallestText, kLargestText));
    }
    return font;
}

// A hidden window would take the focus and lose the keys.
void GiveFocus(wxWindow& window) {
    if (window.IsShownOnScreen()) {
        window.SetFocus();
    }
}

}  // namespace

wxBEGIN_EVENT_TABLE(StudyFrame, wxFrame)
    EVT_CLOSE(StudyFrame::OnClose)
    EVT_ACTIVATE(StudyFrame::OnActivate)
    EVT_CHAR_HOOK(StudyFrame::OnCharHook)
    EVT_MENU_OPEN(StudyFrame::OnMenuOpen)
    EVT_MENU_CLOSE(StudyFrame::OnMenuClose)
    EVT_LISTBOX(kQuickScoreId, StudyFrame::OnScoreCursor)
    EVT_LISTBOX_DCLICK(kQuickScoreId, StudyFrame::OnScoreChosen)
    EVT_COMMAND(kQuickScoreId, EVT_QUICKSCORE_PAGE_UP, StudyFrame::OnScorePageUp)
    EVT_COMMAND(kQuickScoreId, EVT_QUICKSCORE_PAGE_DOWN, StudyFrame::OnScorePageDown)
    EVT_MENU(wxID_BACKWARD, StudyFrame::OnBack)
    EVT_MENU(wxID_FORWARD, StudyFrame::OnForward)
    EVT_BUTTON(kPanelId, StudyFrame::OnViewerClicked)
    EVT_SET_FOCUS(StudyFrame::OnSetFocus)
    EVT_CHILD_FOCUS(StudyFrame::OnChildFocus)
    EVT_NAVIGATION_KEY(StudyFrame::OnNavigationKey)
    EVT_IDLE(StudyFrame::OnIdle)
    EVT_SYS_COLOUR_CHANGED(StudyFrame::OnSystemColours)
wxEND_EVENT_TABLE()

StudyFrame::StudyFrame(AppServices& services, wxWindow* parent, wxWindowID id,
                       const wxString& title, const wxPoint& position, const wxSize& size,
                       long style)
    : mServices(services), mStudyDay(services.GetClock()) {
    SetExtraStyle(wxFRAME_EX_METAL);
    Create(parent, id, title, position, size, style);
    InitFrame(*this, "study_window");
    AddStudyEntries(*GetMenuBar());
    SetAcceleratorTable(wxAcceleratorTable(WXSIZEOF(kKeys), kKeys));
    for (const int command : {int{ID_SAVE_CLOSE}, int{ID_SAVE_NEW}, int{ID_REPLACE},
                              int{ID_DUPLICATES}, int{wxID_PRINT}}) {
        RemoveMenuItem(*GetMenuBar(), command);
    }
    AddStudyCommands();
    AddCardCommands();
    AddAppearanceCommands();
    AddSpeechCommands();
    AddTextSizeCommands();
    CreateBars();
    CreateContent();
    AddMediaCommands();
    ApplySettings();
    RestoreLayout();
    mpChildFocus = mpQuickScore;
    SetMinSize(FromDIP(kSmallestSize));
    Centre(wxBOTH);
    RestoreWindowPosition(kSettingStudyFramePosition, kSettingsName, *this);
    mSettingsAttachment.Attach(&mServices.GetSettingsNotifier(), &mObserver);
}

StudyFrame::~StudyFrame() = default;

void StudyFrame::CreateBars() {
    // The pictures say enough; tips and screen readers have the words.
    mpToolBar = new wxToolBar(this, kPanelId, wxDefaultPosition, wxDefaultSize,
                              wxTB_HORIZONTAL | wxTB_NODIVIDER, "toolbar");
    mpToolBar->SetToolBitmapSize(wxSize(16, 16));
    // Both the tool's tip and the help in the status bar.
    const wxString backHelp = _("View the previous flash card");
    mpToolBar->AddTool(wxID_BACKWARD, wxGETTEXT_IN_CONTEXT("navigation", "Back"),
                       LoadResourceBitmap("icons/back_tool.png"), wxBitmapBundle(), wxITEM_NORMAL,
                       backHelp, backHelp);
    const wxString forwardHelp = _("View the next flash card");
    mpToolBar->AddTool(wxID_FORWARD, _("Forward"), LoadResourceBitmap("icons/forward_tool.png"),
                       wxBitmapBundle(), wxITEM_NORMAL, forwardHelp, forwardHelp);
    mpToolBar->Realize();
    NameTools(*mpToolBar);
    SetToolBar(mpToolBar);

    mpStatusBar = new wxStatusBar(this, kStatusBarId, wxSTB_DEFAULT_STYLE, "statusBar");
    mpStatusBar->SetFieldsCount(3);
    // The letters of some languages come from a taller font than that of the window.
    mpStatusBar->SetMinHeight(mpStatusBar->GetTextExtent(_("Try to remember")).y);
    SetStatusBar(mpStatusBar);
    mpStatusBar->Bind(wxEVT_SIZE, &StudyFrame::OnStatusBarSize, this);
}

void StudyFrame::CreateContent() {
    auto* const sizer = new wxBoxSizer(wxVERTICAL);
    SetSizer(sizer);

    mpBreakBar = new BreakBar(this);
    sizer->Add(mpBreakBar, wxSizerFlags().Expand());
    mpBreakBar->Hide();
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { GoToNextDue(); }, ID_NEXT_DUE_CATEGORY);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { ShowMoreToday(); }, ID_SHOW_MORE_TODAY);
    Bind(
        wxEVT_BUTTON, [this](wxCommandEvent&) { DismissBreak(); }, wxID_CLOSE);

    mpCardSizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(mpCardSizer, wxSizerFlags(1).Expand());

    mpCardViewer = new CardViewer(this, kPanelId, wxDefaultPosition, wxDefaultSize,
                                  wxBORDER_NONE | wxHSCROLL | wxVSCROLL, "panel");
    mpCardViewer->SetScrollRate(0, 1);
    // It has no use for keys and would not show that it has the focus.
    mpCardViewer->SetCanFocus(false);
    auto* const card = new wxBoxSizer(wxVERTICAL);
    mpCardSizer->Add(card, wxSizerFlags(1).Expand());
    card->Add(mpCardViewer, wxSizerFlags(1).Expand());
    CreateAnswer(*card);

    mpQuickScore = new QuickScore(this, kQuickScoreId, wxDefaultPosition, wxSize(100, 100),
                                  wxBORDER_NONE | wxWANTS_CHARS, "panel");
    mpCardSizer->Add(mpQuickScore, wxSizerFlags().Expand().Border(wxALL, FromDIP(kScoreBorder)));
    // The menu key arrives here, where the focus is, but the menu belongs to the card.
    mpQuickScore->Bind(wxEVT_CONTEXT_MENU, [this](wxContextMenuEvent& event) {
        if (event.GetPosition() == wxDefaultPosition) {
            mpCardViewer->ProcessWindowEvent(event);
        }
    });

    mpMessagePanel = new wxPanel(this);
    mpMessagePanel->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    mpMessageText =
        new wxStaticText(mpMessagePanel, wxID_STATIC, _("Static text"), wxDefaultPosition,
                         wxDefaultSize, wxALIGN_CENTRE, "staticText");
    // A static text draws at the top of its area, so spacers above and below centre it.
    auto* const messageSizer = new wxBoxSizer(wxVERTICAL);
    messageSizer->AddStretchSpacer();
    messageSizer->Add(mpMessageText, wxSizerFlags().Expand().Border(wxALL, 5));
    messageSizer->AddStretchSpacer();
    mpMessagePanel->SetSizer(messageSizer);
    sizer->Add(mpMessagePanel, wxSizerFlags(1).Expand());
    mpMessagePanel->Hide();
    mpMessageText->Wrap(kMessageWidth);

    mpQuickScore->SetMargin(kNormalMargin);
    const ScoreLabels labels = GetScoreLabels(false);
    mpQuickScore->SetItems(labels.data(), labels.size());
    mpQuickScore->ReserveNotes(WidestReturnTexts());
}

void StudyFrame::RestoreLayout() {
    // A stored "horizontal" is not restored: every start opens in the vertical layout.
    if (LowerWide(ReadStringSetting(kSettingCardLayout)) == "vertical") {
        SetCardLayout(wxVERTICAL);
    }
    SetCompactScoring(ReadBooleanSetting(kSettingCompactScoring));
}

void StudyFrame::RebuildCover() {
    mCoverBitmap = MakeStudyCover(ReadColourSetting(kSettingStudyBgColor));
}

bool StudyFrame::Show(bool show) {
    // Without a focus the platform would choose the first tool of the tool bar.
    if (show && !IsShown() && mpChildFocus->IsShown()) {
        mpChildFocus->SetFocus();
    }
    const bool isChanged = wxFrame::Show(show);
    UpdateSpeech(false);
    return isChanged;
}

void StudyFrame::SetDatabase(Database* database) {
    if (database == mpDatabase) {
        return;
    }
    mStoreAttachment.Detach();
    mpDatabase = database;
    if (mpCategoryList != nullptr) {
        mpCategoryList->SetDatabase(database);
    }
    if (database == nullptr) {
        mpScheduler.reset();
        mStudySpeech.Leave();
        mStudyDay.Open(nullptr, nullptr);
        return;
    }
    OpenDay();
    const Scheduler::Sources sources{mServices,
                                     mServices.GetMaintenancePrompt(),
                                     mServices.GetClock(),
                                     mServices.GetReviewRandom(),
                                     &mReviewLog,
                                     &mStudyDay};
    mpScheduler = std::make_unique<Scheduler>(*database, sources);
    ApplyStudySettings();
    if (mReverseStudy) {
        mpScheduler->SetDirections(kReviewReverse);
    }
    mpScheduler->AddListener([this](int change) { UpdateCard(change == 1); });
    mStoreAttachment.Attach(database, &mObserver);
    UpdateCard(false);
}

void StudyFrame::ReadLogAgain() {
    if (mpScheduler != nullptr) {
        OpenDay();
        mpScheduler->ReadLog();
    }
}

void StudyFrame::ShowNote(const wxString& text) {
    mpStatusBar->SetStatusText(text, kStepField);
}

void StudyFrame::ForgetStore() {
    if (mpScheduler != nullptr) {
        OpenDay();
        mpScheduler->Initialise();
    }
}

void StudyFrame::UpdateCard(bool newCard) {
    if (mpScheduler == nullptr) {
        return;
    }
    const bool hasCard = HasCard();
    HidePicture();
    ShowCardOrMessage(hasCard);
    StudyStep step;
    if (hasCard) {
        const FlashCard& card = mpScheduler->GetCurrentCard();
        if (!IsRecent() && (card.CardId != mCurrentCardId || newCard)) {
            mDefaultScore = kStartScore;
            mBackShown = false;
            mCurrentCardId = card.CardId;
            ForgetAnswer();
        }
        step = {card.CardId, mpScheduler->GetHistoryIndex(), IsBackVisible(), mReverseStudy};
        if (step != mShownStep) {
            mSoundFault.clear();
        }
        UpdateScoreLabels();
        UpdateScorePosition();
        UpdateForecast();
        UpdateStatusTexts();
        UpdateSides(card);
        TellAccessibility();
    } else {
        UpdateMessage();
    }
    UpdateAnswer();
    UpdateSpeech(newCard);
    UpdateCategoryText();
    UpdateDay();
    UpdateBreakBar();
    if (step != mShownStep) {
        DropPresses();
        mShownStep = step;
    }
    const wxWindow* const focus = FindFocus();
    if (focus == nullptr || focus == this) {
        GiveFocus(KeyWindow());
    }
}

void StudyFrame::DropPresses() {
    mpQuickScore->DropPress();
    mpCardViewer->DropPress();
}

wxWindow& StudyFrame::KeyWindow() {
    if (mpMessagePanel->IsShown()) {
        return *mpMessagePanel;
    }
    if (mpAnswerField->IsShown()) {
        return *mpAnswerField;
    }
    return *mpQuickScore;
}

void StudyFrame::ShowCardOrMessage(bool hasCard) {
    wxSizer* const sizer = GetSizer();
    if (sizer->IsShown(mpCardSizer) != hasCard || mpMessagePanel->IsShown() == hasCard) {
        sizer->Show(mpCardSizer, hasCard);
        // Shows all that the sizer holds; UpdateAnswer knows better.
        HideAnswer();
        sizer->Show(mpMessagePanel, !hasCard);
        Layout();
        TakeKeys();
    }
}

void StudyFrame::TakeKeys() {
    if (IsChoosingCategory()) {
        return;
    }
    mpChildFocus = &KeyWindow();
    if (IsActive()) {
        GiveFocus(*mpChildFocus);
    }
}

void StudyFrame::UpdateMessage() {
    wxString message;
    if (mpScheduler->IsStoreEmpty()) {
        message = StoreEmptyMessage();
    } else if (mpScheduler->IsCategoryEmpty()) {
        message = CategoryEmptyMessage();
    } else if (mpScheduler->HoldsNewCards()) {
        message = NewCardsHeldMessage();
    } else {
        std::list<Category> categories;
        mpDatabase->SelectAllCategories(categories);
        message = categories.size() < 2 ? AllExcludedMessage() : CategoryExcludedMessage();
    }
    mpMessageText->SetLabel(message);
    mpMessageText->Wrap(kMessageWidth);
    SetAccessibleName(*mpMessagePanel, message);
    SetAccessibleRole(*mpMessagePanel, AccessibleRole::Label);
    mpMessagePanel->Layout();
    // The text of the step stays. There is no count to tell.
    SetReadyText(wxString());
    mServices.SetStudyMessage(message);
}

void StudyFrame::UpdateScoreLabels() {
    if (!IsBackVisible()) {
        mpQuickScore->SetAllStrings(ShowBackLabel(IsCompact()));
        mpQuickScore->SetToolTip(_("Show the back side of this flash card."));
        return;
    }
    mpQuickScore->SetStrings(GetScoreLabels(IsCompact()).data());
    mpQuickScore->SetToolTip(SelectScoreTip());
}

void StudyFrame::UpdateForecast() {
    mReturns.clear();
    std::vector<wxString> tips;
    if (IsBackVisible()) {
        const ScoreLabels labels = GetScoreLabels(false);
        for (size_t i = 0; i < labels.size(); ++i) {
            const int score = kHighestScore - static_cast<int>(i);
            mReturns.push_back(ReturnText(mpScheduler->PredictInterval(score)));
            tips.push_back(SelectScoreTip() + "\n" + labels.at(i) + ": " + mReturns.at(i));
        }
    }
    mpQuickScore->SetNotes(IsCompact() ? std::vector<wxString>() : mReturns);
    mpQuickScore->SetItemTips(IsCompact() ? tips : std::vector<wxString>());
}

wxString StudyFrame::SpokenScore() const {
    const auto position = static_cast<size_t>(mpQuickScore->GetSelection());
    const wxString label = mpQuickScore->GetStringSelection();
    return position < mReturns.size() ? label + ", " + mReturns[position] : label;
}

void StudyFrame::UpdateScorePosition() {
    if (IsRecent()) {
        const int recorded = kHighestScore - mpScheduler->GetShownScore();
        // A card that was never scored in this direction has no recorded score.
        const int position = recorded < kScoreCount ? recorded : wxNOT_FOUND;
        mpQuickScore->SetSelection(position);
        mpQuickScore->SetMark(position);
        return;
    }
    mpQuickScore->SetSelection(kHighestScore - mDefaultScore);
    mpQuickScore->ClearMark();
    mpCardViewer->SetHint(mBackShown ? _("This is the back of a flash card")
                                     : _("The back side of this flash card is hidden"));
}

void StudyFrame::TellAccessibility() {
    const wxString& second =
        IsBackVisible() ? mpCardViewer->GetSecondText() : mpCardViewer->GetHint();
    SetAccessibleName(*mpCardViewer, mpCardViewer->GetFirstText().Left(kMostSpoken) + "\n" +
                                         second.Left(kMostSpoken));
    SetAccessibleName(*mpQuickScore, SpokenScore());
    SetAccessibleRole(*mpQuickScore, AccessibleRole::Button);
}

void StudyFrame::UpdateStatusTexts() {
    mpStatusBar->SetStatusText(
        mSoundFault.empty() ? StudyStepText(*mpScheduler, mBackShown, *mpStatusBar) : mSoundFault,
        kStepField);
    SetReadyText(StudyReadyText(*mpScheduler, *mpStatusBar));
}

void StudyFrame::SetReadyText(const wxString& ready) {
    SetHelpText(ready);
    mpQuickScore->SetHelpText(ready);
    mpCardViewer->SetHelpText(ready);
    mpStatusBar->SetHelpText(ready);
}

void StudyFrame::UpdateSides(const FlashCard& card) {
    mpCardViewer->SetStore(mpDatabase->GetPath());
    mpCardViewer->SetFirstText(mReverseStudy ? card.Back : card.Front);
    if (IsBackVisible()) {
        mpCardViewer->SetSecondText(mReverseStudy ? card.Front : card.Back);
        mpCardViewer->SetSecondCover(wxNullBitmap);
    } else {
        mpCardViewer->SetSecondText(wxString());
        mpCardViewer->SetSecondCover(mCoverBitmap);
    }
    // Setting the cover does not repaint the viewer.
    mpCardViewer->Refresh();
}

void StudyFrame::ShowBack() {
    if (!mBackShown && HasCard()) {
        CheckTypedAnswer();
        mBackShown = true;
        UpdateCard(false);
        mpCardViewer->ScrollToSecond();
    }
}

void StudyFrame::ApplySettings() {
    const wxFont font = CardFont();
    mpCardViewer->SetFont(font);
    mpCardViewer->SetMinSize(wxSize(-1, kLeastLines * mpCardViewer->GetCharHeight()));
    GrowToFit();
    const wxColour text = ReadColourSetting(kSettingFontColor);
    mpCardViewer->SetFirstColour(text);
    mpCardViewer->SetSecondColour(text);
    // The scores lie on the card, as a strip of another colour would tell nothing.
    const wxColour ground = ReadColourSetting(kSettingStudyBgColor);
    for (wxWindow* const window :
         {static_cast<wxWindow*>(this), static_cast<wxWindow*>(mpCardViewer),
          static_cast<wxWindow*>(mpQuickScore)}) {
        window->SetBackgroundColour(ground);
        window->Refresh();
    }
    RebuildCover();
    if (mpCardViewer->IsSecondCovered()) {
        mpCardViewer->SetSecondCover(mCoverBitmap);
    }
    StyleAnswer(font, text);
    ApplyStudySettings();
}

void StudyFrame::ApplyStudySettings() {
    if (mpScheduler != nullptr) {
        mpScheduler->SetEarlyIntroduction(ReadBooleanSetting(kSettingEarlyIntroduction));
        mpScheduler->SetEarlyIntroductionInterval(
            ReadIntegerSetting(kSettingEarlyIntroductionInterval));
        mpScheduler->SetRelearnShare(ReadIntegerSetting(kSettingRelearnShare));
    }
}

bool StudyFrame::IsCompact() const {
    return mpCardSizer->GetOrientation() == wxHORIZONTAL;
}

void StudyFrame::SetCompactScoring(bool compact) {
    if (compact == IsCompact()) {
        return;
    }
    mpCardSizer->SetOrientation(compact ? wxHORIZONTAL : wxVERTICAL);
    mpQuickScore->ReserveNotes(compact ? std::vector<wxString>() : WidestReturnTexts());
    mpQuickScore->SetMargin(compact ? kCompactMargin : kNormalMargin);
    const ScoreLabels labels = GetScoreLabels(compact);
    mpQuickScore->SetItems(labels.data(), labels.size());
    if (mpScheduler == nullptr || !IsBackVisible()) {
        mpQuickScore->SetAllStrings(ShowBackLabel(compact));
    }
    if (HasCard()) {
        UpdateScoreLabels();
        UpdateForecast();
    }
    GrowToFit();
    Layout();
    mpQuickScore->Refresh();
    WriteBooleanSetting(kSettingCompactScoring, compact);
}

void StudyFrame::GrowToFit() {
    if (IsMaximized()) {
        return;
    }
    // The frame never shrinks here: the viewer asks for little, and the user may have made more
    // room.
    wxSize size = GetSize();
    size.IncTo(GetSizer()->ComputeFittingWindowSize(this));
    size.DecTo(wxGetClientDisplayRect().GetSize());
    SetSize(size);
}

void StudyFrame::OnChange(Subject* subject) {
    if (subject == mpDatabase && mpScheduler != nullptr) {
        mIsOfferStale = true;
        mpScheduler->Refresh();
        mpCardViewer->LookForPictures();
    } else if (subject == &mServices.GetSettingsNotifier()) {
        ApplySettings();
        mStudyDay.SetLimits(ReadDayLimits());
        UpdateDay();
        if (HasCard()) {
            UpdateForecast();
        } else if (mpScheduler != nullptr) {
            mpScheduler->Refresh();
        }
    }
}

void StudyFrame::OnClose(wxCloseEvent& event) {
    event.Skip();
    mServices.FrameClosed(*this);
    SaveWindowPosition(kSettingStudyFramePosition, kSettingsName, *this);
    WriteStringSetting(kSettingLastWindow, "Study");
    // The frame lives until the next idle moment, perhaps longer than the store.
    SetDatabase(nullptr);
    mSettingsAttachment.Detach();
}

void StudyFrame::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (IsBeingDeleted()) {
        return;
    }
    if (event.GetActive()) {
        mServices.FrameActivated(*this);
        GiveFocus(*mpChildFocus);
        mpQuickScore->ResumeKeys();
        // Time has passed for the card on show.
        if (HasCard()) {
            UpdateForecast();
            mIsOfferStale = true;
            UpdateDay();
            UpdateBreakBar();
        } else if (mpScheduler != nullptr && mStudyDay.GetLimits().NewCards > 0) {
            // Another day may have begun, which has room for new cards.
            mpScheduler->Refresh();
        }
    } else {
        DropPresses();
    }
}

void StudyFrame::OnMenuOpen(wxMenuEvent& event) {
    event.Skip();
    DropPresses();
    LookForSpeech();
}

void StudyFrame::OnMenuClose(wxMenuEvent& event) {
    event.Skip();
    mpQuickScore->ResumeKeys();
}

int StudyFrame::ModalWatch::Enter(wxDialog* /*dialog*/) {
    mFrame.DropPresses();
    return wxID_NONE;
}

void StudyFrame::ModalWatch::Exit(wxDialog* /*dialog*/) {
    mFrame.mpQuickScore->ResumeKeys();
}

void StudyFrame::OnSetFocus(wxFocusEvent& /*event*/) {
    GiveFocus(*mpChildFocus);
}

void StudyFrame::OnChildFocus(wxChildFocusEvent& event) {
    wxWindow* const window = event.GetWindow() == this ? &KeyWindow() : event.GetWindow();
    if (window != mpChildFocus) {
        VELOMIND_TRACE("StudyFrame::OnChildFocus updating mpChildFocus %s",
                       window->GetClassInfo()->GetClassName());
        mpChildFocus = window;
    }
}

void StudyFrame::OnNavigationKey(wxNavigationKeyEvent& /*event*/) {
    GiveFocus(IsTyping() ? *mpQuickScore : KeyWindow());
}

void StudyFrame::OnSystemColours(wxSysColourChangedEvent& event) {
    event.Skip();
    mpMessagePanel->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
    mpBreakBar->UseColours();
    ApplySettings();
    UpdateCard(false);
}

void StudyFrame::OnStatusBarSize(wxSizeEvent& event) {
    event.Skip();
    PlaceDayBar();
    if (HasCard()) {
        UpdateStatusTexts();
    }
}

void StudyFrame::DoGiveHelp(const wxString& help, bool show) {
    mGivingHelp = show;
    wxFrame::DoGiveHelp(help, show);
}

void StudyFrame::OnIdle(wxIdleEvent& event) {
    event.Skip();
    // The ready text is the help text of the window and of everything in it except the tools.
    const wxString help = GetHelpText();
    if (!mGivingHelp && mpStatusBar->GetStatusText(kReadyField) != help) {
        mpStatusBar->SetStatusText(help, kReadyField);
    }
}

void StudyFrame::OnScoreCursor(wxCommandEvent& /*event*/) {
    SetAccessibleName(*mpQuickScore, SpokenScore());
    if (mpScheduler != nullptr && !mpScheduler->GetCurrentCardId().IsZero() && !IsRecent()) {
        mDefaultScore = kHighestScore - mpQuickScore->GetSelection();
    }
}

void StudyFrame::OnScoreChosen(wxCommandEvent& event) {
    if (mpScheduler == nullptr || mpScheduler->GetCurrentCardId().IsZero()) {
        return;
    }
    if (!IsBackVisible()) {
        ShowBack();
        return;
    }
    if (IsRecent()) {
        RescoreMessageBox question(this);
        if (question.ShowModal() == wxNO) {
            UpdateCard(false);
            return;
        }
    }
    const CardUuid card = mpScheduler->GetCurrentCardId();
    mServices.BackUpDay(this);
    if (mpScheduler == nullptr || mpScheduler->GetCurrentCardId() != card) {
        return;
    }
    const wxBusyCursor busy(wxHOURGLASS_CURSOR);
    mpScheduler->ScoreCard(kHighestScore - mpQuickScore->GetSelection());
    if (IsRecent()) {
        const int step = event.GetExtraLong() == wxID_FORWARD ? -1 : 1;
        mpScheduler->SetHistoryIndex(mpScheduler->GetHistoryIndex() + step);
    }
    mpCardViewer->ScrollToTop();
}

void StudyFrame::OnScorePageUp(wxCommandEvent& /*event*/) {
    mpCardViewer->PageUp();
}

void StudyFrame::OnScorePageDown(wxCommandEvent& /*event*/) {
    mpCardViewer->PageDown();
}

void StudyFrame::OnViewerClicked(wxCommandEvent& /*event*/) {
    ShowBack();
}

void StudyFrame::OnBack(wxCommandEvent& /*event*/) {
    if (mpScheduler != nullptr) {
        mpScheduler->SetHistoryIndex(mpScheduler->GetHistoryIndex() + 1);
        mpCardViewer->ScrollToTop();
    }
}

void StudyFrame::OnForward(wxCommandEvent& /*event*/) {
    if (mpScheduler == nullptr) {
        return;
    }
    if (!IsBackVisible()) {
        ShowBack();
        return;
    }
    mpScheduler->SetHistoryIndex(mpScheduler->GetHistoryIndex() - 1);
    mpCardViewer->ScrollToTop();
}
