#pragma once

#include <string>

#include "exchange/CardRecordWriter.h"

class TextSink;

// Writes the program's own text form: one attribute a line as "Name: value", a value of several
// lines under its repeated name, a blank line behind each record. An empty value leaves no line.
class VlmTextWriter : public CardRecordWriter {
  public:
    // The sink is not owned.
    explicit VlmTextWriter(TextSink& sink) : mSink(sink) {}

    // Refuses a name that a reader would take for a comment, or would cut at a colon.
    int WriteAttribute(const wxString& name, const wxString& value) override;
    void EndRecord() override;

  private:
    TextSink& mSink;
    // The record so far, which is written as a whole.
    std::wstring mRecord;
};
