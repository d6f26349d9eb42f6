#pragma once

#include <wx/intl.h>
#include <wx/string.h>

#include <bitset>
#include <cstddef>
#include <cstdint>

// What a deck may be and make. A file of a few kilobytes can describe gigabytes, so each thing that
// could grow has a bound here: one number, and a sentence for a person.

struct DeckBound {
    int64_t Most;
    // Whether the number is one of bytes.
    bool IsBytes;
    // Has the number in the place of %s.
    const char* Sentence;
};

// What comes out of a package.
inline constexpr DeckBound kMostUnpacked{
    int64_t{1} << 30, true, wxTRANSLATE("The deck is larger than %s and is not imported.")};
// The description of kinds of notes and decks, of which all the rest is told: its bytes, and the
// values in it.
inline constexpr DeckBound kMostDescription{
    int64_t{16} << 20, true,
    wxTRANSLATE("The description of the deck is larger than %s, and the deck is not imported.")};
inline constexpr DeckBound kMostParts{
    500000, false,
    wxTRANSLATE("The description of the deck has more than %s parts, and the deck is not "
                "imported.")};
inline constexpr DeckBound kDeepestPart{
    64, false,
    wxTRANSLATE("The description of the deck has more than %s levels, and the deck is not "
                "imported.")};
inline constexpr DeckBound kMostNoteTypes{
    10000, false, wxTRANSLATE("The deck has more than %s kinds of notes and is not imported.")};
inline constexpr DeckBound kMostTemplates{
    256, false,
    wxTRANSLATE("A kind of note in the deck has more than %s templates, and the deck is not "
                "imported.")};
inline constexpr DeckBound kMostFields{
    1000, false,
    wxTRANSLATE("A note in the deck has more than %s fields, and the deck is not imported.")};
// The attributes of one entry in a list of cards.
inline constexpr DeckBound kMostAttributes{
    100, false,
    wxTRANSLATE("An entry of the deck has more than %s attributes, and the deck is not "
                "imported.")};

// A person is asked before a deck goes beyond these two: the cards, and how many times the size of
// its file the texts of the cards may take.
inline constexpr DeckBound kMostCards{1000000, false,
                                      wxTRANSLATE("The deck makes more than %s cards.")};
inline constexpr DeckBound kMostGrowth{
    64, false, wxTRANSLATE("The cards of the deck take more than %s times the size of its file.")};

// Fields of a kind of note, each by its place.
using FieldBits = std::bitset<static_cast<size_t>(kMostFields.Most)>;

// Returns the sentence of a bound; with another number where its number was changed.
wxString BoundMessage(const DeckBound& bound);
wxString BoundMessage(const DeckBound& bound, int64_t most);

// Counts what a deck has and makes, beside the bounds that a person is asked about.
class DeckRoom {
  public:
    // An unlimited room counts nothing.
    DeckRoom(int64_t fileSize, bool isUnlimited);

    // Each takes in what is named, and returns false once that is too much: rows of notes or of
    // cards, texts as the file has them, a card and its texts.
    bool TakeRow(int64_t& rows);
    bool TakeText(size_t bytes);
    bool TakeCard(size_t characters);
    // The bound that was passed, or null.
    const DeckBound* GetPassed() const { return mpPassed; }

  private:
    bool Compare(int64_t count, int64_t most, const DeckBound& bound);

    bool mIsUnlimited;
    int64_t mMostBytes;
    int64_t mTexts = 0;
    int64_t mCards = 0;
    int64_t mCardBytes = 0;
    const DeckBound* mpPassed = nullptr;
};
