#pragma once

#include <wx/string.h>

#include <array>
#include <atomic>
#include <map>

#include "reviews/ReviewLog.h"

// How often each card was not remembered in each direction: its reviews in the log with a score
// below kLeastRemembered, other than the first one. The store does not count them.
class CardFailures {
  public:
    // Cards that never failed are not in it.
    using Counts = std::map<CardUuid, std::array<int32_t, 2>>;

    // Reads what is new in the log. Returns false, with the counts as they were, when it was
    // cancelled. For a worker thread, one call at a time.
    bool Update(const wxString& logPath, const std::atomic<bool>& isCancelled, Counts& counts);

    static int32_t Count(const Counts& counts, const CardUuid& card, ReviewDirection direction);

  private:
    ReviewHistory mHistory;
};
