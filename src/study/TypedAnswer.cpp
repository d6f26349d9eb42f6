#include "study/TypedAnswer.h"

#include <wx/intl.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <utility>

#include "base/Text.h"
#include "shell/Toolkit.h"

namespace {

// Two texts of this many letters take a few milliseconds.
constexpr size_t kMostLetters = 1000;
constexpr size_t kMostPieces = 20;
// Characters of a text that are looked at.
constexpr size_t kMostCharacters = 10 * kMostLetters;
// Differences that are told in words.
constexpr int kMostTold = 8;

// The costs by which the nearest alignment is found. A wrong letter is dearer than a missing one
// and cheaper than a missing and an extra one, so that letters are paired where they can be.
constexpr int kNearCost = 1;
constexpr int kGapCost = 2;
constexpr int kWrongCost = 3;

struct Letter {
    // As it is drawn.
    wxString Text;
    // Equal texts are the same letter; equal folds differ in accents, case or width only.
    wxString Fold;
};

wchar_t PlainCharacter(wchar_t character) {
    switch (character) {
        case L'\u2018':
        case L'\u2019':
        case L'\u02BC':
            return L'\'';
        case L'\u201C':
        case L'\u201D':
            return L'"';
        case L'\u2010':
        case L'\u2011':
        case L'\u2013':
        case L'\u2014':
            return L'-';
        default:
            return IsWideSpace(character) ? L' ' : character;
    }
}

// Returns whether a mark may be left out and the letter is still the same one. Marks that make
// another sound of a letter, such as the two of kana or vowel signs of Indic scripts, are not.
bool IsAccent(wxUint32 point) {
    constexpr wxUint32 kRanges[][2] = {{0x0300, 0x036F}, {0x0591, 0x05C7}, {0x064B, 0x065F},
                                       {0x0670, 0x0670}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}};
    return std::any_of(std::begin(kRanges), std::end(kRanges), [point](const wxUint32(&range)[2]) {
        return point >= range[0] && point <= range[1];
    });
}

wxString FoldLetter(const wxString& letter) {
    wxString bare;
    for (const wxUniChar character : FoldText(letter)) {
        if (!IsAccent(character.GetValue())) {
            bare += character;
        }
    }
    return bare;
}

// Returns whether a character belongs to the letter before it.
bool ContinuesLetter(wxUniChar character, wxUniChar before) {
    constexpr wxUint32 kJoiner = 0x200D;
    const wxUint32 point = character.GetValue();
    return IsMark(character) || point == kJoiner || before.GetValue() == kJoiner ||
           (point >= 0x1F3FB && point <= 0x1F3FF);
}

std::vector<Letter> SplitLetters(const wxString& text) {
    wxString plain;
    for (const wxUniChar character : TrimWide(text)) {
        const wchar_t next = PlainCharacter(static_cast<wchar_t>(character));
        if (next != L' ' || plain.empty() || plain.Last() != ' ') {
            plain += next;
        }
    }
    std::vector<Letter> letters;
    wxUniChar before = 0;
    for (const wxUniChar character : ComposeText(plain)) {
        if (!letters.empty() && ContinuesLetter(character, before)) {
            letters.back().Text += character;
        } else if (letters.size() == kMostLetters) {
            break;
        } else {
            letters.push_back({wxString(character), wxString()});
        }
        before = character;
    }
    for (Letter& letter : letters) {
        letter.Fold = FoldLetter(letter.Text);
    }
    return letters;
}

AnswerPart::Kind Compare(const Letter& typed, const Letter& right) {
    if (typed.Text == right.Text) {
        return AnswerPart::Same;
    }
    return typed.Fold == right.Fold ? AnswerPart::Near : AnswerPart::Wrong;
}

int PairCost(AnswerPart::Kind kind) {
    return kind == AnswerPart::Same ? 0 : kind == AnswerPart::Near ? kNearCost : kWrongCost;
}

void AddLetter(AnswerCheck& check, AnswerPart::Kind kind, const Letter* typed,
               const Letter* right) {
    if (check.Parts.empty() || check.Parts.back().What != kind) {
        check.Parts.push_back({kind, wxString(), wxString()});
    }
    AnswerPart& part = check.Parts.back();
    part.Typed += typed == nullptr ? wxString() : typed->Text;
    part.Right += right == nullptr ? wxString() : right->Text;
    check.IsNear = check.IsNear || kind == AnswerPart::Near;
    check.Errors += kind == AnswerPart::Same || kind == AnswerPart::Near ? 0 : 1;
}

// Finds the cheapest way from one text to the other. Cell (t, r) of the table has the cost of what
// comes after the first t typed and the first r right letters.
AnswerCheck Align(const std::vector<Letter>& typed, const std::vector<Letter>& right) {
    const size_t width = right.size() + 1;
    std::vector<int> costs((typed.size() + 1) * width);
    const auto cost = [&costs, width](size_t t, size_t r) -> int& { return costs[t * width + r]; };
    for (size_t t = typed.size() + 1; t-- > 0;) {
        for (size_t r = width; r-- > 0;) {
            const bool hasTyped = t < typed.size();
            const bool hasRight = r < right.size();
            int least = hasTyped || hasRight ? INT_MAX : 0;
            if (hasTyped) {
                least = std::min(least, cost(t + 1, r) + kGapCost);
            }
            if (hasRight) {
                least = std::min(least, cost(t, r + 1) + kGapCost);
            }
            if (hasTyped && hasRight) {
                least = std::min(least, cost(t + 1, r + 1) + PairCost(Compare(typed[t], right[r])));
            }
            cost(t, r) = least;
        }
    }
    AnswerCheck check;
    check.Letters = static_cast<int>(right.size());
    size_t t = 0;
    size_t r = 0;
    while (t < typed.size() || r < right.size()) {
        const bool isPair = t < typed.size() && r < right.size();
        const auto kind = isPair ? Compare(typed[t], right[r]) : AnswerPart::Wrong;
        if (isPair && cost(t, r) == cost(t + 1, r + 1) + PairCost(kind)) {
            AddLetter(check, kind, &typed[t++], &right[r++]);
        } else if (t < typed.size() && cost(t, r) == cost(t + 1, r) + kGapCost) {
            AddLetter(check, AnswerPart::Extra, &typed[t++], nullptr);
        } else {
            AddLetter(check, AnswerPart::Missing, nullptr, &right[r++]);
        }
    }
    return check;
}

// Returns the whole side and then the answers that it lists.
std::vector<wxString> ListAnswers(const wxString& side) {
    std::vector<wxString> answers = {side};
    wxString piece;
    const auto end = [&answers, &piece] {
        if (!TrimView(piece.ToStdWstring()).empty()) {
            answers.push_back(piece);
        }
        piece.clear();
    };
    for (const wxUniChar character : side) {
        if (wxString(L"\n,;/\u3001\uFF0C\uFF1B\uFF0F\u060C").Find(character) != wxNOT_FOUND) {
            end();
        } else {
            piece += character;
        }
        if (answers.size() > kMostPieces) {
            return answers;
        }
    }
    end();
    return answers;
}

// Orders checks: fewer errors for the length first, and accents after that.
bool IsBetter(const AnswerCheck& one, const AnswerCheck& other) {
    const auto share = [](const AnswerCheck& check) {
        return static_cast<double>(check.Errors) / std::max(check.Letters, 1);
    };
    return share(one) != share(other) ? share(one) < share(other) : one.IsNear < other.IsNear;
}

wxString DifferenceText(const AnswerPart& part) {
    const wxString shown = part.What == AnswerPart::Extra ? part.Typed : part.Right;
    switch (part.What) {
        case AnswerPart::Near:
            // Translators: what was typed, and what stands on the card.
            return wxString::Format(_("accent or case: \"%s\" for \"%s\""), part.Typed, shown);
        case AnswerPart::Wrong:
            // Translators: what was typed, and what stands on the card.
            return wxString::Format(_("wrong: \"%s\" for \"%s\""), part.Typed, shown);
        case AnswerPart::Missing:
            return wxString::Format(_("missing: \"%s\""), shown);
        case AnswerPart::Extra:
            return wxString::Format(_("too much: \"%s\""), shown);
        case AnswerPart::Same:
            break;
    }
    return wxString();
}

}  // namespace

int AnswerCheck::ProposedScore() const {
    if (Errors == 0) {
        return IsNear ? 3 : 4;
    }
    if (4 * Errors <= Letters) {
        return 2;
    }
    return 2 * Errors <= Letters ? 1 : 0;
}

wxString AnswerCheck::InWords() const {
    wxString words;
    int told = 0;
    for (const AnswerPart& part : Parts) {
        if (part.What != AnswerPart::Same && ++told <= kMostTold) {
            words += (words.empty() ? "" : "; ") + DifferenceText(part);
        }
    }
    if (told == 0) {
        return _("Your answer is right.");
    }
    return told <= kMostTold ? words : wxString::Format(_("%s; and more"), words);
}

AnswerCheck CheckAnswer(const wxString& typed, const wxString& side) {
    const std::vector<Letter> letters = SplitLetters(typed.Left(kMostCharacters));
    AnswerCheck best;
    bool isFirst = true;
    for (const wxString& answer : ListAnswers(side.Left(kMostCharacters))) {
        AnswerCheck check = Align(letters, SplitLetters(answer));
        if (isFirst || IsBetter(check, best)) {
            best = std::move(check);
            isFirst = false;
        }
    }
    return best;
}
