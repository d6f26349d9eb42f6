// Which of the CREATE texts in a store file's schema this program can live with.
//
// A text is cut into tokens as the engine cuts it, so that a word in a comment, a name or a literal
// is not taken for one of the language, and none of the language is missed. Then the few places are
// looked at where an expression may stand. For the index
//
//     CREATE INDEX Mine ON Cards("Front" COLLATE NOCASE DESC, Back)
//
// the tokens in parentheses are names with an order each, and nothing will be computed; a function,
// an operator, CASE or a WHERE behind the parenthesis does not fit.

#include "store/StoreSchema.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace {

// The columns of all indexes on the program's tables together, of which its own have 28, and the
// length of the text of a table, of which its own have 900 characters: each change of a card is
// written to each index, and each literal default into each new row.
constexpr int kMostIndexColumns = 100;
constexpr size_t kLongestTable = 16384;

struct Token {
    enum Kind { kWord, kQuoted, kSymbol };
    Kind What;
    // In capitals, and without its quotes.
    std::string Text;
};

char ToUpper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

bool IsSpace(char character) {
    return character != '\0' &&
           std::string_view(" \t\n\f\r").find(character) != std::string_view::npos;
}

// Numbers are words here too. Every character past ASCII belongs to a word.
bool IsWord(char character) {
    const char upper = ToUpper(character);
    return (upper >= 'A' && upper <= 'Z') || (character >= '0' && character <= '9') ||
           character == '_' || character == '$' || static_cast<unsigned char>(character) >= 0x80;
}

// The end of a comment that begins at a place, or the place itself where none does.
size_t SkipComment(std::string_view sql, size_t begin) {
    const std::string_view opening = sql.substr(begin, 2);
    if (opening != "--" && opening != "/*") {
        return begin;
    }
    const std::string_view closing = opening == "--" ? "\n" : "*/";
    const size_t end = sql.find(closing, begin + 2);
    return end == std::string_view::npos ? sql.length() : end + closing.length();
}

// Reads a quoted text from its opening quote on, and moves the place behind it. A doubled quote
// stands for itself, except in brackets.
std::string TakeQuoted(std::string_view sql, size_t& place) {
    const char closing = sql[place] == '[' ? ']' : sql[place];
    std::string text;
    for (++place; place < sql.length(); ++place) {
        if (sql[place] == closing) {
            const bool isDoubled =
                closing != ']' && sql.substr(place + 1, 1) == sql.substr(place, 1);
            if (!isDoubled) {
                break;
            }
            ++place;
        }
        text += ToUpper(sql[place]);
    }
    place = std::min(place + 1, sql.length());
    return text;
}

// Moves the place behind white space and comments. A byte order mark counts as space in front of a
// token, and as a letter inside of a word.
void SkipSpace(std::string_view sql, size_t& place) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    for (size_t before = sql.length() + 1; before != place;) {
        before = place;
        place = SkipComment(sql, place);
        if (place < sql.length() && IsSpace(sql[place])) {
            ++place;
        } else if (sql.substr(place, kMark.length()) == kMark) {
            place += kMark.length();
        }
    }
}

std::vector<Token> Tokenise(std::string_view sql) {
    std::vector<Token> tokens;
    size_t place = 0;
    for (SkipSpace(sql, place); place < sql.length(); SkipSpace(sql, place)) {
        const char first = sql[place];
        if (std::string_view("'\"`[").find(first) != std::string_view::npos) {
            tokens.push_back({Token::kQuoted, TakeQuoted(sql, place)});
        } else if (IsWord(first)) {
            std::string word;
            for (; place < sql.length() && IsWord(sql[place]); ++place) {
                word += ToUpper(sql[place]);
            }
            tokens.push_back({Token::kWord, std::move(word)});
        } else {
            tokens.push_back({Token::kSymbol, std::string(1, first)});
            ++place;
        }
    }
    return tokens;
}

// Reads the tokens of one text from left to right.
class Tokens {
  public:
    explicit Tokens(std::string_view sql) : mTokens(Tokenise(sql)) {}

    bool IsAtEnd() const { return mPlace == mTokens.size(); }
    // Each passes over the token if it is the one that was asked for.
    bool Take(const char* wordOrSymbol) {
        const bool fits = !IsAtEnd() && mTokens[mPlace].What != Token::kQuoted &&
                          mTokens[mPlace].Text == wordOrSymbol;
        mPlace += fits ? 1 : 0;
        return fits;
    }
    bool TakeName(std::string& name) {
        if (IsAtEnd() || mTokens[mPlace].What == Token::kSymbol) {
            return false;
        }
        name = mTokens[mPlace++].Text;
        return true;
    }
    void Skip() { ++mPlace; }

  private:
    std::vector<Token> mTokens;
    size_t mPlace = 0;
};

bool IsOurTable(const std::string& name) {
    return name == "CARDS" || name == "CATEGORIES" || name == "GLOBALS";
}

// Behind CREATE TABLE. Expressions stand in checks, in generated columns and in defaults in
// parentheses; a conflict clause makes a score replace other cards without a word.
bool IsPlainTable(Tokens& tokens, size_t length) {
    std::string name;
    // The engine itself stores no other form, such as IF NOT EXISTS.
    if (!tokens.TakeName(name) || !tokens.Take("(")) {
        return false;
    }
    if (!IsOurTable(name)) {
        return true;
    }
    while (!tokens.IsAtEnd()) {
        if (tokens.Take("AS") || tokens.Take("CHECK") || tokens.Take("CONFLICT")) {
            return false;
        }
        if (!tokens.Take("DEFAULT")) {
            tokens.Skip();
        } else if (tokens.Take("(")) {
            return false;
        }
    }
    return length <= kLongestTable;
}

// Behind CREATE INDEX; counts the columns of one on a table of ours.
bool IsPlainIndex(Tokens& tokens, int& columns) {
    std::string name;
    std::string table;
    if (!tokens.TakeName(name) || !tokens.Take("ON") || !tokens.TakeName(table) ||
        !tokens.Take("(")) {
        return false;
    }
    if (!IsOurTable(table)) {
        return true;
    }
    do {
        std::string column;
        if (!tokens.TakeName(column) || (tokens.Take("COLLATE") && !tokens.TakeName(column))) {
            return false;
        }
        if (!tokens.Take("ASC")) {
            tokens.Take("DESC");
        }
        ++columns;
    } while (tokens.Take(","));
    return tokens.Take(")") && tokens.IsAtEnd();
}

// Behind CREATE VIEW and CREATE VIRTUAL TABLE: harmless under another name than ours.
bool HasForeignName(Tokens& tokens) {
    std::string name;
    return tokens.TakeName(name) && !IsOurTable(name) && !tokens.Take("NOT");
}

}  // namespace

bool SchemaReview::Accepts(std::string_view sql) {
    Tokens tokens(sql);
    if (!tokens.Take("CREATE")) {
        return false;
    }
    if (tokens.Take("TRIGGER")) {
        return true;
    }
    if (tokens.Take("VIEW") || (tokens.Take("VIRTUAL") && tokens.Take("TABLE"))) {
        return HasForeignName(tokens);
    }
    if (tokens.Take("TABLE")) {
        return IsPlainTable(tokens, sql.length());
    }
    tokens.Take("UNIQUE");
    return tokens.Take("INDEX") && IsPlainIndex(tokens, mIndexColumns) &&
           mIndexColumns <= kMostIndexColumns;
}
