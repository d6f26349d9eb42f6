#include "exchange/Export.h"

#include <wx/file.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <limits>
#include <list>
#include <map>
#include <memory>

#include "exchange/DelimitedWriter.h"
#include "exchange/ExportRecord.h"
#include "exchange/SecondText.h"
#include "exchange/TextSink.h"
#include "exchange/VlmTextWriter.h"
#include "store/Database.h"
#include "store/StoreReadLock.h"

namespace {

constexpr wxFontEncoding kEncodings[] = {wxFONTENCODING_UTF16LE, wxFONTENCODING_UTF16BE,
                                         wxFONTENCODING_UTF8};
constexpr wchar_t kByteOrderMark = L'\xFEFF';

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
                mNames[category.Id] = category.Name;
            }
        }
        return 0;
    }
    // Empty where there is none to write.
    const wxString& Find(int32_t id) const {
        static const wxString none;
        const auto found = mNames.find(id);
        return found == mNames.end() ? none : found->second;
    }

  private:
    std::map<int32_t, wxString> mNames;
};

// Hands each card that is still in the store to a function that gives 0, or a negative value to
// stop. Counts the cards in the position of the progress.
template <class Visit>
int VisitCards(Database& database, const std::vector<int64_t>& rowIds, ExportProgress& progress,
               int32_t& missing, const Visit& visit) {
    missing = 0;
    std::list<FlashCard> cards;
    for (const int64_t rowId : rowIds) {
        if (database.SelectCardByRowId(rowId, cards) < 0) {
            return -1;
        }
        if (cards.empty()) {
            ++missing;
            continue;
        }
        if (visit(cards.front()) < 0) {
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
    return VisitCards(database, rowIds, progress, progress.Missing, [&](const FlashCard& card) {
        const int result = options.Format == ExportFormat::kVlmText1
                               ? WriteVersion1Record(writer, card, options.IncludeScheduling)
                               : WriteCardRecord(writer, card, categories.Find(card.CategoryId),
                                                 true, options.IncludeScheduling);
        return sink.IsOk() ? result : -1;
    });
}

// The columns have to stand before the first card is written, so the cards are read twice.
int WriteDelimitedCards(TextSink& sink, Database& database, const std::vector<int64_t>& rowIds,
                        const ExportOptions& options, ExportProgress& progress,
                        const CategoryNames& categories) {
    bool split = false;
    int32_t missing = 0;
    const int scanned =
        VisitCards(database, rowIds, progress, missing, [&split](const FlashCard& card) {
            split = split || HasSecondText(card.Front) || HasSecondText(card.Back);
            return 0;
        });
    if (scanned < 0) {
        return -1;
    }
    DelimitedWriter writer(sink, options.Delimiter);
    WriteCardHeader(writer, split, options.IncludeScheduling);
    progress.Position = 0;
    return VisitCards(database, rowIds, progress, progress.Missing, [&](const FlashCard& card) {
        const int result = WriteCardRecord(writer, card, categories.Find(card.CategoryId), split,
                                           options.IncludeScheduling);
        return sink.IsOk() ? result : -1;
    });
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
