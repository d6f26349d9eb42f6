#include "exchange/ExportRecord.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "exchange/DelimitedWriter.h"
#include "exchange/SecondText.h"
#include "store/CardRow.h"
#include "store/CardUuid.h"
#include "store/TimeStamp.h"

namespace {

using Text = std::u16string_view;

constexpr Text kId = u"id";
constexpr Text kFront = u"Front";
constexpr Text kFront2 = u"Front2";
constexpr Text kBack = u"Back";
constexpr Text kBack2 = u"Back2";
constexpr Text kCategory = u"Category";
constexpr Text kAuthor = u"Author";
constexpr Text kChapter = u"Chapter";
constexpr Text kIntroductionOrder = u"IntroductionOrder";
constexpr Text kForwardX = u"ForwardX";
constexpr Text kReverseX = u"ReverseX";
constexpr Text kNotes = u"Notes";

// The names of one direction's schedule.
struct ScheduleNames {
    Text Introduced;
    Text LastReview;
    Text LastScore;
    Text ReviewInterval;
    Text Difficulty;
    // Empty where the form does not have it.
    Text Erc;
};
constexpr ScheduleNames kForward{u"Introduced",     u"LastReview", u"LastScore",
                                 u"ReviewInterval", u"Difficulty", u"ERC"};
constexpr ScheduleNames kReverse{u"RIntroduced",     u"RLastReview", u"RLastScore",
                                 u"RReviewInterval", u"RDifficulty", u"RERC"};
constexpr ScheduleNames kVersion1{u"Active",         u"LastReview", u"LastScore",
                                  u"ReviewInterval", u"Difficulty", u""};

// Passes attributes on until one is refused.
class Record {
  public:
    explicit Record(CardRecordWriter& writer) : mWriter(writer) {}

    // 0, or -1 once one was refused.
    int GetResult() const { return mResult; }

    void Add(Text name, Text value) {
        if (mResult == 0) {
            mResult = mWriter.WriteAttribute(name, value);
        }
    }
    void AddId(const CardRow& card) {
        CardUuid uuid;
        if (card.CardId(uuid) < 0) {
            mResult = -1;
            return;
        }
        const std::array<char, 36> text = UuidText(uuid);
        AddDigits(kId, text.data(), text.data() + text.size());
    }
    void AddBoolean(Text name, bool value) { Add(name, value ? u"true" : u"false"); }
    void AddNumber(Text name, int32_t number) {
        char digits[16];
        AddDigits(name, digits, std::to_chars(digits, std::end(digits), number).ptr);
    }
    void AddTime(Text name, int64_t seconds) {
        char text[kTimeStampLength];
        AddDigits(name, text, WriteTimeStamp(text, seconds));
    }
    void AddInterval(Text name, double seconds) {
        constexpr double kGreatest = 1e9;
        // The greatest 32-bit float has 39 digits before its point.
        char digits[64];
        char* end = nullptr;
        if (seconds >= 1.0 && seconds < kGreatest && seconds == std::floor(seconds)) {
            // Most are whole, for which the exact way takes long.
            end = std::to_chars(digits, digits + 16, static_cast<int32_t>(seconds)).ptr;
            for (const char unit : {'.', '0', '0', '0', '0', '0', '0'}) {
                *end++ = unit;
            }
        } else {
            end = std::to_chars(digits, std::end(digits), seconds, std::chars_format::fixed, 6).ptr;
        }
        AddDigits(name, digits, end);
    }
    // The second text is an attribute of its own, which an empty one does not need.
    void AddSplitSide(Text name, Text secondName, Text side) {
        const SplitSide parts = SplitSecondText(side);
        Add(name, parts.Main);
        if (!parts.Second.empty()) {
            Add(secondName, parts.Second);
        }
    }
    void AddSchedule(const ScheduleNames& names, const CardRow::Schedule& schedule) {
        AddBoolean(names.Introduced, schedule.Introduced());
        AddTime(names.LastReview, schedule.LastReview());
        AddNumber(names.LastScore, schedule.LastScore());
        AddInterval(names.ReviewInterval, static_cast<double>(schedule.ReviewInterval()));
        AddNumber(names.Difficulty, schedule.Difficulty());
        if (!names.Erc.empty()) {
            AddNumber(names.Erc, schedule.Erc());
        }
    }

  private:
    // Characters of ASCII, 64 at most.
    void AddDigits(Text name, const char* begin, const char* end) {
        char16_t units[64];
        Add(name, {units, static_cast<size_t>(std::copy(begin, end, units) - units)});
    }

    CardRecordWriter& mWriter;
    int mResult = 0;
};

}  // namespace

int WriteCardRecord(CardRecordWriter& writer, const CardRow& card, std::u16string_view category,
                    bool splitSecondTexts, bool includeScheduling) {
    Record record(writer);
    record.AddId(card);
    if (splitSecondTexts) {
        record.AddSplitSide(kFront, kFront2, card.Front());
        record.AddSplitSide(kBack, kBack2, card.Back());
    } else {
        record.Add(kFront, card.Front());
        record.Add(kBack, card.Back());
    }
    if (!category.empty()) {
        record.Add(kCategory, category);
    }
    record.Add(kAuthor, card.Author());
    record.Add(kChapter, card.Chapter());
    record.AddNumber(kIntroductionOrder, card.IntroductionOrder());
    record.AddBoolean(kForwardX, card.ForwardX());
    record.AddBoolean(kReverseX, card.ReverseX());
    record.Add(kNotes, card.Notes());
    if (includeScheduling) {
        record.AddSchedule(kForward, card.Forward());
        record.AddSchedule(kReverse, card.Reverse());
    }
    return record.GetResult();
}

void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling) {
    const auto add = [&writer](std::initializer_list<Text> names) {
        for (const Text name : names) {
            writer.AddColumn(name);
        }
    };
    if (splitSecondTexts) {
        add({kId, kFront, kFront2, kBack, kBack2});
    } else {
        add({kId, kFront, kBack});
    }
    add({kCategory, kAuthor, kChapter, kIntroductionOrder, kForwardX, kReverseX, kNotes});
    if (includeScheduling) {
        for (const ScheduleNames& names : {kForward, kReverse}) {
            add({names.Introduced, names.LastReview, names.LastScore, names.ReviewInterval,
                 names.Difficulty, names.Erc});
        }
    }
    writer.EndHeader();
}

int WriteVersion1Record(CardRecordWriter& writer, const CardRow& card, bool includeScheduling) {
    Record record(writer);
    record.AddId(card);
    record.Add(u"Q", SplitSecondText(card.Front()).Main);
    record.Add(u"A", SplitSecondText(card.Back()).Main);
    if (includeScheduling) {
        record.AddSchedule(kVersion1, card.Forward());
    }
    return record.GetResult();
}
