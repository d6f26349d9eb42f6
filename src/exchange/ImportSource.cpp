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
#include "exchange/TextEncoding.h"
#include "exchange/VlmTextReader.h"

ImportSource::ImportSource() = default;

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
    if (input.Format == ImportFormat::kVersion1Store) {
        // No engine of this platform opens such a store.
        return result.Fail(
            _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards"));
    }
    mFileName = input.FileName;
    if (!OpenText(result)) {
        return false;
    }
    if (input.Format == ImportFormat::kDelimited) {
        return OpenTable(input.Delimiter, result);
    }
    mReader = std::make_unique<VlmTextReader>(*mText, false);
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
    const wxFontEncoding encoding = DetectTextEncoding(*mStream);
    mText = std::make_unique<CharSource>(*mStream, encoding);
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
