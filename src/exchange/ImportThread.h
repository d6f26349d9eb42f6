#pragma once

#include <set>

#include "exchange/ImportJob.h"
#include "exchange/Worker.h"

class Database;
class ImportQuestions;

// Runs an import on a thread of its own and puts the worker's questions to the user. Its end
// cancels what still runs.
class ImportThread : public Worker {
  public:
    // The database, the questions and the set, which may be null, are not owned.
    ImportThread(const ImportInput& input, Database& database, bool askCategories,
                 std::set<int32_t>* touchedCategories, ImportQuestions& questions);
    ~ImportThread() override;

    // Set up before Start and read after Join.
    ImportResult& GetResult() { return mResult; }

    int32_t GetMaximum() const override { return 1000; }
    int32_t GetPosition() const override;
    void Cancel() override;
    void OnTimer(wxWindow* dialog) override;

  protected:
    void Work() override;

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
};
