#pragma once

#include <wx/event.h>

#include <atomic>
#include <functional>
#include <vector>

#include "base/Worker.h"
#include "plot/Plot.h"
#include "reviews/ReviewLog.h"

// Returns the picture of a card's reviews in one direction: how its interval grew and fell from
// review to review. The title names the direction. Reviews in the other one are passed over.
Plot MakeCardLifePlot(const wxString& title, const std::vector<ReviewRecord>& reviews,
                      ReviewDirection direction);

// Reads the reviews of a card from the log on a thread of its own, since the log may be huge. Owned
// by the editor, on the main thread. The destructor cancels the reading.
class CardLifeReader : public Worker {
  public:
    // Done is called on the main thread once the reviews are there. The handler, which passes the
    // call on, must outlive the reader.
    CardLifeReader(const wxString& path, const CardUuid& card, wxEvtHandler& handler,
                   std::function<void()> done);
    ~CardLifeReader() override;

    // Both directions, oldest first. Only once the job is finished.
    const std::vector<ReviewRecord>& Reviews() const { return mReviews; }

    int32_t GetMaximum() const override { return 1; }
    int32_t GetPosition() const override { return IsFinished() ? 1 : 0; }
    void Cancel() override;

  protected:
    void Work() override;

  private:
    // Set before the thread starts, and read by it.
    const wxString mPath;
    const CardUuid mCard;
    wxEvtHandler& mHandler;
    const std::function<void()> mDone;
    // Written by the main thread.
    std::atomic<bool> mCancelled{false};
    // Written by the worker; the main thread reads it after Join.
    std::vector<ReviewRecord> mReviews;
};
