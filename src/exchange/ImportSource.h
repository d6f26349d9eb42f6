#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <memory>

class CardRecordReader;
class CharSource;
class Database;
struct ImportInput;
struct ImportResult;
class wxInputStream;

// A file that is being imported: its bytes, its characters, and the reader of its records.
class ImportSource {
  public:
    // A preview must be quick, so it does not look through the whole of a large file.
    explicit ImportSource(bool isPreview);
    ~ImportSource();
    ImportSource(const ImportSource&) = delete;
    ImportSource& operator=(const ImportSource&) = delete;

    // Opens the file and checks the column names of a table. Returns false on a failure, which the
    // result then tells.
    bool Open(const ImportInput& input, Database& database, ImportResult& result);
    CardRecordReader& Reader() { return *mReader; }
    // Returns whether the file could not be read to its end.
    bool HasFailed() const;
    // Tells why, once it has failed.
    wxString FailureMessage() const;

  private:
    bool OpenVersion1Store(const ImportInput& input, ImportResult& result);
    bool OpenText(wxFontEncoding chosen, ImportResult& result);
    bool OpenTable(const ImportInput& input, ImportResult& result);

    bool mIsPreview;
    wxString mFileName;
    std::unique_ptr<wxInputStream> mStream;
    std::unique_ptr<CharSource> mText;
    std::unique_ptr<CardRecordReader> mReader;
};
