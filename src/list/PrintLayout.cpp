#include "list/PrintLayout.h"

#include <wx/intl.h>

#include <algorithm>
#include <cwctype>

#include "shell/TextWrap.h"

namespace {

constexpr int Millimetres(int length) {
    return length * kPaperUnits * 10 / 254;
}

constexpr int kMargin = Millimetres(12);
constexpr int kColumnGap = Millimetres(6);
constexpr int kRowGap = Millimetres(1);
constexpr int kHeadingGap = Millimetres(4);
// Between the edge of a card that is cut out and its text.
constexpr int kCardGap = Millimetres(4);
constexpr int kCutMark = Millimetres(3);

constexpr PrintFont kHeadingFont = {14, true};
constexpr PrintFont kListFont = {10, false};
constexpr PrintFont kNumberFont = {9, false};
// The text of a card that is cut out has the first size in which all of it fits.
constexpr PrintFont kCardFonts[] = {{20, false}, {16, false}, {13, false}, {11, false}, {9, false}};

// Cards that are in memory at a time.
constexpr size_t kGroup = 100;

// Letters of the scripts that most cards have, which give a line its height.
const wchar_t* const kTallLetters = L"\u00C5g\u05E9\u65E5\uD55C";
// As wide as any character that SurelyFitsOnALine takes.
const wchar_t* const kWideLetters = L"W\u65E5\u2014\u0429";

bool IsWithin(wchar_t c, wchar_t first, wchar_t last) {
    return c >= first && c <= last;
}

bool IsRightToLeftLetter(wchar_t c) {
    return IsWithin(c, L'\u0590', L'\u08FF') || IsWithin(c, L'\uFB1D', L'\uFDFF') ||
           IsWithin(c, L'\uFE70', L'\uFEFF');
}

// Spares the measuring of short texts, which most are: a count of 100,000 cards takes a moment and
// not a minute. Scripts whose letters join or are higher than others are always measured.
bool SurelyFitsOnALine(const wxString& text, int width, int widest) {
    if (text.length() * static_cast<size_t>(widest) > static_cast<size_t>(width)) {
        return false;
    }
    return std::all_of(text.begin(), text.end(), [](const wxUniChar& character) {
        const auto c = static_cast<wchar_t>(character.GetValue());
        return IsWithin(c, L' ', L'\u052F') || IsWithin(c, L'\u3001', L'\u9FFF') ||
               IsWithin(c, L'\uAC00', L'\uD7A3');
    });
}

}  // namespace

bool IsRightToLeft(const wxString& text) {
    for (const wxUniChar character : text) {
        const auto c = static_cast<wchar_t>(character.GetValue());
        if (IsRightToLeftLetter(c)) {
            return true;
        }
        if (std::iswalpha(static_cast<wint_t>(c)) != 0) {
            return false;
        }
    }
    return false;
}

void PrintLayout::SetPaper(const wxSize& paper) {
    if (paper == mPaper) {
        return;
    }
    mPaper = paper;
    if (mForm == PrintForm::kList) {
        FindListPages();
    }
}

int PrintLayout::CountPages() const {
    if (mForm == PrintForm::kList) {
        return static_cast<int>(mFirstCards.size());
    }
    const size_t sheets = (mSource.Count + CardsPerSheet() - 1) / CardsPerSheet();
    return static_cast<int>(2 * sheets);
}

PrintPage PrintLayout::MakePage(int page) const {
    const auto place = static_cast<size_t>(page - 1);
    return mForm == PrintForm::kList ? MakeListPage(place) : MakeCutOutPage(place);
}

// Returns where the rows of the table stand: between the heading and the number of the page.
wxRect PrintLayout::GetBody() const {
    const int top = kMargin + MeasureLineHeight(kHeadingFont) + kHeadingGap;
    const int bottom = mPaper.y - kMargin - MeasureLineHeight(kNumberFont) - kHeadingGap;
    return wxRect(kMargin, top, mPaper.x - 2 * kMargin, bottom - top);
}

// Returns the columns and rows of cards to cut out.
wxSize PrintLayout::GetGrid() const {
    return mPaper.x > mPaper.y ? wxSize(3, 3) : wxSize(2, 5);
}

size_t PrintLayout::CardsPerSheet() const {
    return static_cast<size_t>(GetGrid().x) * static_cast<size_t>(GetGrid().y);
}

int PrintLayout::MeasureLineHeight(const PrintFont& font) const {
    int& height = mLineHeights[font.Points];
    if (height == 0) {
        height = std::max(mSource.Measure(kTallLetters, font).y, 1);
    }
    return height;
}

int PrintLayout::MeasureWidestLetter(const PrintFont& font) const {
    int widest = 1;
    for (const wxUniChar letter : wxString(kWideLetters)) {
        widest = std::max(widest, mSource.Measure(wxString(letter), font).x);
    }
    return widest;
}

PrintLayout::Cell PrintLayout::Fit(const wxString& text, const wxSize& room,
                                   const PrintFont& font) const {
    WrappedText wrapped;
    wrapped.MaxWidth = room.x;
    WrapLimits limits;
    limits.Height = room.y;
    WrapText(
        text, [&](const wxString& line) { return mSource.Measure(line, font); }, limits, wrapped);
    Cell cell;
    cell.LineHeight = std::max(wrapped.LineHeight, MeasureLineHeight(font));
    const auto most = static_cast<size_t>(std::max(room.y / cell.LineHeight, 1));
    cell.IsCut = wrapped.Lines.size() > most;
    wrapped.Lines.resize(std::min(wrapped.Lines.size(), most));
    for (const TextLine& line : wrapped.Lines) {
        cell.Lines.push_back(LineText(text, line));
    }
    if (cell.IsCut) {
        cell.Lines.back() = CutLine(cell.Lines.back() + L'\u2026', room.x, font);
    }
    return cell;
}

// Takes characters away before the ellipsis at the end until the line fits.
wxString PrintLayout::CutLine(wxString line, int width, const PrintFont& font) const {
    while (line.length() > 1 && mSource.Measure(line, font).x > width) {
        line.erase(line.length() - 2, 1);
    }
    return line;
}

void PrintLayout::FindListPages() {
    mFirstCards.clear();
    const wxRect body = GetBody();
    const wxSize cell((body.width - kColumnGap) / 2, body.height - 2 * kRowGap);
    const int lineHeight = MeasureLineHeight(kListFont);
    const int widest = MeasureWidestLetter(kListFont);
    const auto measure = [&](const wxString& text) {
        return SurelyFitsOnALine(text, cell.x, widest) ? lineHeight
                                                       : Fit(text, cell, kListFont).Height();
    };
    int filled = 0;
    for (size_t first = 0; first < mSource.Count; first += kGroup) {
        size_t card = first;
        for (const Sides& sides : mSource.Read(first, std::min(kGroup, mSource.Count - first))) {
            const int height =
                std::max({lineHeight, measure(sides.Front), measure(sides.Back)}) + 2 * kRowGap;
            if (mFirstCards.empty() || filled + height > body.height) {
                mFirstCards.push_back(card);
                filled = 0;
            }
            filled += height;
            ++card;
        }
    }
}

PrintPage PrintLayout::MakeListPage(size_t page) const {
    PrintPage made;
    const wxRect body = GetBody();
    const wxRect heading(body.x, kMargin, body.width, MeasureLineHeight(kHeadingFont));
    AddLines(Fit(mSource.Heading, heading.GetSize(), kHeadingFont), mSource.Heading, heading,
             kHeadingFont, PrintLine::Side::kLeft, made);
    const int numberHeight = MeasureLineHeight(kNumberFont);
    const wxRect number(body.x, mPaper.y - kMargin - numberHeight, body.width, numberHeight);
    made.Lines.push_back(
        {wxString::Format(_("Page %i of %i"), static_cast<int>(page) + 1, CountPages()), number,
         kNumberFont, PrintLine::Side::kCentre, false});

    const size_t end = page + 1 < mFirstCards.size() ? mFirstCards[page + 1] : mSource.Count;
    const wxSize room((body.width - kColumnGap) / 2, body.height - 2 * kRowGap);
    int top = body.y;
    made.Rules.push_back({body.GetTopLeft(), wxPoint(body.x + body.width, top)});
    for (const Sides& sides : mSource.Read(mFirstCards[page], end - mFirstCards[page])) {
        int height = MeasureLineHeight(kListFont);
        int left = body.x;
        for (const wxString* const text : {&sides.Front, &sides.Back}) {
            const Cell cell = Fit(*text, room, kListFont);
            const bool isRight = IsRightToLeft(*text);
            AddLines(cell, *text, wxRect(wxPoint(left, top + kRowGap), room), kListFont,
                     isRight ? PrintLine::Side::kRight : PrintLine::Side::kLeft, made);
            height = std::max(height, cell.Height());
            left += room.x + kColumnGap;
        }
        top += height + 2 * kRowGap;
        made.Rules.push_back({wxPoint(body.x, top), wxPoint(body.x + body.width, top)});
    }
    return made;
}

// Even places are pages of fronts, and each is followed by the page of the backs.
PrintPage PrintLayout::MakeCutOutPage(size_t page) const {
    PrintPage made;
    const bool isBack = page % 2 != 0;
    const bool isLandscape = mPaper.x > mPaper.y;
    const wxSize grid = GetGrid();
    const wxSize size((mPaper.x - 2 * kMargin) / grid.x, (mPaper.y - 2 * kMargin) / grid.y);
    const size_t first = page / 2 * CardsPerSheet();
    int place = 0;
    for (const Sides& sides :
         mSource.Read(first, std::min(CardsPerSheet(), mSource.Count - first))) {
        int column = place % grid.x;
        int row = place / grid.x;
        ++place;
        // A sheet of portrait turns from side to side, a sheet of landscape head over heels.
        if (isBack && isLandscape) {
            row = grid.y - 1 - row;
        } else if (isBack) {
            column = grid.x - 1 - column;
        }
        wxRect card(kMargin + column * size.x, kMargin + row * size.y, size.x, size.y);
        card.Deflate(kCardGap);
        const wxString& text = isBack ? sides.Back : sides.Front;
        Cell cell;
        PrintFont font;
        for (const PrintFont& smaller : kCardFonts) {
            font = smaller;
            cell = Fit(text, card.GetSize(), font);
            if (!cell.IsCut) {
                break;
            }
        }
        card.y += std::max((card.height - cell.Height()) / 2, 0);
        AddLines(cell, text, card, font, PrintLine::Side::kCentre, made);
    }
    AddCutMarks(made);
    return made;
}

// A cross at each corner of a card, on both sides of the sheet.
void PrintLayout::AddCutMarks(PrintPage& page) const {
    const wxSize grid = GetGrid();
    const wxSize size((mPaper.x - 2 * kMargin) / grid.x, (mPaper.y - 2 * kMargin) / grid.y);
    for (int column = 0; column <= grid.x; ++column) {
        for (int row = 0; row <= grid.y; ++row) {
            const wxPoint corner(kMargin + column * size.x, kMargin + row * size.y);
            page.Rules.push_back({corner - wxPoint(kCutMark, 0), corner + wxPoint(kCutMark, 0)});
            page.Rules.push_back({corner - wxPoint(0, kCutMark), corner + wxPoint(0, kCutMark)});
        }
    }
}

void PrintLayout::AddLines(const Cell& cell, const wxString& text, wxRect place,
                           const PrintFont& font, PrintLine::Side alignment, PrintPage& page) {
    const bool isRightToLeft = IsRightToLeft(text);
    place.height = cell.LineHeight;
    for (const wxString& line : cell.Lines) {
        page.Lines.push_back({line, place, font, alignment, isRightToLeft});
        place.y += cell.LineHeight;
    }
}
