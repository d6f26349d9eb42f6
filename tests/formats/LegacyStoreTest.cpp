// Stores of version 1.0, read through an engine that the test makes.

#include "base/Time.h"
#include "exchange/ImportFixture.h"
#include "formats/LegacyStoreReader.h"
#include "support/FakeRowSource.h"

namespace {

constexpr wchar_t kId[] = L"9b1deb4d-3b7d-4bad-9bdd-2b0d7b3dcb6d";
constexpr wchar_t kOtherId[] = L"1b9d6bcd-bbfd-4b2d-9b5d-ab8dfbbd4bed";
constexpr wchar_t kThirdId[] = L"3b9d6bcd-bbfd-4b2d-9b5d-ab8dfbbd4bed";

struct LegacyStore : ImportFixture {
    std::string ImportStore() {
        ImportInput input{"/old/FlashCards.vls", ImportFormat::kVersion1Store};
        input.MakeRowSource = mEngine.Maker();
        mResult = std::make_unique<ImportResult>();
        ImportCards(input, mDatabase, *mResult, true, nullptr);
        return Outcome();
    }
    Strings Cards() {
        return Query(
            "SELECT Front, Back, CategoryId, Introduced, ReviewInterval, Difficulty, LastScore, "
            "RIntroduced FROM Cards ORDER BY Front");
    }

    FakeEngine mEngine;
};

}  // namespace

TEST_F(LegacyStore, BringsItsCardsWithTheirSchedules) {
    mEngine.Cards = {{kId, L"q1", L"a1", L"True", L"2004-02-03 04:05:06", L"86400", L"20", L"4"},
                     {kOtherId, L"q2", L"a2", L"false", L"2004-02-03 04:05:06", L"0", L"0", L"0"}};
    EXPECT_EQ(ImportStore(), "2 inserted, 0 merged, 0 ignored");
    EXPECT_EQ(Cards(), (Strings{"q1|a1|0|1|86400.0|20|4|0", "q2|a2|0|0|0.0|0|0|0"}));
    CardUuid id;
    ASSERT_EQ(ParseUuid(kId, id), 0);
    EXPECT_EQ(FormatTimeStamp(Stored(id).Forward.LastReview), "2004-02-03 04:05:06Z");
    EXPECT_EQ(ImportStore(), "0 inserted, 0 merged, 2 ignored");

    // The earliest kind has no difficulty.
    mEngine.HasDifficulty = false;
    mEngine.Cards = {{kThirdId, L"q3", L"a3", L"true", L"2004-02-03 04:05:06", L"5", L"3"}};
    EXPECT_EQ(ImportStore(), "1 inserted, 0 merged, 0 ignored");
    EXPECT_EQ(Cards()[2], "q3|a3|0|1|5.0|16|3|0");
}

TEST_F(LegacyStore, TellsWhatKeepsItFromBeingRead) {
    mEngine.Missing = 1;
    EXPECT_EQ(ImportStore(),
              "Microsoft SQLCE 2.0 must be installed to import version 1.0 flash cards @-1");
    mEngine.OpenResult = -1;
    EXPECT_EQ(ImportStore(), "Unable to read flash cards: /old/FlashCards.vls @-1");
    mEngine.OpenResult = 0;
    EXPECT_EQ(ImportStore(), "0 inserted, 0 merged, 0 ignored");
    // A row that the engine could not give arrives empty.
    mEngine.Cards = {{}};
    EXPECT_EQ(ImportStore(), "Every card must have a front attribute. @1");
}
