#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "formats/CardRecord.h"

class TextSink;

// Writes records as the plain text that Anki imports: lines with keys, such as "#separator:tab",
// then a row for each card. A field with a tab, a quote or a line break is quoted, and its quotes
// are doubled, so that every text comes back as it was. Where pictures or sounds are to be tags,
// the fields are HTML, in which blanks that count and line breaks have forms of their own.
class AnkiTextWriter : public CardRecordWriter {
  public:
    // Writes the lines with keys at once. The sink is not owned.
    AnkiTextWriter(TextSink& sink, bool isHtml);

    // Leaves out an attribute that the text has no column for. Always returns 0.
    int WriteAttribute(const AttributeName& name, std::u16string_view value) override;
    void EndRecord() override;
    // Each row is handed on when its record ends.
    void Flush() override {}

  private:
    static constexpr size_t kColumns = 7;

    TextSink& mSink;
    const bool mIsHtml;
    std::array<std::u16string, kColumns> mFields;
    std::u16string mRow;
};
