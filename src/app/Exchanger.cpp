#include "app/Exchanger.h"

#include <wx/event.h>
#include <wx/intl.h>
#include <wx/msgdlg.h>

#include <algorithm>
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

wxString NamesOf(const std::vector<ExchangeMachine>& machines) {
    std::vector<ExchangeMachine> known;
    std::copy_if(machines.begin(), machines.end(), std::back_inserter(known),
                 [](const ExchangeMachine& each) { return each.LastNews > 0; });
    std::sort(known.begin(), known.end(), [](const ExchangeMachine& a, const ExchangeMachine& b) {
        return a.LastNews > b.LastNews;
    });
    wxString names;
    for (size_t i = 0; i < known.size() && i < kMostNames; ++i) {
        names << (i == 0 ? "" : ", ") << FromUtf8(known[i].Name);
    }
    return known.size() > kMostNames ? names + ", ..." : names;
}

}  // namespace

wxString ExchangedText(int64_t secondsAgo, const std::vector<ExchangeMachine>& machines) {
    const wxString names = NamesOf(machines);
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

int AskWhichStands(wxWindow* parent, const wxString& situation) {
    return AskOf(parent,
                 situation + "\n\n" +
                     _("Should the cards here be brought up to date with those of the other "
                       "computers? Or should the other computers take the state that the cards "
                       "have here?"),
                 _("Bring Up to Date"), _("Take This State for All"));
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
                _("Should the two become one card, with the reviews of both? Else you will have "
                  "both of them. Your answer holds for all computers."),
            _("Make Them One"), _("Keep Both"));
        if (answer != wxID_CANCEL) {
            options.JoinsEqualCards = answer == wxID_YES;
        }
        return answer != wxID_CANCEL;
    }
    const int answer =
        report.Question == ExchangeQuestion::kGoneBack
            ? AskWhichStands(parent, _("The cards here are those of an earlier time, such as those "
                                       "of a backup. Other computers have newer ones."))
            : AskWhichStands(parent,
                             wxString::Format(
                                 wxPLURAL("This exchange would delete %i card or turn it back.",
                                          "This exchange would delete %i cards or turn them back.",
                                          static_cast<unsigned>(count)),
                                 count));
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
        TakeReport(false);
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
        const wxString done =
            ExchangedText(SecondsBetween(mLastDone, mSurroundings.Time.Now()), mMachines);
        text = mMessage.empty() ? done : done + ". " + mMessage;
    }
    mSurroundings.Show(text, mIsProblem || isAnswer);
}

void Exchanger::Stop() {
    if (IsRunning()) {
        mpJob->AskToStop();
        TakeReport(true);
    }
}

void Exchanger::BeginAnew() {
    mLastDone = wxInvalidDateTime;
    mMachines.clear();
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
