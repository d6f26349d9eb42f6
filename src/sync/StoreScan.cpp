// The differences of a store from the copy of it. The comparison is a join by the cards' identities
// over the columns that travel. It reads the store itself, in pieces: each is a read of a few
// milliseconds, and what somebody writes between two of them raises the store's counter of changes,
// so that the next exchange looks again.

#include "sync/StoreScan.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/Files.h"
#include "base/Unicode.h"
#include "sync/ExchangeFile.h"

namespace {

// The rows of a piece.
#define PIECE "2000"

constexpr char kSelectChanged[] =
    "SELECT c.CardId FROM main.Cards AS c LEFT JOIN beside.Copy AS k ON k.CardId=c.CardId"
    " WHERE c.ROWID>? AND c.ROWID<=? AND (k.CardId IS NULL OR k.Gone<>0 OR c.Front IS NOT k.Front"
    " OR c.Back IS NOT k.Back OR c.CategoryId IS NOT k.CategoryId OR c.Author IS NOT k.Author"
    " OR c.Chapter IS NOT k.Chapter OR c.IntroductionOrder IS NOT k.IntroductionOrder"
    " OR c.ForwardX IS NOT k.ForwardX OR c.ReverseX IS NOT k.ReverseX OR c.Notes IS NOT k.Notes"
    " OR c.Introduced IS NOT k.Introduced OR c.LastReview IS NOT k.LastReview"
    " OR c.LastScore IS NOT k.LastScore OR c.ReviewInterval IS NOT k.ReviewInterval"
    " OR c.Difficulty IS NOT k.Difficulty OR c.RIntroduced IS NOT k.RIntroduced"
    " OR c.RLastReview IS NOT k.RLastReview OR c.RLastScore IS NOT k.RLastScore"
    " OR c.RReviewInterval IS NOT k.RReviewInterval OR c.RDifficulty IS NOT k.RDifficulty)";
constexpr char kSelectAll[] = "SELECT CardId FROM main.Cards WHERE ROWID>? AND ROWID<=?";
constexpr char kSelectGone[] =
    "SELECT k.CardId FROM beside.Copy AS k WHERE k.CardId>? AND k.CardId<=? AND k.Gone=0"
    " AND NOT EXISTS (SELECT 1 FROM main.Cards AS c WHERE c.CardId=k.CardId)";

constexpr size_t kTail = 4096;

// Appends the identities that a query gives. Cards without one cannot be exchanged.
void Append(Query& query, std::vector<CardUuid>& cards, bool& hasCapitals) {
    while (query.Step()) {
        const std::string text = query.Text(0);
        CardUuid id;
        if (ParseUuidUtf8(text, id) != 0 || id.IsZero()) {
            continue;
        }
        const std::array<char, 36> form = UuidText(id);
        if (text == std::string_view(form.data(), form.size())) {
            cards.push_back(id);
        } else {
            hasCapitals = true;
        }
    }
}

}  // namespace

bool FindDifferences(SyncState& state, bool isAll, std::vector<CardUuid>& cards,
                     const std::atomic<bool>& isCancelled) {
    SqlFile& sql = state.Sql();
    bool hasCapitals = false;
    for (int64_t last = INT64_MIN; !isCancelled;) {
        int64_t end = 0;
        {
            Query piece(sql,
                        "SELECT max(Place) FROM (SELECT ROWID AS Place FROM main.Cards"
                        " WHERE ROWID>? ORDER BY ROWID LIMIT " PIECE ")",
                        last);
            if (!piece.Step() || piece.IsNull(0)) {
                break;
            }
            end = piece.Int(0);
        }
        Query changed(sql, isAll ? kSelectAll : kSelectChanged, last, end);
        Append(changed, cards, hasCapitals);
        last = end;
    }
    if (hasCapitals) {
        // Other programs have written the same identities in capitals.
        sql.Execute(
            "UPDATE OR IGNORE main.Cards SET CardId=LOWER(CardId)"
            " WHERE CardId<>LOWER(CardId)");
        cards.clear();
        bool isNoMatter = false;
        Query all(sql, "SELECT CardId FROM main.Cards");
        Append(all, cards, isNoMatter);
    }
    for (std::string last; !isAll && !isCancelled;) {
        std::string end;
        {
            Query piece(sql,
                        "SELECT max(CardId) FROM (SELECT CardId FROM beside.Copy WHERE CardId>?"
                        " ORDER BY CardId LIMIT " PIECE ")",
                        last);
            if (!piece.Step() || piece.IsNull(0)) {
                break;
            }
            end = piece.Text(0);
        }
        bool isNoMatter = false;
        Query gone(sql, kSelectGone, last, end);
        Append(gone, cards, isNoMatter);
        last = end;
    }
    // The copy has them in this order.
    std::sort(cards.begin(), cards.end());
    return !sql.HasFailed() && !isCancelled;
}

std::string LogTailSum(const wxString& logPath, int64_t end) {
    const FileDescriptor file(::open(ToUtf8(logPath).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, kTail> bytes{};
    const auto wanted = static_cast<size_t>(std::clamp<int64_t>(end, 0, kTail));
    const off_t begin = end - static_cast<int64_t>(wanted);
    if (wanted == 0) {
        return "0";
    }
    if (!file.IsOpen() ||
        ::pread(file.Get(), bytes.data(), wanted, begin) != static_cast<ssize_t>(wanted)) {
        return std::string();
    }
    ExchangeChecksum sum;
    sum.Add({bytes.data(), wanted});
    return HexText(sum.Get());
}

std::string FormatEventKey(const ScheduleEvent& event) {
    return HexText(event.Session) + " " + std::to_string(event.Number) +
           (event.IsSet ? " set" : "");
}
