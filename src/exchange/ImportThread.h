#pragma once

#include <wx/thread.h>

#include <atomic>
#include <set>

#include "exchange/ImportJob.h"
#include "exchange/ProgressSource.h"

class Database;
class ImportQuestions;

// Runs an import on a thread of its own and puts the worker's questions to the person. Lives on
// the main thread, which must keep it until the worker has ended; its end cancels what still runs.
class ImportThread : public wxThread, public ProgressSource {
  public:
    // The database, the questions and the set, which may be null, are not owned.
    ImportThread(const ImportInput& input, Database& database, bool askCategories,
                 std::set<int32_t>* touchedCategories, ImportQuestions& questions);
    ~ImportThread() override;

    // Starts the worker. When that fails the import is finished at once, as failed.
    void Start();
    // Waits for the worker's end.
    void Join();
    // To be read after Join, and set up before Start.
    ImportResult& GetResult() { return mResult; }

    int32_t GetMinimum() const override { return 0; }
    int32_t GetMaximum() const override { return 1000; }
    int32_t GetPosition() const override;
    bool IsFinished() const override { return mFinished; }
    void Cancel() override;
    void OnTimer(wxWindow* dialog) override;

  protected:
    ExitCode Entry() override;

  private:
    bool AskNewCategory(wxWindow* parent);
    bool AskMerge(wxWindow* parent);
    void Reply();

    ImportInput mInput;
    Database& mDatabase;
    bool mAskCategories;
    std::set<int32_t>* mpTouchedCategories;
    ImportQuestions& mQuestions;
    ImportResult mResult;
    // Written by the worker, as the last thing it does.
    std::atomic<bool> mFinished{false};
    // The worker was started and not yet waited for.
    bool mStarted = false;
};
