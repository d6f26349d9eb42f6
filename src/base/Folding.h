#pragma once

#include <wx/string.h>

#include <cstddef>
#include <string>
#include <string_view>

// Folding makes texts equal that a person takes for the same word. Two texts are equal in this
// sense when their folded forms are the same units; one contains another when its folded form does.
//
//     École, ECOLE, e + combining acute ...    ecole       Latin, Greek and Cyrillic lose their
//     Ёлка, ΆΣΟΣ                               елка, ασοσ  case and their marks
//     Straße, œuvre, Ærø, Łódź, ISPARTA, ısı   strasse, oeuvre, aero, lodz, isparta, isi
//     カード, ｶｰﾄﾞ, かーど                     かーど      kana of both kinds and widths
//     ＡＢＣ, ①, ﬁ                             abc, 1, fi  forms of the same character
//     l’été – “où”                             l'ete - "ou"
//
// Vowel points of Hebrew and Arabic go too, as most texts have none. Marks that make another letter
// stay: が is not か, आ not अ, आ़ and क़ keep their dot, and أ is not ا. The case knows no language,
// so a dotless i equals a dotted one everywhere.

// Returns the folded form. It may be longer than the text (a line of Arabic can be one character),
// and empty when the text has nothing but marks. Any thread; the first call takes some
// milliseconds.
std::u16string FoldText(std::u16string_view text);
std::u16string FoldText(const wxString& text);

// The same for units of the machine's byte order at any address, into a string that can be used
// again, which is how a search goes through a store.
void FoldUnits(const void* units, size_t count, std::u16string& folded);

// Returns whether a unit of a folded text belongs to the letter before it and makes another letter
// of it, like the dot of क़, which has no character of its own.
bool IsLetterMark(char16_t unit);

// Units that no folded text has, for whoever needs to mark something in one.
constexpr char16_t kFirstFreeUnit = 0xFDE0;
constexpr char16_t kLastFreeUnit = 0xFDEF;
