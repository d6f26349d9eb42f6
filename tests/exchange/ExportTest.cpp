#include "exchange/Export.h"

#include "support/StoreFixture.h"

namespace {

// A store with a card that has everything and one that has little.
struct ExportTest : StoreFixture {
    ExportTest() {
        mDatabase.CategoryInsert("Kanji");
        FlashCard full =
            MakeCard(L"\u6C34\n\u3010\u307F\u305A\n\u3010z\u3011\u3011", L"water\u3011", 1);
        ParseUuid("01234567-89ab-4def-8123-456789abcdef", full.CardId);
        full.Author = "x,\"y";
        full.IntroductionOrder = -3;
        full.ReverseX = true;
        full.Chapter = "1\r2";
        full.Notes = "a\r\n\"b\"";
        full.Forward = {true, wxDateTime(time_t{1700000000}), 4, 1.5f, 7, 40961};
        full.Reverse = {false, wxDateTime(time_t{0}), 0, 3.4028234663852886e38f, 16, 0};
        FlashCard bare = MakeCard("f", "b");
        ParseUuid("00000000-0000-4000-8000-000000000001", bare.CardId);
        bare.Forward = full.Reverse;
        bare.Forward.ReviewInterval = 5;
        bare.Reverse = bare.Forward;
        Insert(full);
        Insert(bare);
        // Any number but 0 stands for a set box.
        mDatabase.Execute("UPDATE Cards SET ReverseX = 2 WHERE ReverseX = 1");
        EXPECT_EQ(mDatabase.CardSelectRowIdsOrder({CardColumn::kCategory, true}, mRowIds), 0);
    }

    std::string Text(ExportFormat format, bool scheduling) {
        wxString text;
        EXPECT_EQ(ExportToString(text, mDatabase, mRowIds, {scheduling, format, L','}, mProgress),
                  0);
        return text.utf8_string();
    }

    std::vector<int64_t> mRowIds;
    ExportProgress mProgress;
};

TEST_F(ExportTest, TheOwnFormGivesAllAttributesInTheirOrder) {
    EXPECT_EQ(Text(ExportFormat::kVlmText, true),
              "id: 01234567-89ab-4def-8123-456789abcdef\nFront: 水\nFront2: みず\nFront2: "
              "【z】\nBack: water】\n"
              "Category: Kanji\nAuthor: x,\"y\nChapter: 1\nChapter: 2\nIntroductionOrder: -3\n"
              "ForwardX: false\nReverseX: true\nNotes: a\nNotes: \"b\"\nIntroduced: true\n"
              "LastReview: 2023-11-14 22:13:20Z\nLastScore: 4\nReviewInterval: 1.500000\n"
              "Difficulty: 7\nERC: 40961\nRIntroduced: false\nRLastReview: 1970-01-01 00:00:00Z\n"
              "RLastScore: 0\nRReviewInterval: 340282346638528859811704183484516925440.000000\n"
              "RDifficulty: 16\nRERC: 0\n\n"
              "id: 00000000-0000-4000-8000-000000000001\nFront: f\nBack: b\nIntroductionOrder: 0\n"
              "ForwardX: false\nReverseX: false\nIntroduced: false\n"
              "LastReview: 1970-01-01 00:00:00Z\nLastScore: 0\nReviewInterval: 5.000000\n"
              "Difficulty: 16\nERC: 0\nRIntroduced: false\nRLastReview: 1970-01-01 00:00:00Z\n"
              "RLastScore: 0\nRReviewInterval: 5.000000\nRDifficulty: 16\nRERC: 0\n\n");
    EXPECT_EQ(mProgress.Position, 2);
    EXPECT_EQ(mProgress.Total, 4);
}

TEST_F(ExportTest, TheFormOfVersion1DropsWhatThatDoesNotKnow) {
    const std::string id = "id: 01234567-89ab-4def-8123-456789abcdef\nQ: 水\nA: water】\n";
    mRowIds.pop_back();
    EXPECT_EQ(Text(ExportFormat::kVlmText1, false), id + "\n");
    EXPECT_EQ(Text(ExportFormat::kVlmText1, true),
              id + "Active: true\nLastReview: 2023-11-14 22:13:20Z\nLastScore: 4\n"
                   "ReviewInterval: 1.500000\nDifficulty: 7\n\n");
}

// Quotes are doubled where they alone made a field a quoted one.
TEST_F(ExportTest, TheTextForAnkiQuotesWhatItMustAndHasNoSchedules) {
    const std::string text =
        "#separator:tab\n#html:false\n"
        "#columns:id\tCategory\tFront\tBack\tNotes\tFront2\tBack2\n"
        "#guid column:1\n#deck column:2\n"
        "01234567-89ab-4def-8123-456789abcdef\tKanji\t水\twater】\t\"a\r\n\"\"b\"\"\"\t"
        "\"みず\n【z】\"\t\n"
        "00000000-0000-4000-8000-000000000001\t\tf\tb\t\t\t\n";
    EXPECT_EQ(Text(ExportFormat::kAnkiText, true), text);
    const wxString path = mDirectory.Path("out.txt");
    ExportProgress progress;
    ExportOptions options;
    options.Format = ExportFormat::kAnkiText;
    EXPECT_EQ(ExportToFile(path, wxFONTENCODING_UTF16LE, mDatabase, mRowIds, options, progress), 0);
    EXPECT_EQ(ReadBytes(path), "\xEF\xBB\xBF" + text);
}

TEST_F(ExportTest, ATableHasColumnsForAllAttributesAndLeavesOutCardsThatAreGone) {
    mRowIds.insert(mRowIds.begin(), 99);
    EXPECT_EQ(Text(ExportFormat::kDelimited, false),
              "id,Front,Front2,Back,Back2,Category,Author,Chapter,IntroductionOrder,ForwardX,"
              "ReverseX,Notes\n"
              "01234567-89ab-4def-8123-456789abcdef,水,みず\\n【z】,water】,,Kanji,\"x,\"y\",1\\r2,"
              "-3,false,"
              "true,\"a\\r\\n\"\"b\"\"\"\n"
              "00000000-0000-4000-8000-000000000001,f,,b,,,,,0,false,false,\n");
    EXPECT_EQ(mProgress.Missing, 1);
    mRowIds.clear();
    EXPECT_EQ(Text(ExportFormat::kDelimited, false),
              "id,Front,Back,Category,Author,Chapter,IntroductionOrder,ForwardX,ReverseX,Notes\n");
    mDatabase.Close();
    wxString text;
    EXPECT_LT(ExportToString(text, mDatabase, mRowIds, {}, mProgress), 0);
}

TEST_F(ExportTest, WhatEndsAnExportEarlyIsTold) {
    const std::tuple<wxString, const char*, const char*> rows[] = {
        {"/dev/full", "", "No space left on device"},
        {mDirectory.Path("none/out.txt"), "", "cannot be written: No such file or directory."},
        {StorePath(), "", "holds the flash cards themselves"},
        {mDirectory.Path("out.txt"), "UPDATE Cards SET CardId = 'no id' WHERE Front = 'f'",
         "exported before it: 1"}};
    for (const auto& [path, sql, told] : rows) {
        mDatabase.Execute(sql);
        ExportThread thread(path, wxFONTENCODING_UTF8, mDatabase, mRowIds, {});
        thread.Start();
        thread.Join();
        EXPECT_TRUE(thread.IsFinished());
        EXPECT_TRUE(thread.GetProgress().Failed) << path;
        const std::string message = thread.GetProgress().Message.utf8_string();
        EXPECT_NE(message.find(told), std::string::npos) << message;
    }
}

TEST_F(ExportTest, ACancelWaitsForTheWholeFile) {
    mRowIds.insert(mRowIds.end(), 3000, mRowIds[0]);
    const wxString path = mDirectory.Path("out.txt");
    ExportThread thread(path, wxFONTENCODING_UTF8, mDatabase, mRowIds, {});
    thread.Start();
    thread.Cancel();
    EXPECT_TRUE(thread.IsFinished());
    EXPECT_TRUE(thread.IsCancelled());
    EXPECT_EQ(thread.GetPosition(), 3002);
    EXPECT_EQ(thread.GetMaximum(), 6004);
}

}  // namespace
