// The order of introduction, set by hand: what becomes of the numbers, and writing them in groups.

#include "store/CardSequence.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <set>
#include <string>
#include <utility>

#include "store/Database.h"
#include "store/UndoHistory.h"

namespace {

constexpr int64_t kGreatestOrder = std::numeric_limits<int32_t>::max();

// Adds the change of a card, if its number changes.
void AddChange(const OrderedCard& place, int64_t order, CardRenumberings& changes) {
    if (place.Order != order) {
        changes.push_back({place.RowId, place.Order, static_cast<int32_t>(order), {}});
    }
}

// Returns the changes when the cards stand as in `ordered`, which was as in `places` before. Both
// have the same cards outside the range.
CardRenumberings GiveNumbers(const std::vector<OrderedCard>& places,
                             const std::vector<OrderedCard>& ordered, size_t first, size_t end) {
    CardRenumberings changes;
    int64_t last = first == 0 ? std::numeric_limits<int64_t>::min() : places[first - 1].Order;
    // A number that had to grow pushes those after it.
    for (size_t i = first; i < places.size() && (i < end || places[i].Order <= last); ++i) {
        last = std::max<int64_t>(places[i].Order, last + 1);
        if (last > kGreatestOrder) {
            return NumberFrom(ordered, 1);
        }
        AddChange(ordered[i], last, changes);
    }
    return changes;
}

}  // namespace

CardRenumberings MoveInSequence(const std::vector<OrderedCard>& places,
                                const std::vector<int64_t>& chosen, bool isLater) {
    const auto isChosen = [&chosen](const OrderedCard& place) {
        return std::binary_search(chosen.begin(), chosen.end(), place.RowId);
    };
    std::vector<OrderedCard> ordered = places;
    size_t first = places.size();
    size_t end = 0;
    // From the side that the cards move to, so that neighbours follow each other.
    for (size_t step = 1; step < ordered.size(); ++step) {
        const size_t to = isLater ? ordered.size() - step : step - 1;
        const size_t from = isLater ? to - 1 : to + 1;
        if (isChosen(ordered[from]) && !isChosen(ordered[to])) {
            std::swap(ordered[from], ordered[to]);
            first = std::min({first, from, to});
            end = std::max({end, from + 1, to + 1});
        }
    }
    return first < end ? GiveNumbers(places, ordered, first, end) : CardRenumberings();
}

CardRenumberings NumberFrom(const std::vector<OrderedCard>& places, int32_t first) {
    CardRenumberings changes;
    int64_t next = first;
    for (const OrderedCard& place : places) {
        AddChange(place, next++, changes);
    }
    return changes;
}

CardRenumberings DealNumbers(const std::vector<OrderedCard>& places,
                             const std::function<size_t(size_t)>& random) {
    std::vector<OrderedCard> ordered = places;
    for (size_t left = ordered.size(); left > 1; --left) {
        std::swap(ordered[left - 1], ordered[random(left)]);
    }
    return GiveNumbers(places, ordered, 0, places.size());
}

int FindMoves(Database& database, std::vector<int64_t> rowIds, bool isLater,
              CardRenumberings& changes) {
    std::vector<OrderedCard> chosen;
    if (database.SelectPlaces(rowIds, chosen) < 0) {
        return -1;
    }
    std::set<int32_t> categories;
    for (const OrderedCard& place : chosen) {
        categories.insert(place.CategoryId);
    }
    std::sort(rowIds.begin(), rowIds.end());
    for (const int32_t category : categories) {
        std::vector<OrderedCard> places;
        if (database.SelectPlaces(category, places) < 0) {
            return -1;
        }
        const CardRenumberings moves = MoveInSequence(places, rowIds, isLater);
        changes.insert(changes.end(), moves.begin(), moves.end());
    }
    return 0;
}

int Renumber(Database& database, const CardRenumberings& changes, StoreChange& change) {
    std::vector<int64_t> written;
    const int result = database.UpdateOrders(changes, written);
    return NoteOrders(database, changes, std::move(written), change) < 0 ? -1 : result;
}

int Database::SelectPlaces(int32_t categoryId, std::vector<OrderedCard>& places) {
    const Lock lock(mMutex);
    StatementRun run(*this,
                     GetStatement("SELECT ROWID,IntroductionOrder,CategoryId FROM Cards"
                                  " WHERE CategoryId=? ORDER BY IntroductionOrder;"),
                     categoryId);
    return ReadPlaces(run, places);
}

int Database::SelectNewPlaces(ReviewDirection direction, int32_t categoryId,
                              std::vector<OrderedCard>& places) {
    const Lock lock(mMutex);
    const std::string which =
        direction == kReviewReverse
            ? "WHERE CategoryId=? AND ReverseX=0 AND RIntroduced=0 ORDER BY IntroductionOrder;"
            : "WHERE CategoryId=? AND ForwardX=0 AND Introduced=0 ORDER BY IntroductionOrder;";
    StatementRun run(*this,
                     GetStatement("SELECT ROWID,IntroductionOrder,CategoryId FROM Cards " + which),
                     categoryId);
    return ReadPlaces(run, places);
}

int Database::SelectPlaces(const std::vector<int64_t>& rowIds, std::vector<OrderedCard>& places) {
    const Lock lock(mMutex);
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t end = begin + GroupSize(rowIds.size() - begin, 1);
        // A cross join makes the engine take the rows in their order.
        StatementRun run(*this, GetStatement("SELECT Cards.ROWID,IntroductionOrder,CategoryId"
                                             " FROM (VALUES " +
                                             Repeat("(?)", end - begin) +
                                             ") AS Wanted CROSS JOIN Cards"
                                             " ON Cards.ROWID=Wanted.column1;"));
        for (; begin < end; ++begin) {
            run.Bind(rowIds[begin]);
        }
        if (ReadPlaces(run, places) < 0) {
            return -1;
        }
    }
    return IsOpen() ? 0 : -1;
}

int Database::ReadPlaces(StatementRun& run, std::vector<OrderedCard>& places) {
    int result = run.Step("ReadPlaces");
    for (; result == 0 && !run.IsDone(); result = run.Step("ReadPlaces")) {
        places.push_back({run.ColumnInt64(0), run.ColumnInt(1), run.ColumnInt(2)});
    }
    return result;
}

int Database::UpdateOrders(const CardRenumberings& changes, std::vector<int64_t>& written) {
    const Lock lock(mMutex);
    const StoreChangeGroup group(*this);
    int last = 0;
    for (size_t begin = 0; IsOpen() && begin < changes.size();) {
        const size_t end = begin + GroupSize(changes.size() - begin, 3);
        if (UpdateOrderGroup(changes, begin, end, Failure::kQuiet, written) < 0) {
            // Card by card, each failure is reported as its own.
            for (size_t i = begin; i < end; ++i) {
                const int result = UpdateOrderGroup(changes, i, i + 1, Failure::kReported, written);
                last = result < 0 ? result : last;
            }
        }
        begin = end;
    }
    return IsOpen() ? last : -1;
}

int Database::UpdateOrderGroup(const CardRenumberings& changes, size_t begin, size_t end,
                               Failure failure, std::vector<int64_t>& written) {
    StatementRun run(*this,
                     GetStatement("UPDATE Cards SET IntroductionOrder=column3 FROM (VALUES " +
                                  Repeat("(?,?,?)", end - begin) +
                                  ") WHERE Cards.ROWID=column1 AND"
                                  " COALESCE(CAST(IntroductionOrder AS INTEGER),0)=column2"
                                  " RETURNING ROWID;"));
    for (size_t i = begin; i < end; ++i) {
        run.Bind(changes[i].RowId, changes[i].Before, changes[i].After);
    }
    return StepWritten(run, "UpdateOrders", failure, written);
}
