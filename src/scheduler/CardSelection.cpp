#include "scheduler/CardSelection.h"

#include <iterator>
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

    // Among equals the first card visited wins.
    void Visit(const CardRow& row, ReviewDirection direction) {
        const CardRow::Schedule schedule = row.ScheduleOf(direction);
        const float interval = schedule.ReviewInterval();
        if (!(mLeastInterval < interval)) {
            mLeastInterval = interval;
        }
        const wxDateTime lastReview = schedule.LastReviewTime();
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
        // A failure here counts as no card: the next way of choosing is tried.
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
    for (const ReviewDirection direction : kEachDirection) {
        const auto visit = [&](const CardRow& row) { search.Visit(row, direction); };
        const bool isRead = mOptions.Categories.ForEach([&](int32_t id) {
            return !Studies(direction) || mDatabase.VisitReady(direction, id, limit, visit) >= 0;
        });
        if (!isRead) {
            return -1;
        }
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
    int result = 0;
    mOptions.Categories.ForEach([&](int32_t id) {
        if (!mOptions.MayIntroduce || mOptions.MayIntroduce(id)) {
            result = ChooseFirst(&Database::SelectNew, IntroductionKey, id, chosen);
        }
        return result >= 0 && chosen.Direction == kReviewNone;
    });
    if (chosen.Direction != kReviewNone) {
        VELOMIND_TRACE("introducing a card %s", FormatUuid(chosen.Card.CardId));
    }
    return result;
}

int CardSelection::PickEarlyReviewCard(ReviewCard& chosen) {
    int result = 0;
    std::pair<int64_t, int64_t> least;
    mOptions.Categories.ForEach([&](int32_t id) {
        ReviewCard first;
        result = ChooseFirst(&Database::SelectEarly, EarlyReviewKey, id, first);
        if (first.Direction == kReviewNone) {
            return result >= 0;
        }
        auto key = EarlyReviewKey(first.Card, first.Direction);
        if (mOptions.Categories.IsMany()) {
            int32_t greatest = 0;
            result = mDatabase.SelectMaxErc(id, greatest);
            key.first -= ErcBlock(greatest);
        }
        if (result >= 0 && (chosen.Direction == kReviewNone || key < least)) {
            least = key;
            chosen = std::move(first);
        }
        return result >= 0;
    });
    if (chosen.Direction != kReviewNone) {
        VELOMIND_TRACE("selected a card for early review %s", FormatUuid(chosen.Card.CardId));
    }
    return result;
}

int CardSelection::ChooseFirst(FirstCard select, SortKey key, int32_t categoryId,
                               ReviewCard& chosen) {
    std::list<ReviewCard> found;
    for (const ReviewDirection direction : kEachDirection) {
        std::list<FlashCard> cards;
        if (Studies(direction) && (mDatabase.*select)(direction, categoryId, cards) < 0) {
            return -1;
        }
        for (FlashCard& card : cards) {
            found.push_back({std::move(card), direction});
        }
    }
    if (found.size() == 2) {
        const auto forward = key(found.front().Card, kReviewForward);
        const auto reverse = key(found.back().Card, kReviewReverse);
        const bool takeForward = forward == reverse ? mRandom.Next() < 0.5f : forward < reverse;
        found.erase(takeForward ? std::prev(found.end()) : found.begin());
    }
    if (!found.empty()) {
        chosen = std::move(found.front());
    }
    return 0;
}
