#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "base/Unicode.h"
#include "files/StoreCheck.h"
#include "support/StoreFixture.h"
#include "sync/Exchange.h"
#include "sync/ExchangeFile.h"
#include "sync/ExchangeFolder.h"
#include "sync/SyncedCard.h"

// A stranger who can write into the folder can change the cards, but spoils no store: what means
// nothing is left, the rest ends the same on all computers, and their own changes still reach each
// other.
namespace {

namespace fs = std::filesystem;

constexpr int64_t kNow = 1780000000;
const char* const kId = "01000000-0000-4000-8000-000000000000";
const char* const kOtherId = "02000000-0000-4000-8000-000000000000";
const char* const kThirdId = "03000000-0000-4000-8000-000000000000";
const char* const kFourthId = "04000000-0000-4000-8000-000000000000";
const std::string kUntouched = FormatSchedule(CardSchedule());
const std::string kBig(1 << 20, 'x');

// More of them on demand.
int CategoryCount() {
    const char* const count = std::getenv("VELOMIND_CATEGORIES");
    return count == nullptr ? 100 : std::atoi(count);
}

struct HostileFolderTest : ::testing::Test {
    using Records = std::vector<ExchangeRecord>;
    using Strings = std::vector<std::string>;

    static void SetUpTestSuite() {
        if (fs::is_directory("/dev/shm")) {
            setenv("TMPDIR", "/dev/shm", 0);
        }
    }
    HostileFolderTest() {
        fs::create_directory(ToPath(mFolder));
        Change(0, [this] {
            mDatabase.CategoryInsert("Words");
            for (const char* const id : {kId, kOtherId, kThirdId, kFourthId}) {
                FlashCard card = MakeCard("front", wxString("back ") + id, 0);
                ASSERT_EQ(ParseUuidUtf8(id, card.CardId), 0);
                mDatabase.InsertFlashCard(card);
            }
        });
        Settle();
    }
    wxString Store(int number) const { return mDirectory.Path(wxString::Format("%d.vlm", number)); }
    template <typename Function>
    void Change(int store, const Function& function) {
        ASSERT_EQ(mDatabase.Open(Store(store), mWait), 0);
        function();
        mDatabase.Close();
    }
    void Exchange(int store) {
        const FakeClock clock(kNow + ++mRounds * 60);
        ExchangeOptions options;
        options.StorePath = Store(store);
        options.Folder = mFolder;
        options.Time = &clock;
        options.JoinsEqualCards = true;
        options.MakeIdentity = [store] { return static_cast<uint64_t>(0xa0 + store); };
        const ExchangeReport report = RunExchange(options);
        EXPECT_EQ(report.End, ExchangeEnd::kDone) << report.Message;
    }
    void Settle() {
        for (int i = 0; i < 6; ++i) {
            Exchange(i % 2);
        }
    }
    // A file of a machine that nobody knows yet.
    void Put(bool isWhole, const Records& records) {
        ExchangeHeader header;
        header.Machine = ++mStranger;
        header.Name = "stranger";
        header.Number = 1;
        header.Time = kNow * 1000;
        header.IsWhole = isWhole;
        std::string bytes;
        ExchangeWriter writer(header, SinkTo(bytes));
        writer.Add({"m", "0", HexText(header.Machine)});
        for (const ExchangeRecord& record : records) {
            writer.Add(record);
        }
        ASSERT_EQ(writer.Finish(), 0);
        ASSERT_EQ(ExchangeFolder(ToPath(mFolder)).Put(IdOf(header), bytes), 0);
    }
    static ExchangeRecord Card(const std::string& front, const std::string& category,
                               const std::string& order = "1", const std::string& stamp = "1000.0",
                               const std::string& schedule = kUntouched) {
        return {"n", stamp, "1000.0", front, "back", category, "",
                "",  order, "0",      "0",   "",     schedule, kUntouched};
    }
    Strings ReadCards(int store) {
        Strings rows;
        Change(store, [&] {
            std::map<int32_t, std::string> names;
            std::list<Category> categories;
            mDatabase.SelectAllCategories(categories);
            for (const Category& category : categories) {
                names[category.Id] = ToUtf8(category.Name);
                rows.push_back("category " + names[category.Id]);
            }
            int64_t row = 0;
            mDatabase.VisitCardsAfter(row, INT32_MAX, [&](const CardRow& each) {
                FlashCard card;
                EXPECT_EQ(each.Read(card), 0);
                EXPECT_TRUE(std::isfinite(card.Forward.ReviewInterval));
                rows.push_back(ToUtf8(FormatUuid(card.CardId) + "|" + card.Front + "|" + card.Back +
                                      "|" + card.Notes + "|" + FromUtf8(names[card.CategoryId])) +
                               "|" + FormatSchedule(card.Forward));
            });
        });
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    // Both are whole and equal, and what one changes comes to the other.
    void ExpectWholeAndTalking() {
        Settle();
        const wxString text = wxString::Format("text %d", ++mTexts);
        Change(1, [&] { mDatabase.InsertFlashCard(MakeCard(text, "from the other", 0)); });
        Change(0, [&] {
            std::list<FlashCard> cards;
            CardUuid id;
            ParseUuidUtf8(kId, id);
            if (mDatabase.SelectCardById(id, cards) >= 0 && !cards.empty()) {
                cards.front().Notes = text;
                mDatabase.UpdateFlashCard(cards.front());
            }
        });
        const Strings edited = ReadCards(0);
        Settle();
        const Strings cards = ReadCards(0);
        EXPECT_EQ(cards.size(), edited.size() + 1);
        EXPECT_EQ(ReadCards(1), cards);
        const std::string needle = "|" + ToUtf8(text) + "|";
        EXPECT_EQ(std::count_if(cards.begin(), cards.end(),
                                [&](const std::string& row) {
                                    return row.find(needle) != std::string::npos;
                                }),
                  2);
        for (const int store : {0, 1}) {
            EXPECT_EQ(CheckStoreFile(Store(store)), std::vector<wxString>());
        }
    }

    TestDirectory mDirectory;
    const wxString mFolder = mDirectory.Path("folder");
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
    int mRounds = 0;
    int mTexts = 0;
    uint64_t mStranger = 0x7700;
};

TEST_F(HostileFolderTest, WhateverTheRecordsSayTheStoresStayWholeAndEqual) {
    const std::string last = std::to_string(kLastStampTime - 1000000);
    Records categories;
    for (int i = 0; i < CategoryCount(); ++i) {
        categories.push_back({"k", "a", "1000.0", "category " + std::to_string(i), ""});
    }
    Records schedules = {{"c", kOtherId, "2000.0"}};
    for (const char* const text :
         {"", "1", "1 1 9 1 1 1", "1 1 3 nan 16 0", "1 1 3 inf 16 0", "1 1 3 -5 16 0",
          "1 1 3 1e30 255 2147483647", "1 99999999999999999999 3 1 1 1",
          "1 253402300799 5 1e30 0 0", "0 - 0 0 0 -2147483648"}) {
        schedules.push_back(Card("front", "=Words", "1", "2000.0", text));
    }
    Records reviews = {{"c", kId, "2000.0"}};
    for (const std::string& line :
         {std::string("2026-03-01T18:04:09Z\t") + kId + "\tF\t4\t86412\t86400\t131072\t16\t16\t-",
          std::string("9999-12-31T23:59:59Z\t") + kId + "\tR\t0\t-\t1\t4294967295\t255\t255\t-",
          std::string("0001-01-01T00:00:00Z\t") + kId + "\tF\t5\t-9\t0\t0\t0\t0\t-",
          std::string("#= 2026-03-01T18:05:40Z"), std::string("x"), std::string(), kBig}) {
        for (const char* const extension :
             {"", "# 9f3c51d07a2b4e68\t12\t1\t1772301837\t4\t86400\t16\t25\t4711", "# \t\t\t",
              "# 9f3c51d07a2b4e68\t-9223372036854775808\t1\t-\t4\tnan\t16\t25\t4711"}) {
            reviews.push_back({"r", line, extension});
        }
    }
    Records ahead;
    for (const char* const number :
         {"1", "-1", "9223372036854775807", "9223372036854775808", "x"}) {
        ahead.push_back({"a", "9f3c51d07a2b4e68", number, kId});
    }
    struct Case {
        const char* Title;
        Records Content;
    };
    const Case cases[] = {
        {"kinds that there are not, and too few fields",
         {{"Globals", "DATABASE_VERSION", "99"},
          {"DROP TABLE Cards"},
          {"m"},
          {"c"},
          {"n"},
          {"f", "F"},
          {"d"},
          {"r"},
          {"k"},
          {"u"},
          {"j"},
          {"a"},
          {"x"},
          {"v"},
          {"f", "F", "1.0"}}},
        {"numbers of machines",
         {{"m", "9223372036854775807", HexText(1)},
          {"m", "-1", HexText(2)},
          {"m", "0", "x"},
          {"m", "", ""},
          {"m", "1e9", HexText(3)},
          {"c", kId, "5.9223372036854775807"},
          {"f", "N", "6.-1", "0", "notes"}}},
        {"stamps",
         {{"c", kId, ""},
          {"c", kId, "x"},
          {"c", kId, "-5.0"},
          {"c", kId, "99999999999999999999.0"},
          {"c", kId, "5.7"},
          {"f", "N", "0", "0", "x"},
          {"f", "?", "5.0", "0", "x"},
          {"f", "FB", "5.0", "0", "x"},
          {"n", ",,", "", "", "", "", "", "", "", "", "", "", "", ""},
          {"d", "5.0,,"},
          {"d", "5.0,5.0,5.0"}}},
        {"identities",
         {{"c", "00000000-0000-0000-0000-000000000000", "5.0"},
          Card("zero", "=Words"),
          {"c", "no identity", "5.0"},
          Card("none", "=Words"),
          {"c", std::string(36, '-'), "5.0"},
          {"c", "A1000000-0000-4000-8000-00000000000F", "5.0"},
          Card("capitals", "=Words"),
          {"c", "a1000000-0000-4000-8000-00000000000f", "5.0"},
          Card("small", "=Words"),
          {"c", std::string("01\0", 3) + std::string(33, '0'), "5.0"},
          Card("zero", "=Words")}},
        {"texts",
         {{"c", "11000000-0000-4000-8000-000000000000", "5.0"},
          Card(kBig, "=Words"),
          {"c", "12000000-0000-4000-8000-000000000000", "5.0"},
          Card("\xff\xfe\xc3", "=Words"),
          {"c", "13000000-0000-4000-8000-000000000000", "5.0"},
          Card(std::string("a\0b", 3), "=Words"),
          {"c", "14000000-0000-4000-8000-000000000000", "5.0"},
          Card("\xed\xa0\x80\r\n\t", "=Words"),
          {"c", "15000000-0000-4000-8000-000000000000", "5.0"},
          Card("", "=Words"),
          {"x", kId, "F", "9.0", "10.0", "0", kBig},
          {"x", kId, "F", "9.0", "10.0", "2", "\xff"}}},
        {"orders and flags",
         {{"c", "16000000-0000-4000-8000-000000000000", "5.0"},
          Card("order", "=Words", "9223372036854775807"),
          Card("order", "=Words", "-2147483648"),
          {"f", "X", "6.0", "0", "7"},
          {"f", "O", "6.0", "0", "1.5"}}},
        {"names of categories",
         {{"c", "17000000-0000-4000-8000-000000000000", "5.0"},
          Card("none", "="),
          {"c", "18000000-0000-4000-8000-000000000000", "5.0"},
          Card("number", "=007"),
          {"c", "19000000-0000-4000-8000-000000000000", "5.0"},
          Card("seven", "=7"),
          {"c", "1a000000-0000-4000-8000-000000000000", "5.0"},
          Card("id", "0"),
          {"c", "1b000000-0000-4000-8000-000000000000", "5.0"},
          Card("zero", std::string("=a\0b", 4)),
          {"k", "a", "7.0", "", ""},
          {"k", "a", "8.0", kBig, ""},
          {"k", "a", "9.0", "\xff", ""},
          {"k", "z", "9.0", "x", ""}}},
        {"categories renamed in a ring, and deleted",
         {{"k", "r", "11.0", "Words", "one"},
          {"k", "r", "12.0", "one", "two"},
          {"k", "r", "13.0", "two", "Words"},
          {"k", "r", "13.0", "Words", "Words"},
          {"k", "d", "14.0", "Words", ""},
          {"k", "d", "14.0", "", ""}}},
        {"unions in a ring, and with themselves",
         {{"u", kOtherId, kOtherId},
          {"u", "21000000-0000-4000-8000-000000000000", "22000000-0000-4000-8000-000000000000"},
          {"u", "22000000-0000-4000-8000-000000000000", "23000000-0000-4000-8000-000000000000"},
          {"u", "23000000-0000-4000-8000-000000000000", "21000000-0000-4000-8000-000000000000"},
          {"u", kFourthId, kThirdId},
          {"u", kThirdId, kFourthId}}},
        {"schedules", schedules},
        {"reviews", reviews},
        {"reviews ahead", ahead},
        {"times near the end of all",
         {{"c", kOtherId, last + ".0"},
          {"f", "N", last + ".0", "0", "for ever"},
          {"k", "a", last + ".0", "last", ""},
          {"d", last + ".0"}}},
        {"many categories", categories}};
    for (const Case& c : cases) {
        for (const bool isWhole : {false, true}) {
            SCOPED_TRACE(std::string(c.Title) + (isWhole ? ", whole" : ", changes"));
            Put(isWhole, c.Content);
            ExpectWholeAndTalking();
        }
    }
}

TEST_F(HostileFolderTest, WhatElseLiesInTheFolderIsLeftThere) {
    const fs::path folder = ToPath(mFolder);
    fs::path deep = folder / "velomind-00000000000000aa-0000000001.whole";
    for (int i = 0; i < 40; ++i) {
        deep /= std::string(80, 'd');
        fs::create_directories(deep);
    }
    WriteBytes(mDirectory.Path("secret"), "velomind-exchange\t1\n");
    fs::create_symlink(ToPath(mDirectory.Path("secret")),
                       folder / "velomind-00000000000000bb-0000000001.whole");
    fs::create_symlink(folder, folder / "velomind-00000000000000cc-0000000001.changes");
    ASSERT_EQ(::mkfifo((folder / "velomind-00000000000000dd-0000000001.changes").c_str(), 0600), 0);
    const std::pair<const char*, std::string> files[] = {
        {"holiday.jpg", std::string(100000, '\xff')},
        {"0.vlm", std::string("SQLite format 3\0", 16) + kBig},
        {"velomind-00000000000000ee-0000000001.whole", kBig},
        {"velomind-00000000000000ff-0000000001.changes",
         "velomind-exchange\t1\nkind\tchanges\nmachine\t00000000000000ff\nname\t../../etc/passwd\n"
         "number\t1\ntime\t1\n\nend\t9223372036854775807\t0000000000000000\n"},
        {"..velomind", "x"},
        {"velomind-0000000000000011-0000000001.changes", "velomind-exchange\t99\n"}};
    for (const auto& [name, bytes] : files) {
        WriteBytes(mFolder + "/" + name, bytes);
    }
    ExpectWholeAndTalking();
    for (const auto& [name, bytes] : files) {
        EXPECT_EQ(ReadBytes(mFolder + "/" + name), bytes) << name;
    }
    EXPECT_TRUE(fs::exists(deep));
    EXPECT_EQ(ReadBytes(mDirectory.Path("secret")), "velomind-exchange\t1\n");
}

}  // namespace
