#include "list/PrintLayout.h"

#include <wx/intl.h>

#include <algorithm>
#include <cwctype>

#include "media/PictureFile.h"
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
constexpr int kPictureGap = Millimetres(1);
// In the table a picture is at most so many times lower than the page, and those of a card together
// take half of it, so that a page has some cards.
constexpr int kPicturesOnAPage = 6;

constexpr PrintFont kHeadingFont = {14, true};
constexpr PrintFont kListFont = {10, false};
constexpr PrintFont kNumberFont = {9, false};
// The text of a card that is cut out has the first size in which all of it fits.
constexpr PrintFont kCardFonts[] = {{20, false}, {16, false}, {13, false}, {11, false}, {9, false}};

// Cards that are in memory at a time.
constexpr size_t kGroup = 100;
// Characters that may stand on one line; a card may hold megabytes.
constexpr size_t kShortText = 200;

// Letters of the scripts that most cards have, which give a line its height.
const wchar_t* const kTallLetters = L"\u00C5g\u05E9\u65E5\uD55C";

bool IsWithin(wchar_t c, wchar_t first, wchar_t last) {
    return c >= first && c <= last;
}

bool IsRightToLeftLetter(wchar_t c) {
    return IsWithin(c, L'\u0590', L'\u08FF') || IsWithin(c, L'\uFB1D', L'\uFDFF') ||
           IsWithin(c, L'\uFE70', L'\uFEFF');
}

// Scripts whose letters join, or are higher than others, are not plain.
bool IsPlain(const wxString& text) {
    return std::all_of(text.begin(), text.end(), [](const wxUniChar& character) {
        const auto c = static_cast<wchar_t>(character.GetValue());
        return c == L'\n' || IsWithin(c, L' ', L'\u052F') || IsWithin(c, L'\u2010', L'\u2027') ||
               IsWithin(c, L'\u3001', L'\u9FFF') || IsWithin(c, L'\uAC00', L'\uD7A3');
    });
}

// Adds up the widths of letters, and measures each letter once: where the pages of 100,000 long
// texts begin is found in a second and not in half a minute. The sum is a little too wide, as two
// letters may stand further apart than each alone, so that no page gets more than fits on it.
class LetterWidths {
  public:
    explicit LetterWidths(const std::function<int(const wxString&)>& measure)
        : mMeasure(measure), mWidths(0xE000, -1) {}

    // Returns the width of a plain text.
    int Add(const wxString& text) {
        int64_t sum = 0;
        for (const wxUniChar character : text) {
            int& width = mWidths[character.GetValue()];
            if (width < 0) {
                width = mMeasure(wxString(character, kRepeats));
            }
            sum += width;
        }
        return static_cast<int>((sum + sum / kSlack) / static_cast<int64_t>(kRepeats));
    }

  private:
    // A single letter would be measured with too large an error.
    static constexpr size_t kRepeats = 16;
    static constexpr int64_t kSlack = 100;

    const std::function<int(const wxString&)> mMeasure;
    std::vector<int> mWidths;
};

WrappedText Wrap(const wxString& text, const wxSize& room, const TextMeasure& measure) {
    WrappedText wrapped;
    wrapped.MaxWidth = room.x;
    WrapLimits limits;
    limits.Height = room.y;
    WrapText(text, measure, limits, wrapped);
    return wrapped;
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

PrintLayout::Cell PrintLayout::Fit(const wxString& text, const wxSize& room,
                                   const PrintFont& font) const {
    WrappedText wrapped =
        Wrap(text, room, [&](const wxString& line) { return mSource.Measure(line, font); });
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

PrintLayout::Stack PrintLayout::StackPictures(const std::vector<Picture>& pictures,
                                              const wxSize& room, int mostHeight) {
    Stack stack;
    std::vector<PictureSize> sizes;
    for (const Picture& picture : pictures) {
        sizes.push_back(
            FitPicture({picture.Size.x, picture.Size.y}, {room.x, std::max(mostHeight, 1)}));
    }
    const int gaps = static_cast<int>(pictures.size()) * kPictureGap;
    FitPictures(sizes, {room.x, room.y - gaps}, 1);
    for (const PictureSize& size : sizes) {
        stack.Sizes.emplace_back(size.Width, size.Height);
        stack.Height += size.Height + kPictureGap;
    }
    return stack;
}

PrintLayout::Stack PrintLayout::StackListPictures(const std::vector<Picture>& pictures,
                                                  const wxSize& room) {
    return StackPictures(pictures, wxSize(room.x, room.y / 2), room.y / kPicturesOnAPage);
}

void PrintLayout::FindListPages() {
    mFirstCards.clear();
    const wxRect body = GetBody();
    const wxSize cell((body.width - kColumnGap) / 2, body.height - 2 * kRowGap);
    const int lineHeight = MeasureLineHeight(kListFont);
    LetterWidths widths(
        [this](const wxString& letters) { return mSource.Measure(letters, kListFont).x; });
    const TextMeasure add = [&](const wxString& line) {
        return wxSize(widths.Add(line), lineHeight);
    };
    const auto measure = [&](const wxString& text, const std::vector<Picture>& pictures) {
        const int pictureHeight = StackListPictures(pictures, cell).Height;
        if (text.empty()) {
            return pictureHeight;
        }
        const wxSize room(cell.x, cell.y - pictureHeight);
        if (!IsPlain(text)) {
            return Fit(text, room, kListFont).Height() + pictureHeight;
        }
        const bool isLine = text.length() < kShortText && text.find('\n') == wxString::npos &&
                            widths.Add(text) <= room.x;
        const size_t lines = isLine ? 1 : Wrap(text, room, add).Lines.size();
        const auto most = static_cast<size_t>(std::max(room.y / lineHeight, 1));
        return static_cast<int>(std::min(lines, most)) * lineHeight + pictureHeight;
    };
    int filled = 0;
    for (size_t first = 0; first < mSource.Count; first += kGroup) {
        size_t card = first;
        for (const Sides& sides : mSource.Read(first, std::min(kGroup, mSource.Count - first))) {
            const int height = std::max({lineHeight, measure(sides.Front, sides.FrontPictures),
                                         measure(sides.Back, sides.BackPictures)}) +
                               2 * kRowGap;
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
        for (const auto& [text, pictures] : {std::pair(&sides.Front, &sides.FrontPictures),
                                             std::pair(&sides.Back, &sides.BackPictures)}) {
            const Stack stack = StackListPictures(*pictures, room);
            const Cell cell = Fit(*text, wxSize(room.x, room.y - stack.Height), kListFont);
            const auto alignment =
                IsRightToLeft(*text) ? PrintLine::Side::kRight : PrintLine::Side::kLeft;
            wxRect place(wxPoint(left, top + kRowGap), room);
            AddLines(cell, *text, place, kListFont, alignment, made);
            place.y += cell.Height();
            AddPictures(*pictures, stack, place, alignment, made);
            height = std::max(height, cell.Height() + stack.Height);
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
        const std::vector<Picture>& pictures = isBack ? sides.BackPictures : sides.FrontPictures;
        // The text gets the half that the pictures may have as long as it needs it, and they get
        // what it leaves.
        wxSize room = card.GetSize();
        room.y -= StackPictures(pictures, wxSize(room.x, room.y / 2), room.y).Height;
        Cell cell;
        PrintFont font;
        for (const PrintFont& smaller : kCardFonts) {
            font = smaller;
            cell = Fit(text, room, font);
            if (!cell.IsCut) {
                break;
            }
        }
        const Stack stack =
            StackPictures(pictures, wxSize(room.x, card.height - cell.Height()), card.height);
        card.y += std::max((card.height - cell.Height() - stack.Height) / 2, 0);
        AddLines(cell, text, card, font, PrintLine::Side::kCentre, made);
        card.y += cell.Height();
        AddPictures(pictures, stack, card, PrintLine::Side::kCentre, made);
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

void PrintLayout::AddPictures(const std::vector<Picture>& pictures, const Stack& stack,
                              wxRect place, PrintLine::Side alignment, PrintPage& page) {
    for (size_t i = 0; i < pictures.size(); ++i) {
        const wxSize& size = stack.Sizes[i];
        const int free = place.width - size.x;
        const int left = alignment == PrintLine::Side::kLeft     ? 0
                         : alignment == PrintLine::Side::kCentre ? free / 2
                                                                 : free;
        place.y += kPictureGap;
        page.Pictures.push_back({pictures[i].Name, wxRect(wxPoint(place.x + left, place.y), size)});
        place.y += size.y;
    }
}
