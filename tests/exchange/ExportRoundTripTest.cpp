#include <random>

#include "exchange/Export.h"
#include "exchange/ImportPass.h"
#include "support/StoreFixture.h"

namespace {

constexpr int kCards = 2000;

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

class ExportRoundTripTest : public StoreFixture {
  protected:
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
        mDatabase.CardSelectRowIdsOrder("CategoryId,IntroductionOrder", mRowIds);
    }

    std::string Import(const ImportInput& input) {
        ImportResult result;
        ImportCards(input, mDatabase, result, false, nullptr);
        return result.Message.utf8_string() + std::to_string(result.RecordsInserted) + " " +
               std::to_string(result.RecordsMerged) + " " +
               std::to_string(result.DuplicatesIgnored);
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
    const struct {
        ImportFormat Format;
        int Encoding;
        wchar_t Delimiter;
    } rows[] = {{ImportFormat::kVlmText, 0, 0},      {ImportFormat::kVlmText, 1, 0},
                {ImportFormat::kVlmText, 2, 0},      {ImportFormat::kDelimited, 0, L'\t'},
                {ImportFormat::kDelimited, 1, L' '}, {ImportFormat::kDelimited, 2, L','},
                {ImportFormat::kDelimited, 2, L';'}, {ImportFormat::kDelimited, 0, 0x1F5FE}};
    const std::string marks[] = {"\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF"};
    ImportFormat filled = ImportFormat::kVersion1Store;
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "encoding " << row.Encoding << ", delimiter "
                                        << static_cast<int>(row.Delimiter));
        if (row.Format != filled) {
            Fill(row.Format == ImportFormat::kDelimited);
            filled = row.Format;
        }
        const ExportOptions options{true, static_cast<ExportFormat>(row.Format), row.Delimiter};
        const ImportInput file{mDirectory.Path("out.txt"), row.Format, row.Delimiter};
        ExportProgress progress;
        ASSERT_EQ(ExportToFile(file.FileName, ExportEncoding(row.Encoding), mDatabase, mRowIds,
                               options, progress),
                  0);
        const std::string mark = marks[row.Encoding];
        EXPECT_EQ(ReadBytes(file.FileName).substr(0, mark.size()), mark);
        EXPECT_EQ(Import(file), "0 0 2000");
        const Strings before = Cards();
        mDatabase.Execute("DELETE FROM Cards");
        EXPECT_EQ(Import(file), "2000 0 0");
        EXPECT_EQ(Cards(), before);
        SelectRows();
    }
}

}  // namespace
