#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>

#include <cstddef>
#include <functional>
#include <map>
#include <utility>
#include <vector>

// What stands where on the printed pages of cards, without a printer: which card is on which page,
// how its texts wrap, and where the fronts and the backs of cards to cut out meet.

enum class PrintForm {
    // A table with the fronts in its left column and the backs in its right one.
    kList = 0,
    // Cards to cut out: a page of fronts and then the page of their backs. The backs are mirrored,
    // so that both sides of a card meet when the sheet is turned over its long edge.
    kCutOut = 1
};

// Lengths on paper are counted in units of which an inch has so many.
constexpr int kPaperUnits = 720;

struct PrintFont {
    int Points = 0;
    bool IsBold = false;
};

// One line of text. It is drawn from the top of its place and cut off at its sides.
struct PrintLine {
    enum class Side { kLeft, kCentre, kRight };

    wxString Text;
    wxRect Place;
    PrintFont Font;
    Side Alignment = Side::kLeft;
    bool IsRightToLeft = false;
};

struct PrintPicture {
    wxString Name;
    wxRect Place;
};

struct PrintPage {
    std::vector<PrintLine> Lines;
    std::vector<PrintPicture> Pictures;
    // Thin lines, from a point to another.
    std::vector<std::pair<wxPoint, wxPoint>> Rules;
};

// Returns true when the first letter of the text is written from right to left.
bool IsRightToLeft(const wxString& text);

// Lays cards out. Holds the number of the first card of each page, and reads the cards themselves
// in small groups when a page is made. Main thread only.
class PrintLayout {
  public:
    // A picture with its size in units, which is the largest that it gets.
    struct Picture {
        wxString Name;
        wxSize Size;
    };
    // The pictures stand below the text.
    struct Sides {
        wxString Front;
        wxString Back;
        std::vector<Picture> FrontPictures{};
        std::vector<Picture> BackPictures{};
    };
    struct Source {
        size_t Count = 0;
        // Stands on top of each page of the table.
        wxString Heading;
        // Returns so many cards from that one on.
        std::function<std::vector<Sides>(size_t first, size_t count)> Read;
        // Returns the size of one line of text, in units.
        std::function<wxSize(const wxString& text, const PrintFont& font)> Measure;
    };

    PrintLayout(PrintForm form, Source source) : mForm(form), mSource(std::move(source)) {}

    // Finds the pages for paper of that size, in units. Call it before the next two.
    void SetPaper(const wxSize& paper);
    int CountPages() const;
    // Returns a page, counted from 1.
    PrintPage MakePage(int page) const;

    const wxSize& GetPaper() const { return mPaper; }

  private:
    // A text cut into lines.
    struct Cell {
        std::vector<wxString> Lines;
        int LineHeight = 0;
        // The text has more than these lines, and an ellipsis says so.
        bool IsCut = false;

        int Height() const { return static_cast<int>(Lines.size()) * LineHeight; }
    };
    // The sizes of pictures one below the other, each with a gap above it.
    struct Stack {
        std::vector<wxSize> Sizes;
        int Height = 0;
    };

    wxRect GetBody() const;
    wxSize GetGrid() const;
    size_t CardsPerSheet() const;
    int MeasureLineHeight(const PrintFont& font) const;
    Cell Fit(const wxString& text, const wxSize& room, const PrintFont& font) const;
    wxString CutLine(wxString line, int width, const PrintFont& font) const;
    static Stack StackPictures(const std::vector<Picture>& pictures, const wxSize& room,
                               int mostHeight);
    static Stack StackListPictures(const std::vector<Picture>& pictures, const wxSize& room);
    void FindListPages();
    PrintPage MakeListPage(size_t page) const;
    PrintPage MakeCutOutPage(size_t page) const;
    void AddCutMarks(PrintPage& page) const;
    static void AddLines(const Cell& cell, const wxString& text, wxRect place,
                         const PrintFont& font, PrintLine::Side alignment, PrintPage& page);
    static void AddPictures(const std::vector<Picture>& pictures, const Stack& stack, wxRect place,
                            PrintLine::Side alignment, PrintPage& page);

    PrintForm mForm;
    Source mSource;
    wxSize mPaper;
    // Measured once each, by the size of the font.
    mutable std::map<int, int> mLineHeights;
    // The first card of each page of the table.
    std::vector<size_t> mFirstCards;
};
