#pragma once

#include <wx/bitmap.h>
#include <wx/frame.h>
#include <wx/modalhook.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

#include "scheduler/Scheduler.h"
#include "scheduler/StudyDay.h"
#include "store/CardUuid.h"
#include "store/Subject.h"
#include "study/StudySpeech.h"
#include "study/TypedAnswer.h"

class AppServices;
class BreakBar;
class CardViewer;
class CategoryList;
class DayBar;
class Database;
class PictureView;
class QuickScore;
class SoundPlayer;
class wxBoxSizer;
class wxDropDownWindow;
class wxPanel;
class wxStaticText;
class wxTextCtrl;

// The window in which the user works through the cards: the front of a card, its back, a score, the
// next card, and the way back through the cards scored last. Owns the Scheduler and is its only
// listener; the study step itself is never stored, it follows from the Scheduler and two fields
// here. The application makes at most one; like any frame, nobody owns it.
class StudyFrame : public wxFrame {
  public:
    enum ControlId : int { kQuickScoreId = 10006 };

    // The frame cannot be resized, minimized or maximized, whatever the style says. The services
    // are not owned and must outlive the frame.
    StudyFrame(AppServices& services, wxWindow* parent, wxWindowID id, const wxString& title,
               const wxPoint& position = wxDefaultPosition, const wxSize& size = wxDefaultSize,
               long style = wxDEFAULT_FRAME_STYLE | wxTAB_TRAVERSAL);
    ~StudyFrame() override;

    // Turns to another store, with a new Scheduler, an empty history and the same direction of
    // study. The Database is not owned. Null lets go of the present one.
    void SetDatabase(Database* database);
    // Call this when another computer's reviews have come into the log: the day counts them, too.
    void ReadLogAgain();
    // Tells something in the status bar until the next step of study.
    void ShowNote(const wxString& text);
    // Call this when the Database has another store than before: the history of scores ends, which
    // would give a card of the new store what one of the old one had.
    void ForgetStore();

    // Shows the state of the Scheduler anew. newCard says that the Scheduler has made a new choice:
    // the back is then covered even when it chose the same card again.
    void UpdateCard(bool newCard);

    // Uncovers the back of the current card.
    void ShowBack();

    // Applies the settings for font, colours and early introduction.
    void ApplySettings();

    bool Show(bool show = true) override;

    // Keeps the explanation of a menu entry or a tool in the status bar until it ends.
    void DoGiveHelp(const wxString& help, bool show) override;

  private:
    // Passes changes of the store and of the settings on to the frame.
    class ChangeObserver : public Observer {
      public:
        explicit ChangeObserver(StudyFrame& frame) : mFrame(frame) {}
        void Update(Subject* subject) override { mFrame.OnChange(subject); }

      private:
        StudyFrame& mFrame;
    };

    // Drops a press that is under way when a modal window opens, since the release goes there.
    class ModalWatch : public wxModalDialogHook {
      public:
        explicit ModalWatch(StudyFrame& frame) : mFrame(frame) { Register(); }
        ~ModalWatch() override { Unregister(); }

      protected:
        int Enter(wxDialog* dialog) override;
        void Exit(wxDialog* dialog) override;

      private:
        StudyFrame& mFrame;
    };

    // The break whose bar the user dismissed; End is invalid when there is none.
    struct DismissedBreak {
        int32_t CategoryId = -1;
        bool IsReverse = false;
        wxDateTime End;
    };

    // The card, its place in the history, whether the back is visible, and whether it is the
    // question.
    using StudyStep = std::tuple<CardUuid, int, bool, bool>;

    // Says what a command of the menus does, and how its entry is enabled or checked.
    void AddCommand(int id, const std::function<void(bool checked)>& run,
                    const std::function<void(wxUpdateUIEvent&)>& rule);
    void AddStudyCommands();
    void AddCardCommands();
    void AddAppearanceCommands();
    void AddTextSizeCommands();

    void CreateBars();
    void CreateContent();
    void RestoreLayout();
    void RebuildCover();

    bool HasCard() const { return mpScheduler != nullptr && mpScheduler->HasCard(); }
    bool IsRecent() const { return mpScheduler->GetHistoryIndex() >= 0; }
    bool IsBackVisible() const { return mBackShown || IsRecent(); }
    bool IsCompact() const;
    std::vector<int64_t> FindCurrentRow();

    // Forgets a press of a key or of the mouse that is under way, so that its release does nothing.
    void DropPresses();
    void ShowCardOrMessage(bool hasCard);
    // Returns the window that gets the keys while no other asks for them.
    wxWindow& KeyWindow();
    // Gives the keys to the scores or the message, whichever has just appeared.
    void TakeKeys();
    void UpdateMessage();
    void UpdateScoreLabels();
    // Tells for each score when the card would come back, once the back is visible.
    void UpdateForecast();
    // What a screen reader says for the score under the cursor.
    wxString SpokenScore() const;
    void UpdateScorePosition();
    void UpdateStatusTexts();
    void SetReadyText(const wxString& ready);
    void UpdateSides(const FlashCard& card);
    // Tells screen readers in words what the controls that paint themselves show.
    void TellAccessibility();

    void ApplyStudySettings();
    void SetCardLayout(int orientation);
    void SetCompactScoring(bool compact);
    void GrowToFit();
    // Sets how many steps the text is larger than the font of the settings, and keeps it.
    void SetTextStep(int32_t step);
    void OnDirection(bool reverse);
    void PutCardOnClipboard(bool cut);
    void ShowStatusBar(bool show);
    void OnChange(Subject* subject);

    // The bar of the break and the way to other categories; see StudyFrameCategories.cpp.
    // Tells in the status bar which category is studied, and how many new cards wait in it.
    void UpdateCategoryText();
    bool IsBreakDismissed() const;
    void UpdateBreakBar();
    void DismissBreak();
    void GoToNextDue();
    // True while the drop-down of the categories is open and has the keys.
    bool IsChoosingCategory() const;
    void CreateCategories();
    void ChooseCategory();

    // What is spoken; see StudyFrameSpeech.cpp.
    void AddSpeechCommands();
    void LookForSpeech();
    void SetSpoken(SpokenSides side, bool isSpoken);
    void UpdateSpeech(bool isNewQuestion);
    void ChooseVoices();

    // Pictures and sounds; see StudyFrameMedia.cpp.
    void AddMediaCommands();
    void SetPlaysSounds(bool plays);
    void PlaySounds(const std::vector<wxString>& names);
    // Returns the pictures on the screen.
    std::vector<wxString> FindPictures() const;
    // Shows a picture in the whole window, and the card again.
    void ShowPicture(const wxString& name);
    void ShowNextPicture();
    void HidePicture();

    // The measure of the day; see StudyFrameDay.cpp.
    void OpenDay();
    void OnDayCounted();
    void UpdateDay();
    void PlaceDayBar();
    // What the bar above the card says of a pause, or of a day that was enough; empty for nothing.
    wxString DayMessage();
    void DismissDayMessage();
    void ShowMoreToday();

    // Typing the answer; see StudyFrameAnswer.cpp.
    void CreateAnswer(wxSizer& sizer);
    // Whether the user types the answers of the present direction.
    bool TypesAnswer() const { return mTypesAnswer.at(mReverseStudy ? 1 : 0); }
    void SetTypesAnswer(bool types);
    // True while the field has the keys.
    bool IsTyping() const;
    void ForgetAnswer();
    void HideAnswer();
    void CheckTypedAnswer();
    // Shows the field, the line of differences, or neither.
    void UpdateAnswer();
    void ShowDifferences();
    void StyleAnswer(const wxFont& font, const wxColour& text);
    void OnAnswerKey(wxKeyEvent& event);
    void OnAnswerEnter(wxCommandEvent& event);

    void OnClose(wxCloseEvent& event);
    void OnActivate(wxActivateEvent& event);
    void OnCharHook(wxKeyEvent& event);
    void OnMenuOpen(wxMenuEvent& event);
    void OnMenuClose(wxMenuEvent& event);
    void OnSetFocus(wxFocusEvent& event);
    void OnChildFocus(wxChildFocusEvent& event);
    void OnNavigationKey(wxNavigationKeyEvent& event);
    void OnIdle(wxIdleEvent& event);
    void OnSystemColours(wxSysColourChangedEvent& event);
    void OnStatusBarSize(wxSizeEvent& event);
    void OnScoreCursor(wxCommandEvent& event);
    void OnScoreChosen(wxCommandEvent& event);
    void OnScorePageUp(wxCommandEvent& event);
    void OnScorePageDown(wxCommandEvent& event);
    void OnViewerClicked(wxCommandEvent& event);
    void OnBack(wxCommandEvent& event);
    void OnForward(wxCommandEvent& event);
    void OnExport();
    void OnEdit();
    void OnDelete();
    void DeleteCurrentCard();

    AppServices& mServices;
    wxToolBar* mpToolBar = nullptr;
    wxStatusBar* mpStatusBar = nullptr;
    // Its orientation is the compact scoring mode: horizontal while compact.
    wxBoxSizer* mpCardSizer = nullptr;
    CardViewer* mpCardViewer = nullptr;
    QuickScore* mpQuickScore = nullptr;
    // When the card would come back, by the position of the score; empty before the back is shown.
    std::vector<wxString> mReturns;
    wxTextCtrl* mpAnswerField = nullptr;
    wxStaticText* mpAnswerResult = nullptr;
    // Front to back, and back to front.
    std::array<bool, 2> mTypesAnswer{};
    // What came of the typed answer of the current card, and the side that it was compared with.
    std::optional<AnswerCheck> mAnswerCheck;
    wxString mAnswerSide;
    int mLastAnswerKey = 0;
    BreakBar* mpBreakBar = nullptr;
    // The offer in the bar; stale when the numbers of due cards may have changed.
    wxString mOffer;
    bool mIsOfferStale = true;
    DismissedBreak mDismissedBreak;
    // The drop-down of the categories, made when it is first opened.
    wxDropDownWindow* mpCategories = nullptr;
    CategoryList* mpCategoryList = nullptr;
    // Holds the message, and the focus while it is shown: without a focus the toolkit drops keys.
    wxPanel* mpMessagePanel = nullptr;
    wxStaticText* mpMessageText = nullptr;
    Database* mpDatabase = nullptr;
    // The log of the store under study, which the Scheduler writes.
    ReviewLog mReviewLog{wxString()};
    StudyDay mStudyDay;
    std::unique_ptr<Scheduler> mpScheduler;
    // Made when there is a measure for the day. It belongs to the status bar.
    DayBar* mpDayBar = nullptr;
    bool mIsPauseDismissed = false;
    // The day on which the user has dismissed that it is enough.
    int32_t mDismissedDay = -1;
    Speech mSpeech;
    bool mIsSpeechInstalled = Speech::IsInstalled();
    // Made for the first sound, and for the first picture in the whole window.
    std::unique_ptr<SoundPlayer> mpSoundPlayer;
    // Stands in the status bar until the next sound or step; empty for none.
    wxString mSoundFault;
    PictureView* mpPictureView = nullptr;
    StudySpeech mStudySpeech{mSpeech,
                             [this](const std::vector<wxString>& names) { PlaySounds(names); }};
    // The card for which mDefaultScore and mBackShown hold.
    CardUuid mCurrentCardId;
    // The score on which the cursor rests while the current card is studied.
    int32_t mDefaultScore = 3;
    bool mBackShown = false;
    bool mReverseStudy = false;
    // The step on the screen. A press was meant for it alone, and is dropped when it changes.
    StudyStep mShownStep;
    // The child that last held the keyboard focus.
    wxWindow* mpChildFocus = nullptr;
    wxBitmap mCoverBitmap;
    bool mGivingHelp = false;
    ChangeObserver mObserver{*this};
    ModalWatch mModalWatch{*this};
    SubjectAttachment mSettingsAttachment;
    SubjectAttachment mStoreAttachment;

    wxDECLARE_EVENT_TABLE();
};
