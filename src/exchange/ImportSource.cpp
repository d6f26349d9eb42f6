#include "exchange/ImportSource.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <filesystem>
#include <list>
#include <string>
#include <string_view>

#include "base/Files.h"
#include "exchange/ImportJob.h"
#include "files/StoreFiles.h"
#include "formats/CardRecord.h"
#include "formats/Delimited.h"
#include "formats/LegacyStoreReader.h"
#include "formats/Table.h"
#include "formats/TextSource.h"
#include "formats/VlmText.h"
#include "store/Database.h"

namespace {

// A preview looks at no more than this to find the encoding of a file without a mark. A file that
// is valid UTF-8 this far and not further on is previewed in another encoding than it is imported
// in.
constexpr wxFileOffset kPreviewedBytes = wxFileOffset{1} << 20;

using namespace std::string_view_literals;

// The first bytes of spreadsheets' own files, new and old, and of an empty package.
constexpr std::string_view kPackedMarks[] = {"PK\3\4"sv, "PK\5\6"sv,
                                             "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv};

bool IsPackedFile(const wxString& path) {
    const std::filesystem::path file = ToPath(path);
    return std::any_of(std::begin(kPackedMarks), std::end(kPackedMarks),
                       [&file](std::string_view mark) { return FileBeginsWith(file, mark); });
}

bool FindCategoryOfCard(Database& database, const CardUuid& id, wxString& name) {
    std::list<FlashCard> cards;
    std::list<Category> categories;
    if (database.SelectCardById(id, cards) < 0 || cards.empty()) {
        return false;
    }
    // A deleted card is in none.
    if (database.SelectCategoryById(cards.front().CategoryId, categories) >= 0 &&
        !categories.empty()) {
        name = categories.front().Name;
    }
    return true;
}

}  // namespace

ImportSource::ImportSource(bool isPreview) : mIsPreview(isPreview) {}

ImportSource::~ImportSource() = default;

bool ImportSource::HasFailed() const {
    return mText != nullptr && mText->GetFailure() != CharSource::kNoFailure;
}

wxString ImportSource::FailureMessage() const {
    if (mText->GetFailure() == CharSource::kTooLong) {
        return _("This card is too long.  A double quote that is never closed may be the reason.");
    }
    return UnreadableFileMessage(mFileName);
}

bool ImportSource::Open(const ImportInput& input, Database& database, ImportResult& result) {
    mFileName = input.FileName;
    if (input.Format == ImportFormat::kVersion1Store) {
        return OpenVersion1Store(input, result);
    }
    if (input.Format == ImportFormat::kDeck) {
        wxString message;
        mReader = input.MakeDeckReader(database, result.IsCancelled, message);
        return mReader != nullptr || result.Fail(message);
    }
    if (IsDatabaseFile(mFileName)) {
        return result.Fail(DatabaseFileMessage(mFileName));
    }
    if (!OpenText(input.Encoding, result)) {
        return false;
    }
    if (input.Format == ImportFormat::kDelimited && input.Layout != nullptr) {
        mReader = MakeTableReader(
            *mText, *input.Layout,
            [&database](const CardUuid& id, wxString& name) {
                return FindCategoryOfCard(database, id, name);
            },
            input.Media.get());
        return true;
    }
    if (input.Format == ImportFormat::kDelimited) {
        return OpenTable(input, result);
    }
    mReader = std::make_unique<VlmTextReader>(*mText, false);
    return true;
}

bool ImportSource::OpenVersion1Store(const ImportInput& input, ImportResult& result) {
    auto reader = std::make_unique<LegacyStoreReader>(input.MakeRowSource());
    if (reader->Initialize() < 0) {
        return result.Fail(
            _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards"));
    }
    if (reader->Open(mFileName) < 0) {
        return result.Fail(UnreadableFileMessage(mFileName));
    }
    mReader = std::move(reader);
    return true;
}

bool ImportSource::OpenText(wxFontEncoding chosen, ImportResult& result) {
    // Both passes read the file from its beginning, so a pipe would block the worker for ever.
    if (wxFileName::Exists(mFileName) && !wxFileName::FileExists(mFileName)) {
        return result.Fail(UnreadableFileMessage(mFileName));
    }
    mStream = std::make_unique<wxFileInputStream>(mFileName);
    if (!mStream->IsOk()) {
        return result.Fail(wxString());
    }
    // The content of such a file was no deck.
    if (HasDeckName(mFileName)) {
        return result.Fail(
            _("This file has the name of a deck, but there is no deck in it.  Export or download "
              "the deck once more and import that file."));
    }
    if (IsPackedFile(mFileName)) {
        return result.Fail(
            _("This file is a spreadsheet or another packed file, and no text.  Save "
              "it as CSV first."));
    }
    wxFontEncoding encoding = DetectTextEncoding(*mStream);
    if (chosen != wxFONTENCODING_SYSTEM) {
        encoding = chosen;
    }
    if (mIsPreview && encoding == wxFONTENCODING_SYSTEM) {
        encoding = GuessTextEncoding(*mStream, kPreviewedBytes);
    }
    mText = std::make_unique<CharSource>(*mStream, encoding);
    if (mIsPreview) {
        mText->LimitToPreview();
    }
    return true;
}

bool ImportSource::OpenTable(const ImportInput& input, ImportResult& result) {
    auto reader = std::make_unique<DelimitedReader>(*mText, input.Delimiter);
    if (!input.HasEscapes) {
        reader->KeepEscapes();
    }
    if (HasFailed()) {
        result.LineNumber = reader->GetLineNumber();
        return result.Fail(FailureMessage());
    }
    for (size_t i = 0; i < reader->GetColumnCount(); ++i) {
        const wxString& name = reader->GetColumnName(i);
        AttributeInfo info;
        if (!LookupAttribute(name, info)) {
            result.LineNumber = reader->GetLineNumber();
            return result.Fail(UnknownAttributeMessage(name));
        }
    }
    mReader = std::move(reader);
    return true;
}
