#include "support/StoreFixture.h"

#include <sqlite3.h>
#include <wx/filename.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace {

// Returns memory where there is plenty of it, as each change of a store waits for a disk. A place
// that the user names comes first.
std::filesystem::path QuickPlace() {
    const std::filesystem::path memory = "/dev/shm";
    constexpr std::uintmax_t kPlenty = std::uintmax_t{1} << 31;
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(memory, error);
    const bool isFast = !error && space.available > kPlenty && std::getenv("TMPDIR") == nullptr;
    return isFast ? memory : TemporaryPlace();
}

}  // namespace

TestDirectory::TestDirectory() : TemporaryDirectory(QuickPlace() / "velomind") {
    if (GetError() != 0) {
        // A test would go on with files that cannot be made.
        std::perror("no directory for the test");
        std::abort();
    }
}

void WriteBytes(const wxString& path, const std::string& bytes) {
    std::ofstream file(path.utf8_string(), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadBytes(const wxString& path) {
    std::ifstream file(path.utf8_string(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

FlashCard MakeCard(const wxString& front, const wxString& back, int32_t categoryId) {
    FlashCard card;
    GenerateUuid(card.CardId);
    card.Front = front;
    card.Back = back;
    card.CategoryId = categoryId;
    return card;
}

StoreFixture::StoreFixture() {
    EXPECT_EQ(mDatabase.Open(StorePath(), mWait), 0);
    EXPECT_EQ(mDatabase.CategoryInsert("Default"), 0);
}

FlashCard StoreFixture::Insert(const FlashCard& card) {
    EXPECT_EQ(mDatabase.InsertFlashCard(card), 0);
    return card;
}

FlashCard StoreFixture::Stored(const CardUuid& id) {
    std::list<FlashCard> cards;
    EXPECT_EQ(mDatabase.SelectCardById(id, cards), 0);
    EXPECT_EQ(cards.size(), 1U);
    return cards.empty() ? FlashCard() : cards.front();
}

void StoreFixture::Reopen() {
    mDatabase.Close();
    ASSERT_EQ(mDatabase.Open(StorePath(), mWait), 0);
}

std::vector<std::string> StoreFixture::Query(const std::string& sql) {
    sqlite3* handle = nullptr;
    EXPECT_EQ(sqlite3_open(StorePath().utf8_str(), &handle), SQLITE_OK);
    std::vector<std::string> rows;
    const auto collect = [](void* out, int count, char** values, char**) {
        std::string row;
        for (int i = 0; i < count; ++i) {
            row += (i == 0 ? "" : "|");
            row += values[i] == nullptr ? "NULL" : values[i];
        }
        static_cast<std::vector<std::string>*>(out)->push_back(row);
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), collect, &rows, nullptr), SQLITE_OK) << sql;
    sqlite3_close(handle);
    return rows;
}
