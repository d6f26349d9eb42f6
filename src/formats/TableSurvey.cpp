#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "formats/Delimited.h"
#include "formats/Table.h"
#include "formats/TextEncoding.h"
#include "formats/TextSource.h"

// Finds out how a table is laid out. All of it is a guess from the first hundred lines, made in
// this order: the encoding, the head lines that give instructions, what separates the fields,
// whether the first row names the columns, and what each column is.

namespace {

using Row = std::vector<wxString>;
using Rows = std::vector<Row>;

constexpr size_t kSampledLines = 100;
// The lines of a list are short; a longer line means that it is no list.
constexpr size_t kLongestLine = size_t{1} << 16;

// The texts that may stand between the two halves of a line.
constexpr std::wstring_view kPairSeparators[] = {L" - ",      L" \u2013 ", L" \u2014 ", L" = ",
                                                 L" \u2192 ", L" -> ",     L" : ",      L": "};

struct Sample {
    wxFontEncoding Encoding = wxFONTENCODING_SYSTEM;
    std::vector<std::wstring> Lines;
    // True when the file goes on after these lines.
    bool IsCut = false;
};

Sample ReadSample(const wxString& fileName, wxFontEncoding chosen) {
    Sample sample;
    // A file that cannot be read shows no rows; the import tells why.
    const wxLogNull silence;
    wxFileInputStream stream(fileName);
    if (!stream.IsOk()) {
        return sample;
    }
    const wxFontEncoding mark = DetectTextEncoding(stream);
    sample.Encoding = chosen;
    if (chosen == wxFONTENCODING_SYSTEM && mark == wxFONTENCODING_SYSTEM) {
        sample.Encoding = RecognizeEncoding(stream);
    }
    wxFontEncoding encoding = sample.Encoding;
    if (encoding == wxFONTENCODING_SYSTEM) {
        constexpr wxFileOffset kMostGuessed = wxFileOffset{1} << 20;
        encoding = mark != wxFONTENCODING_SYSTEM ? mark : GuessTextEncoding(stream, kMostGuessed);
    }
    CharSource source(stream, encoding);
    source.LimitToPreview();
    std::wstring line;
    while (sample.Lines.size() < kSampledLines && !source.AtEnd()) {
        source.StartRecord(kLongestLine);
        source.ReadLine(line);
        sample.Lines.push_back(line);
    }
    sample.IsCut = !source.AtEnd();
    return sample;
}

// Reads the rows of the sample. Empty fields at the end of a row are left out. The counts, which
// may be null, receive the quotes of the columns.
Rows ReadRows(const Sample& sample, const TableLayout& layout,
              std::vector<DelimitedReader::QuoteCount>* quotes = nullptr) {
    std::wstring text;
    for (const std::wstring& line : sample.Lines) {
        text += line + L"\n";
    }
    const std::string bytes = ToUtf8(text);
    wxMemoryInputStream stream(bytes.data(), bytes.size());
    CharSource source(stream, wxFONTENCODING_UTF8);
    TableLayout raw = layout;
    raw.HasHeader = false;
    raw.Columns.assign(kMostColumns, TableColumn());
    for (size_t i = 0; i < layout.Columns.size(); ++i) {
        raw.Columns[i].QuotesAreText = layout.Columns[i].QuotesAreText;
    }
    const std::unique_ptr<CardRecordReader> reader = MakeRowReader(source, raw, sample.IsCut);
    Rows rows;
    while (reader->ReadRecord()) {
        Row row;
        for (uint32_t i = 0; i < reader->GetAttributeCount(); ++i) {
            row.push_back(reader->GetAttribute(i).Value);
        }
        while (!row.empty() && row.back().empty()) {
            row.pop_back();
        }
        if (!row.empty()) {
            rows.push_back(std::move(row));
        }
    }
    const auto* const table = dynamic_cast<const DelimitedReader*>(reader.get());
    if (quotes != nullptr && table != nullptr) {
        *quotes = table->GetQuoteCounts();
    }
    return rows;
}

// The head lines.

// The contents of the lines before the rows.
struct Head {
    std::wstring Separator;
    std::optional<bool> IsHtml;
    // The line with the names of the columns, which are separated like the rows.
    std::wstring Columns;
    // The number of a column, from 1, by its key.
    std::map<wxString, size_t> Special;
};

std::wstring SeparatorOfName(const wxString& name) {
    static const std::map<wxString, std::wstring> names = {
        {"tab", L"\t"}, {"comma", L","}, {"semicolon", L";"}, {"space", L" "},
        {"pipe", L"|"}, {"colon", L":"}, {"\\t", L"\t"}};
    const auto found = names.find(LowerWide(name));
    if (found != names.end()) {
        return found->second;
    }
    return name.empty() ? std::wstring() : name.Left(1).ToStdWstring();
}

// Reads one line "#key:value". Returns false for any other line.
bool ReadHeadLine(const std::wstring& line, Head& head, TableLayout& layout) {
    const size_t colon = line.find(L':');
    if (line.empty() || line.front() != L'#' || colon == std::wstring::npos) {
        return false;
    }
    const wxString key = LowerWide(wxString(line.substr(1, colon - 1)));
    const std::wstring raw = line.substr(colon + 1);
    const wxString value = TrimWide(raw);
    if (key == "separator") {
        head.Separator = SeparatorOfName(value.empty() ? wxString(raw) : value);
    } else if (key == "html") {
        head.IsHtml = LowerWide(value) == "true";
    } else if (key == "columns") {
        head.Columns = raw;
    } else if (key == "deck") {
        layout.Category = value;
    } else if (key == "tags") {
        layout.Tags = value;
    } else if (key.EndsWith(" column")) {
        int32_t number = 0;
        if (ParseWholeNumber(value, number) && number > 0) {
            head.Special[key] = static_cast<size_t>(number);
        }
    } else {
        return key == "notetype" || key == "if matches" || key == "match scope";
    }
    return true;
}

Head ReadHead(const Sample& sample, TableLayout& layout) {
    Head head;
    for (const std::wstring& line : sample.Lines) {
        const wxString text = TrimWide(line);
        const bool isSep = layout.HeadLines == 0 && LowerWide(text).StartsWith("sep=");
        if (isSep) {
            const std::wstring rest = line.substr(line.find(L'=') + 1);
            head.Separator = rest.substr(0, 1);
        } else if (ReadHeadLine(line, head, layout)) {
            layout.HasComments = true;
        } else {
            break;
        }
        ++layout.HeadLines;
    }
    return head;
}

// The separator.

// Some attributes have a letter for a name, such as "a", but a letter of ours heads no column of
// another program's list: it is a word in one. A single sign of Chinese or Japanese is a word.
bool IsLetter(const wxString& cell) {
    constexpr wchar_t kFirstSign = 0x2E80;
    const wxString text = TrimWide(cell);
    return text.length() == 1 && text[0] < kFirstSign && std::iswalpha(text[0].GetValue()) != 0;
}

bool IsKnownHeading(const wxString& cell, std::optional<ColumnUse>& use, int& language) {
    use = FindUseOfHeading(cell, language);
    // The code of a language, such as "it", is a word of another one as soon as more stands there.
    const bool isCode = language > 0 && cell.length() > 3 && !std::iswalpha(cell[2].GetValue());
    return (use.has_value() || language > 0) && !IsLetter(cell) && !isCode;
}

size_t CountUses(const Row& row) {
    return static_cast<size_t>(std::count_if(row.begin(), row.end(), [](const wxString& cell) {
        std::optional<ColumnUse> use;
        int language = 0;
        return IsKnownHeading(cell, use, language);
    }));
}

struct Shape {
    // The share of rows with more than one field, and the share with the commonest number of
    // fields.
    double Parted = 0.0;
    double Even = 0.0;
    size_t Fields = 0;
    size_t Rows = 0;
    bool HasNames = false;
};

Shape ShapeOf(const Rows& rows) {
    Shape shape;
    std::map<size_t, size_t> counts;
    size_t parted = 0;
    shape.Rows = rows.size();
    for (const Row& row : rows) {
        parted += size_t{row.size() > 1};
        ++counts[row.size()];
    }
    size_t most = 0;
    for (const auto& [fields, count] : counts) {
        if (count > most && fields > 1) {
            most = count;
            shape.Fields = fields;
        }
    }
    if (!rows.empty()) {
        shape.Parted = static_cast<double>(parted) / static_cast<double>(rows.size());
        shape.Even = static_cast<double>(most) / static_cast<double>(rows.size());
        shape.HasNames = CountUses(rows.front()) > 1;
    }
    return shape;
}

struct Candidate {
    std::wstring_view Separator;
    // The least share of rows that it must split, and how much it is preferred over others.
    double LeastParted;
    double Bonus;
};

// A tab in a text is nearly always a separator; a comma or a blank hardly ever is.
constexpr Candidate kCandidates[] = {{L"\t", 0.5, 0.6}, {L"|", 0.7, 0.3},   {L";", 0.6, 0.3},
                                     {L",", 0.7, 0.0},  {L" - ", 0.8, 0.2}, {L" ", 1.0, -0.3}};

double Rate(const Shape& shape, const Candidate& candidate) {
    // Every text has blanks; only a list has two words in each line.
    const bool isDoubtful =
        candidate.Separator == L" " && (shape.Rows < 2 || shape.Fields != 2 || shape.Even < 1.0);
    if (shape.Parted < candidate.LeastParted || isDoubtful) {
        return 0.0;
    }
    return 0.5 + shape.Even + candidate.Bonus + (shape.HasNames ? 1.0 : 0.0);
}

// Returns the name of a line "Name: text", or the empty text.
std::wstring NameOfLine(const std::wstring& line) {
    constexpr size_t kLongestName = 30;
    const std::wstring_view text = TrimView(line);
    const std::wstring_view name = TrimView(text.substr(0, text.find_first_of(L":\uFF1A")));
    const bool isName = name.size() < text.size() && name.size() <= kLongestName &&
                        name.find_first_of(L" \t\u3000") == std::wstring_view::npos &&
                        text.find(L'\t') == std::wstring_view::npos;
    return isName ? std::wstring(name) : std::wstring();
}

// Lines "Name: text" are this program's own text form when their names are attributes, however
// wrong some of them are. In a list of pairs, such as "book: Buch", a name may be one by chance,
// but no name comes again and again.
bool IsOwnText(const Sample& sample) {
    size_t lines = 0;
    size_t named = 0;
    size_t known = 0;
    std::set<std::wstring> names;
    for (const std::wstring& line : sample.Lines) {
        const std::wstring_view text = TrimView(line);
        if (text.empty() || text.front() == L'#') {
            continue;
        }
        ++lines;
        const std::wstring name = NameOfLine(line);
        AttributeInfo info;
        named += size_t{!name.empty()};
        known += size_t{LookupAttribute(name, info)};
        names.insert(name);
    }
    const bool isMost = named * 5 >= lines * 4;
    return isMost && known > 0 && (known * 3 >= named || names.size() * 2 <= named);
}

// Returns the text that splits most lines in two, or the first one when none does.
std::wstring FindPairSeparator(const Sample& sample, const TableLayout& layout) {
    const bool isOwnText = IsOwnText(sample);
    std::wstring best(kPairSeparators[0]);
    double greatest = 0.0;
    for (const std::wstring_view separator : kPairSeparators) {
        TableLayout tried = layout;
        tried.Separator = separator;
        const Rows rows = ReadRows(sample, tried);
        const double parted = ShapeOf(rows).Parted;
        const bool isColon = separator.find(L':') != std::wstring_view::npos;
        if (parted > greatest && !(isColon && (isOwnText || rows.size() < 2))) {
            greatest = parted;
            best = separator;
        }
    }
    return best;
}

// Returns the empty text when nothing separates the fields.
std::wstring FindSeparator(const Sample& sample, const TableLayout& layout) {
    std::wstring best;
    double greatest = 0.0;
    for (const Candidate& candidate : kCandidates) {
        TableLayout tried = layout;
        tried.Separator = candidate.Separator.size() > 1 ? FindPairSeparator(sample, layout)
                                                         : std::wstring(candidate.Separator);
        const double rate = Rate(ShapeOf(ReadRows(sample, tried)), candidate);
        if (rate > greatest) {
            greatest = rate;
            best = tried.Separator;
        }
    }
    return best;
}

// The header and the columns.

bool IsSide(ColumnUse use) {
    return use == ColumnUse::kFront || use == ColumnUse::kBack;
}

wxString CellAt(const Row& row, size_t column) {
    return column < row.size() ? row[column] : wxString();
}

bool IsNumber(const wxString& cell) {
    return std::all_of(cell.begin(), cell.end(), [](wxUniChar character) {
        return (character >= '0' && character <= '9') || character == '.' || character == ',';
    });
}

// Returns whether the text has a letter of another alphabet than the Latin one.
bool IsForeignScript(const wxString& cell) {
    constexpr wchar_t kFirstGreek = 0x370;
    return std::any_of(cell.begin(), cell.end(), [](wxUniChar character) {
        return character >= kFirstGreek && std::iswalpha(character.GetValue()) != 0;
    });
}

bool BeginsSmall(const wxString& cell) {
    return !cell.empty() && std::iswlower(cell[0].GetValue()) != 0;
}

// Judges whether the rows below look otherwise than the first: a column of numbers or of another
// alphabet stands below a word. Where at least half of the first row is known, capitals count too:
// its words begin with them, and those below do not, in all columns or, when most is known, in one.
bool LookOtherwise(const Rows& rows, size_t known, size_t filled) {
    const Row& first = rows.front();
    const bool hasCapitals =
        known * 2 >= filled && std::none_of(first.begin(), first.end(), BeginsSmall);
    size_t small = 0;
    for (size_t column = 0; column < first.size(); ++column) {
        const wxString& head = first[column];
        const auto allBelow = [&](const auto& predicate) {
            return std::all_of(rows.begin() + 1, rows.end(), [&](const Row& row) {
                const wxString cell = CellAt(row, column);
                return !cell.empty() && predicate(cell);
            });
        };
        const bool isWord = !head.empty() && !IsNumber(head) && !IsForeignScript(head);
        if (isWord && rows.size() > 2 && (allBelow(IsNumber) || allBelow(IsForeignScript))) {
            return true;
        }
        small += size_t{isWord && allBelow(BeginsSmall)};
    }
    return hasCapitals && small >= (known * 2 > filled ? 1 : filled);
}

// Judges whether the first row names the columns: all of its cells say what they are, or one does
// and the rows below look otherwise. No two may say that they are the same side or the same
// language, as the cells of a list of such words do.
bool IsHeader(const Rows& rows) {
    size_t known = 0;
    size_t filled = 0;
    bool namesSide = false;
    std::set<ColumnUse> sides;
    std::set<int> languages;
    for (const wxString& cell : rows.front()) {
        int language = 0;
        std::optional<ColumnUse> use;
        filled += size_t{!cell.empty()};
        if (!IsKnownHeading(cell, use, language)) {
            continue;
        }
        ++known;
        namesSide = namesSide || language > 0 || (use && IsSide(*use));
        const bool isRepeated = (language > 0 && !languages.insert(language).second) ||
                                (use && IsSide(*use) && !sides.insert(*use).second);
        if (isRepeated) {
            return false;
        }
    }
    return known == filled ? namesSide
                           : known > 0 && rows.size() > 1 && LookOtherwise(rows, known, filled);
}

template <class Predicate>
bool AllCells(const Rows& rows, size_t column, Predicate predicate) {
    return std::all_of(rows.begin(), rows.end(), [&](const Row& row) {
        const wxString cell = CellAt(row, column);
        return cell.empty() || predicate(cell);
    });
}

bool IsUuid(const wxString& cell) {
    CardUuid id;
    return ParseUuid(cell, id) == 0;
}

bool IsRepeatable(ColumnUse use) {
    return use == ColumnUse::kIgnore || use == ColumnUse::kAppend || use == ColumnUse::kNotes;
}

// Gives the columns their uses: first those that their headings name, then languages and columns
// without a name as the sides that are still missing, the rest as notes.
class ColumnPlanner {
  public:
    ColumnPlanner(TableLayout& layout, const Rows& rows) : mLayout(layout), mRows(rows) {}

    void Plan(const std::map<size_t, ColumnUse>& special) {
        mIsOpen.assign(mLayout.Columns.size(), true);
        mLanguages.assign(mLayout.Columns.size(), 0);
        for (const auto& [column, use] : special) {
            Give(column, use);
        }
        TakeHeadings();
        FillSides(true);
        FillSides(false);
        TakeNotesForBack();
        for (size_t i = 0; i < mLayout.Columns.size(); ++i) {
            if (mIsOpen[i]) {
                mLayout.Columns[i].Use = IsIdle(i) ? ColumnUse::kIgnore : ColumnUse::kAppend;
            }
        }
    }

  private:
    void Give(size_t column, ColumnUse use) {
        if (column < mLayout.Columns.size() && mIsOpen[column]) {
            mLayout.Columns[column].Use = use;
            mIsOpen[column] = false;
        }
    }

    void TakeHeadings() {
        for (size_t i = 0; i < mLayout.Columns.size(); ++i) {
            const wxString& heading = mLayout.Columns[i].Heading;
            const std::optional<ColumnUse> use = FindUseOfHeading(heading, mLanguages[i]);
            if (!use || !mIsOpen[i]) {
                continue;
            }
            if (*use == ColumnUse::kId && !AllCells(mRows, i, IsUuid)) {
                Give(i, ColumnUse::kIgnore);
            } else if (IsRepeatable(*use) || !mLayout.HasUse(*use)) {
                Give(i, *use);
            }
        }
    }

    // Makes the first open columns the sides that are missing.
    void FillSides(bool onlyLanguages) {
        for (const ColumnUse side : {ColumnUse::kFront, ColumnUse::kBack}) {
            for (size_t i = 0; i < mLayout.Columns.size() && !mLayout.HasUse(side); ++i) {
                if (mIsOpen[i] && (onlyLanguages ? mLanguages[i] > 0 : !IsIdle(i))) {
                    Give(i, side);
                }
            }
        }
    }

    // Makes an example or an explanation the back when there is only a front beside it.
    void TakeNotesForBack() {
        for (size_t i = 0; i < mLayout.Columns.size() && !mLayout.HasUse(ColumnUse::kBack); ++i) {
            if (mLayout.Columns[i].Use == ColumnUse::kNotes) {
                mLayout.Columns[i].Use = ColumnUse::kBack;
            }
        }
    }

    // True for a column without texts: empty, or the numbers of the rows beside two others.
    bool IsIdle(size_t column) const {
        const bool isNumbers = mLayout.Columns.size() > 2 && AllCells(mRows, column, IsNumber);
        return isNumbers || AllCells(mRows, column, [](const wxString&) { return false; });
    }

    TableLayout& mLayout;
    const Rows& mRows;
    std::vector<bool> mIsOpen;
    std::vector<int> mLanguages;
};

// Returns the uses that head lines give to columns, counted from 0.
std::map<size_t, ColumnUse> SpecialColumns(const Head& head) {
    static const std::map<wxString, ColumnUse> uses = {{"guid column", ColumnUse::kNoteId},
                                                       {"deck column", ColumnUse::kCategory},
                                                       {"tags column", ColumnUse::kAppend},
                                                       {"notetype column", ColumnUse::kIgnore}};
    std::map<size_t, ColumnUse> special;
    for (const auto& [key, number] : head.Special) {
        const auto use = uses.find(key);
        if (use != uses.end()) {
            special[number - 1] = use->second;
        }
    }
    return special;
}

bool HasMarkup(const Rows& rows) {
    for (const Row& row : rows) {
        for (const wxString& cell : row) {
            // Our own line of a sound has a blank where Anki's mark has none.
            wxString text = LowerWide(cell);
            text.Replace("[sound: ", wxString());
            for (const char* mark : {"<br", "</", "&nbsp;", "&lt;", "&amp;", "[sound:", "<img "}) {
                if (text.Contains(mark)) {
                    return true;
                }
            }
        }
    }
    return false;
}

bool IsOwnHeader(const Row& row) {
    std::set<uint32_t> seen;
    return row.size() > 1 && std::all_of(row.begin(), row.end(), [&seen](const wxString& name) {
               AttributeInfo info;
               return LookupAttribute(name, info) && seen.insert(info.Mask).second;
           });
}

// Sets in which columns a quote at the front of a field is text: it does not close the field as a
// quoted one in most rows that have such a quote.
void FindTextQuotes(const Sample& sample, TableLayout& layout) {
    std::vector<DelimitedReader::QuoteCount> quotes;
    ReadRows(sample, layout, &quotes);
    layout.Columns.resize(std::min(quotes.size(), kMostColumns));
    for (size_t i = 0; i < layout.Columns.size(); ++i) {
        layout.Columns[i].QuotesAreText = quotes[i].Open > quotes[i].Closed;
    }
}

// Commands of formulas that begin like the escapes \n and \r.
constexpr std::wstring_view kCommands[] = {
    L"nu",     L"ne",     L"neq",     L"nabla",    L"neg",        L"not",
    L"notin",  L"ni",     L"nmid",    L"nless",    L"nsim",       L"nexists",
    L"ngeq",   L"nleq",   L"newline", L"nonumber", L"rho",        L"right",
    L"rangle", L"rceil",  L"rfloor",  L"rm",       L"rightarrow", L"rightleftharpoons",
    L"rvert",  L"rbrace", L"rbrack",  L"real"};

// Judges whether the backslashes of a table belong to formulas, such as \rho: none of them is an
// escape for certain, as \\ is, and each that may be one begins a whole command.
bool HasFormulas(const Sample& sample) {
    size_t commands = 0;
    for (const std::wstring& line : sample.Lines) {
        for (size_t at = line.find(L'\\'); at != std::wstring::npos;
             at = line.find(L'\\', at + 1)) {
            const std::wstring_view rest = std::wstring_view(line).substr(at + 1);
            const auto end = std::find_if(rest.begin(), rest.end(), [](wchar_t character) {
                return (character < L'a' || character > L'z') &&
                       (character < L'A' || character > L'Z');
            });
            const std::wstring_view word = rest.substr(0, static_cast<size_t>(end - rest.begin()));
            const bool isEscape = !rest.empty() && (rest[0] == L'n' || rest[0] == L'r');
            const bool isCommand =
                std::find(std::begin(kCommands), std::end(kCommands), word) != std::end(kCommands);
            if ((isEscape && !isCommand) || (!rest.empty() && rest[0] == L'\\')) {
                return false;
            }
            commands += size_t{isEscape};
        }
    }
    return commands > 0;
}

// Names the columns from the first row, or from the head line that has the names.
void NameColumns(const Head& head, Rows& rows, TableLayout& layout) {
    Row names;
    if (!head.Columns.empty()) {
        TableLayout plain = layout;
        plain.HeadLines = 0;
        const Rows read = ReadRows({wxFONTENCODING_UTF8, {head.Columns}}, plain);
        names = read.empty() ? Row() : read.front();
    } else if (layout.HasHeader && !rows.empty()) {
        names = rows.front();
        rows.erase(rows.begin());
    }
    size_t count = names.size();
    if (names.empty()) {
        for (const Row& row : rows) {
            count = std::max(count, row.size());
        }
    }
    layout.Columns.resize(std::min(count, kMostColumns));
    for (size_t i = 0; i < layout.Columns.size(); ++i) {
        layout.Columns[i].Heading = CellAt(names, i);
    }
    // A tags column has a heading for the notes even where none has a name.
    const auto tags = head.Special.find("tags column");
    if (tags != head.Special.end() && tags->second <= layout.Columns.size() &&
        layout.Columns[tags->second - 1].Heading.empty()) {
        layout.Columns[tags->second - 1].Heading = "Tags";
    }
}

wxString FirstText(const Sample& sample) {
    for (const std::wstring& line : sample.Lines) {
        const wxString text = TrimWide(line);
        if (!text.empty()) {
            return text;
        }
    }
    return wxString();
}

}  // namespace

TableSurvey SurveyTable(const wxString& fileName, const TableChoice& choice) {
    TableSurvey survey;
    const Sample sample = ReadSample(fileName, choice.Encoding);
    survey.Encoding = sample.Encoding;
    survey.OwnEncoding =
        choice.Encoding == wxFONTENCODING_SYSTEM && !IsEncodingCertain(sample.Encoding)
            ? wxFONTENCODING_SYSTEM
            : sample.Encoding;
    survey.IsOwnText = IsOwnText(sample);
    survey.FirstLine = FirstText(sample);
    TableLayout& layout = survey.Layout;
    const Head head = ReadHead(sample, layout);
    layout.Separator = choice.Separator;
    if (choice.Separator.size() > 1) {
        layout.Separator = FindPairSeparator(sample, layout);
    } else if (choice.Separator.empty()) {
        layout.Separator = head.Separator;
        if (head.Separator.empty() && !survey.IsOwnText) {
            layout.Separator = FindSeparator(sample, layout);
        }
    }
    if (layout.Separator.empty()) {
        return survey;
    }
    layout.QuotesAreText = choice.QuotesAreText;
    FindTextQuotes(sample, layout);
    Rows rows = ReadRows(sample, layout);
    if (rows.empty() && head.Columns.empty()) {
        return survey;
    }
    survey.IsOwnForm = layout.HeadLines == 0 && IsOwnHeader(rows.front()) &&
                       choice.HasHeader.value_or(true) && layout.Separator.size() == 1;
    layout.HasEscapes = survey.IsOwnForm && !HasFormulas(sample);
    layout.HasHeader =
        head.Columns.empty() && choice.HasHeader.value_or(!rows.empty() && IsHeader(rows));
    layout.HasHeader = layout.HasHeader || survey.IsOwnForm;
    NameColumns(head, rows, layout);
    layout.IsHtml = !survey.IsOwnForm && head.IsHtml.value_or(HasMarkup(rows));
    ColumnPlanner(layout, rows).Plan(SpecialColumns(head));
    rows.resize(std::min(rows.size(), kSurveyedRows));
    for (Row& row : rows) {
        row.resize(layout.Columns.size());
    }
    survey.Rows = std::move(rows);
    return survey;
}
