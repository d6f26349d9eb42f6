#pragma once

#include <wx/string.h>

#include <memory>
#include <string>
#include <vector>

#include "formats/CardRecord.h"
#include "formats/LegacyRowSource.h"

// Reads the cards of a store of version 1.0 as records. A row is a record, its columns are the
// attributes, and the import knows the columns' names. Lives on the thread that made it.
class LegacyStoreReader : public CardRecordReader {
  public:
    explicit LegacyStoreReader(std::unique_ptr<LegacyRowSource> source);

    // Initialize fails where the engine is missing, and must have succeeded before Open. Both
    // return the engine's result; a negative one is a failure.
    int32_t Initialize();
    int32_t Open(const wxString& path);

    // Returns the number of the next row, from 1.
    int32_t GetLineNumber() const override { return mRowNumber; }
    int32_t GetError() const override { return kNoError; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override;

  private:
    int32_t Run(const wchar_t* statement);

    std::unique_ptr<LegacyRowSource> mSource;
    AttributeList mAttributes;
    std::vector<std::wstring> mValues;
    int32_t mRowNumber = 1;
    // One more than the number of rows.
    float mProgressDivisor = 1.0f;
    // True while a statement has more rows.
    bool mIsRunning = false;
};
