#include "formats/Table.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "formats/Delimited.h"
#include "formats/HtmlText.h"
#include "formats/MediaSource.h"
#include "formats/TextSource.h"

bool TableLayout::HasUse(ColumnUse use) const {
    return std::any_of(Columns.begin(), Columns.end(),
                       [use](const TableColumn& column) { return column.Use == use; });
}

bool TableLayout::IsComplete() const {
    const bool hasSides = (HasUse(ColumnUse::kFront) || HasUse(ColumnUse::kFrontFile)) &&
                          (HasUse(ColumnUse::kBack) || HasUse(ColumnUse::kBackFile));
    return hasSides || (HasUse(ColumnUse::kId) && Columns.size() > 1);
}

namespace {

// Reads lines that a text such as " - " splits in two.
class PairReader : public CardRecordReader {
  public:
    PairReader(CharSource& source, std::wstring separator, int32_t rowNumber)
        : mSource(source), mSeparator(std::move(separator)), mRowNumber(rowNumber) {}

    int32_t GetLineNumber() const override { return mRowNumber; }
    int32_t GetError() const override { return kNoError; }
    uint32_t GetAttributeCount() const override {
        return static_cast<uint32_t>(mAttributes.Count());
    }
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override { return mSource.GetProgress(); }

  private:
    void Add(std::wstring_view field);

    CharSource& mSource;
    std::wstring mSeparator;
    int32_t mRowNumber;
    std::wstring mLine;
    AttributeList mAttributes;
};

bool PairReader::ReadRecord() {
    mAttributes.Clear();
    while (!mSource.AtEnd()) {
        mSource.StartRecord();
        mSource.ReadLine(mLine);
        ++mRowNumber;
        const std::wstring_view line = TrimView(mLine);
        if (line.empty()) {
            continue;
        }
        const size_t place = line.find(mSeparator);
        Add(line.substr(0, place));
        Add(place == std::wstring_view::npos ? std::wstring_view()
                                             : line.substr(place + mSeparator.size()));
        return true;
    }
    return false;
}

void PairReader::Add(std::wstring_view field) {
    const std::wstring_view text = TrimView(field);
    CardAttribute& attribute = mAttributes.Append();
    attribute.Value.assign(text.data(), text.size());
    attribute.Line = mRowNumber;
}

}  // namespace

std::unique_ptr<CardRecordReader> MakeRowReader(CharSource& source, const TableLayout& layout,
                                                bool isCut) {
    std::wstring line;
    for (int32_t i = 0; i < layout.HeadLines; ++i) {
        source.ReadLine(line);
    }
    std::unique_ptr<CardRecordReader> reader;
    if (layout.Separator.size() > 1) {
        reader = std::make_unique<PairReader>(source, layout.Separator, layout.HeadLines);
    } else {
        DelimitedReader::Foreign foreign;
        foreign.Columns.resize(layout.Columns.size());
        foreign.RowNumber = layout.HeadLines;
        foreign.Comment = layout.HasComments ? L'#' : L'\0';
        foreign.HasEscapes = layout.HasEscapes;
        foreign.QuotesAreText = layout.QuotesAreText;
        foreign.IsCut = isCut;
        for (const TableColumn& column : layout.Columns) {
            foreign.TextColumns.push_back(column.QuotesAreText);
        }
        const wchar_t delimiter = layout.Separator.empty() ? L'\t' : layout.Separator.front();
        reader = std::make_unique<DelimitedReader>(source, delimiter, std::move(foreign));
    }
    if (layout.HasHeader) {
        reader->ReadRecord();
    }
    return reader;
}

namespace {

// The records of a table with the attributes of cards.
class TableReader : public CardRecordReader {
  public:
    TableReader(std::unique_ptr<CardRecordReader> rows, TableLayout layout,
                CategoryFinder findCategory, MediaSource* media);

    int32_t GetLineNumber() const override { return mRows->GetLineNumber(); }
    int32_t GetError() const override { return mRows->GetError(); }
    uint32_t GetAttributeCount() const override {
        return static_cast<uint32_t>(mAttributes.Count());
    }
    const CardAttribute& GetAttribute(uint32_t index) const override { return mAttributes[index]; }
    bool ReadRecord() override;
    float GetProgress() const override { return mRows->GetProgress(); }
    int32_t CountLeftOut() const override { return mLeftOut; }
    std::vector<SourceNotice> GetNotices() const override { return mRows->GetNotices(); }
    int32_t CountFieldLines() const override { return mRows->CountFieldLines(); }

  private:
    void TakeIdentity();
    void TakeFields();
    bool TakeField(size_t column);
    bool TakeFile(ColumnUse use, const wxString& value);
    void AddFiles(ColumnUse side, const wxString& lines);
    bool IsStored(wxString& category) const;
    void Add(const char* name, const wxString& value);
    void AppendNote(const wxString& heading, const wxString& value);

    std::unique_ptr<CardRecordReader> mRows;
    TableLayout mLayout;
    CategoryFinder mFindCategory;
    MediaSource* mpMedia;
    // The column with the identity, or the number of columns.
    size_t mIdColumn;
    bool mHasFront2;
    bool mHasBack2;
    bool mHasCategory;
    AttributeList mAttributes;
    wxString mNotes;
    // The lines of pictures and sounds of each side.
    wxString mFrontFiles;
    wxString mBackFiles;
    CardUuid mId;
    // True when the present row has any text, and when one of its sides has lost all of its text.
    bool mHasText = false;
    bool mIsSideLost = false;
    int32_t mLeftOut = 0;
};

bool IsIdentity(ColumnUse use) {
    return use == ColumnUse::kId || use == ColumnUse::kNoteId;
}

TableReader::TableReader(std::unique_ptr<CardRecordReader> rows, TableLayout layout,
                         CategoryFinder findCategory, MediaSource* media)
    : mRows(std::move(rows)),
      mLayout(std::move(layout)),
      mFindCategory(std::move(findCategory)),
      mpMedia(media),
      mIdColumn(static_cast<size_t>(
          std::find_if(mLayout.Columns.begin(), mLayout.Columns.end(),
                       [](const TableColumn& column) { return IsIdentity(column.Use); }) -
          mLayout.Columns.begin())),
      mHasFront2(mLayout.HasUse(ColumnUse::kFront2)),
      mHasBack2(mLayout.HasUse(ColumnUse::kBack2)),
      mHasCategory(mLayout.HasUse(ColumnUse::kCategory)) {}

void TableReader::Add(const char* name, const wxString& value) {
    CardAttribute& attribute = mAttributes.Append();
    attribute.Name = name;
    attribute.Value = value;
    attribute.Line = mRows->GetLineNumber();
}

bool TableReader::ReadRecord() {
    while (mRows->ReadRecord()) {
        mAttributes.Clear();
        mNotes.clear();
        mFrontFiles.clear();
        mBackFiles.clear();
        mHasText = false;
        mIsSideLost = false;
        TakeIdentity();
        TakeFields();
        if (mIsSideLost) {
            ++mLeftOut;
        } else if (mHasText) {
            return true;
        }
    }
    mAttributes.Clear();
    return false;
}

// The engine wants the identity first.
void TableReader::TakeIdentity() {
    mId = CardUuid();
    if (mIdColumn >= mRows->GetAttributeCount()) {
        return;
    }
    const wxString& value = mRows->GetAttribute(static_cast<uint32_t>(mIdColumn)).Value;
    if (value.empty()) {
        return;
    }
    if (mLayout.Columns[mIdColumn].Use == ColumnUse::kNoteId) {
        // The identity that a package of the same deck gives to the note's first card.
        mId = NoteCardId(ToUtf8(value), "");
        Add("id", FormatUuid(mId));
        return;
    }
    ParseUuid(value, mId);
    Add("id", value);
}

void TableReader::TakeFields() {
    const size_t count = std::min<size_t>(mLayout.Columns.size(), mRows->GetAttributeCount());
    wxString category;
    const bool isStored = IsStored(category);
    // A note of a deck that the store has stays where it is, as with a package of the deck.
    const bool staysInPlace = isStored && mLayout.Columns[mIdColumn].Use == ColumnUse::kNoteId;
    bool namesCategory = false;
    for (size_t i = 0; i < count; ++i) {
        if (staysInPlace && mLayout.Columns[i].Use == ColumnUse::kCategory) {
            continue;
        }
        const bool isTaken = TakeField(i);
        namesCategory =
            namesCategory || (isTaken && mLayout.Columns[i].Use == ColumnUse::kCategory);
    }
    AddFiles(ColumnUse::kFront, mFrontFiles);
    AddFiles(ColumnUse::kBack, mBackFiles);
    if (!mLayout.Tags.empty()) {
        AppendNote("Tags", mLayout.Tags);
    }
    if (!mNotes.empty()) {
        Add(AttributeOfUse(ColumnUse::kNotes), mNotes);
    }
    if (!namesCategory && isStored) {
        if (!category.empty()) {
            Add(AttributeOfUse(ColumnUse::kCategory), category);
        }
    } else if (!namesCategory && !mHasCategory && !mLayout.Category.empty()) {
        Add(AttributeOfUse(ColumnUse::kCategory), mLayout.Category);
    }
}

// Returns whether the field has become an attribute of its own.
bool TableReader::TakeField(size_t column) {
    const ColumnUse use = mLayout.Columns[column].Use;
    const CardAttribute& field = mRows->GetAttribute(static_cast<uint32_t>(column));
    if (use == ColumnUse::kIgnore || column == mIdColumn) {
        return false;
    }
    HtmlText text;
    if (mLayout.IsHtml) {
        HtmlLosses losses;
        text = ReadHtml(field.Value, false, losses, mpMedia);
    }
    const wxString& value = mLayout.IsHtml ? text.Text : field.Value;
    const bool isSide = use == ColumnUse::kFront || use == ColumnUse::kBack;
    mIsSideLost = mIsSideLost || (isSide && value.empty() && !field.Value.empty());
    mHasText = mHasText || !value.empty();
    if (use == ColumnUse::kFrontFile || use == ColumnUse::kBackFile) {
        return TakeFile(use, value);
    }
    if (value.empty() && !isSide) {
        return false;
    }
    if (use == ColumnUse::kAppend || use == ColumnUse::kNotes) {
        AppendNote(use == ColumnUse::kNotes ? wxString() : mLayout.Columns[column].Heading, value);
        return false;
    }
    Add(AttributeOfUse(use), value);
    if (!text.Reading.empty() && use == ColumnUse::kFront && !mHasFront2) {
        Add(AttributeOfUse(ColumnUse::kFront2), text.Reading);
    } else if (!text.Reading.empty() && use == ColumnUse::kBack && !mHasBack2) {
        Add(AttributeOfUse(ColumnUse::kBack2), text.Reading);
    }
    return true;
}

// Several names may stand in one cell, each in a line. One that is no file is text.
bool TableReader::TakeFile(ColumnUse use, const wxString& value) {
    wxString& lines = use == ColumnUse::kFrontFile ? mFrontFiles : mBackFiles;
    for (const wxString& part : wxSplit(value, '\n', '\0')) {
        const wxString source = TrimWide(part);
        const MediaKind kind = HasSoundName(source) ? MediaKind::kSound : MediaKind::kPicture;
        const wxString name = mpMedia == nullptr ? wxString() : mpMedia->NameOf(kind, source);
        if (!source.empty()) {
            lines +=
                (lines.empty() ? "" : "\n") + (name.empty() ? source : MakeMediaLine(kind, name));
        }
    }
    return false;
}

void TableReader::AddFiles(ColumnUse side, const wxString& lines) {
    if (lines.empty()) {
        return;
    }
    const char* const name = AttributeOfUse(side);
    for (size_t i = 0; i < mAttributes.Count(); ++i) {
        if (mAttributes[static_cast<uint32_t>(i)].Name == name) {
            wxString& value = mAttributes[static_cast<uint32_t>(i)].Value;
            value += (value.empty() ? "" : "\n") + lines;
            return;
        }
    }
    Add(name, lines);
}

bool TableReader::IsStored(wxString& category) const {
    return !mId.IsZero() && mFindCategory && mFindCategory(mId, category);
}

void TableReader::AppendNote(const wxString& heading, const wxString& value) {
    if (!mNotes.empty()) {
        mNotes += "\n";
    }
    mNotes += heading.empty() ? value : heading + ": " + value;
}

}  // namespace

std::unique_ptr<CardRecordReader> MakeTableReader(CharSource& source, const TableLayout& layout,
                                                  CategoryFinder findCategory, MediaSource* media) {
    return std::make_unique<TableReader>(MakeRowReader(source, layout), layout,
                                         std::move(findCategory), media);
}
