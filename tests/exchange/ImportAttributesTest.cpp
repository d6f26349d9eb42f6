// What the import makes of the attributes of a record, and what it says against them.

#include "exchange/ImportFixture.h"

namespace {

using ImportAttributes = ImportFixture;

constexpr const char* kRepeated =
    "This card attribute has already been specified.  Individual cards must be separated by a "
    "blank line. @";

std::string Named(const char* name, const char* rest) {
    return std::string("\"") + name + "\" must be " + rest;
}

}  // namespace

TEST_F(ImportAttributes, FillsEveryFieldOfACard) {
    ASSERT_EQ(Import("ID: {0123ABCD-0000-4000-8000-000000000001}\n"
                     "QUESTION: q\nFront2: reading\nAnswer: a\nback2: other\nAuthor: w\n"
                     "Category: Words\nChapter: 3\nIntroductionOrder: -7\nForwardX: TRUE\n"
                     "ReverseX: true\nNotes: n1\nNotes:\nNotes: n2\n"
                     "Active: True\nLastReview: 2005-1-2 3:4:5\nLastScore: 5\n"
                     "ReviewInterval: 1.5e3\nDifficulty: 32\nERC: 2147418112\n"
                     "RIntroduced: true\nRLastReview: 2006-01-02 03:04:05Z\nRLastScore:\n"
                     "RReviewInterval:\nRDifficulty: +1\nRERC: 17\n"),
              0);
    EXPECT_EQ(Query("SELECT * FROM Cards"),
              std::vector<std::string>{
                  "0123abcd-0000-4000-8000-000000000001|q\n\xE3\x80\x90reading\xE3\x80\x91|"
                  "a\n\xE3\x80\x90other\xE3\x80\x91|1|w|3|-7|1|1|n1\n\nn2|"
                  "NULL|NULL|NULL|NULL|1|1104635045|1104636545|1500.0|32|5|2147418112|"
                  "1|1136171045|1136171045|0.0|1|0|17"});
}

TEST_F(ImportAttributes, RefusesWithTheNameAsSpelledAndItsLine) {
    const std::string number = "followed by whole number between 0 and ";
    const std::string flag = "followed by either \"true\" or \"false\" @";
    const std::string date = "followed by a valid date in this format YYYY-MM-DD hh:mm:ss @";
    const std::string seconds = "followed by a valid number of seconds. @";
    const std::string uuid = "followed by a valid UUID (Universally Unique Identifier). @";
    const std::pair<std::string, std::string> cases[] = {
        {": x\n", "\"\" is not a valid attribute name. @1"},
        {"f: a\nfront\n", "Line is missing the colon (:) symbol @2"},
        {"f: a\nb: b\nf: c\n", kRepeated + std::string("3")},
        {"f: a\nb: b\nQuestion: c\n", kRepeated + std::string("3")},
        {"Front: a\nfront: b\n", kRepeated + std::string("2")},
        {"f: a\nCardId: 0123abcd000040008000000000000001\n",
         Named("CardId", "specified before any other attributes. @2")},
        {"id: 12\n", Named("id", uuid.c_str()) + "1"},
        {"id: 00000000-0000-0000-0000-000000000000\n", Named("id", uuid.c_str()) + "1"},
        {"b: b\n\nf:\n", "New import cards must have a front attribute. @1"},
        {"b: b\nf:\n", "Every card must have a front attribute. @2"},
        {"f: f\nb:\n", "Every card must have an back attribute. @2"},
        {"b: b\nNotes: n\n", "New import cards must have a front attribute. @1"},
        {"#\nf: f\nNotes: n\n", "New import cards must have an back attribute. @2"},
        {"IntroductionOrder: 1.0\n", Named("IntroductionOrder", "followed by a whole number @1")},
        {"ForwardX: yes\n", Named("ForwardX", flag.c_str()) + "1"},
        {"reversex: 1\n", Named("reversex", flag.c_str()) + "1"},
        {"Introduced:\n", Named("Introduced", flag.c_str()) + "1"},
        {"LastReview:\n", Named("LastReview", date.c_str()) + "1"},
        {"RLastReview: 1969-12-31 23:59:59Z\n", Named("RLastReview", date.c_str()) + "1"},
        {"LastScore: 6\n", Named("LastScore", (number + "5 @1").c_str())},
        {"ReviewInterval: -1\n", Named("ReviewInterval", seconds.c_str()) + "1"},
        {"ReviewInterval: 3.5e38\n", Named("ReviewInterval", seconds.c_str()) + "1"},
        {"RReviewInterval: 0x10\n", Named("RReviewInterval", seconds.c_str()) + "1"},
        {"Difficulty: 33\n", Named("Difficulty", (number + "32 @1").c_str())},
        {"RErc: 2147418113\n", Named("RErc", (number + "2147418112 @1").c_str())},
        {"ractive: true\n", "\"ractive\" is not a valid attribute name. @1"},
    };
    for (const auto& [text, outcome] : cases) {
        EXPECT_EQ(Import(text), -1) << text;
        EXPECT_EQ(mResult->Status, ImportStatus::kFailed) << text;
        EXPECT_EQ(Outcome(), outcome) << text;
    }
    EXPECT_TRUE(mDatabase.IsEmpty());
}

TEST_F(ImportAttributes, ChecksTheColumnsOfATableInOrder) {
    const std::pair<std::string, std::string> cases[] = {
        {"Front,BACK\na,b\n", "1 inserted, 0 merged, 0 ignored"},
        {"Front,Bak,Foo\na,b\n", "\"Bak\" is not a valid attribute name. @1"},
        {"\nFront,Back\n", "\"\" is not a valid attribute name. @1"},
        {"Front,Question,Back\n", "0 inserted, 0 merged, 0 ignored"},
        {"Front,Question,Back\n\na,b\n", kRepeated + std::string("3")},
        {"Front,Back\nc\n", "Every card must have an back attribute. @2"},
        {"Front,Back,ForwardX,Category,id\nc,d\n", "1 inserted, 0 merged, 0 ignored"},
    };
    for (const auto& [text, outcome] : cases) {
        ImportTable(text);
        EXPECT_EQ(Outcome(), outcome) << text;
    }
}

TEST_F(ImportAttributes, CutsANameOfAbsurdLengthInItsMessage) {
    Import(std::string(100000, 'x') + ": a\n");
    EXPECT_LT(mResult->Message.length(), 300U);
}
