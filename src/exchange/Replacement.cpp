#include "exchange/Replacement.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/Statement.h"

namespace {

// Cards that one visit reads: a cancel is heard in between, and others can write.
constexpr size_t kReadAtOnce = 4096;
// Cards between two steps of the progress window.
constexpr size_t kWrittenAtOnce = 4096;

std::u16string_view TextOf(const CardRow& row, CardText text) {
    switch (text) {
        case CardText::kFront:
            return row.Front();
        case CardText::kBack:
            return row.Back();
        case CardText::kNotes:
            return row.Notes();
        case CardText::kAuthor:
            return row.Author();
        case CardText::kChapter:
            return row.Chapter();
    }
    return {};
}

// All white space lies in the first 65,536 characters, one unit each.
std::u16string_view Trim(std::u16string_view text) {
    const auto isSpace = [](char16_t unit) { return IsWideSpace(static_cast<wchar_t>(unit)); };
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

// One search, card by card.
class Search {
  public:
    explicit Search(const ReplacementQuery& query) : mQuery(query) {
        mIsReady = mPattern.Set(query.Wanted, query.Replacement, query.Options, Found.Fault);
    }

    bool IsOver() const { return !mIsReady || !Found.Fault.Message.empty(); }

    void Look(const CardRow& row) {
        if (IsOver()) {
            return;
        }
        CardTextChange change;
        bool isBlank = false;
        for (size_t i = 0; i < kCardTextCount; ++i) {
            const auto which = static_cast<CardText>(i);
            if (!mQuery.Texts[i]) {
                continue;
            }
            const std::u16string_view before = TextOf(row, which);
            const auto outcome = mPattern.Replace(before, mResult, Found.Fault);
            if (outcome == TextPattern::Outcome::kFault) {
                Found.FaultyFront = FromUtf16(row.Front());
                return;
            }
            const std::u16string_view after = Trim(mResult);
            if (outcome == TextPattern::Outcome::kReplaced && after != before) {
                isBlank = isBlank || (after.empty() && i <= static_cast<size_t>(CardText::kBack));
                change.Texts.push_back({which, std::u16string(before), std::u16string(after)});
            }
        }
        Found.Blank += isBlank ? 1 : 0;
        if (!isBlank && !change.Texts.empty()) {
            change.RowId = row.RowId();
            // A text that is no identity leaves zero.
            row.CardId(change.CardId);
            Found.Cards.push_back(std::move(change));
        }
    }

    ReplacementsFound Found;

  private:
    const ReplacementQuery& mQuery;
    TextPattern mPattern;
    bool mIsReady = false;
    std::u16string mResult;
};

}  // namespace

ReplacementsFound FindReplacements(Database& database, const ReplacementQuery& query,
                                   const std::atomic<bool>& cancelled) {
    Search search(query);
    const std::vector<int64_t>& all = query.RowIds;
    for (size_t begin = 0; begin < all.size() && !cancelled && !search.IsOver();) {
        const size_t end = std::min(begin + kReadAtOnce, all.size());
        const std::vector<int64_t> rowIds(all.begin() + static_cast<std::ptrdiff_t>(begin),
                                          all.begin() + static_cast<std::ptrdiff_t>(end));
        begin = end;
        const bool isRead = database.TryLocked([&] {
            database.VisitCardsByRowId(rowIds, [&](const CardRow& row) { search.Look(row); });
        });
        if (!isRead) {
            search.Found.IsStoreFailed = true;
            break;
        }
    }
    return std::move(search.Found);
}

ReplacementThread::ReplacementThread(Database& database, std::vector<CardTextChange> changes)
    : mDatabase(database), mChanges(std::move(changes)) {}

ReplacementThread::~ReplacementThread() {
    ReplacementThread::Cancel();
}

// The store reports each card that it cannot write; the others are still written.
void ReplacementThread::Work() {
    const StoreChangeGroup group(mDatabase);
    const StoreReadLock lock(mDatabase);
    for (size_t begin = 0; begin < mChanges.size() && !IsCancelled();) {
        const size_t end = std::min(begin + kWrittenAtOnce, mChanges.size());
        const auto at = [this](size_t i) {
            return mChanges.begin() + static_cast<std::ptrdiff_t>(i);
        };
        mDatabase.UpdateTexts({at(begin), at(end)}, mWritten);
        begin = end;
        mPosition = static_cast<int32_t>(end);
    }
    std::sort(mWritten.begin(), mWritten.end());
}

std::vector<CardTextChange> ReplacementThread::TakeWritten() {
    mChanges.erase(std::remove_if(mChanges.begin(), mChanges.end(),
                                  [this](const CardTextChange& change) {
                                      return !std::binary_search(mWritten.begin(), mWritten.end(),
                                                                 change.RowId);
                                  }),
                   mChanges.end());
    return std::move(mChanges);
}

int32_t ReplacementThread::CountLeftAlone() const {
    return mPosition - static_cast<int32_t>(mWritten.size());
}
