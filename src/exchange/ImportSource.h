#pragma once

#include <memory>

class CardRecordReader;
class CharSource;
struct ImportInput;
struct ImportResult;
class wxInputStream;
class wxString;

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

  private:
    bool OpenText(const wxString& name, ImportResult& result);
    bool OpenTable(const ImportInput& input, ImportResult& result);

    std::unique_ptr<wxInputStream> mStream;
    std::unique_ptr<CharSource> mText;
    std::unique_ptr<CardRecordReader> mReader;
};
