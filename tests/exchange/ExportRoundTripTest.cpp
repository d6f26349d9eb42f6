#include <random>

#include "exchange/Export.h"
#include "exchange/ImportFixture.h"

namespace {

constexpr int kCards = 5000;

// Cards whose texts hold what a form might trip over.
class RandomCards {
  public:
    // Without quotes, which a table cannot hold beside its delimiter, or without carriage returns,
    // which are no part of a line.
    explicit RandomCards(bool forTable) : mTrap(forTable ? L'\r' : L'"') {}

    FlashCard Make(int32_t categories) {
        FlashCard card = MakeCard(Side(), Side(), Number(categories));
        card.Author = Text();
        card.Chapter = Text();
        card.Notes = Text();
        card.IntroductionOrder = Number(1 << 30) - (1 << 29);
        card.ForwardX = Number(2) == 0;
        card.ReverseX = Number(2) == 0;
        card.Forward = Schedule();
        card.Reverse = Schedule();
        return card;
    }

  private:
    int32_t Number(int32_t end) {
        return static_cast<int32_t>(mRandom() % static_cast<uint32_t>(end));
    }

    // With letters at the ends of lines, since every form drops the white space around them.
    wxString Text() {
        static const std::wstring traps = L"\t,; :#\\|=\uFF1A\u3010\u3011\uFEFF\u2028\x01\x04\x85";
        std::wstring text;
        for (int length = Number(32); length > 0; --length) {
            // Planes 0 to 16, where plane 0 is left out where it has no characters.
            const int32_t point = Number(17) * 0x10000 + 0x21 + Number(0xD000);
            text += Number(2) > 0 ? static_cast<wchar_t>(point)
                                  : traps[static_cast<size_t>(Number(int32_t(traps.size())))];
            if (Number(8) == 0) {
                text += L"x\n\nx";
                text += mTrap;
            }
        }
        return text.empty() ? wxString() : "x" + wxString(text) + "x";
    }

    wxString Side() {
        wxString side = "x" + Text();
        if (Number(3) == 0) {
            side += wxString(L"\n\u3010") + "y" + Text() + L'\u3011';
        }
        return side;
    }

    // Six decimals hold such an interval whole.
    CardSchedule Schedule() {
        return {Number(2) == 0,
                wxDateTime(static_cast<time_t>(Number(0x7FFFFFFF))),
                static_cast<uint8_t>(Number(6)),
                static_cast<float>(Number(1 << 24)) / 64,
                static_cast<uint8_t>(Number(33)),
                Number(2147418112)};
    }

    std::mt19937 mRandom{20240229};
    wchar_t mTrap;
};

struct ExportRoundTripTest : ImportFixture {
    void Fill(bool forTable) {
        mDatabase.Execute("PRAGMA synchronous = OFF");
        mDatabase.Execute("PRAGMA journal_mode = MEMORY");
        mDatabase.Execute("DELETE FROM Cards");
        RandomCards cards(forTable);
        for (int i = 0; i < kCards; ++i) {
            Insert(cards.Make(3));
        }
        SelectRows();
    }
    void SelectRows() {
        mRowIds.clear();
        mDatabase.CardSelectRowIdsOrder(CardColumn::kCategory, mRowIds);
    }

    Strings Cards() {
        return Query(
            "SELECT Categories.Name, Cards.* FROM Cards LEFT JOIN Categories ON CategoryId = "
            "Categories.Id ORDER BY CardId");
    }

    std::vector<int64_t> mRowIds;
};

// Exported with its schedules, a store takes its own file as known in every card; a store without a
// card becomes the same.
TEST_F(ExportRoundTripTest, AStoreComesBackFromEachFormAndEncoding) {
    mDatabase.CategoryInsert(L"\u65E5\u672C \U0001F5FE");
    mDatabase.CategoryInsert("a, b; c");
    const std::tuple<ImportFormat, int, wchar_t> rows[] = {
        {ImportFormat::kVlmText, 0, 0},      {ImportFormat::kVlmText, 1, 0},
        {ImportFormat::kVlmText, 2, 0},      {ImportFormat::kDelimited, 0, L'\t'},
        {ImportFormat::kDelimited, 1, L' '}, {ImportFormat::kDelimited, 2, L','},
        {ImportFormat::kDelimited, 2, L';'}, {ImportFormat::kDelimited, 0, 0x1F5FE}};
    const std::string marks[] = {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF"};
    ImportFormat filled = ImportFormat::kVersion1Store;
    for (const auto& [format, encoding, delimiter] : rows) {
        SCOPED_TRACE(testing::Message() << encoding << ", " << static_cast<int>(delimiter));
        if (format != filled) {
            Fill(format == ImportFormat::kDelimited);
            filled = format;
        }
        const ExportOptions options{true, static_cast<ExportFormat>(format), delimiter};
        const ImportInput file{mDirectory.Path("out.txt"), format, delimiter};
        ExportProgress progress;
        ASSERT_EQ(ExportToFile(file.FileName, ExportEncoding(encoding), mDatabase, mRowIds, options,
                               progress),
                  0);
        EXPECT_EQ(ReadBytes(file.FileName).find(marks[encoding]), 0U);
        Run(file);
        EXPECT_EQ(Outcome(), "0 inserted, 0 merged, 5000 ignored");
        const Strings before = Cards();
        mDatabase.Execute("DELETE FROM Cards");
        Run(file);
        EXPECT_EQ(Outcome(), "5000 inserted, 0 merged, 0 ignored");
        EXPECT_EQ(Cards(), before);
        SelectRows();
    }
}

}  // namespace
