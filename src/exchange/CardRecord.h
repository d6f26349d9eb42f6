#pragma once

#include <wx/string.h>

#include <cstdint>
#include <string_view>

#include "exchange/CardAttributes.h"

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
    // Why the source could not be read to its end, as a sentence; empty for none of that kind.
    virtual wxString GetFailure() const { return wxString(); }
    virtual uint32_t GetAttributeCount() const = 0;
    // An attribute of the current record; valid until the next ReadRecord.
    virtual const CardAttribute& GetAttribute(uint32_t index) const = 0;
    // Reads the next record, which may have no attributes. False at the end of the source and on
    // an error.
    virtual bool ReadRecord() = 0;
    // The part of the source that has been read, 0 to 1.
    virtual float GetProgress() const = 0;
};

// A sink of records: the attributes of one record, then its end. Texts are UTF-16, as the store
// keeps them.
class CardRecordWriter {
  public:
    virtual ~CardRecordWriter() = default;

    // 0, or -1 when this form has no place for an attribute of that name.
    virtual int WriteAttribute(std::u16string_view name, std::u16string_view value) = 0;
    virtual void EndRecord() = 0;
};

// A stored card side may hold a second text, such as a reading, behind the main text: on a line of
// its own in the brackets U+3010 and U+3011.

// The two texts of a side, which are parts of it.
struct SplitSide {
    std::u16string_view Main;
    std::u16string_view Second;
};

bool HasSecondText(std::u16string_view side);
// Without a second text, the main text is the whole side and the second is empty.
SplitSide SplitSecondText(std::u16string_view side);
// An empty second text leaves no trace.
wxString JoinSecondText(const wxString& main, const wxString& second);
