#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

#include "exchange/CardAttributes.h"
#include "exchange/CardRecord.h"

class CharSource;
class TextSink;

// Reads the program's own text form: a line "Name: value" for each attribute, a blank line between
// records, "#" in front of a comment. A name repeated on the next line goes on with its value.
class VlmTextReader : public CardRecordReader {
  public:
    // The source is not owned. Names of one record are the same when they are spelled the same, or
    // alike but for case when ignoreNameCase is set.
    VlmTextReader(CharSource& source, bool ignoreNameCase);

    int32_t GetLineNumber() const override { return mLineNumber; }
    int32_t GetError() const override { return mError; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override;

  private:
    bool AddLine(std::wstring_view line);
    bool IsTaken(std::wstring_view name);
    std::wstring Key(std::wstring_view name) const;
    bool IsSameName(const wxString& known, std::wstring_view name) const;
    void TrimValues();

    CharSource& mSource;
    bool mIgnoreNameCase;
    int32_t mLineNumber = 1;
    int32_t mError = kNoError;
    AttributeList mAttributes;
    // The line before, comments aside, belongs to the last attribute.
    bool mHasLast = false;
    // Names of a record too long to be searched through at each line.
    std::unordered_set<std::wstring> mNames;
    std::wstring mLine;
};

// Writes the program's own text form: one attribute a line as "Name: value", a value of several
// lines under its repeated name, a blank line behind each record. An empty value leaves no line. A
// carriage return, with or without a line feed behind it, ends a line of a value as a line feed
// does.
class VlmTextWriter : public CardRecordWriter {
  public:
    // The sink is not owned.
    explicit VlmTextWriter(TextSink& sink) : mSink(sink) {}

    // Refuses a name that a reader would take for a comment, or would cut at a colon.
    int WriteAttribute(std::u16string_view name, std::u16string_view value) override;
    void EndRecord() override;

  private:
    void AppendLine(std::u16string_view name, std::u16string_view value);

    TextSink& mSink;
    // The record, which is written as a whole, in room that stays from one to the next.
    std::u16string mRecord;
    size_t mLength = 0;
};
