#include "exchange/ImportSource.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/wfstream.h>

#include "exchange/AttributeTable.h"
#include "exchange/CharSource.h"
#include "exchange/DelimitedReader.h"
#include "exchange/ImportInput.h"
#include "exchange/ImportMessages.h"
#include "exchange/ImportResult.h"
#include "exchange/LegacyStoreReader.h"
#include "exchange/TextEncoding.h"
#include "exchange/VlmTextReader.h"

namespace {

// What a preview looks at to find the encoding of a file without a mark. A file that is valid UTF-8
// so far and nothing of the kind further on is shown in another encoding than it is imported in.
constexpr wxFileOffset kPreviewedBytes = wxFileOffset{1} << 20;

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

bool ImportSource::Open(const ImportInput& input, ImportResult& result) {
    mFileName = input.FileName;
    if (input.Format == ImportFormat::kVersion1Store) {
        return OpenVersion1Store(input, result);
    }
    if (!OpenText(result)) {
        return false;
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

bool ImportSource::OpenText(ImportResult& result) {
    // Both passes read the file from its beginning, and a pipe would block the worker for good.
    if (wxFileName::Exists(mFileName) && !wxFileName::FileExists(mFileName)) {
        return result.Fail(UnreadableFileMessage(mFileName));
    }
    mStream = std::make_unique<wxFileInputStream>(mFileName);
    if (!mStream->IsOk()) {
        return result.Fail(wxString());
    }
    wxFontEncoding encoding = DetectTextEncoding(*mStream);
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
        if (!LookupSpelledAttribute(name, info)) {
            result.LineNumber = reader->GetLineNumber();
            return result.Fail(UnknownAttributeMessage(name));
        }
    }
    mReader = std::move(reader);
    return true;
}
