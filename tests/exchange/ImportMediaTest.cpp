#include <filesystem>

#include "exchange/Export.h"
#include "exchange/ImportFixture.h"
#include "media/MediaFolder.h"

namespace {

using testing::ElementsAre;

namespace fs = std::filesystem;

struct ImportMediaTest : ImportFixture {
    ImportMediaTest() {
        // A table lies in a folder with its files, beside which is one that it must not reach.
        fs::create_directories(ToPath(mDirectory.Path("list/sub")));
        WriteBytes(mDirectory.Path("outside.png"), "OUT");
        WriteBytes(mDirectory.Path("list/cat.png"), "CAT");
        WriteBytes(mDirectory.Path("list/sub/dog.jpg"), "DOG");
        WriteBytes(mDirectory.Path("list/chat.ogg"), "SND");
        // A copy of the folder of a store, and one whose store is at home here.
        fs::create_directories(ToPath(mDirectory.Path("list/copy.vlm.media")));
        fs::create_directories(ToPath(mDirectory.Path("list/other.vlm.media")));
        WriteBytes(mDirectory.Path("list/copy.vlm.media/far.png"), "FAR");
        WriteBytes(mDirectory.Path("list/other.vlm.media/theirs.png"), "NO");
        WriteBytes(mDirectory.Path("list/other.vlm"), "");
        fs::create_symlink(ToPath(mDirectory.Path("outside.png")),
                           ToPath(mDirectory.Path("list/link.png")));
    }
    std::string ImportList(const std::string& text) {
        ImportInput input;
        input.FileName = mDirectory.Path("list/words.csv");
        WriteBytes(input.FileName, text);
        GuessFormat(input, mDatabase);
        ImportResult preview;
        mPreview.clear();
        EXPECT_FALSE(ImportPreview(input, mDatabase, preview, mPreview)) << preview.Message;
        Run(input);
        return Outcome();
    }
    std::vector<CardAttribute> mPreview;
    Strings Cards() { return Query("SELECT Front, Back FROM Cards ORDER BY IntroductionOrder"); }
};

TEST_F(ImportMediaTest, ATableNamesFilesInColumnsAndInLines) {
    EXPECT_EQ(ImportList("word;meaning;picture;sound\n"
                         "chat;cat;cat.png;chat.ogg\n"
                         "chien;dog;sub/dog.jpg;\n"
                         "loup;wolf;../outside.png;\n"
                         "lien;link;link.png;none.ogg\n"
                         "loin;far;far.png;\n"
                         "autre;other;theirs.png;\n"
                         "\"[sound: chat.ogg]\";\"see\n[picture: cat.png]\";;\n"),
              "7 inserted, 0 merged, 0 ignored");
    EXPECT_EQ(mResult->FilesMissing, 3);
    EXPECT_THAT(Cards(),
                ElementsAre("chat\n[sound: chat.ogg]|cat\n[picture: cat.png]",
                            "chien|dog\n[picture: dog.jpg]", "loup|wolf\n../outside.png",
                            "lien\n[sound: none.ogg]|link\n[picture: link.png]",
                            "loin|far\n[picture: far.png]", "autre|other\n[picture: theirs.png]",
                            "[sound: chat.ogg]|see\n[picture: cat.png]"));
    EXPECT_THAT(MediaFiles(),
                ElementsAre("cat.png=CAT", "chat.ogg=SND", "dog.jpg=DOG", "far.png=FAR"));
    EXPECT_EQ(mPreview.at(1).Value, "cat\n[picture: cat.png]");
}

TEST_F(ImportMediaTest, APictureAloneIsASideAndAChangedFileGetsAnotherName) {
    const std::string table = "id,word,picture\n7B29A1C8-3C46-4E1B-9C93-3D7E4B0A1F21,cat,cat.png\n";
    EXPECT_EQ(ImportList(table), "1 inserted, 0 merged, 0 ignored");
    EXPECT_THAT(Cards(), ElementsAre("cat|[picture: cat.png]"));
    EXPECT_EQ(ImportList(table), "0 inserted, 0 merged, 1 ignored");
    WriteBytes(mDirectory.Path("list/cat.png"), "NEW");
    EXPECT_EQ(ImportList(table), "0 inserted, 1 merged, 0 ignored");
    EXPECT_THAT(Cards(), ElementsAre("cat|[picture: cat-2.png]"));
    EXPECT_THAT(MediaFiles(), ElementsAre("cat-2.png=NEW", "cat.png=CAT"));
}

// What goes out as text for Anki comes back as it was, into another store: with tags where it has
// files, and else as plain text.
TEST_F(ImportMediaTest, AnkiTextComesBackAsItWent) {
    FlashCard card = MakeCard("a\tb \"c\"\n#d", L"\u6F22\n\u3010kan\u3011");
    card.Notes = "<b>1 < 2</b> & more\n\nend";
    Insert(card);
    mDatabase.CategoryInsert("A::B");
    Insert(MakeCard("#front", "back;x,y", 1));
    for (const bool hasFiles : {false, true}) {
        if (hasFiles) {
            Insert(MakeCard("a  <b> & \"c\"\n[picture: a&b.png]\nd  e", "[sound: cat.ogg]\ncat"));
            wxString name;
            ASSERT_EQ(MediaFolder(StorePath()).AddBytes("CAT", "a&b.png", name), 0);
        }
        const std::string all =
            "SELECT CardId, Front, Back, Notes, Name FROM Cards JOIN Categories ON CategoryId = "
            "Categories.Id ORDER BY Front";
        const Strings before = Query(all);
        ExportOptions options;
        options.Format = ExportFormat::kAnkiText;
        ExportProgress progress;
        std::vector<int64_t> rowIds;
        mDatabase.CardSelectRowIdsOrder(CardOrder(CardColumn::kCategory), rowIds);
        ImportInput input;
        input.FileName = mDirectory.Path("anki.txt");
        ASSERT_EQ(
            ExportToFile(input.FileName, wxFONTENCODING_UTF8, mDatabase, rowIds, options, progress),
            0);
        const std::string text = ReadBytes(input.FileName);
        EXPECT_EQ(text.find("<img src=\"\"a&amp;b.png\"\"><br>d &nbsp;e") != text.npos, hasFiles);
        EXPECT_EQ(MediaExportHint(mDatabase, options).Contains("collection.media"), hasFiles);
        Query("DELETE FROM Cards");
        Reopen();
        GuessFormat(input, mDatabase);
        Run(input);
        EXPECT_EQ(Outcome(),
                  hasFiles ? "3 inserted, 0 merged, 0 ignored" : "2 inserted, 0 merged, 0 ignored");
        EXPECT_EQ(Query(all), before) << text;
    }
}

}  // namespace
