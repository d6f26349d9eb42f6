#pragma once

#include <wx/string.h>

#include <memory>

class CardRecordReader;
class CharSource;
struct ImportInput;
struct ImportResult;
class wxInputStream;

// A file that is being imported: its bytes, its characters and the reader of its records, freed in
// the opposite order.
class ImportSource {
  public:
    ImportSource();
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
    bool OpenText(ImportResult& result);
    bool OpenTable(wchar_t delimiter, ImportResult& result);

    wxString mFileName;
    std::unique_ptr<wxInputStream> mStream;
    std::unique_ptr<CharSource> mText;
    std::unique_ptr<CardRecordReader> mReader;
};
