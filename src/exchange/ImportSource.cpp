#include "exchange/ImportSource.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/wfstream.h>

#include "base/WideText.h"
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
    return mText != nullptr && mText->HasFailed();
}

bool ImportSource::Open(const ImportInput& input, ImportResult& result) {
    if (input.Format == ImportFormat::kVersion1Store) {
        // No engine of this platform opens such a store.
        return result.Fail(
            _("Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards"));
    }
    if (!OpenText(input.FileName, result)) {
        return false;
    }
    if (input.Format == ImportFormat::kDelimited) {
        return OpenTable(input, result);
    }
    mReader = std::make_unique<VlmTextReader>(*mText, false);
    return true;
}

bool ImportSource::OpenText(const wxString& name, ImportResult& result) {
    // Both passes read the file from its beginning, and a pipe would block the worker for good.
    if (wxFileName::Exists(name) && !wxFileName::FileExists(name)) {
        return result.Fail(UnreadableFileMessage(name));
    }
    mStream = std::make_unique<wxFileInputStream>(name);
    if (!mStream->IsOk()) {
        return result.Fail(wxString());
    }
    const wxFontEncoding encoding = DetectTextEncoding(*mStream);
    mText = std::make_unique<CharSource>(*mStream, encoding);
    return true;
}

bool ImportSource::OpenTable(const ImportInput& input, ImportResult& result) {
    auto reader = std::make_unique<DelimitedReader>(*mText, input.Delimiter);
    if (HasFailed()) {
        return result.Fail(UnreadableFileMessage(input.FileName));
    }
    for (size_t i = 0; i < reader->GetColumnCount(); ++i) {
        const wxString& name = reader->GetColumnName(i);
        AttributeInfo info;
        if (!LookupAttribute(LowerWide(name), info)) {
            result.LineNumber = reader->GetLineNumber();
            return result.Fail(UnknownAttributeMessage(name));
        }
    }
    mReader = std::move(reader);
    return true;
}
