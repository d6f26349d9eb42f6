#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/CardUuid.h"
#include "store/FlashCard.h"

// What can be asked of a card by a word such as is:due.
enum class CardState : uint8_t { kDue, kNew, kFailed, kExcluded, kDuplicate, kHard };

// One word of a search.
struct SearchTerm {
    enum class Kind : uint8_t {
        // Text occurs in one of the columns, or in the name of the category.
        kText,
        kState,
        // The time until the next review, or the review interval, compared with Seconds.
        kDue,
        kInterval
    };
    enum class Field : uint8_t { kAny, kFront, kBack, kNotes, kAuthor, kChapter, kCategory };

    Kind What = Kind::kText;
    bool IsExcluded = false;
    Field In = Field::kAny;
    wxString Text;
    CardState State = CardState::kDue;
    // How many of the hardest cards kHard stands for.
    int32_t Hardest = 20;
    // The direction that a state or a time is asked of; none for that of the study.
    std::optional<ReviewDirection> Direction;
    // "<", ">", "<=" or ">=".
    const char* Comparison = "<";
    int64_t Seconds = 0;
    // The word's place in the search.
    size_t Begin = 0;
    size_t End = 0;
};

// What the user has typed to find cards. Every word must be found in a card:
//
//     search := { ["-"] word }
//     word   := text                      in any field
//             | field ":" text            front, back, notes, category, author or chapter
//             | [direction] "is:" state   due, new, failed, excluded, duplicate or hard
//             | "hard:" number            as is:hard, but so many of the hardest cards and not 20
//             | [direction] ("due" | "interval") ("<" | ">" | "<=" | ">=") number [unit]
//     direction := "forward:" | "reverse:"   instead of that of the study
//     text   := characters without a blank | '"' characters '"'
//     unit   := "min" | "h" | "d" | "w" | "m" | "y", a month being "m" and a day the default
//
// A minus excludes the cards that have the word. A name that is none of these is text with all that
// follows it, and so is everything in quotes. "%" and "_" in a text are wild cards. Case, accents
// and width do not matter (base/Folding.h). A known name with something impossible after it is a
// problem of the whole search, which then finds nothing.
//
// A search in exact mode is one text with its blanks, and only "%" and "_" mean anything in it.
class SearchQuery {
  public:
    static constexpr size_t kMostCharacters = 1000;
    static constexpr size_t kMostWords = 40;
    static constexpr int32_t kMostHardest = 1000;

    // Finds every card.
    SearchQuery() = default;
    static SearchQuery Exact(const wxString& text);
    static SearchQuery Words(const wxString& text);

    bool operator==(const SearchQuery& other) const {
        return mIsExact == other.mIsExact && mText == other.mText;
    }
    // Returns true when every card is found.
    bool IsEmpty() const { return mIsExact ? mText.empty() : mTerms.empty(); }
    bool IsExact() const { return mIsExact; }
    // Returns the text as it was typed.
    const wxString& GetText() const { return mText; }
    // Returns the words; none in exact mode.
    const std::vector<SearchTerm>& GetTerms() const { return mTerms; }
    // Returns a sentence that says which word is wrong; empty when none is.
    const wxString& GetProblem() const { return mProblem; }

    // Returns how many of the hardest cards the words ask for, without a minus or with one.
    size_t CountHardest() const;
    bool Requires(CardState state) const;
    // Returns the text with a word that requires the state, or without such words.
    wxString WithState(CardState state, bool required) const;

  private:
    bool mIsExact = false;
    wxString mText;
    std::vector<SearchTerm> mTerms;
    wxString mProblem;
};

// Returns the words for the states, in the order of CardState.
const std::array<const char*, 6>& CardStateWords();

// A search and what its states are measured by.
struct CardSearch {
    SearchQuery Query;
    ReviewDirection Direction = kReviewForward;
    wxDateTime Now;
    // The hardest cards, the hardest one first: Query.CountHardest(), or fewer where there are no
    // more.
    std::vector<CardUuid> Hard;
};

// Returns the pattern that RESEMBLES compares texts with: the folded text, which may stand
// anywhere.
std::u16string MakeFoldedPattern(const wxString& text);
