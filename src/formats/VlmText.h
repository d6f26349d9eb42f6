#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

#include "formats/CardRecord.h"

class CharSource;
class TextSink;

// Reads the program's own text form, in which this is a card with two lines on its back:
//
//     # A comment.
//     Front: apple
//     Back: Apfel
//     Back: (der)
//
// Each attribute has a line, and a blank line ends a record. A name repeated on the next line
// continues its value.
class VlmTextReader : public CardRecordReader {
  public:
    // The source is not owned. With ignoreNameCase, names that differ only in case are the same
    // name within a record.
    VlmTextReader(CharSource& source, bool ignoreNameCase);

    int32_t GetLineNumber() const override { return mLineNumber; }
    int32_t GetError() const override { return mError; }
    uint32_t GetAttributeCount() const override;
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override;

  private:
    void SkipFaultyRecord();
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
    // True when the previous line, comments aside, belongs to the last attribute.
    bool mHasLast = false;
    // The names of a record that has too many to search through them at each line.
    std::unordered_set<std::wstring> mNames;
    std::wstring mLine;
};

// Writes the program's own text form. An empty value leaves no line. A carriage return, a line
// feed, or both together end a line of a value.
class VlmTextWriter : public CardRecordWriter {
  public:
    // The sink is not owned.
    explicit VlmTextWriter(TextSink& sink) : mSink(sink) {}

    // Returns -1 for a name that a reader would take for a comment or would cut at its colon.
    int WriteAttribute(const AttributeName& name, std::u16string_view value) override;
    int WritePlain(const AttributeName& name, std::string_view value) override;
    void EndRecord() override;
    void Flush() override;

  private:
    void Reserve(size_t units);
    template <class Value>
    void AppendLine(std::u16string_view name, Value value);

    TextSink& mSink;
    // The records since the last flush. Their memory is kept for the next ones.
    std::u16string mText;
    size_t mLength = 0;
    // The end of the last whole record.
    size_t mEnded = 0;
};
