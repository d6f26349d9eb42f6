#pragma once

#include <wx/string.h>

#include <memory>

class CardRecordReader;
class CharSource;
struct ImportInput;
struct ImportResult;
class wxInputStream;

// True for a database of the store's engine, whoever made it, and for the engine's own files beside
// one. None of them is a text to import. Looks at the first bytes and at the name.
bool IsDatabaseFile(const wxString& path);

// A file that is being imported: its bytes, its characters and the reader of its records, freed in
// the opposite order.
class ImportSource {
  public:
    // For a preview nothing may take as long as a look through the whole of a large file.
    explicit ImportSource(bool isPreview);
    ~ImportSource();
    ImportSource(const ImportSource&) = delete;
    ImportSource& operator=(const ImportSource&) = delete;

    // Opens the file and checks the column names of a table. False when that fails, and the result
    // then says why.
    bool Open(const ImportInput& input, ImportResult& result);
    CardRecordReader& Reader() { return *mReader; }
    // The file could not be read to its end.
    bool HasFailed() const;
    // Why, once it has failed.
    wxString FailureMessage() const;

  private:
    bool OpenVersion1Store(const ImportInput& input, ImportResult& result);
    bool OpenText(ImportResult& result);
    bool OpenTable(wchar_t delimiter, ImportResult& result);

    bool mIsPreview;
    wxString mFileName;
    std::unique_ptr<wxInputStream> mStream;
    std::unique_ptr<CharSource> mText;
    std::unique_ptr<CardRecordReader> mReader;
};
