#include "store/CardParts.h"

#include "store/Statement.h"

namespace {

constexpr const char* kColumns[] = {"Front",
                                    "Back",
                                    "CategoryId",
                                    "Author",
                                    "Chapter",
                                    "Notes",
                                    "IntroductionOrder",
                                    "ForwardX",
                                    "ReverseX",
                                    "Introduced",
                                    "ReviewInterval",
                                    "Difficulty",
                                    "LastScore",
                                    "LastReview",
                                    "ERC",
                                    "RIntroduced",
                                    "RReviewInterval",
                                    "RDifficulty",
                                    "RLastScore",
                                    "RLastReview",
                                    "RERC"};
static_assert(std::size(kColumns) == kCardPartCount);

// Calls with that part of both schedules; the number counts from the first part of a schedule.
template <typename Schedule, typename Other, typename Visit>
auto VisitSchedulePart(size_t part, Schedule& one, Other& other, const Visit& visit) {
    switch (part) {
        case 0:
            return visit(one.Introduced, other.Introduced);
        case 1:
            return visit(one.ReviewInterval, other.ReviewInterval);
        case 2:
            return visit(one.Difficulty, other.Difficulty);
        case 3:
            return visit(one.LastScore, other.LastScore);
        case 4:
            return visit(one.LastReview, other.LastReview);
        default:
            return visit(one.ERC, other.ERC);
    }
}

// Calls with that part of both cards.
template <typename Card, typename Other, typename Visit>
auto VisitPart(CardPart part, Card& one, Other& other, const Visit& visit) {
    switch (part) {
        case CardPart::kFront:
            return visit(one.Front, other.Front);
        case CardPart::kBack:
            return visit(one.Back, other.Back);
        case CardPart::kCategory:
            return visit(one.CategoryId, other.CategoryId);
        case CardPart::kAuthor:
            return visit(one.Author, other.Author);
        case CardPart::kChapter:
            return visit(one.Chapter, other.Chapter);
        case CardPart::kNotes:
            return visit(one.Notes, other.Notes);
        case CardPart::kIntroductionOrder:
            return visit(one.IntroductionOrder, other.IntroductionOrder);
        case CardPart::kForwardX:
            return visit(one.ForwardX, other.ForwardX);
        case CardPart::kReverseX:
            return visit(one.ReverseX, other.ReverseX);
        default:
            break;
    }
    const auto from = [part](CardPart first) {
        return static_cast<size_t>(part) - static_cast<size_t>(first);
    };
    return part < CardPart::kReverseIntroduced
               ? VisitSchedulePart(from(CardPart::kIntroduced), one.Forward, other.Forward, visit)
               : VisitSchedulePart(from(CardPart::kReverseIntroduced), one.Reverse, other.Reverse,
                                   visit);
}

// Reads a column into a value of each type.
struct ColumnReader {
    const StatementRun& Run;
    int Column;

    void operator()(wxString& text) const { text = Run.ColumnText(Column); }
    void operator()(int32_t& number) const { number = Run.ColumnInt(Column); }
    void operator()(bool& flag) const { flag = Run.ColumnInt(Column) != 0; }
    void operator()(uint8_t& number) const { number = static_cast<uint8_t>(Run.ColumnInt(Column)); }
    void operator()(float& number) const { number = static_cast<float>(Run.ColumnDouble(Column)); }
    void operator()(wxDateTime& time) const { time = Run.ColumnTime(Column); }
};

}  // namespace

const char* ColumnOfPart(CardPart part) {
    return kColumns[static_cast<size_t>(part)];
}

bool IsTextPart(CardPart part) {
    return part <= CardPart::kNotes && part != CardPart::kCategory;
}

CardParts FindDifferences(const FlashCard& one, const FlashCard& other) {
    CardParts parts;
    for (size_t i = 0; i < kCardPartCount; ++i) {
        const auto isOther = [](const auto& left, const auto& right) { return !(left == right); };
        parts.set(i, VisitPart(static_cast<CardPart>(i), one, other, isOther));
    }
    return parts;
}

void CopyParts(const FlashCard& from, const CardParts& parts, FlashCard& to) {
    for (size_t i = 0; i < kCardPartCount; ++i) {
        if (parts.test(i)) {
            VisitPart(static_cast<CardPart>(i), from, to,
                      [](const auto& source, auto& target) { target = source; });
        }
    }
}

int BindPart(StatementRun& run, CardPart part, const FlashCard& card) {
    return VisitPart(part, card, card,
                     [&run](const auto& value, const auto&) { return run.Bind(value); });
}

void ReadPart(const StatementRun& run, int column, CardPart part, FlashCard& card) {
    VisitPart(part, card, card, [&](auto& value, auto&) { ColumnReader{run, column}(value); });
}
