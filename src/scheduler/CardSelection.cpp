#include "scheduler/CardSelection.h"

#include <limits>
#include <utility>

#include "base/Process.h"

namespace {

// Visits the due cards of one or both directions and keeps the one that has waited longest in
// proportion to its interval. A card of 10 seconds that waited 30 comes before one of 100 seconds
// that waited 200.
class ReadySearch {
  public:
    explicit ReadySearch(const wxDateTime& now) : mNow(now) {}

    // Among equals the card that was visited first stays.
    void Visit(const ReadyRow& row, ReviewDirection direction) {
        const float interval = row.ReviewInterval();
        if (!(mLeastInterval < interval)) {
            mLeastInterval = interval;
        }
        const wxDateTime lastReview = row.LastReview();
        if (DueTime(lastReview, interval) >= mNow) {
            return;
        }
        const auto elapsed = static_cast<float>(SecondsBetween(lastReview, mNow));
        const float ratio = interval < 1.0f ? kGreatest : elapsed / interval;
        if (mDirection == kReviewNone || ratio > mBestRatio) {
            mDirection = direction;
            mBestRatio = ratio;
            mRowId = row.RowId();
        }
    }

    int64_t RowId() const { return mRowId; }
    ReviewDirection Direction() const { return mDirection; }
    float LeastInterval() const { return mLeastInterval; }

  private:
    static constexpr float kGreatest = std::numeric_limits<float>::max();

    const wxDateTime mNow;
    float mLeastInterval = kGreatest;
    float mBestRatio = 0.0f;
    int64_t mRowId = 0;
    ReviewDirection mDirection = kReviewNone;
};

std::pair<int64_t, int64_t> IntroductionKey(const FlashCard& card, ReviewDirection) {
    return {card.IntroductionOrder, 0};
}

std::pair<int64_t, int64_t> EarlyReviewKey(const FlashCard& card, ReviewDirection direction) {
    const CardSchedule& schedule = ScheduleOf(card, direction);
    return {schedule.ERC, schedule.NextReview().GetValue().GetValue()};
}

}  // namespace

int CardSelection::GetReviewCard(ReviewCard& chosen) {
    const bool early = mOptions.EarlyIntroduction;
    const int32_t interval = mOptions.EarlyIntroductionInterval;
    ReadyCard ready{};
    if (FindReadyCard(early ? interval : 0, ready) < 0) {
        return -1;
    }
    ReviewCard card;
    if (early && ready.LeastInterval > static_cast<float>(interval) && IntroduceCard(card) < 0) {
        return -1;
    }
    if (card.Direction == kReviewNone && ready.Direction != kReviewNone &&
        ReadCard(ready, card) < 0) {
        return -1;
    }
    if (card.Direction == kReviewNone) {
        VELOMIND_TRACE("no cards are ready for review");
        // A failure here is the same as no card: the next way of choosing is tried.
        IntroduceCard(card);
    }
    if (card.Direction == kReviewNone) {
        PickEarlyReviewCard(card);
    }
    if (card.Direction == kReviewNone) {
        return -1;
    }
    chosen = std::move(card);
    return 0;
}

int CardSelection::FindReadyCard(int32_t horizon, ReadyCard& ready) {
    const wxDateTime now = mTime.Now();
    const wxDateTime limit = now + wxTimeSpan::Seconds(horizon);
    ReadySearch search(now);
    const auto visitForward = [&search](const ReadyRow& row) { search.Visit(row, kReviewForward); };
    const auto visitReverse = [&search](const ReadyRow& row) { search.Visit(row, kReviewReverse); };
    if (Studies(kReviewForward) &&
        mDatabase.SelectReadySortByNextReview(mOptions.CategoryId, limit, visitForward) < 0) {
        return -1;
    }
    if (Studies(kReviewReverse) &&
        mDatabase.SelectRReadySortByRNextReview(mOptions.CategoryId, limit, visitReverse) < 0) {
        return -1;
    }
    ready = {search.RowId(), search.Direction(), search.LeastInterval()};
    return 0;
}

int CardSelection::ReadCard(const ReadyCard& ready, ReviewCard& chosen) {
    std::list<FlashCard> cards;
    if (mDatabase.SelectCardByRowId(ready.RowId, cards) < 0 || cards.empty()) {
        return -1;
    }
    chosen = {std::move(cards.front()), ready.Direction};
    return 0;
}

int CardSelection::IntroduceCard(ReviewCard& chosen) {
    const int result = ChooseFirst(&Database::SelectNewForward, &Database::SelectNewReverse,
                                   IntroductionKey, chosen);
    if (chosen.Direction != kReviewNone) {
        VELOMIND_TRACE("introducing a card %s", FormatUuid(chosen.Card.CardId));
    }
    return result;
}

int CardSelection::PickEarlyReviewCard(ReviewCard& chosen) {
    const int result = ChooseFirst(&Database::SelectEarlyForward, &Database::SelectEarlyReverse,
                                   EarlyReviewKey, chosen);
    if (chosen.Direction != kReviewNone) {
        VELOMIND_TRACE("selected a card for early review %s", FormatUuid(chosen.Card.CardId));
    }
    return result;
}

int CardSelection::ChooseFirst(FirstCard selectForward, FirstCard selectReverse, SortKey key,
                               ReviewCard& chosen) {
    std::list<FlashCard> forward;
    std::list<FlashCard> reverse;
    if (Studies(kReviewForward) && (mDatabase.*selectForward)(mOptions.CategoryId, forward) < 0) {
        return -1;
    }
    if (Studies(kReviewReverse) && (mDatabase.*selectReverse)(mOptions.CategoryId, reverse) < 0) {
        return -1;
    }
    if (forward.empty() && reverse.empty()) {
        return 0;
    }
    bool takeForward = reverse.empty();
    if (!forward.empty() && !reverse.empty()) {
        const auto forwardKey = key(forward.front(), kReviewForward);
        const auto reverseKey = key(reverse.front(), kReviewReverse);
        takeForward = forwardKey == reverseKey ? mRandom.Next() < 0.5f : forwardKey < reverseKey;
    }
    if (takeForward) {
        chosen = {std::move(forward.front()), kReviewForward};
    } else {
        chosen = {std::move(reverse.front()), kReviewReverse};
    }
    return 0;
}
