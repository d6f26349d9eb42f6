#pragma once

#include <cstdint>

#include "exchange/CardAttribute.h"

// A source of records, each a list of attributes. The import reads it to its end once, on whatever
// thread the import runs, and deletes it through this interface.
class CardRecordReader {
  public:
    // What GetError gives.
    enum Error : int32_t { kNoError = 0, kMissingSeparator = 1, kRepeatedAttribute = 2 };

    virtual ~CardRecordReader() = default;

    // The current line or row of the source, from 1.
    virtual int32_t GetLineNumber() const = 0;
    virtual int32_t GetError() const = 0;
    virtual uint32_t GetAttributeCount() const = 0;
    // An attribute of the current record; valid until the next ReadRecord.
    virtual const CardAttribute& GetAttribute(uint32_t index) const = 0;
    // Reads the next record, which may have no attributes. False at the end of the source and on
    // an error.
    virtual bool ReadRecord() = 0;
    // The part of the source that has been read, 0 to 1.
    virtual float GetProgress() const = 0;
};
