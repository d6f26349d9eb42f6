#include "exchange/Export.h"

#include <wx/file.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include "base/Time.h"
#include "base/Unicode.h"
#include "exchange/AnkiText.h"
#include "exchange/CardRecord.h"
#include "exchange/Delimited.h"
#include "exchange/TextSink.h"
#include "exchange/VlmText.h"
#include "store/CardRow.h"
#include "store/CardUuid.h"
#include "store/Database.h"
#include "store/Statement.h"

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

// The names of the attributes of one direction's schedule.
struct ScheduleNames {
    Text Introduced;
    Text LastReview;
    Text LastScore;
    Text ReviewInterval;
    Text Difficulty;
    // Empty for the form that does not have it.
    Text Erc;
};
constexpr ScheduleNames kForward{u"Introduced",     u"LastReview", u"LastScore",
                                 u"ReviewInterval", u"Difficulty", u"ERC"};
constexpr ScheduleNames kReverse{u"RIntroduced",     u"RLastReview", u"RLastScore",
                                 u"RReviewInterval", u"RDifficulty", u"RERC"};
constexpr ScheduleNames kVersion1{u"Active",         u"LastReview", u"LastScore",
                                  u"ReviewInterval", u"Difficulty", u""};

// Writes the attributes of a card until the writer refuses one.
class Record {
  public:
    explicit Record(CardRecordWriter& writer) : mWriter(writer) {}

    // Returns 0, or -1 once one was refused.
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
            // Most are whole numbers, for which the exact conversion would take long.
            end = std::to_chars(digits, digits + 16, static_cast<int32_t>(seconds)).ptr;
            for (const char unit : {'.', '0', '0', '0', '0', '0', '0'}) {
                *end++ = unit;
            }
        } else {
            end = std::to_chars(digits, std::end(digits), seconds, std::chars_format::fixed, 6).ptr;
        }
        AddDigits(name, digits, end);
    }
    // Writes the second text, if there is one, as an attribute of its own.
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
    // Writes a text of ASCII, of 64 characters at most.
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

namespace {

constexpr wxFontEncoding kEncodings[] = {wxFONTENCODING_UTF16LE, wxFONTENCODING_UTF16BE,
                                         wxFONTENCODING_UTF8};
constexpr char16_t kByteOrderMark = u'\xFEFF';

// The names of the categories by their ids. The category "Default" has none, as a card of it does
// not name its category.
class CategoryNames {
  public:
    int Read(Database& database) {
        std::list<Category> categories;
        if (database.SelectAllCategories(categories) < 0) {
            return -1;
        }
        for (const Category& category : categories) {
            if (category.Name != "Default") {
                mNames[category.Id] = ToUtf16(category.Name);
            }
        }
        return 0;
    }
    // Returns the name, or the empty text when there is none to write.
    std::u16string_view Find(int32_t id) const {
        const auto found = mNames.find(id);
        return found == mNames.end() ? std::u16string_view() : found->second;
    }

  private:
    std::map<int32_t, std::u16string> mNames;
};

// Shows each card that is still in the store to one function, and calls another once the store is
// free again. Either gives 0, or a negative value to stop. Counts the cards in the position of the
// progress.
template <class Visit, class Finish>
int VisitCards(Database& database, const std::vector<int64_t>& rowIds, ExportProgress& progress,
               int32_t& missing, const Visit& visit, const Finish& finish) {
    missing = 0;
    int result = 0;
    const CardRowVisitor visitor = [&](const CardRow& card) { result = visit(card); };
    for (const int64_t rowId : rowIds) {
        bool found = false;
        if (database.VisitCardByRowId(rowId, found, visitor) < 0) {
            return -1;
        }
        if (!found) {
            ++missing;
            continue;
        }
        if (result < 0 || finish() < 0) {
            return -1;
        }
        ++progress.Position;
    }
    return 0;
}

int WriteVlmCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                  const ExportOptions& options, ExportProgress& progress,
                  const CategoryNames& categories) {
    VlmTextWriter writer(sink);
    const auto write = [&](const CardRow& card) {
        return options.Format == ExportFormat::kVlmText1
                   ? WriteVersion1Record(writer, card, options.IncludeScheduling)
                   : WriteCardRecord(writer, card, categories.Find(card.CategoryId()), true,
                                     options.IncludeScheduling);
    };
    const auto finish = [&] {
        writer.EndRecord();
        return sink.IsOk() ? 0 : -1;
    };
    return VisitCards(database, rowIds, progress, progress.Missing, write, finish);
}

int WriteAnkiCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                   ExportProgress& progress, const CategoryNames& categories) {
    AnkiTextWriter writer(sink);
    const auto write = [&](const CardRow& card) {
        return WriteCardRecord(writer, card, categories.Find(card.CategoryId()), true, false);
    };
    const auto finish = [&] {
        writer.EndRecord();
        return sink.IsOk() ? 0 : -1;
    };
    return VisitCards(database, rowIds, progress, progress.Missing, write, finish);
}

// Reads the cards twice: the header comes before the first card, and has columns for second texts
// only if some card has one.
int WriteDelimitedCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                        const ExportOptions& options, ExportProgress& progress,
                        const CategoryNames& categories) {
    bool split = false;
    int32_t missing = 0;
    const auto scan = [&split](const CardRow& card) {
        split = split || HasSecondText(card.Front()) || HasSecondText(card.Back());
        return 0;
    };
    if (VisitCards(database, rowIds, progress, missing, scan, [] { return 0; }) < 0) {
        return -1;
    }
    DelimitedWriter writer(sink, options.Delimiter);
    WriteCardHeader(writer, split, options.IncludeScheduling);
    progress.Position = 0;
    const auto write = [&](const CardRow& card) {
        return WriteCardRecord(writer, card, categories.Find(card.CategoryId()), split,
                               options.IncludeScheduling);
    };
    const auto finish = [&] {
        writer.EndRecord();
        return sink.IsOk() ? 0 : -1;
    };
    return VisitCards(database, rowIds, progress, progress.Missing, write, finish);
}

int32_t BarLength(size_t cards) {
    constexpr size_t kLongest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(kLongest, 2 * cards));
}

int Fail(ExportProgress& progress, const wxString& message) {
    progress.Failed = true;
    progress.Message = message;
    return -1;
}

}  // namespace

wxFontEncoding ExportEncoding(int choice) {
    const bool isKnown = choice >= 0 && choice < static_cast<int>(std::size(kEncodings));
    return isKnown ? kEncodings[choice] : wxFONTENCODING_UTF16LE;
}

int WriteCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
               const ExportOptions& options, ExportProgress& progress) {
    progress.Total = BarLength(rowIds.size());
    progress.Position = 0;
    const StoreReadLock lock(database);
    CategoryNames categories;
    if (categories.Read(database) < 0) {
        return -1;
    }
    if (options.Format == ExportFormat::kAnkiText) {
        return WriteAnkiCards(sink, database, rowIds, progress, categories);
    }
    return options.Format == ExportFormat::kDelimited
               ? WriteDelimitedCards(sink, database, rowIds, options, progress, categories)
               : WriteVlmCards(sink, database, rowIds, options, progress, categories);
}

int ExportToFile(const wxString& fileName, wxFontEncoding encoding, Database& database,
                 const std::vector<int64_t>& rowIds, const ExportOptions& options,
                 ExportProgress& progress) {
    if (database.IsStoreFile(fileName)) {
        return Fail(progress,
                    wxString::Format(_("The file \"%s\" holds the flash cards themselves. "
                                       "Choose another file for the export."),
                                     fileName));
    }
    wxFile file(fileName, wxFile::write);
    if (!file.IsOpened()) {
        progress.Failed = true;
        return -1;
    }
    // From here on the message alone tells the user what failed.
    const wxLogNull silence;
    wxFileOutputStream stream(file);
    const bool isAnki = options.Format == ExportFormat::kAnkiText;
    EncodedSink sink(stream, isAnki ? wxFONTENCODING_UTF8 : encoding);
    sink.Write({&kByteOrderMark, 1});
    const int result = WriteCards(sink, database, rowIds, options, progress);
    if (!sink.Flush() || !file.Close()) {
        const int error = file.GetLastError();
        return Fail(progress, wxString::Format(
                                  _("The file \"%s\" is not complete, as it could not "
                                    "be written to its end: %s."),
                                  fileName, wxSysErrorMsgStr(static_cast<unsigned long>(error))));
    }
    if (result < 0) {
        return Fail(progress,
                    wxString::Format(_("The file \"%s\" is not complete, as a flash card could "
                                       "not be read. Flash cards exported before it: %i"),
                                     fileName, progress.Position.load()));
    }
    return 0;
}

int ExportToString(wxString& text, Database& database, const std::vector<int64_t>& rowIds,
                   const ExportOptions& options, ExportProgress& progress) {
    StringSink sink;
    const int result = WriteCards(sink, database, rowIds, options, progress);
    text = sink.GetText();
    return result;
}

ExportThread::ExportThread(const wxString& fileName, wxFontEncoding encoding, Database& database,
                           const std::vector<int64_t>& rowIds, const ExportOptions& options)
    : mFileName(fileName),
      mEncoding(encoding),
      mDatabase(database),
      mRowIds(rowIds),
      mOptions(options) {}

void ExportThread::Cancel() {
    mProgress.Cancelled = true;
    Join();
}

void ExportThread::Work() {
    // The outcome is in the progress, whatever this returns.
    ExportToFile(mFileName, mEncoding, mDatabase, mRowIds, mOptions, mProgress);
}
