#include "shell/TextWrap.h"

#include <algorithm>
#include <cwchar>
#include <map>
#include <string>
#include <string_view>

#include "base/Text.h"

// Why this is more than a loop. The plain way measures one character more each time until the text
// is too wide. A card of a megabyte on one line would then be measured a megabyte at a time. So the
// cutter only looks at a bounded beginning of the rest and guesses where the line ends:
//
//     the line before took 40 characters
//     -> try the word ends around character 40: "... the quick | brown"
//     -> up to "quick" fits, up to "brown" does not: the line ends after "quick"
//
// Two measurements settle most lines (BreakNear). Where the guess fails, or where widths do not
// simply grow with the text (see Slack), TakeAnywhere searches: it finds a beginning that is surely
// too wide, halves its way down, and tests the last few lengths one by one.

namespace {

constexpr wchar_t kZeroWidthJoiner = L'\u200D';

// True for the characters at which the text layout below the device context starts a new line by
// itself.
bool IsLineSeparator(wchar_t character) {
    switch (character) {
        case L'\r':
        case L'\v':
        case L'\f':
        case L'\u0085':
        case L'\u2028':
        case L'\u2029':
            return true;
        default:
            return false;
    }
}

bool IsBlank(wchar_t character) {
    return IsWideSpace(character) || IsLineSeparator(character);
}

std::wstring_view Trim(std::wstring_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Returns the text as it is measured and drawn, with spaces in place of its line separators.
wxString ToText(std::wstring_view text) {
    std::wstring characters(text);
    std::replace_if(characters.begin(), characters.end(), IsLineSeparator, L' ');
    return wxString(characters);
}

// True when the second character is drawn on or into the first, such as an accent.
bool JoinsPrevious(wchar_t previous, wchar_t character) {
    const bool isSkinTone = character >= L'\U0001F3FB' && character <= L'\U0001F3FF';
    return isSkinTone || previous == kZeroWidthJoiner || wcwidth(character) == 0;
}

// Finds how much of a text goes on its next line. The cost of a line does not depend on the length
// of the text after it.
class LineCutter {
  public:
    LineCutter(int32_t maxWidth, const TextMeasure& measure)
        : mMaxWidth(maxWidth), mMeasure(measure) {}

    // Returns the number of characters on the next line: all of rest when it fits, else up to the
    // last break between words that fits, else as many characters of the word as fit.
    size_t Take(std::wstring_view rest) {
        mRest = rest.substr(0, kLongestLine);
        mExtents.clear();
        const size_t usual = BreakNear(mTaken);
        mTaken = usual != 0 ? usual : TakeAnywhere(rest.size());
        return mTaken;
    }

    // Returns the extent of the first characters of the text given to Take.
    wxSize Extent(size_t length) {
        const auto found = mExtents.find(length);
        if (found != mExtents.end()) {
            return found->second;
        }
        const wxSize extent = mMeasure(ToText(mRest.substr(0, length)));
        mExtents.emplace(length, extent);
        return extent;
    }

  private:
    // Most lines end after a word about where the line before them ended, and two measurements
    // prove it. Returns 0 for all other lines.
    size_t BreakNear(size_t guess) {
        size_t low = LastBreakBefore(guess + 1);
        for (int step = 0; step < 4 && low != 0 && !IsBlank(mRest.front()); ++step) {
            const size_t high = NextBreak(low);
            if (high - low > guess || Slack(mRest.substr(0, high), 1) != 0) {
                return 0;
            }
            const bool fits = Extent(low).x <= mMaxWidth;
            if (fits && Extent(high).x > mMaxWidth) {
                return low;
            }
            low = !fits ? LastBreakBefore(low) : high < mRest.size() ? high : 0;
        }
        return 0;
    }

    size_t TakeAnywhere(size_t length) {
        const size_t beginning = TooWideBeginning();
        const size_t tooWide = beginning == 0 ? mRest.size() + 1 : FirstTooWide(beginning);
        if (tooWide > mRest.size() && mRest.size() == length) {
            // All of it fits, except perhaps white space at its ends.
            return length;
        }
        const size_t lastBreak = LastBreakBefore(tooWide);
        return lastBreak != 0 ? lastBreak : CutInWord(tooWide);
    }

    // Returns 0 when all of the text fits, else the length of a beginning, not much longer than a
    // line, that is surely too wide.
    size_t TooWideBeginning() {
        for (size_t reach = mTaken + mTaken / 4 + 32;; reach *= 2) {
            const size_t length = std::min(reach, mRest.size());
            const wxSize extent = Extent(length);
            mSlack = Slack(mRest.substr(0, length), extent.y);
            if (length == mRest.size()) {
                return extent.x <= mMaxWidth ? 0 : length;
            }
            if (extent.x > mMaxWidth + mSlack) {
                return length;
            }
        }
    }

    // Returns by how many pixels a longer text may be narrower than its own beginning: an Arabic
    // letter shrinks when another one follows, and a sequence of emojis when it becomes complete.
    static int32_t Slack(std::wstring_view text, int32_t height) {
        int32_t heights = 0;
        for (const wchar_t c : text) {
            if (c == kZeroWidthJoiner || c >= kFirstEmoji) {
                return 3 * height;
            }
            if (c >= kFirstShaped && c < kFirstIdeograph) {
                heights = 1;
            }
        }
        return heights * height;
    }

    // Returns the width of the first n + 1 characters without white space at the ends.
    int32_t Width(size_t n) {
        size_t end = std::min(n + 1, mRest.size());
        while (end > 0 && IsBlank(mRest[end - 1])) {
            --end;
        }
        if (end == 0 || !IsBlank(mRest.front())) {
            return Extent(end).x;
        }
        return mMeasure(ToText(Trim(mRest.substr(0, end)))).x;
    }

    // Returns the smallest n from 1 at which Width(n) is too wide, or more than the length if there
    // is none. Everything shorter than a beginning that leaves the slack free fits too, so the
    // search one by one starts there.
    size_t FirstTooWide(size_t beginning) {
        size_t n = LastWithin(mMaxWidth - mSlack, beginning) + 1;
        while (n <= mRest.size() && Width(n) <= mMaxWidth) {
            // White space at the end adds no width.
            do {
                ++n;
            } while (n < mRest.size() && IsBlank(mRest[n]));
        }
        return n;
    }

    // Returns an n, at most high, at which Width(n) is within the limit and Width(n + 1) is not; 0
    // when even the first character is not. Guesses from the widths measured so far, and halves the
    // range when guessing is slow.
    size_t LastWithin(int32_t limit, size_t high) {
        size_t low = 0;
        int32_t lowWidth = 0;
        int32_t highWidth = Width(high);
        if (highWidth <= limit) {
            return high;
        }
        for (int step = 0; high - low > 1; ++step) {
            const double rise = std::max(highWidth - lowWidth, 1);
            const double part = step < 4 ? std::clamp((limit - lowWidth) / rise, 0.0, 1.0) : 0.5;
            const auto guess = low + static_cast<size_t>(static_cast<double>(high - low) * part);
            const size_t middle = std::clamp(guess, low + 1, high - 1);
            const int32_t width = Width(middle);
            if (width <= limit) {
                low = middle;
                lowWidth = width;
            } else {
                high = middle;
                highWidth = width;
            }
        }
        return low;
    }

    // Returns the last place before tooWide where a word ends, or 0 if there is none.
    size_t LastBreakBefore(size_t tooWide) const {
        for (size_t n = std::min(tooWide, mRest.size()) - 1; n >= 1; --n) {
            if (IsBlank(mRest[n]) && !IsBlank(mRest[n - 1])) {
                return n;
            }
        }
        return 0;
    }

    // Returns where the next word after that place ends.
    size_t NextBreak(size_t n) const {
        while (n < mRest.size() && IsBlank(mRest[n])) {
            ++n;
        }
        while (n < mRest.size() && !IsBlank(mRest[n])) {
            ++n;
        }
        return n;
    }

    // Cuts inside a word, but not between a character and a mark on it unless nothing else is left.
    size_t CutInWord(size_t tooWide) const {
        const size_t cut = tooWide <= 2 ? 1 : tooWide - 1;
        for (size_t n = cut; n >= 1; --n) {
            if (n == mRest.size() || !JoinsPrevious(mRest[n - 1], mRest[n])) {
                return n;
            }
        }
        return cut;
    }

    static constexpr wchar_t kFirstShaped = L'\u0300';
    static constexpr wchar_t kFirstIdeograph = L'\u2E80';
    static constexpr wchar_t kFirstEmoji = L'\U0001F000';
    // Characters, more than any screen shows on a line. Marks without width could go on for ever,
    // and the arithmetic of the text layout below the device context would overflow.
    static constexpr size_t kLongestLine = 16384;

    const int32_t mMaxWidth;
    const TextMeasure& mMeasure;
    std::wstring_view mRest;
    int32_t mSlack = 0;
    // Length of the line before, near which the next one is measured first.
    size_t mTaken = 0;
    // Extents of the beginnings measured so far, by their lengths.
    std::map<size_t, wxSize> mExtents;
};

void AppendLine(std::wstring_view text, std::wstring_view line, wxSize extent,
                const TextMeasure& measure, WrappedText& wrapped) {
    const std::wstring_view trimmed = Trim(line);
    if (extent.x > wrapped.MaxWidth && !trimmed.empty() && trimmed.size() < line.size()) {
        // Only the white space around the words, such as an indent, made it too wide.
        line = trimmed;
        extent = measure(ToText(line));
    }
    wrapped.Lines.push_back({static_cast<uint32_t>(line.data() - text.data()),
                             static_cast<uint32_t>(line.size()), extent.x});
    // A line with letters of a second font can be higher than others.
    wrapped.LineHeight = std::max(wrapped.LineHeight, extent.y);
}

// Moves on to the next piece that is not empty. Its end is looked for only once, since the piece
// may be the whole text.
void FindPiece(std::wstring_view text, WrappedText& wrapped) {
    wrapped.Next = std::min(text.find_first_not_of(L'\n', wrapped.Next), text.size());
    wrapped.NextPiece = std::min(text.find(L'\n', wrapped.Next), text.size());
    wrapped.PieceEnd = wrapped.NextPiece;
}

std::wstring_view View(const wxString& text) {
    return std::wstring_view(text.wc_str(), text.length());
}

}  // namespace

void WrapText(const wxString& text, const TextMeasure& measure, const WrapLimits& limits,
              WrappedText& wrapped) {
    const std::wstring_view characters = View(text);
    const size_t begin = wrapped.Next;
    if (begin == 0 && Trim(characters).empty()) {
        wrapped.IsWhole = true;
    }
    LineCutter cutter(wrapped.MaxWidth, measure);
    while (!wrapped.IsWhole && wrapped.Height() <= limits.Height &&
           wrapped.Next - begin < limits.Characters) {
        if (wrapped.Next >= wrapped.PieceEnd) {
            FindPiece(characters, wrapped);
            wrapped.IsWhole = wrapped.Next == characters.size();
            continue;
        }
        const std::wstring_view rest =
            characters.substr(wrapped.Next, wrapped.PieceEnd - wrapped.Next);
        const size_t taken = cutter.Take(rest);
        AppendLine(characters, rest.substr(0, taken), cutter.Extent(taken), measure, wrapped);
        // No line begins or ends with the white space at which it was cut.
        const std::wstring_view left = Trim(rest.substr(taken));
        wrapped.Next =
            left.empty() ? wrapped.NextPiece : static_cast<size_t>(left.data() - characters.data());
        wrapped.PieceEnd = wrapped.Next + left.size();
    }
}

wxString LineText(const wxString& text, const TextLine& line) {
    return ToText(View(text).substr(line.Begin, line.Length));
}
