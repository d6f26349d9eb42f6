#include "edit/ManyCards.h"

#include <limits>
#include <map>

#include "edit/EditForm.h"
#include "store/Database.h"
#include "store/UndoHistory.h"

ManyCards::ManyCards(Database& database, const std::vector<int64_t>& rowIds) {
    mRowIds.reserve(rowIds.size());
    mIds.reserve(rowIds.size());
    // A failure is reported by the store itself; the editor has no cards then.
    database.VisitCardsByRowId(rowIds, [this](const CardRow& row) {
        mRowIds.push_back(row.RowId());
        row.CardId(mIds.emplace_back());
    });
}

int ManyCards::FindStored(Database& database) {
    std::vector<bool> isThere(mRowIds.size());
    size_t place = 0;
    const auto visit = [&](const CardRow& row) {
        while (mRowIds[place] != row.RowId()) {
            ++place;
        }
        CardUuid id;
        row.CardId(id);
        isThere[place] = id == mIds[place];
        ++place;
    };
    if (database.VisitCardsByRowId(mRowIds, visit) < 0) {
        return -1;
    }
    std::vector<int64_t> rowIds;
    std::vector<CardUuid> ids;
    for (size_t i = 0; i < mRowIds.size(); ++i) {
        const size_t former = rowIds.size();
        if (isThere[i]) {
            rowIds.push_back(mRowIds[i]);
        } else if (!mIds[i].IsZero() && database.SelectRowIdById(mIds[i], rowIds) < 0) {
            // Without the row id it may have another row now, as after an undone deletion.
            return -1;
        }
        ids.resize(rowIds.size(), mIds[i]);
        mGone += rowIds.size() == former ? 1 : 0;
    }
    mRowIds = std::move(rowIds);
    mIds = std::move(ids);
    return 0;
}

int ManyCards::NumberCards(Database& database, const FlashCard& values, const CardParts& parts,
                           std::vector<int32_t>& orders) const {
    std::vector<int32_t> categories;
    const auto visit = [&](const CardRow& row) {
        categories.push_back(HasPart(parts, CardPart::kCategory) ? values.CategoryId
                                                                 : row.CategoryId());
    };
    if (database.VisitCardsByRowId(mRowIds, visit) < 0) {
        return -1;
    }
    std::map<int32_t, int32_t> last;
    for (const int32_t category : categories) {
        const auto [found, isNew] = last.emplace(category, 0);
        if (isNew) {
            // An empty category leaves 0.
            database.SelectMaxIntroductionOrder(category, found->second);
        }
        if (found->second < std::numeric_limits<int32_t>::max()) {
            ++found->second;
        }
        orders.push_back(found->second);
    }
    return 0;
}

int ManyCards::Write(Database& database, const FlashCard& values, const CardParts& parts,
                     StoreChange& change) const {
    const bool areNumbered =
        HasPart(parts, CardPart::kIntroductionOrder) && values.IntroductionOrder == kBlankOrder;
    std::vector<int32_t> orders;
    if (areNumbered && NumberCards(database, values, parts, orders) < 0) {
        return -1;
    }
    orders.resize(mRowIds.size(), values.IntroductionOrder);
    size_t place = 0;
    const auto edit = [&](FlashCard& card) {
        CopyParts(values, parts, card);
        if (areNumbered) {
            card.IntroductionOrder = orders[place++];
        }
    };
    if (NoteChange(database, mRowIds, edit, change) < 0) {
        return -1;
    }
    FlashCard written = values;
    const auto cardAt = [&](size_t at) -> const FlashCard& {
        written.IntroductionOrder = orders[at];
        return written;
    };
    const StoreChangeGroup group(database);
    return database.UpdateParts(mRowIds, parts, cardAt);
}
