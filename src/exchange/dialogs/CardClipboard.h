#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "shell/AppServices.h"

class Database;
class FatalErrorReport;

// Puts cards on the clipboard of the desktop and brings them back into the store. What lies there
// are row ids, good for the store file of now alone: the owner takes them back before the file
// changes and before the program ends. Main thread only.
class CardClipboard {
  public:
    // The report is not owned.
    explicit CardClipboard(FatalErrorReport& report) : mReport(report) {}

    // Changes nothing in the store. Without an effect while the clipboard cannot be had.
    void Put(Database& database, const std::vector<int64_t>& rowIds, bool copy);
    // The clipboard holds cards that this program put there. Quick enough for update handlers.
    bool HasCards() const { return !mOwn.expired(); }
    void Paste(Database& database, int32_t categoryId, AppServices::EmptyCut empty);
    // Empties the clipboard, unless another program has put something there in the meantime.
    void TakeBack();

  private:
    FatalErrorReport& mReport;
    // Alive while the object that was put last is on the clipboard, which owns it. This is also how
    // row ids of another program's store are told from ours.
    std::weak_ptr<void> mOwn;
};
