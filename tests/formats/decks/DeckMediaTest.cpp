#include <filesystem>

#include "formats/decks/DeckFixture.h"
#include "formats/decks/DeckSurvey.h"

namespace {

using testing::ElementsAre;

namespace fs = std::filesystem;

// A part of a message: its field, a length and bytes.
std::string Part(char field, const std::string& bytes) {
    return std::string{static_cast<char>(field << 3 | 2), static_cast<char>(bytes.size())} + bytes;
}

struct DeckMediaTest : DeckFixture {
    wxString Folder() const { return StorePath() + ".media/"; }
    // A package of the third generation, whose files are compressed by themselves.
    std::string NewPackage(const std::string& rows, const Members& files) {
        std::string list;
        Members members = {{"meta", "\x08\x03"},
                           {"collection.anki2", MakeDatabase(Schema11(""))},
                           {"collection.anki21b", Compress(MakeDatabase(Schema18(rows)))}};
        for (size_t i = 0; i < files.size(); ++i) {
            list += Part(1, Part(1, files[i].first) + std::string{'\x10', '\x03'} +
                                Part(3, std::string(20, 'h')));
            members.emplace_back(std::to_string(i), Compress(files[i].second));
        }
        members.emplace_back("media", Compress(list));
        return MakePackage(members);
    }
};

const std::string kCardRows =
    NoteRow(1, "a", 7, R"(chat [sound:chat.mp3]|<img src="cat%20one.png"> cat<br>more|)") +
    NewCard(1, 0) + NoteRow(2, "b", 7, "<img alt=x src=dog.jpg>|dog|<img src=none.gif>") +
    NewCard(2, 0);

TEST_F(DeckMediaTest, BringsTheFilesThatNotesUseOfEachGeneration) {
    const Members files = {
        {"chat.mp3", "SND"}, {"cat one.png", "CAT"}, {"dog.jpg", "DOG"}, {"unused.png", "NOT"}};
    Members old = {
        {"media", R"({"0":"chat.mp3","7":"cat one.png","9":"dog.jpg","12":"unused.png"})"},
        {"0", "SND"},
        {"7", "CAT"},
        {"9", "DOG"},
        {"12", "NOT"},
        {"collection.anki2", MakeDatabase(Schema11(kCardRows))}};
    Members second = old;
    second.back().second = MakeDatabase(Schema11(""));
    second.emplace_back("meta", "\x08\x02");
    second.emplace_back("collection.anki21", old.back().second);
    // A database by itself has a folder beside it.
    for (const auto& [name, bytes] : files) {
        fs::create_directory(ToPath(mDirectory.Path("My deck.media")));
        WriteBytes(mDirectory.Path("My deck.media/" + name), bytes);
    }
    for (const std::string& package :
         {MakePackage(old), MakePackage(second), NewPackage(kCardRows, files), old.back().second}) {
        fs::remove_all(ToPath(Folder()));
        Query("DELETE FROM Cards");
        EXPECT_EQ(ImportDeck(package), "2 inserted, 0 merged, 0 ignored");
        EXPECT_THAT(MediaFiles(), ElementsAre("cat one.png=CAT", "chat.mp3=SND", "dog.jpg=DOG"));
        EXPECT_THAT(Query("SELECT Front, Back FROM Cards ORDER BY IntroductionOrder"),
                    ElementsAre("chat\n[sound: chat.mp3]|[picture: cat one.png]\ncat\nmore",
                                "[picture: dog.jpg]|dog"));
    }
    // The same once more changes nothing. Another file of an old name gets a name of its own.
    EXPECT_EQ(ImportDeck(MakePackage(old)), "0 inserted, 0 merged, 2 ignored");
    old[3].second = "DOG2";
    EXPECT_EQ(ImportDeck(MakePackage(old)), "0 inserted, 1 merged, 1 ignored");
    EXPECT_THAT(MediaFiles(),
                ElementsAre("cat one.png=CAT", "chat.mp3=SND", "dog-2.jpg=DOG2", "dog.jpg=DOG"));
    EXPECT_THAT(Query("SELECT Front FROM Cards WHERE Back = 'dog'"),
                ElementsAre("[picture: dog-2.jpg]"));
}

TEST_F(DeckMediaTest, BringsTheFilesOfMnemosyne) {
    const std::string xml =
        "<openSM2sync number_of_entries=\"2\">"
        "<log type=\"16\" o_id=\"f\"><f>&lt;img src=\"a b/chat.png\"&gt;</f>"
        "<b>&lt;audio src=\"chat.ogg\"&gt;&lt;/audio&gt;cat</b></log>"
        "<log type=\"6\" o_id=\"c\" card_t=\"1\" fact=\"f\" fact_v=\"1.1\" tags=\"\" gr=\"-1\" "
        "e=\"2.5\" l_rp=\"-1\" n_rp=\"-1\"/></openSM2sync>";
    EXPECT_EQ(ImportDeck(MakePackage({{"METADATA", ""},
                                      {"cards.xml", xml},
                                      {"a b/chat.png", "CAT"},
                                      {"chat.ogg", "SND"},
                                      {"../evil.png", "NO"}})),
              "1 inserted, 0 merged, 0 ignored");
    EXPECT_THAT(MediaFiles(), ElementsAre("chat.ogg=SND", "chat.png=CAT"));
    const Strings cards = {"[picture: chat.png]|[sound: chat.ogg]\ncat"};
    EXPECT_EQ(Query("SELECT Front, Back FROM Cards"), cards);

    fs::remove_all(ToPath(Folder()));
    Query("DELETE FROM Cards");
    fs::create_directories(ToPath(mDirectory.Path("My deck.bin_media/a b")));
    WriteBytes(mDirectory.Path("My deck.bin_media/a b/chat.png"), "CAT");
    WriteBytes(mDirectory.Path("My deck.bin_media/chat.ogg"), "SND");
    const std::string script =
        kMnemosyneTables +
        std::string(
            "INSERT INTO data_for_fact VALUES(1,'f','<img src=\"a b/chat.png\">'),"
            "(1,'b','<audio src=\"chat.ogg\"></audio>cat');"
            "INSERT INTO cards VALUES(1,'c','1',1,'1.1',-1,-1,-1,2.5,1);");
    EXPECT_EQ(ImportDeck(MakeDatabase(script)), "1 inserted, 0 merged, 0 ignored");
    EXPECT_THAT(MediaFiles(), ElementsAre("chat.ogg=SND", "chat.png=CAT"));
    EXPECT_EQ(Query("SELECT Front, Back FROM Cards"), cards);
}

TEST_F(DeckMediaTest, SurvivesHostileListsAndNames) {
    const std::string rows =
        NoteRow(1, "a", 7, "x <img src=\"../../evil.png\"> <img src=\"con.png\">|y") +
        NewCard(1, 0);
    const std::string collection = MakeDatabase(Schema11(rows));
    const std::pair<const char*, Strings> lists[] = {
        {R"({"0":"../../evil.png","1":"con.png"})", {"evil.png=E", "filecon.png=C"}},
        {R"({"0":"../../evil.png","../1":"con.png"})", {"evil.png=E"}},
        {R"({"0":["../../evil.png"],"1":7})", {}},
        {R"([{"0":"x"}])", {}},
        {"{\"0\":\"", {}},
        {"", {}},
    };
    for (const auto& [list, files] : lists) {
        fs::remove_all(ToPath(Folder()));
        Query("DELETE FROM Cards");
        EXPECT_EQ(ImportDeck(MakePackage(
                      {{"media", list}, {"0", "E"}, {"1", "C"}, {"collection.anki2", collection}})),
                  "1 inserted, 0 merged, 0 ignored")
            << list;
        EXPECT_EQ(MediaFiles(), files) << list;
    }
    // A full disk ends the import before its first card.
    Query("DELETE FROM Cards");
    fs::remove_all(ToPath(Folder()));
    const std::string package = MakePackage({{"media", R"({"0":"../../evil.png"})"},
                                             {"0", std::string(4 << 20, 'x')},
                                             {"collection.anki2", collection}});
    {
        const FullDisk full(3 << 20);
        EXPECT_THAT(ImportDeck(package), testing::HasSubstr("could not be written"));
    }
    EXPECT_THAT(Query("SELECT COUNT(*) FROM Cards"), ElementsAre("0"));
    EXPECT_THAT(MediaFiles(), testing::IsEmpty());
}

}  // namespace
