#pragma once

#include <wx/datetime.h>
#include <wx/eventfilter.h>
#include <wx/string.h>
#include <wx/thread.h>
#include <wx/timer.h>

#include <functional>
#include <memory>
#include <vector>

#include "base/Job.h"
#include "sync/Exchange.h"

class Clock;
class Database;
class wxWindow;

// Returns what the windows tell of an exchange that has succeeded so many seconds ago, in one
// sentence without a full stop: "Exchanged 3 minutes ago with laptop". Now is in milliseconds.
wxString ExchangedText(int64_t secondsAgo, const std::vector<ExchangeMachine>& machines,
                       int64_t now);

// Asks what an exchange has to know, in a window, and puts the answer into the options. Returns
// false when the user gave none.
bool AskExchangeQuestion(wxWindow* parent, const ExchangeReport& report, ExchangeOptions& options);

// Exchanges the open store with other computers: at the start, in a pause of study, at the end and
// when the user asks. An exchange runs on a worker beside study. It does not run beside a dialog,
// which may be changing the store: one that opens stops it, and it begins again later. Main thread
// only.
//
// What a score writes and what the worker writes do not meet: see Database::ReadVersion.
class Exchanger : public wxTimer, private wxEventFilter {
  public:
    // What the exchanger needs of the program. The references must outlive it.
    struct Surroundings {
        Database& Store;
        const Clock& Time;
        // Makes a backup. Called on the worker.
        std::function<int()> BackUp;
        // Returns true while a dialog is open.
        std::function<bool()> IsDialogOpen;
        // Called once cards were changed; a store may have had none before.
        std::function<void(bool wasEmpty)> OnChange;
        // Takes the text for the windows; it may be the one that they have. Study does not go on
        // without a word where something is wrong, or where the user has asked.
        std::function<void(const wxString& text, bool isForStudy)> Show;
        std::function<bool(const ExchangeReport& report, ExchangeOptions& options)> Ask;
        // Returns how many texts that lost against a change of another computer are not looked at.
        std::function<int()> CountLostTexts;
        // Tells the user, who has asked for an exchange, what is wrong.
        std::function<void(const wxString& text)> Warn;
        // Exchanges; another one in tests.
        std::function<ExchangeReport(const ExchangeOptions& options)> Run = RunExchange;
    };

    static constexpr unsigned long kStopMilliseconds = 2000;

    explicit Exchanger(Surroundings surroundings);
    ~Exchanger() override;

    // Exchanges now, and later in each pause.
    void StartLooking();
    // Exchanges now, and asks what there is to ask.
    void ExchangeNow();
    // Looks whether a pause has begun, and tells the windows how long ago the last exchange was. A
    // timer calls it every few seconds.
    void Look();
    // Looks how many texts that lost the user has not looked at yet, and tells the windows.
    void CountLostTexts();
    // Notes that the user is there: a key or a press.
    void NoteUse();
    // Waits until no exchange runs; one that does is asked to stop, and begins again later. Call it
    // before a dialog opens and before another store does. A folder that does not answer, such as
    // one of a network that is gone, must not keep the user waiting: after that many milliseconds
    // the worker is left to itself. It changes nothing any more, and keeps the lock of the store.
    void Stop(unsigned long mostMilliseconds = kStopMilliseconds);
    // Forgets what was said of the last exchange, since another store is open or another folder
    // chosen, and exchanges soon.
    void BeginAnew();
    // Exchanges for the last time, and returns after that many milliseconds at the latest. Returns
    // false when the worker goes on; the program then has to end without waiting for it, which the
    // exchange was made for.
    bool Finish(unsigned long mostMilliseconds);

    bool IsRunning() const { return mpJob != nullptr; }

  private:
    void Notify() override { Look(); }
    int FilterEvent(wxEvent& event) override;
    void Begin(const ExchangeOptions* answered);
    void OnEnd();
    void TakeReport(bool wasStopped);
    void ShowState(bool isAnswer = false);

    const Surroundings mSurroundings;
    ExchangeOptions mOptions;
    // Written by the worker; read once it has ended.
    ExchangeReport mReport;
    // Posted by the worker at its end.
    wxSemaphore mEnded;
    std::unique_ptr<Job> mpJob;
    // True when the user waits for the exchange that runs.
    bool mIsAsked = false;
    // True when one is to begin as soon as no dialog is open.
    bool mIsWanted = false;
    bool mWasEmpty = false;
    // When the user was last seen; invalid when that was before the last exchange.
    wxDateTime mLastUse;
    // When the last exchange succeeded; invalid when there was none.
    wxDateTime mLastDone;
    std::vector<ExchangeMachine> mMachines;
    int mLostTexts = 0;
    // What is wrong or waited for; empty when all is well.
    wxString mMessage;
    bool mIsProblem = false;
};
