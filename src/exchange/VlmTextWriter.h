#pragma once

#include <cstddef>
#include <string>

#include "exchange/CardRecordWriter.h"

class TextSink;

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
