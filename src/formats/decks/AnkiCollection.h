#pragma once

#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "files/ForeignDatabase.h"
#include "formats/decks/DeckBounds.h"

// A card template as its two pages of HTML.
struct AnkiTemplateText {
    wxString Question;
    wxString Answer;
};

struct AnkiNoteType {
    wxString Name;
    bool IsCloze = false;
    std::vector<wxString> Fields;
    std::vector<AnkiTemplateText> Templates;
};

struct AnkiNote {
    int64_t Id = 0;
    // Given by the maker of the note; not always unique.
    std::string Guid;
    // Whether another note with a smaller number has the same Guid, or there is none.
    bool IsGuidTaken = false;
    int64_t TypeId = 0;
    wxString Tags;
    // All fields as HTML, with U+001F between them.
    wxString Fields;
};

// A row of Anki's cards with the last answer that its log has. Times are seconds since 1970.
struct AnkiCard {
    int64_t RowId = 0;
    int64_t NoteId = 0;
    int64_t Deck = 0;
    int64_t HomeDeck = 0;
    int64_t Number = 0;
    int64_t Changed = 0;
    // 0 new, 1 learning, 2 review, 3 learning again.
    int64_t Type = 0;
    // -1 is suspended, -2 and -3 are buried.
    int64_t Queue = 0;
    // A place among the new cards, seconds, or days since the collection was made.
    int64_t Due = 0;
    int64_t HomeDue = 0;
    // Days, or negative seconds.
    int64_t Interval = 0;
    // Thousandths.
    int64_t Ease = 0;
    // -1 where no answer is known.
    int64_t LastReview = -1;
    // 1 to 4, or 0.
    int64_t LastAnswer = 0;
};

// The database of Anki: kinds of notes, decks, and the notes with their cards, one after another.
// Keeps some numbers of each note and card in memory and reads their texts when they are asked for.
class AnkiCollection {
  public:
    // The room counts rows and texts, and is not owned.
    explicit AnkiCollection(DeckRoom& room) : mRoom(room) {}

    // Opens a file, which must not change meanwhile. Returns false on a failure, which GetFailure
    // tells. Looks up the cards' last answers only on request. The flag, which is not owned and may
    // be null, ends all reading once it is true.
    bool Open(const wxString& path, bool withAnswers, const std::atomic<bool>* isCancelled);

    const std::map<int64_t, AnkiNoteType>& GetTypes() const { return mTypes; }
    // Returns the whole name, with "::" between its levels; empty for an unknown deck.
    wxString FindDeckName(int64_t deck) const;
    // Returns when the collection was made, in seconds since 1970.
    int64_t GetCreated() const { return mCreated; }
    size_t CountNotes() const { return mOrder.size(); }
    int64_t CountReviews() const { return mReviews; }

    // Reads a note by its place in the order of introduction, and its cards in the order of their
    // numbers. Returns false on a failure.
    bool ReadNote(size_t place, AnkiNote& note, std::vector<AnkiCard>& cards);

    // Returns a sentence for the user.
    const wxString& GetFailure() const { return mFailure; }

  private:
    // A row of a table and the note that it belongs to.
    struct RowOfNote {
        int64_t NoteId;
        int64_t RowId;
    };
    struct Answer {
        int64_t Time = -1;
        int64_t Ease = 0;
    };
    // The least place of a new card of each note.
    using Places = std::unordered_map<int64_t, int64_t>;

    bool Fail(const wxString& message);
    bool FailDamaged();
    bool FailBound(const DeckBound& bound) { return Fail(BoundMessage(bound)); }
    // Returns whether a reading went well and stayed within the bounds.
    bool IsGood(int result);
    bool HasTables(std::initializer_list<const char*> tables);
    bool ReadDescription();
    bool CheckDescription(const std::string& types, const std::string& decks);
    bool CheckTypes();
    bool TakeTypes(const std::string& text);
    bool TakeDecks(const std::string& text);
    bool ReadTypeTables();
    bool ReadDeckTable();
    bool ReadCardRows(Places& places);
    bool ReadNoteRows(const Places& places);
    bool ReadAnswers();
    bool ReadCardsOf(int64_t noteId, std::vector<AnkiCard>& cards);

    DeckRoom& mRoom;
    ForeignDatabase mDatabase;
    wxString mFailure;
    int64_t mCreated = 0;
    int64_t mReviews = 0;
    std::map<int64_t, AnkiNoteType> mTypes;
    std::map<int64_t, wxString> mDecks;
    // Sorted by note.
    std::vector<RowOfNote> mCardRows;
    // The notes in the order in which their cards come.
    std::vector<RowOfNote> mOrder;
    // The numbers of the notes whose Guid is taken.
    std::unordered_set<int64_t> mTaken;
    std::unordered_map<int64_t, Answer> mAnswers;
};
