#include "store/Database.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "store/SearchQuery.h"

namespace {

constexpr int kText = 4;

using Value = std::unique_ptr<sqlite3_value, decltype(&sqlite3_value_free)>;

// A connection with the encoding of a store, whose answers can be compared.
class Engine {
  public:
    explicit Engine(const char* sql) {
        sqlite3_open16(u":memory:", &mpHandle);
        EXPECT_EQ(RegisterSearchFunction(mpHandle), SQLITE_OK);
        EXPECT_EQ(sqlite3_prepare_v2(mpHandle, sql, -1, &mpSelect, nullptr), SQLITE_OK);
        sqlite3_limit(mpHandle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 30);
    }
    ~Engine() {
        sqlite3_finalize(mpSelect);
        sqlite3_close(mpHandle);
    }

    std::string Answer(const Value& pattern, const Value& first, const Value& second) {
        sqlite3_bind_value(mpSelect, 1, pattern.get());
        sqlite3_bind_value(mpSelect, 2, first.get());
        sqlite3_bind_value(mpSelect, 3, second.get());
        std::string answer = sqlite3_step(mpSelect) == SQLITE_ROW ? "" : sqlite3_errmsg(mpHandle);
        if (answer.empty()) {
            answer = std::to_string(sqlite3_column_int(mpSelect, 0));
        }
        sqlite3_reset(mpSelect);
        return answer;
    }

    // The result of a query as a value that both engines can be given.
    Value Make(const std::u16string& units, int kind) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(mpHandle, "SELECT ?1", -1, &statement, nullptr);
        const int bytes = static_cast<int>(2 * units.size());
        switch (kind) {
            case 0:
                break;
            case 1:
                sqlite3_bind_int64(statement, 1, bytes - 9);
                break;
            case 2:
                sqlite3_bind_double(statement, 1, bytes * 1e20);
                break;
            case 3:
                sqlite3_bind_blob(statement, 1, units.data(), bytes - (bytes % 3 == 0 ? 1 : 0),
                                  SQLITE_TRANSIENT);
                break;
            default:
                sqlite3_bind_text16(statement, 1, units.data(), bytes, SQLITE_TRANSIENT);
        }
        sqlite3_step(statement);
        Value value(sqlite3_value_dup(sqlite3_column_value(statement, 0)), &sqlite3_value_free);
        sqlite3_finalize(statement);
        return value;
    }

  private:
    sqlite3* mpHandle = nullptr;
    sqlite3_stmt* mpSelect = nullptr;
};

}  // namespace

// Random values of every type, ill-formed texts and too long patterns among them, get the answers
// of the engine itself.
TEST(SearchFunctionTest, FindsWhatTheEnginesOwnFind) {
    const std::u16string letters(u"aAbB%%__zZ@[`{\u00e9\u00c9\u0130\ud7ff\ue000\ufffd\ufffe\uffff",
                                 22);
    std::mt19937 random(20240229);
    const auto pick = [&random](size_t count) { return random() % count; };
    const auto makeUnits = [&](size_t longest) {
        std::u16string units;
        // One in a hundred is a long text.
        for (size_t i = pick(pick(100) == 0 ? 600 : longest); i > 0; --i) {
            switch (pick(40)) {
                case 0:
                    units += u'\0';
                    break;
                case 1:
                    units += static_cast<char16_t>(0xD800 + pick(0x800));
                    break;
                case 2:
                case 3:
                    units += u"\U0001F600";
                    break;
                case 4:
                    // The engine takes off the first of two at the beginning.
                    units.insert(0, u"\ufeff\ufeff");
                    break;
                default:
                    units += letters[pick(pick(2) == 0 ? 6 : letters.size())];
            }
        }
        return units;
    };
    Engine own("SELECT IFNULL(LOWER(?2) LIKE ?1, 0) OR IFNULL(LOWER(?3) LIKE ?1, 0)");
    Engine ours("SELECT CONTAINS(?1, ?2, ?3)");
    std::string seen;
    for (int round = 0; round < 20000; ++round) {
        const Value first = own.Make(makeUnits(24), static_cast<int>(pick(40)));
        const Value second = own.Make(makeUnits(24), static_cast<int>(pick(40)));
        // A search's pattern is always a text.
        const Value pattern = own.Make(makeUnits(12), kText);
        const std::string expected = own.Answer(pattern, first, second);
        ASSERT_EQ(ours.Answer(pattern, first, second), expected) << "round " << round;
        seen += expected.substr(0, 2) + "|";
    }
    // The rounds have met every outcome.
    for (const char* const outcome : {"0|", "1|", "LI|"}) {
        EXPECT_NE(seen.find(outcome), std::string::npos) << outcome;
    }
}

// Where there is nothing to forgive, a forgiving search finds the same.
TEST(SearchFunctionTest, WildCardsMeanTheSameInAFoldedPattern) {
    std::mt19937 random(20240229);
    const auto makeText = [&random](size_t longest) {
        std::u16string text;
        for (size_t i = random() % longest; i > 0; --i) {
            text += u"aAb%_%"[random() % 6];
        }
        return text;
    };
    Engine own("SELECT IFNULL(LOWER(?2) LIKE '%' || ?1 || '%' OR LOWER(?3) LIKE ?1, 0)");
    Engine ours("SELECT RESEMBLES(?1, ?2, ?3)");
    const Value none = own.Make(u"", 0);
    int hits = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::u16string pattern = makeText(8);
        const Value text = own.Make(makeText(14), kText);
        const Value folded = ours.Make(MakeFoldedPattern(wxString::FromAscii(
                                           std::string(pattern.begin(), pattern.end()).c_str())),
                                       kText);
        const std::string expected = own.Answer(own.Make(pattern, kText), text, none);
        ASSERT_EQ(ours.Answer(folded, text, none), expected) << "round " << round;
        hits += expected == "1" ? 1 : 0;
    }
    EXPECT_GT(hits, 5000);
    EXPECT_LT(hits, 15000);
}
