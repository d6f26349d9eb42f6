#include "exchange/ExportRecord.h"

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

#include "exchange/DelimitedWriter.h"
#include "exchange/SecondText.h"
#include "store/TimeStamp.h"

namespace {

// The names of one direction's schedule.
struct ScheduleNames {
    wxString Introduced;
    wxString LastReview;
    wxString LastScore;
    wxString ReviewInterval;
    wxString Difficulty;
    wxString Erc;
};

// Names are strings once and for all: a record has two dozen of them.
struct AttributeNames {
    wxString Id = "id";
    wxString Front = "Front";
    wxString Front2 = "Front2";
    wxString Back = "Back";
    wxString Back2 = "Back2";
    wxString Category = "Category";
    wxString Author = "Author";
    wxString Chapter = "Chapter";
    wxString IntroductionOrder = "IntroductionOrder";
    wxString ForwardX = "ForwardX";
    wxString ReverseX = "ReverseX";
    wxString Notes = "Notes";
    ScheduleNames Forward{"Introduced",     "LastReview", "LastScore",
                          "ReviewInterval", "Difficulty", "ERC"};
    ScheduleNames Reverse{"RIntroduced",     "RLastReview", "RLastScore",
                          "RReviewInterval", "RDifficulty", "RERC"};
    wxString Question = "Q";
    wxString Answer = "A";
    ScheduleNames Version1{"Active",         "LastReview", "LastScore",
                           "ReviewInterval", "Difficulty", wxString()};
};

const AttributeNames& Names() {
    static const AttributeNames names;
    return names;
}

const wxString& BooleanText(bool value) {
    static const wxString yes = "true";
    static const wxString no = "false";
    return value ? yes : no;
}

template <class Number, class... Format>
wxString NumberText(Number number, Format... format) {
    // The greatest 32-bit float has 39 digits before its point.
    char digits[64];
    const std::to_chars_result result =
        std::to_chars(std::begin(digits), std::end(digits), number, format...);
    return wxString(
        std::wstring(static_cast<const char*>(digits), static_cast<const char*>(result.ptr)));
}

wxString IntervalText(float seconds) {
    return NumberText(static_cast<double>(seconds), std::chars_format::fixed, 6);
}

// Passes attributes on until one is refused.
class Record {
  public:
    explicit Record(CardRecordWriter& writer) : mWriter(writer) {}

    void Add(const wxString& name, const wxString& value) {
        if (mResult == 0) {
            mResult = mWriter.WriteAttribute(name, value);
        }
    }
    // The second text has a name of its own only when it is to be split off.
    void AddSide(const wxString& name, const wxString* secondName, const wxString& side) {
        if (secondName == nullptr || !HasSecondText(side)) {
            Add(name, side);
            return;
        }
        wxString main;
        wxString second;
        SplitSecondText(side, main, second);
        Add(name, main);
        if (!second.empty()) {
            Add(*secondName, second);
        }
    }
    void AddMainText(const wxString& name, const wxString& side) {
        wxString main;
        wxString second;
        SplitSecondText(side, main, second);
        Add(name, main);
    }
    void AddSchedule(const ScheduleNames& names, const CardSchedule& schedule) {
        Add(names.Introduced, BooleanText(schedule.Introduced));
        Add(names.LastReview, FormatTimeStamp(schedule.LastReview));
        Add(names.LastScore, NumberText(int32_t{schedule.LastScore}));
        Add(names.ReviewInterval, IntervalText(schedule.ReviewInterval));
        Add(names.Difficulty, NumberText(int32_t{schedule.Difficulty}));
        if (!names.Erc.empty()) {
            Add(names.Erc, NumberText(schedule.ERC));
        }
    }
    int End() {
        if (mResult == 0) {
            mWriter.EndRecord();
        }
        return mResult;
    }

  private:
    CardRecordWriter& mWriter;
    int mResult = 0;
};

// Takes each attribute of a record as a column.
class ColumnCollector : public CardRecordWriter {
  public:
    explicit ColumnCollector(DelimitedWriter& writer) : mWriter(writer) {}
    int WriteAttribute(const wxString& name, const wxString& /*value*/) override {
        return mWriter.AddColumn(name);
    }
    void EndRecord() override {}

  private:
    DelimitedWriter& mWriter;
};

}  // namespace

int WriteCardRecord(CardRecordWriter& writer, const FlashCard& card, const wxString& category,
                    bool splitSecondTexts, bool includeScheduling) {
    const AttributeNames& names = Names();
    Record record(writer);
    record.Add(names.Id, FormatUuid(card.CardId));
    record.AddSide(names.Front, splitSecondTexts ? &names.Front2 : nullptr, card.Front);
    record.AddSide(names.Back, splitSecondTexts ? &names.Back2 : nullptr, card.Back);
    if (!category.empty()) {
        record.Add(names.Category, category);
    }
    record.Add(names.Author, card.Author);
    record.Add(names.Chapter, card.Chapter);
    record.Add(names.IntroductionOrder, NumberText(card.IntroductionOrder));
    record.Add(names.ForwardX, BooleanText(card.ForwardX));
    record.Add(names.ReverseX, BooleanText(card.ReverseX));
    record.Add(names.Notes, card.Notes);
    if (includeScheduling) {
        record.AddSchedule(names.Forward, card.Forward);
        record.AddSchedule(names.Reverse, card.Reverse);
    }
    return record.End();
}

void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling) {
    // A record in which nothing that may be left out is missing.
    FlashCard card;
    card.Front = JoinSecondText("f", "f");
    card.Back = JoinSecondText("b", "b");
    ColumnCollector columns(writer);
    WriteCardRecord(columns, card, "c", splitSecondTexts, includeScheduling);
    writer.EndHeader();
}

int WriteVersion1Record(CardRecordWriter& writer, const FlashCard& card, bool includeScheduling) {
    const AttributeNames& names = Names();
    Record record(writer);
    record.Add(names.Id, FormatUuid(card.CardId));
    record.AddMainText(names.Question, card.Front);
    record.AddMainText(names.Answer, card.Back);
    if (includeScheduling) {
        record.AddSchedule(names.Version1, card.Forward);
    }
    return record.End();
}
