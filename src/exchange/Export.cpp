#include "exchange/Export.h"

#include <wx/file.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <limits>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include "base/Utf8.h"
#include "exchange/DelimitedWriter.h"
#include "exchange/ExportRecord.h"
#include "exchange/SecondText.h"
#include "exchange/TextSink.h"
#include "exchange/VlmTextWriter.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/StoreReadLock.h"

namespace {

constexpr wxFontEncoding kEncodings[] = {wxFONTENCODING_UTF16LE, wxFONTENCODING_UTF16BE,
                                         wxFONTENCODING_UTF8};
constexpr char16_t kByteOrderMark = u'\xFEFF';

// Names by category id. A card of the category "Default" does not name it.
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
    // Empty where there is none to write.
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

// The columns have to stand before the first card is written, so the cards are read twice.
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
    // From here on the person is told by the message alone.
    const wxLogNull silence;
    wxFileOutputStream stream(file);
    EncodedSink sink(stream, encoding);
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
