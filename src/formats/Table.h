#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/CardRecord.h"
#include "store/CardUuid.h"

class CharSource;
class MediaSource;

// Tables as people have them: lists from mails, spreadsheets with headings of their own, the plain
// text of Anki. A survey looks at the first rows and proposes a layout, which says what becomes of
// each column; a reader then turns the rows into records with the attributes of cards. A table of
// this program's own form, whose first row holds nothing but names of attributes, needs no layout
// and is read by a DelimitedReader alone.

// What becomes of a column.
enum class ColumnUse : size_t {
    kIgnore,
    // Becomes a line of the notes, after the heading of the column.
    kAppend,
    kFront,
    kFront2,
    kBack,
    kBack2,
    kNotes,
    kCategory,
    kChapter,
    kAuthor,
    kIntroductionOrder,
    kForwardX,
    kReverseX,
    kId,
    // The identity of a note in Anki, from which the card's is made.
    kNoteId,
    kIntroduced,
    kLastReview,
    kLastScore,
    kReviewInterval,
    kDifficulty,
    kErc,
    kReverseIntroduced,
    kReverseLastReview,
    kReverseLastScore,
    kReverseReviewInterval,
    kReverseDifficulty,
    kReverseErc,
    // The name of a picture or a sound, which becomes a line of that side.
    kFrontFile,
    kBackFile,
    kCount
};

// Returns the name of the attribute that a column of that use gives, or null for none.
const char* AttributeOfUse(ColumnUse use);
// Returns the use as a choice for a person.
wxString DescribeUse(ColumnUse use);

// Returns what a heading says about its column, in any of the languages that the program knows: the
// names of attributes, and words that people use for them. Returns nothing for any other word. For
// a language, such as "German", returns no use but its number, from 1, in language: the first such
// column is the front.
std::optional<ColumnUse> FindUseOfHeading(const wxString& heading, int& language);

struct TableColumn {
    // The cell of the first row; empty in a table without names.
    wxString Heading;
    ColumnUse Use = ColumnUse::kIgnore;
    // True when a quote at the front of a field is text, as it is in most rows that have one.
    bool QuotesAreText = false;
};

// How the rows of a table are read.
struct TableLayout {
    // Separates the fields: one character, or a text such as " - ", whose first place splits a line
    // in two.
    std::wstring Separator = L"\t";
    // The number of lines before the rows that say how to read them, such as "sep=;".
    int32_t HeadLines = 0;
    // True when the first row names the columns.
    bool HasHeader = false;
    // A row's further fields are left out.
    std::vector<TableColumn> Columns;
    // True when the fields are HTML.
    bool IsHtml = false;
    // True when \n, \r and \\ stand for line breaks and a backslash, as in this program's own
    // tables.
    bool HasEscapes = false;
    // True when rows that begin with "#" are comments.
    bool HasComments = false;
    // True when quotes are text in every column.
    bool QuotesAreText = false;
    // The category of all cards when no column names theirs; may be empty.
    wxString Category;
    wxString Tags;

    bool HasUse(ColumnUse use) const;
    // Returns whether a row can become a new card, or change one that has an identity.
    bool IsComplete() const;
};

// What the user has decided about a table; the survey finds the rest.
struct TableChoice {
    wxFontEncoding Encoding = wxFONTENCODING_SYSTEM;
    // Empty lets the survey find it. " - " stands for any text between the two halves of a line.
    std::wstring Separator;
    std::optional<bool> HasHeader;
    bool QuotesAreText = false;
};

// The findings from the first rows of a file.
struct TableSurvey {
    // The encoding of the whole text; wxFONTENCODING_SYSTEM for UTF-8 or Windows-1252.
    wxFontEncoding Encoding = wxFONTENCODING_SYSTEM;
    // The same for this program's own forms, whose encoding is never guessed from their letters.
    wxFontEncoding OwnEncoding = wxFONTENCODING_SYSTEM;
    TableLayout Layout;
    // The first rows that become cards, with a text for each column.
    std::vector<std::vector<wxString>> Rows;
    // The first line of the text that is not empty.
    wxString FirstLine;
    // True when the first row holds only names of attributes, so that no layout is needed.
    bool IsOwnForm = false;
    // True when most lines are "Name: text" and enough of the names are attributes.
    bool IsOwnText = false;
};

// How many rows a survey shows, and how many columns a table may have.
constexpr size_t kSurveyedRows = 20;
constexpr size_t kMostColumns = 200;

// Looks at the beginning of a file. A file that cannot be read gives no columns.
TableSurvey SurveyTable(const wxString& fileName, const TableChoice& choice);

// Finds the category name of a stored card. Returns false for a card that the store lacks.
using CategoryFinder = std::function<bool(const CardUuid& id, wxString& category)>;

// Makes a reader of the raw rows: its records have one attribute for each column of the layout, in
// their order. It has read past the header. The source is not owned.
std::unique_ptr<CardRecordReader> MakeRowReader(CharSource& source, const TableLayout& layout,
                                                bool isCut = false);

// Reads the rows of a table as records of attributes. The source and the files, which may be null,
// are not owned. A card that is found keeps its category when the table says nothing about it.
std::unique_ptr<CardRecordReader> MakeTableReader(CharSource& source, const TableLayout& layout,
                                                  CategoryFinder findCategory,
                                                  MediaSource* media = nullptr);
