// Many cards at once: what they have in common, and the change of some of their parts.

#include <array>
#include <string>
#include <utility>

#include "base/Time.h"
#include "store/CardParts.h"
#include "store/Database.h"

namespace {

CardPart PartOf(size_t number) {
    return static_cast<CardPart>(number);
}

// Returns the value of a part as a reader of cards takes it.
std::string ValueOfPart(CardPart part) {
    const bool isFlag = part == CardPart::kForwardX || part == CardPart::kReverseX ||
                        part == CardPart::kIntroduced || part == CardPart::kReverseIntroduced;
    const std::string column = ColumnOfPart(part);
    return std::string("COALESCE(") + column + (IsTextPart(part) ? ",'')" : ",0)") +
           (isFlag ? "<>0" : "");
}

// Returns the statement that gives the number of cards and, for each part, its least value and
// whether all are equal, without the row ids.
std::string CommonStatement() {
    std::string sql = "SELECT COUNT(*)";
    for (size_t i = 0; i < kCardPartCount; ++i) {
        const std::string value = ValueOfPart(PartOf(i));
        sql += ",MIN(" + value + "),MIN(" + value + ") IS MAX(" + value + ")";
    }
    return sql + " FROM Cards WHERE ROWID IN ";
}

// Adds what a group of cards has in common, which is the present row of the run.
void AddGroup(const StatementRun& run, CommonCard& common) {
    const int32_t count = run.ColumnInt(0);
    if (count == 0) {
        return;
    }
    FlashCard card = common.Card;
    CardParts several;
    for (size_t i = 0; i < kCardPartCount; ++i) {
        const int column = 1 + 2 * static_cast<int>(i);
        ReadPart(run, column, PartOf(i), card);
        several.set(i, run.ColumnInt(column + 1) == 0);
    }
    if (common.Count > 0) {
        several |= common.Several | FindDifferences(card, common.Card);
    }
    common = {common.Count + count, std::move(card), several};
}

// Returns the assignment of the stored next review, which follows the last one and the interval:
// new is the text of a part that is written, or else its column.
std::string AssignNextReview(const std::string& prefix, const std::string& lastReview,
                             const std::string& interval) {
    const std::string due = lastReview + "+CAST(" + interval + " AS INTEGER)";
    return "," + prefix + "NextReview=CASE WHEN " + lastReview + ">=0 AND " + due +
           " BETWEEN 0 AND " + std::to_string(kLastTimeStamp) + " THEN " + due + " ELSE -1 END";
}

// Returns the assignments of the parts, whose values stand in the columns of Wanted after the row
// id.
std::string Assignments(const CardParts& parts) {
    std::array<std::string, kCardPartCount> values;
    std::string sql;
    int column = 1;
    for (size_t i = 0; i < kCardPartCount; ++i) {
        values.at(i) = ColumnOfPart(PartOf(i));
        if (parts.test(i)) {
            values.at(i) = "Wanted.column" + std::to_string(++column);
            sql += (sql.empty() ? "" : ",") + std::string(ColumnOfPart(PartOf(i))) + "=" +
                   values.at(i);
        }
    }
    const auto follow = [&](const char* prefix, CardPart lastReview, CardPart interval) {
        if (HasPart(parts, lastReview) || HasPart(parts, interval)) {
            sql += AssignNextReview(prefix, values.at(static_cast<size_t>(lastReview)),
                                    values.at(static_cast<size_t>(interval)));
        }
    };
    follow("", CardPart::kLastReview, CardPart::kReviewInterval);
    follow("R", CardPart::kReverseLastReview, CardPart::kReverseReviewInterval);
    return sql;
}

}  // namespace

int Database::SelectCommonParts(const std::vector<int64_t>& rowIds, CommonCard& common) {
    const Lock lock(mMutex);
    common = CommonCard();
    static const std::string sql = CommonStatement();
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t end = begin + GroupSize(rowIds.size() - begin, 1);
        StatementRun run(*this, GetStatement(sql + "(" + Repeat("?", end - begin) + ");"));
        for (; begin < end; ++begin) {
            run.Bind(rowIds[begin]);
        }
        const int result = run.Step("SelectCommonParts");
        if (result < 0) {
            return result;
        }
        AddGroup(run, common);
    }
    return IsOpen() ? 0 : -1;
}

int Database::UpdateParts(const std::vector<int64_t>& rowIds, const CardParts& parts,
                          const std::function<const FlashCard&(size_t)>& cardAt) {
    const Lock lock(mMutex);
    if (parts.none()) {
        return 0;
    }
    const size_t width = 1 + parts.count();
    const std::string head = "UPDATE Cards SET " + Assignments(parts) + " FROM (VALUES ";
    const std::string row = "(" + Repeat("?", width) + ")";
    const auto bind = [&](StatementRun& run, size_t place) {
        run.Bind(rowIds[place]);
        for (size_t i = 0; i < kCardPartCount; ++i) {
            if (parts.test(i)) {
                BindPart(run, PartOf(i), cardAt(place));
            }
        }
    };
    const auto textFor = [&](size_t size) {
        return head + Repeat(row, size) + ") AS Wanted WHERE Cards.ROWID=Wanted.column1;";
    };
    int last = 0;
    for (size_t begin = 0; IsOpen() && begin < rowIds.size();) {
        const size_t end = begin + GroupSize(rowIds.size() - begin, width);
        bool isDone = false;
        {
            StatementRun run(*this, GetStatement(textFor(end - begin)));
            for (size_t place = begin; place < end; ++place) {
                bind(run, place);
            }
            isDone = StepQuietly(run, "UpdateParts") == 0;
        }
        for (; begin < end; ++begin) {
            if (!isDone) {
                StatementRun run(*this, GetStatement(textFor(1)));
                bind(run, begin);
                const int result = run.Step("UpdateParts");
                last = result < 0 ? result : last;
            }
        }
    }
    return IsOpen() ? last : -1;
}
