#include "exchange/Duplicates.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/Folding.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

// Cards that one visit reads: a cancel is heard in between, and others can write.
constexpr int32_t kReadAtOnce = 4096;

// Shows all cards. Returns false when the store fails. The visitor returns false to stop.
bool VisitAll(Database& database, const std::atomic<bool>& cancelled,
              const std::function<bool(const CardRow&)>& visit) {
    int64_t rowId = INT64_MIN;
    int count = kReadAtOnce;
    bool goesOn = true;
    while (count == kReadAtOnce && goesOn && !cancelled) {
        count = database.VisitCardsAfter(
            rowId, kReadAtOnce, [&](const CardRow& row) { goesOn = goesOn && visit(row); });
    }
    return count >= 0;
}

// Appends the folded text, or the text itself where it has nothing but marks.
void AppendFolded(std::u16string_view text, std::u16string& folded, std::u16string& key) {
    FoldUnits(text.data(), text.size(), folded);
    key += folded.empty() ? text : folded;
}

bool WasReviewedLater(const CardSchedule& one, const CardSchedule& other) {
    if (!one.Introduced || !other.Introduced) {
        return other.Introduced && !one.Introduced;
    }
    return other.LastReview.IsValid() &&
           (!one.LastReview.IsValid() || other.LastReview > one.LastReview);
}

// What cards that are the same have in common.
class DuplicateKey {
  public:
    explicit DuplicateKey(SameBy by) : mBy(by) {}

    const std::u16string& Make(const CardRow& row) {
        mKey.clear();
        AppendFolded(row.Front(), mFolded, mKey);
        if (mBy == SameBy::kFrontAndBack) {
            mKey += kFirstFreeUnit;
            AppendFolded(row.Back(), mFolded, mKey);
        }
        return mKey;
    }

  private:
    const SameBy mBy;
    std::u16string mFolded;
    std::u16string mKey;
};

// Says of each group whether it is plain. Returns false when the store fails.
bool FindPlain(Database& database, const std::atomic<bool>& cancelled, DuplicatesFound& found) {
    found.ArePlain.assign(found.Groups.size(), true);
    for (size_t group = 0; group < found.Groups.size() && !cancelled;) {
        std::vector<int64_t> rowIds;
        std::vector<size_t> groups;
        for (; group < found.Groups.size() && rowIds.size() < kReadAtOnce; ++group) {
            const std::vector<int64_t>& own = found.Groups[group];
            rowIds.insert(rowIds.end(), own.begin(), own.end());
            groups.insert(groups.end(), own.size(), group);
        }
        FlashCard merged;
        size_t at = 0;
        const auto visit = [&](const CardRow& row) {
            const size_t before = at;
            at = static_cast<size_t>(
                std::find(rowIds.begin() + static_cast<long>(at), rowIds.end(), row.RowId()) -
                rowIds.begin());
            FlashCard card;
            const bool isRead = row.Read(card) == 0;
            const bool isFirst = at == 0 || groups[before] != groups[at];
            if (!isRead || (!isFirst && !IsPlainUnion(merged, card))) {
                found.ArePlain[groups[at]] = false;
            }
            merged = isFirst ? card : SuggestUnion(merged, card);
        };
        if (!database.TryLocked([&] { database.VisitCardsByRowId(rowIds, visit); })) {
            return false;
        }
    }
    return true;
}

// Returns true when the store still has the card as it was shown.
int FindSame(Database& database, const FlashCard& card, bool& isSame) {
    std::list<FlashCard> found;
    if (database.SelectCardById(card.CardId, found) < 0) {
        return -1;
    }
    isSame = !found.empty() && NoteEdit(found.front(), card).Cards.empty();
    return 0;
}

}  // namespace

DuplicatesFound FindDuplicates(Database& database, SameBy by,
                               const std::optional<CategoryChoice>& choice,
                               const std::atomic<bool>& cancelled) {
    DuplicatesFound found;
    // The place of a key's group among all groups, most of which have one card.
    std::unordered_map<std::u16string, size_t> places;
    DuplicateKey key(by);
    found.IsStoreFailed = !VisitAll(database, cancelled, [&](const CardRow& row) {
        if (choice.has_value() && !choice->Has(row.CategoryId())) {
            return true;
        }
        const auto [place, isNew] = places.emplace(key.Make(row), found.Groups.size());
        if (isNew) {
            found.Groups.emplace_back();
        }
        found.Groups[place->second].push_back(row.RowId());
        return true;
    });
    found.Groups.erase(std::remove_if(found.Groups.begin(), found.Groups.end(),
                                      [](const auto& group) { return group.size() < 2; }),
                       found.Groups.end());
    found.IsStoreFailed = found.IsStoreFailed || !FindPlain(database, cancelled, found);
    return found;
}

bool FindCardWithFront(Database& database, const wxString& front, const CardUuid& except,
                       const std::atomic<bool>& cancelled, FlashCard& found) {
    const std::u16string wanted = FoldText(front);
    std::u16string folded;
    bool isFound = false;
    VisitAll(database, cancelled, [&](const CardRow& row) {
        const std::u16string_view text = row.Front();
        FoldUnits(text.data(), text.size(), folded);
        CardUuid id;
        isFound = !wanted.empty() && folded == wanted && row.CardId(id) == 0 && id != except &&
                  row.Read(found) == 0;
        return !isFound;
    });
    return isFound;
}

bool IsReviewedLater(const FlashCard& first, const FlashCard& second) {
    const auto last = [](const FlashCard& card) {
        return WasReviewedLater(card.Forward, card.Reverse) ? card.Reverse : card.Forward;
    };
    return WasReviewedLater(last(first), last(second));
}

void TakeLaterReviews(const FlashCard& other, FlashCard& card) {
    for (const ReviewDirection direction : kEachDirection) {
        if (WasReviewedLater(ScheduleOf(card, direction), ScheduleOf(other, direction))) {
            ScheduleOf(card, direction) = ScheduleOf(other, direction);
        }
    }
}

FlashCard SuggestUnion(const FlashCard& kept, const FlashCard& other) {
    FlashCard merged = kept;
    const auto fill = [](wxString& text, const wxString& from) {
        text = text.empty() ? from : text;
    };
    fill(merged.Author, other.Author);
    fill(merged.Chapter, other.Chapter);
    fill(merged.Notes, other.Notes);
    TakeLaterReviews(other, merged);
    return merged;
}

bool IsPlainUnion(const FlashCard& kept, const FlashCard& other) {
    const auto canFill = [](const wxString& one, const wxString& two) {
        return one.empty() || two.empty() || one == two;
    };
    return FoldText(kept.Back) == FoldText(other.Back) && kept.CategoryId == other.CategoryId &&
           kept.ForwardX == other.ForwardX && kept.ReverseX == other.ReverseX &&
           canFill(kept.Author, other.Author) && canFill(kept.Chapter, other.Chapter) &&
           canFill(kept.Notes, other.Notes);
}

UnionOutcome UniteCards(Database& database, const FlashCard& kept, const FlashCard& other,
                        const FlashCard& merged, StoreChange& change) {
    bool areSame[2] = {};
    if (FindSame(database, kept, areSame[0]) < 0 || FindSame(database, other, areSame[1]) < 0) {
        return UnionOutcome::kStoreFailed;
    }
    if (!areSame[0] || !areSame[1] || kept.CardId == other.CardId) {
        return UnionOutcome::kChangedMeanwhile;
    }
    FlashCard written = merged;
    written.CardId = kept.CardId;
    StoreChange step;
    // A kill between the two leaves both cards.
    if (NoteUnion(database, kept, other, written, step) < 0 ||
        database.UpdateFlashCard(written) < 0) {
        return UnionOutcome::kStoreFailed;
    }
    // The store may have changed a value, as it does with an interval that it cannot hold.
    std::list<FlashCard> stored;
    if (database.SelectCardById(kept.CardId, stored) < 0 || stored.empty() ||
        database.DeleteCard(other.CardId) < 0) {
        return UnionOutcome::kStoreFailed;
    }
    step.Cards[1] = stored.front();
    change = std::move(step);
    return UnionOutcome::kDone;
}

UnionThread::UnionThread(Database& database, SameBy by, std::vector<std::vector<int64_t>> groups)
    : mDatabase(database), mBy(by), mGroups(std::move(groups)) {}

UnionThread::~UnionThread() {
    UnionThread::Cancel();
}

// The store reports a failure, which ends the work: what was done before it is whole.
void UnionThread::Work() {
    const StoreChangeGroup group(mDatabase);
    for (const std::vector<int64_t>& rowIds : mGroups) {
        std::vector<FlashCard> cards;
        if (IsCancelled() || !ReadGroup(rowIds, cards) || !UniteGroup(std::move(cards))) {
            return;
        }
        ++mPosition;
    }
}

// Reads the cards of a group that are still the same; a row may have another card by now. Returns
// false when the store fails.
bool UnionThread::ReadGroup(const std::vector<int64_t>& rowIds, std::vector<FlashCard>& cards) {
    DuplicateKey key(mBy);
    std::u16string first;
    const int count = mDatabase.VisitCardsByRowId(rowIds, [&](const CardRow& row) {
        FlashCard card;
        first = cards.empty() ? key.Make(row) : first;
        if (row.Read(card) == 0 && !card.CardId.IsZero() && key.Make(row) == first) {
            cards.push_back(std::move(card));
        }
    });
    mLeftAlone += static_cast<int32_t>(rowIds.size() - cards.size());
    return count >= 0;
}

// Returns false when the store fails.
bool UnionThread::UniteGroup(std::vector<FlashCard> cards) {
    if (cards.empty()) {
        return true;
    }
    const auto latest = std::max_element(cards.begin(), cards.end(), IsReviewedLater);
    std::rotate(cards.begin(), latest, latest + 1);
    FlashCard kept = cards.front();
    for (size_t i = 1; i < cards.size(); ++i) {
        StoreChange change;
        const UnionOutcome outcome =
            UniteCards(mDatabase, kept, cards[i], SuggestUnion(kept, cards[i]), change);
        if (outcome == UnionOutcome::kStoreFailed) {
            return false;
        }
        if (outcome == UnionOutcome::kChangedMeanwhile) {
            ++mLeftAlone;
            continue;
        }
        kept = change.Cards[1];
        Keep(std::move(change));
    }
    return true;
}

// A step that is without some of its sounds and pictures could not be taken back whole.
void UnionThread::Keep(StoreChange change) {
    mMediaBytes += change.CountMediaBytes();
    if (!change.HasTooMuchMedia && mMediaBytes <= UndoHistory::kMostMediaBytes) {
        mDone.push_back(std::move(change));
        return;
    }
    mMediaBytes = UndoHistory::kMostMediaBytes + 1;
    mDone.assign(1, StoreChange());
    mDone.front().What = StoreChange::Kind::kUnion;
    mDone.front().IsTooLarge = true;
    mDone.front().HasTooMuchMedia = true;
}
