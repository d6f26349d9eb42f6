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
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "base/Files.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "formats/AnkiText.h"
#include "formats/CardRecord.h"
#include "formats/Delimited.h"
#include "formats/TextSink.h"
#include "formats/VlmText.h"
#include "media/MediaFolder.h"
#include "store/CardRow.h"
#include "store/CardUuid.h"
#include "store/Database.h"
#include "store/Statement.h"

namespace {

using Text = std::u16string_view;

constexpr AttributeName kId = u"id";
constexpr AttributeName kFront = u"Front";
constexpr AttributeName kFront2 = u"Front2";
constexpr AttributeName kBack = u"Back";
constexpr AttributeName kBack2 = u"Back2";
constexpr AttributeName kCategory = u"Category";
constexpr AttributeName kAuthor = u"Author";
constexpr AttributeName kChapter = u"Chapter";
constexpr AttributeName kIntroductionOrder = u"IntroductionOrder";
constexpr AttributeName kForwardX = u"ForwardX";
constexpr AttributeName kReverseX = u"ReverseX";
constexpr AttributeName kNotes = u"Notes";

// The names of the attributes of one direction's schedule.
struct ScheduleNames {
    AttributeName Introduced;
    AttributeName LastReview;
    AttributeName LastScore;
    AttributeName ReviewInterval;
    AttributeName Difficulty;
    // Empty for the form that does not have it.
    AttributeName Erc;
};
constexpr ScheduleNames kForward{u"Introduced",     u"LastReview", u"LastScore",
                                 u"ReviewInterval", u"Difficulty", u"ERC"};
constexpr ScheduleNames kReverse{u"RIntroduced",     u"RLastReview", u"RLastScore",
                                 u"RReviewInterval", u"RDifficulty", u"RERC"};
constexpr ScheduleNames kVersion1{u"Active",         u"LastReview", u"LastScore",
                                  u"ReviewInterval", u"Difficulty", u""};

// Returns whether an identity is already in the form of files, as nearly all are: 36 characters,
// with dashes and in small letters.
bool IsIdOfFiles(Text id) {
    size_t digits = 0;
    for (const char16_t unit : id) {
        digits += (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') ? 1 : 0;
    }
    return id.size() == 36 && digits == 32 && id[8] == u'-' && id[13] == u'-' && id[18] == u'-' &&
           id[23] == u'-';
}

// Writes the attributes of a card until the writer refuses one.
class Record {
  public:
    explicit Record(CardRecordWriter& writer) : mWriter(writer) {}

    // Returns 0, or -1 once one was refused.
    int GetResult() const { return mResult; }

    void Add(const AttributeName& name, Text value) {
        if (mResult == 0) {
            mResult = mWriter.WriteAttribute(name, value);
        }
    }
    void AddId(const CardRow& card) {
        if (IsIdOfFiles(card.CardIdText())) {
            Add(kId, card.CardIdText());
            return;
        }
        CardUuid uuid;
        if (card.CardId(uuid) < 0) {
            mResult = -1;
            return;
        }
        const std::array<char, 36> text = UuidText(uuid);
        AddPlain(kId, text.data(), text.data() + text.size());
    }
    void AddBoolean(const AttributeName& name, bool value) {
        const std::string_view text = value ? "true" : "false";
        AddPlain(name, text.data(), text.data() + text.size());
    }
    void AddNumber(const AttributeName& name, int32_t number) {
        char digits[16];
        AddPlain(name, digits, std::to_chars(digits, std::end(digits), number).ptr);
    }
    void AddTime(const AttributeName& name, int64_t seconds) {
        char text[kTimeStampLength];
        AddPlain(name, text, WriteTimeStamp(text, seconds));
    }
    void AddInterval(const AttributeName& name, double seconds) {
        constexpr double kGreatest = 1e9;
        // The greatest 32-bit float has 39 digits before its point.
        char digits[64];
        char* end = nullptr;
        if (seconds >= 1.0 && seconds < kGreatest && seconds == std::floor(seconds)) {
            // Most are whole numbers, for which the exact conversion is slow.
            end = std::to_chars(digits, digits + 16, static_cast<int32_t>(seconds)).ptr;
            for (const char unit : {'.', '0', '0', '0', '0', '0', '0'}) {
                *end++ = unit;
            }
        } else {
            end = std::to_chars(digits, std::end(digits), seconds, std::chars_format::fixed, 6).ptr;
        }
        AddPlain(name, digits, end);
    }
    // Writes the second text, if there is one, as an attribute of its own.
    void AddSplitSide(const AttributeName& name, const AttributeName& secondName, Text side) {
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
        if (!names.Erc.Text().empty()) {
            AddNumber(names.Erc, schedule.Erc());
        }
    }

  private:
    void AddPlain(const AttributeName& name, const char* begin, const char* end) {
        if (mResult == 0) {
            mResult = mWriter.WritePlain(name, {begin, static_cast<size_t>(end - begin)});
        }
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
        record.AddSchedule(kForward, card.ScheduleOf(kReviewForward));
        record.AddSchedule(kReverse, card.ScheduleOf(kReviewReverse));
    }
    return record.GetResult();
}

void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling) {
    const auto add = [&writer](std::initializer_list<AttributeName> names) {
        for (const AttributeName& name : names) {
            writer.AddColumn(name.Text());
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
        record.AddSchedule(kVersion1, card.ScheduleOf(kReviewForward));
    }
    return record.GetResult();
}

namespace {

constexpr wxFontEncoding kEncodings[] = {wxFONTENCODING_UTF16LE, wxFONTENCODING_UTF16BE,
                                         wxFONTENCODING_UTF8};
constexpr char16_t kByteOrderMark = u'\xFEFF';

// The names of the categories by their ids. "Default" has none, as its cards do not name it.
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

// The number of cards that are read at once, and written once the store is free again.
constexpr size_t kCardsAtOnce = 64;

// Calls one function for each card that is still in the store, and another after every few cards,
// when the store is free again. Either returns 0, or a negative value to stop; the cards before a
// stop are finished first. Counts the cards in the position of the progress.
template <class Visit, class Finish>
int VisitCards(Database& database, const std::vector<int64_t>& rowIds, ExportProgress& progress,
               int32_t& missing, const Visit& visit, const Finish& finish) {
    missing = 0;
    // Locking anew for each few cards would take longer than reading them. Now and then another
    // program gets its turn to write, which does not wait for ever.
    constexpr std::ptrdiff_t kCardsPerLock = 8192;
    std::optional<StoreReadLock> lock;
    for (auto rowId = rowIds.begin(); rowId != rowIds.end();) {
        if ((rowId - rowIds.begin()) % kCardsPerLock == 0) {
            lock.reset();
            lock.emplace(database);
        }
        const auto left = static_cast<size_t>(rowIds.end() - rowId);
        const auto count = static_cast<std::ptrdiff_t>(std::min(left, kCardsAtOnce));
        int32_t found = 0;
        int result = 0;
        const CardRowVisitor visitor = [&](const CardRow& card) {
            result = result < 0 ? result : visit(card);
            found += result < 0 ? 0 : 1;
        };
        const bool isRead = database.VisitCardsByRowId({rowId, rowId + count}, visitor) == 0;
        if (finish() < 0) {
            return -1;
        }
        progress.Position += found;
        if (!isRead || result < 0) {
            return -1;
        }
        missing += static_cast<int32_t>(count) - found;
        rowId += count;
    }
    return 0;
}

int WriteVlmCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                  const ExportOptions& options, ExportProgress& progress,
                  const CategoryNames& categories) {
    VlmTextWriter writer(sink);
    const auto write = [&](const CardRow& card) {
        const int result = options.Format == ExportFormat::kVlmText1
                               ? WriteVersion1Record(writer, card, options.IncludeScheduling)
                               : WriteCardRecord(writer, card, categories.Find(card.CategoryId()),
                                                 true, options.IncludeScheduling);
        if (result == 0) {
            writer.EndRecord();
        }
        return result;
    };
    const auto finish = [&] {
        writer.Flush();
        return sink.IsOk() ? 0 : -1;
    };
    return VisitCards(database, rowIds, progress, progress.Missing, write, finish);
}

int WriteAnkiCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                   ExportProgress& progress, const CategoryNames& categories) {
    std::set<wxString> media;
    if (FindUsedMedia(database, media) < 0) {
        return -1;
    }
    AnkiTextWriter writer(sink, !media.empty());
    const auto write = [&](const CardRow& card) {
        const int result =
            WriteCardRecord(writer, card, categories.Find(card.CategoryId()), true, false);
        if (result == 0) {
            writer.EndRecord();
        }
        return result;
    };
    const auto finish = [&] { return sink.IsOk() ? 0 : -1; };
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
    writer.Flush();
    progress.Position = 0;
    const auto write = [&](const CardRow& card) {
        const int result = WriteCardRecord(writer, card, categories.Find(card.CategoryId()), split,
                                           options.IncludeScheduling);
        if (result == 0) {
            writer.EndRecord();
        }
        return result;
    };
    const auto finish = [&] {
        writer.Flush();
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

wxString MediaExportHint(Database& database, const ExportOptions& options) {
    std::set<wxString> media;
    if (FindUsedMedia(database, media) < 0 || media.empty()) {
        return wxString();
    }
    const wxString folder = FromPath(MediaFolder(database.GetPath()).GetPath());
    return options.Format == ExportFormat::kAnkiText
               ? wxString::Format(_("The pictures and sounds are tags in the text.  Copy the files "
                                    "in \"%s\" into the folder \"collection.media\" of Anki."),
                                  folder)
               : wxString::Format(
                     _("The pictures and sounds are files in \"%s\".  Copy them beside "
                       "the text where it is to be imported."),
                     folder);
}

int WriteCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
               const ExportOptions& options, ExportProgress& progress) {
    progress.Total = BarLength(rowIds.size());
    progress.Position = 0;
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
    // The message alone tells the user what failed.
    const wxLogNull silence;
    wxFile file(fileName, wxFile::write);
    if (!file.IsOpened()) {
        return Fail(progress, wxString::Format(_("The file \"%s\" cannot be written: %s."),
                                               fileName, SystemErrorText(file.GetLastError())));
    }
    wxFileOutputStream stream(file);
    const bool isAnki = options.Format == ExportFormat::kAnkiText;
    EncodedSink sink(stream, isAnki ? wxFONTENCODING_UTF8 : encoding);
    sink.Write({&kByteOrderMark, 1});
    const int result = WriteCards(sink, database, rowIds, options, progress);
    if (!sink.Flush() || !file.Close()) {
        const int error = file.GetLastError();
        return Fail(progress, wxString::Format(_("The file \"%s\" is not complete, as it could not "
                                                 "be written to its end: %s."),
                                               fileName, SystemErrorText(error)));
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

void ExportThread::Work() {
    // The progress has the outcome.
    ExportToFile(mFileName, mEncoding, mDatabase, mRowIds, mOptions, mProgress);
}

void ExportThread::OnFailure(const wxString& message) {
    Fail(mProgress, message);
}
