#include "exchange/ImportSource.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>
#include <string>
#include <string_view>

#include "base/Unicode.h"
#include "exchange/Delimited.h"
#include "exchange/ImportJob.h"
#include "exchange/LegacyStoreReader.h"
#include "exchange/Table.h"
#include "exchange/TextSource.h"
#include "exchange/VlmText.h"
#include "store/Database.h"

namespace {

// A preview looks at no more than this to find the encoding of a file without a mark. A file that
// is valid UTF-8 this far and not further on is previewed in another encoding than it is imported
// in.
constexpr wxFileOffset kPreviewedBytes = wxFileOffset{1} << 20;

namespace fs = std::filesystem;
using namespace std::string_view_literals;

// The first bytes of a database, of its journal, and of its write-ahead log in either byte order.
constexpr std::string_view kDatabaseMark = "SQLite format 3\0"sv;
constexpr std::string_view kMarks[] = {kDatabaseMark, "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7"sv,
                                       "\x37\x7F\x06\x82"sv, "\x37\x7F\x06\x83"sv};
constexpr std::string_view kCompanions[] = {"-journal"sv, "-wal"sv, "-shm"sv};

bool BeginsWith(const fs::path& path, std::string_view mark) {
    std::string bytes(mark.size(), ' ');
    std::ifstream file(path, std::ios::binary);
    return file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) && bytes == mark;
}

// The engine's files beside a database may be empty or begin with anything, so the name decides.
bool IsBesideDatabase(const std::string& path) {
    for (const std::string_view companion : kCompanions) {
        const size_t length = path.size() - std::min(path.size(), companion.size());
        if (std::string_view(path).substr(length) == companion &&
            BeginsWith(fs::u8path(path.substr(0, length)), kDatabaseMark)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool IsDatabaseFile(const wxString& path) {
    // A link to such a file counts as one.
    std::error_code error;
    const fs::path file = fs::canonical(fs::u8path(ToUtf8(path)), error);
    // A pipe or a device may never end, or block before its first byte.
    if (error || !fs::is_regular_file(file, error)) {
        return false;
    }
    return IsBesideDatabase(file.u8string()) ||
           std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&file](std::string_view mark) { return BeginsWith(file, mark); });
}

namespace {

bool FindCategoryOfCard(Database& database, const CardUuid& id, wxString& name) {
    std::list<FlashCard> cards;
    std::list<Category> categories;
    if (database.SelectCardById(id, cards) < 0 || cards.empty() ||
        database.SelectCategoryById(cards.front().CategoryId, categories) < 0 ||
        categories.empty()) {
        return false;
    }
    name = categories.front().Name;
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
        mReader = input.MakeDeckReader(database, message);
        return mReader != nullptr || result.Fail(message);
    }
    if (IsDatabaseFile(mFileName)) {
        return result.Fail(DatabaseFileMessage(mFileName));
    }
    if (!OpenText(input.Encoding, result)) {
        return false;
    }
    if (input.Format == ImportFormat::kDelimited && input.Layout != nullptr) {
        mReader =
            MakeTableReader(*mText, *input.Layout, [&database](const CardUuid& id, wxString& name) {
                return FindCategoryOfCard(database, id, name);
            });
        return true;
    }
    if (input.Format == ImportFormat::kDelimited) {
        return OpenTable(input.Delimiter, result);
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
    // Both passes read the file from its beginning, and a pipe would block the worker for good.
    if (wxFileName::Exists(mFileName) && !wxFileName::FileExists(mFileName)) {
        return result.Fail(UnreadableFileMessage(mFileName));
    }
    mStream = std::make_unique<wxFileInputStream>(mFileName);
    if (!mStream->IsOk()) {
        return result.Fail(wxString());
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

bool ImportSource::OpenTable(wchar_t delimiter, ImportResult& result) {
    auto reader = std::make_unique<DelimitedReader>(*mText, delimiter);
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
