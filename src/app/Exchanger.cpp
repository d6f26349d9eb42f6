#include "app/Exchanger.h"

#include <wx/event.h>
#include <wx/intl.h>
#include <wx/msgdlg.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "base/Time.h"
#include "base/Unicode.h"
#include "shell/ExchangeSettings.h"
#include "shell/MessageBox.h"
#include "store/Database.h"

namespace {

constexpr int kLookMilliseconds = 5000;
// A pause of study has begun when nobody was seen for so long.
constexpr int64_t kPauseSeconds = 300;
// While an exchange writes, the windows wait for the store as long as they have to.
constexpr int kPatienceMilliseconds = 600000;
// An exchange that was asked to stop may still be just before its end.
constexpr unsigned long kLastMilliseconds = 200;
constexpr size_t kMostNames = 3;
constexpr int64_t kDayMilliseconds = 86400000;
// A computer that is used every day sends news once a day.
constexpr int64_t kQuietDays = 2;

// An exchange succeeds also while nothing carries the folder, which the user has to see.
wxString NameOf(const ExchangeMachine& machine, int64_t now) {
    const wxString name = FromUtf8(machine.Name);
    const int64_t days = (now - machine.LastNews) / kDayMilliseconds;
    return days < kQuietDays
               ? name
               : wxString::Format(wxPLURAL("%s (no news for %i day)", "%s (no news for %i days)",
                                           static_cast<unsigned>(days)),
                                  name, static_cast<int>(days));
}

wxString NamesOf(const std::vector<ExchangeMachine>& machines, int64_t now) {
    std::vector<ExchangeMachine> known;
    std::copy_if(machines.begin(), machines.end(), std::back_inserter(known),
                 [](const ExchangeMachine& each) { return each.LastNews > 0; });
    std::sort(known.begin(), known.end(), [](const ExchangeMachine& a, const ExchangeMachine& b) {
        return a.LastNews > b.LastNews;
    });
    // One that left and came back is another computer of the same name.
    std::set<std::string> told;
    wxString names;
    for (const ExchangeMachine& each : known) {
        if (told.count(each.Name) == 0 && told.size() == kMostNames) {
            return names + ", ...";
        }
        if (told.insert(each.Name).second) {
            names << (told.size() == 1 ? "" : ", ") << NameOf(each, now);
        }
    }
    return names;
}

}  // namespace

wxString ExchangedText(int64_t secondsAgo, const std::vector<ExchangeMachine>& machines,
                       int64_t now) {
    const wxString names = NamesOf(machines, now);
    if (names.empty()) {
        return _("Exchanged; no other computer takes part yet");
    }
    const auto minutes = static_cast<int>(std::max<int64_t>(secondsAgo, 0) / 60);
    const int hours = minutes / 60;
    if (minutes == 0) {
        return wxString::Format(_("Exchanged just now with %s"), names);
    }
    return hours == 0 ? wxString::Format(wxPLURAL("Exchanged %i minute ago with %s",
                                                  "Exchanged %i minutes ago with %s",
                                                  static_cast<unsigned>(minutes)),
                                         minutes, names)
                      : wxString::Format(wxPLURAL("Exchanged %i hour ago with %s",
                                                  "Exchanged %i hours ago with %s",
                                                  static_cast<unsigned>(hours)),
                                         hours, names);
}

namespace {

// Asks a question with two answers and a way out. Returns wxID_YES, wxID_NO or wxID_CANCEL.
int AskOf(wxWindow* parent, const wxString& question, const wxString& yes, const wxString& no) {
    wxMessageDialog dialog(parent, question, _("Exchange"), wxYES_NO | wxCANCEL | wxYES_DEFAULT);
    dialog.SetYesNoLabels(yes, no);
    return dialog.ShowModal();
}

int AskWhichStands(wxWindow* parent, const wxString& question) {
    return AskOf(parent, question, _("Bring Up to Date"), _("Take This State for All"));
}

// Tells what each of the two answers does, as that depends on where the cards were lost.
wxString QuestionOf(const ExchangeReport& report) {
    const auto count = static_cast<int>(report.Asked);
    if (report.Question == ExchangeQuestion::kGoneBack) {
        return _(
            "The cards here are those of an earlier time, such as those of a backup. Other "
            "computers have newer ones.\n\nShould the cards here be brought up to date with "
            "those of the other computers? Or should the other computers take the state that "
            "the cards have here?");
    }
    if (report.IsLostHere) {
        return wxString::Format(wxPLURAL("%i card was deleted or reset on this computer.",
                                         "%i cards were deleted or reset on this computer.",
                                         static_cast<unsigned>(count)),
                                count) +
               "\n\n" +
               _("\"Bring Up to Date\" puts them back as they are on the other computers. \"Take "
                 "This State for All\" deletes or resets them there as well.");
    }
    return wxString::Format(
               wxPLURAL("%i card was deleted on another computer.",
                        "%i cards were deleted on another computer.", static_cast<unsigned>(count)),
               count) +
           "\n\n" +
           _("\"Bring Up to Date\" deletes them here as well. \"Take This State for All\" keeps "
             "them and puts them back on the other computers.");
}

}  // namespace

bool AskExchangeQuestion(wxWindow* parent, const ExchangeReport& report, ExchangeOptions& options) {
    const auto count = static_cast<int>(report.Asked);
    if (report.Question == ExchangeQuestion::kEqualCards) {
        const int answer = AskOf(
            parent,
            wxString::Format(wxPLURAL("%i card here is equal to a card of another computer.",
                                      "%i cards here are equal to cards of another computer.",
                                      static_cast<unsigned>(count)),
                             count) +
                "\n\n" +
                _("Should each become one with its equal, with the reviews of both? Else you will "
                  "have both of them. Your answer holds for all computers."),
            _("Make Them One"), _("Keep Both"));
        if (answer != wxID_CANCEL) {
            options.JoinsEqualCards = answer == wxID_YES;
        }
        return answer != wxID_CANCEL;
    }
    const int answer = AskWhichStands(parent, QuestionOf(report));
    if (answer != wxID_CANCEL) {
        options.Answer =
            answer == wxID_YES ? ExchangeAnswer::kTakeNewer : ExchangeAnswer::kTakeMine;
    }
    return answer != wxID_CANCEL;
}

Exchanger::Exchanger(Surroundings surroundings) : mSurroundings(std::move(surroundings)) {
    wxEvtHandler::AddFilter(this);
}

Exchanger::~Exchanger() {
    wxEvtHandler::RemoveFilter(this);
    mpJob.reset();
}

int Exchanger::FilterEvent(wxEvent& event) {
    const wxEventType type = event.GetEventType();
    if (type == wxEVT_CHAR_HOOK || type == wxEVT_LEFT_DOWN) {
        NoteUse();
    }
    return Event_Skip;
}

void Exchanger::NoteUse() {
    mLastUse = mSurroundings.Time.Now();
}

void Exchanger::StartLooking() {
    wxTimer::Start(kLookMilliseconds);
    mIsWanted = true;
    Look();
}

void Exchanger::Look() {
    const wxDateTime now = mSurroundings.Time.Now();
    if (mLastUse.IsValid() && mLastUse > now) {
        // The clock was set back.
        mLastUse = now;
    }
    const bool isPause = mLastUse.IsValid() && SecondsBetween(mLastUse, now) >= kPauseSeconds;
    if (!IsRunning() && (mIsWanted || isPause) && !mSurroundings.IsDialogOpen()) {
        Begin(nullptr);
    }
    ShowState();
}

void Exchanger::ExchangeNow() {
    mIsAsked = true;
    if (!IsRunning()) {
        Begin(nullptr);
    }
    ShowState();
}

void Exchanger::Begin(const ExchangeOptions* answered) {
    const ExchangeSetUp setUp = ReadExchangeSetUp(mSurroundings.Store.GetPath());
    mIsWanted = false;
    mLastUse = wxInvalidDateTime;
    if (setUp.Folder.empty() || !mSurroundings.Store.IsOpen()) {
        mIsAsked = false;
        return;
    }
    mOptions = answered != nullptr ? *answered : ExchangeOptions();
    mOptions.StorePath = mSurroundings.Store.GetPath();
    mOptions.Folder = setUp.Folder;
    mOptions.Name = setUp.Name;
    mOptions.Time = &mSurroundings.Time;
    mOptions.BackUp = mSurroundings.BackUp;
    mReport = ExchangeReport();
    mWasEmpty = mSurroundings.Store.IsEmpty();
    mSurroundings.Store.SetPatience(kPatienceMilliseconds);
    mpJob = std::make_unique<Job>(
        [this](const std::atomic<bool>& isCancelled) {
            mOptions.IsCancelled = &isCancelled;
            mReport = mSurroundings.Run(mOptions);
        },
        [this] {
            mEnded.Post();
            CallAfter(&Exchanger::OnEnd);
        });
    if (!mpJob->Start()) {
        mEnded.Post();
        CallAfter(&Exchanger::OnEnd);
    }
}

// Called by the event loop after each exchange; Stop may have taken its report already.
void Exchanger::OnEnd() {
    if (mpJob != nullptr && mpJob->IsFinished()) {
        TakeReport(mpJob->IsCancelled());
    }
}

void Exchanger::TakeReport(bool wasStopped) {
    mpJob->Join();
    const wxString failure = mpJob->TakeFailure();
    mpJob.reset();
    mEnded.TryWait();
    mSurroundings.Store.SetPatience(0);
    const bool isAsked = std::exchange(mIsAsked, false);
    const ExchangeReport report = std::move(mReport);
    if (report.HasChanged) {
        mSurroundings.OnChange(mWasEmpty);
    }
    if (wasStopped && report.End != ExchangeEnd::kDone) {
        mIsWanted = true;
        return;
    }
    mIsProblem = report.End != ExchangeEnd::kDone;
    mMessage = failure.empty() ? report.Message : failure;
    if (report.End == ExchangeEnd::kDone) {
        mLastDone = mSurroundings.Time.Now();
        mMachines = report.Machines;
        mLostTexts = mSurroundings.CountLostTexts();
    } else if (report.End == ExchangeEnd::kAsks) {
        mMessage = _("The exchange has a question: press F9");
    }
    ShowState(isAsked);
    if (!isAsked || mSurroundings.IsDialogOpen()) {
        return;
    }
    if (report.End == ExchangeEnd::kAsks) {
        ExchangeOptions options = mOptions;
        if (mSurroundings.Ask(report, options)) {
            mIsAsked = true;
            Begin(&options);
            ShowState();
        }
    } else if (mIsProblem) {
        mSurroundings.Warn(mMessage);
    }
}

void Exchanger::ShowState(bool isAnswer) {
    if (IsRunning() && mIsAsked) {
        mSurroundings.Show(_("Exchanging..."), true);
        return;
    }
    wxString text = mMessage;
    if (!mIsProblem && mLastDone.IsValid()) {
        const wxDateTime now = mSurroundings.Time.Now();
        text = ExchangedText(SecondsBetween(mLastDone, now), mMachines, now.GetValue().GetValue());
        if (mLostTexts > 0) {
            text += ". " + wxString::Format(wxPLURAL("%i text changed on both (Tools)",
                                                     "%i texts changed on both (Tools)",
                                                     static_cast<unsigned>(mLostTexts)),
                                            mLostTexts);
        }
        text += mMessage.empty() ? wxString() : ". " + mMessage;
    }
    mSurroundings.Show(text, mIsProblem || isAnswer);
}

void Exchanger::CountLostTexts() {
    mLostTexts = mSurroundings.CountLostTexts();
    ShowState();
}

void Exchanger::Stop(unsigned long mostMilliseconds) {
    if (!IsRunning()) {
        return;
    }
    mpJob->AskToStop();
    if (mEnded.WaitTimeout(mostMilliseconds) == wxSEMA_NO_ERROR) {
        TakeReport(true);
    }
}

void Exchanger::BeginAnew() {
    mLastDone = wxInvalidDateTime;
    mMachines.clear();
    mLostTexts = 0;
    mMessage.clear();
    mIsProblem = false;
    mIsWanted = true;
    Look();
}

bool Exchanger::Finish(unsigned long mostMilliseconds) {
    wxTimer::Stop();
    if (!IsRunning()) {
        Begin(nullptr);
    }
    if (!IsRunning()) {
        return true;
    }
    if (mEnded.WaitTimeout(mostMilliseconds - kLastMilliseconds) != wxSEMA_NO_ERROR) {
        mpJob->AskToStop();
        if (mEnded.WaitTimeout(kLastMilliseconds) != wxSEMA_NO_ERROR) {
            // Its destructor would wait.
            mpJob.release();
            return false;
        }
    }
    mpJob.reset();
    return true;
}
