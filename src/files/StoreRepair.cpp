// Saving the rows of a damaged store.
//
// The engine gives up a whole table at its first bad page. The rows after that page are still
// there, so all pages are read one by one, in three rounds:
//
//     1. Leaves of tables. A record that begins with an identity is a card; one with a number or
//        nothing and a name is a category.
//     2. Pages of indexes, for cards whose own page is gone: the index of identities, that of
//     fronts
//        and backs, and that of categories and introduction orders have their texts and places.
//     3. The cards that were found go into a new store.
//
// Freed pages hold rows of long ago. They are known by the list of free pages and left out. A
// journal that waits beside the store is played back first, by the engine, in the copy.

#include "files/StoreRepair.h"

#include <sqlite3.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "base/Files.h"
#include "files/PageFile.h"
#include "files/StoreFiles.h"
#include "store/Database.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

// The places of the columns in the table of cards.
enum CardPlace : size_t {
    kCardId,
    kFront,
    kBack,
    kCategoryId,
    kAuthor,
    kChapter,
    kIntroductionOrder,
    kForwardX,
    kReverseX,
    kNotes,
    kForwardSchedule = 14,
    kReverseSchedule = 21,
    kCardColumnCount = 28
};

void ReadSchedule(const Record& record, size_t first, CardSchedule& schedule) {
    if (std::holds_alternative<std::monostate>(record[first + 1])) {
        return;
    }
    // Introduced, LastReview, NextReview, ReviewInterval, Difficulty, LastScore, ERC.
    schedule.Introduced = ToNumber(record[first]) != 0;
    const int64_t last = std::clamp<int64_t>(ToNumber(record[first + 1]), -1, kLastTimeStamp);
    schedule.LastReview = wxDateTime(wxLongLong(last * 1000));
    schedule.ReviewInterval = ToFloat(record[first + 3]);
    schedule.Difficulty = static_cast<uint8_t>(ToNumber(record[first + 4]));
    schedule.LastScore = static_cast<uint8_t>(ToNumber(record[first + 5]));
    schedule.ERC = ToInt(record[first + 6]);
}

// Collects what the pages of a damaged store hold, and makes a store of it.
class Salvage {
  public:
    explicit Salvage(const PageFile& file) : mFile(file) {}

    void ReadTables();
    void ReadIndexes();
    bool IsEmpty() const { return mCards.empty() && mCategories.empty(); }
    int WriteTo(Database& database);
    RepairReport Report;

  private:
    // What indexes know of a card whose row is lost.
    struct Trace {
        std::optional<CardUuid> CardId;
        std::optional<std::pair<wxString, wxString>> Texts;
        int32_t CategoryId = -1;
        int32_t IntroductionOrder = 0;
    };

    void AddRow(int64_t rowId, const Record& record);
    void AddEntry(const Record& record);
    void RemakeCards();
    // Makes the categories, and gives each card the id that its category has in the new store.
    int WriteCategories(Database& database);
    int WriteCategory(Database& database, int32_t id, const wxString& name);

    const PageFile& mFile;
    // The keys are row ids, so that the cards stay in the order of their creation.
    std::map<int64_t, FlashCard> mCards;
    std::set<CardUuid> mIds;
    std::map<int32_t, wxString> mCategories;
    std::map<int64_t, Trace> mTraces;
    std::map<int32_t, int32_t> mNewCategoryIds;
};

void Salvage::ReadTables() {
    for (size_t page = 1; page <= mFile.CountPages(); ++page) {
        if (!mFile.IsFree(page)) {
            mFile.ReadRows(page, PageKind::kTableLeaf,
                           [this](int64_t rowId, const Record& record) { AddRow(rowId, record); });
        }
    }
}

void Salvage::AddRow(int64_t rowId, const Record& record) {
    if (record.size() == 2 && std::holds_alternative<std::monostate>(record[0])) {
        // The id of a category is its row id, which the record leaves out.
        const wxString name = mFile.ToText(record[1]);
        if (!name.empty() && rowId >= 0 && rowId <= std::numeric_limits<int32_t>::max()) {
            mCategories.emplace(static_cast<int32_t>(rowId), name);
        }
        return;
    }
    FlashCard card;
    if (record.size() < kCardColumnCount ||
        ParseUuid(mFile.ToText(record[kCardId]), card.CardId) != 0 || mCards.count(rowId) != 0 ||
        !mIds.insert(card.CardId).second) {
        return;
    }
    card.Front = mFile.ToText(record[kFront]);
    card.Back = mFile.ToText(record[kBack]);
    card.CategoryId = ToInt(record[kCategoryId]);
    card.Author = mFile.ToText(record[kAuthor]);
    card.Chapter = mFile.ToText(record[kChapter]);
    card.IntroductionOrder = ToInt(record[kIntroductionOrder]);
    card.ForwardX = ToNumber(record[kForwardX]) != 0;
    card.ReverseX = ToNumber(record[kReverseX]) != 0;
    card.Notes = mFile.ToText(record[kNotes]);
    ReadSchedule(record, kForwardSchedule, card.Forward);
    ReadSchedule(record, kReverseSchedule, card.Reverse);
    mCards.emplace(rowId, card);
    Report.Shortened += record.IsCut ? 1 : 0;
}

void Salvage::ReadIndexes() {
    for (size_t page = 1; page <= mFile.CountPages(); ++page) {
        if (mFile.IsFree(page)) {
            continue;
        }
        for (const PageKind kind : {PageKind::kIndexLeaf, PageKind::kIndexInner}) {
            mFile.ReadRows(page, kind, [this](int64_t, const Record& entry) { AddEntry(entry); });
        }
    }
    RemakeCards();
}

// The last value of an entry is the row id of its card. The values before it tell the index: an
// identity alone, two texts, or two numbers.
void Salvage::AddEntry(const Record& entry) {
    const auto* const rowId = entry.empty() ? nullptr : std::get_if<int64_t>(&entry.back());
    if (rowId == nullptr || mCards.count(*rowId) != 0) {
        return;
    }
    const auto isText = [&](size_t i) { return std::holds_alternative<std::string>(entry[i]); };
    CardUuid id;
    if (entry.size() == 2 && ParseUuid(mFile.ToText(entry[0]), id) == 0) {
        if (mIds.count(id) == 0) {
            mTraces[*rowId].CardId = id;
        }
    } else if (entry.size() == 3 && isText(0) && isText(1)) {
        mTraces[*rowId].Texts = {mFile.ToText(entry[0]), mFile.ToText(entry[1])};
    } else if (entry.size() == 3 && !isText(0) && !isText(1)) {
        mTraces[*rowId].CategoryId = ToInt(entry[0]);
        mTraces[*rowId].IntroductionOrder = ToInt(entry[1]);
    }
}

void Salvage::RemakeCards() {
    for (const auto& [rowId, trace] : mTraces) {
        FlashCard card;
        if (!trace.Texts || (!trace.CardId && GenerateUuid(card.CardId) != 0)) {
            ++Report.Lost;
            continue;
        }
        card.CardId = trace.CardId.value_or(card.CardId);
        card.Front = trace.Texts->first;
        card.Back = trace.Texts->second;
        card.CategoryId = trace.CategoryId;
        card.IntroductionOrder = trace.IntroductionOrder;
        mCards.emplace(rowId, card);
        ++Report.Remade;
    }
}

int Salvage::WriteCategory(Database& database, int32_t id, const wxString& name) {
    // Two names may have become one; their cards then share the category.
    return database.FindOrInsertCategory(name, mNewCategoryIds[id]);
}

int Salvage::WriteCategories(Database& database) {
    for (const auto& [id, name] : mCategories) {
        if (WriteCategory(database, id, name) < 0) {
            return -1;
        }
        ++Report.Categories;
    }
    for (auto& [rowId, card] : mCards) {
        const int32_t id = card.CategoryId;
        if (id < 0) {
            card.CategoryId = -1;
            continue;
        }
        if (mNewCategoryIds.count(id) == 0) {
            if (WriteCategory(database, id, wxString::Format(_("Category %i"), id)) < 0) {
                return -1;
            }
            ++Report.NamelessCategories;
        }
        card.CategoryId = mNewCategoryIds[id];
    }
    return 0;
}

int Salvage::WriteTo(Database& database) {
    const StoreChangeGroup group(database);
    if (WriteCategories(database) < 0) {
        return -1;
    }
    std::vector<FlashCard> cards;
    cards.reserve(mCards.size());
    for (const auto& [rowId, card] : mCards) {
        cards.push_back(card);
    }
    Report.Cards = static_cast<int32_t>(cards.size()) - Report.Remade;
    size_t inserted = 0;
    return database.InsertFlashCards(cards, inserted);
}

// Copies the damaged file, and a journal beside it, which is played back there. Returns 0 or the
// error's number.
int CopyDamaged(const fs::path& damaged, const fs::path& copy) {
    const int error = CopyToNewFile(damaged, copy);
    if (error == 0) {
        // A missing one is no fault, and one that cannot be read is of no use.
        const char* const journal = kCompanions.front();
        CopyToNewFile(Beside(damaged, journal), Beside(copy, journal));
        PlayBackJournal(copy);
    }
    return error;
}

std::string ReadBytes(const fs::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

}  // namespace

int RepairStore(const wxString& damaged, const wxString& target, RepairReport& report) {
    std::error_code error;
    if (fs::exists(ToPath(target), error)) {
        return EEXIST;
    }
    // Beside the target, so that the store can be renamed into its place.
    const TemporaryDirectory work(ToPath(target).replace_filename("velomind"));
    const fs::path copy = ToPath(work.Path("damaged.vlm"));
    const int result = work.GetError() != 0 ? work.GetError() : CopyDamaged(ToPath(damaged), copy);
    if (result != 0) {
        return result;
    }
    const PageFile file(ReadBytes(copy));
    Salvage salvage(file);
    salvage.ReadTables();
    salvage.ReadIndexes();
    if (salvage.IsEmpty()) {
        return EILSEQ;
    }
    // The store gets its name once it is whole.
    const wxString made = work.Path("repaired.vlm");
    QuietDatabase database;
    if (database.OpenQuietly(made) < 0 || salvage.WriteTo(database) < 0) {
        return (database.GetLastErrorCode() & 0xFF) == SQLITE_FULL ? ENOSPC : EIO;
    }
    database.Close();
    fs::rename(ToPath(made), ToPath(target), error);
    SyncDirectory(ToPath(target));
    CopyReviewLog(damaged, target);
    report = salvage.Report;
    return error.value();
}

wxString DescribeRepair(const RepairReport& report) {
    wxString text;
    const auto add = [&text](const wxString& sentence, int32_t count) {
        text << (text.empty() ? "" : "\n") << wxString::Format(sentence, count);
    };
    const auto cards = static_cast<unsigned>(report.Cards);
    const auto shortened = static_cast<unsigned>(report.Shortened);
    const auto remade = static_cast<unsigned>(report.Remade);
    const auto lost = static_cast<unsigned>(report.Lost);
    const auto nameless = static_cast<unsigned>(report.NamelessCategories);
    add(wxPLURAL("%i card was saved.", "%i cards were saved.", cards), report.Cards);
    if (shortened > 0) {
        add(wxPLURAL("Of these, %i card has lost the end of a long text, and its schedule.",
                     "Of these, %i cards have lost the end of a long text, and their schedules.",
                     shortened),
            report.Shortened);
    }
    if (remade > 0) {
        add(wxPLURAL("Only the front and the back of %i card were left. It is a new card now.",
                     "Only the fronts and the backs of %i cards were left. They are new cards now.",
                     remade),
            report.Remade);
    }
    if (lost > 0) {
        add(wxPLURAL("%i card could not be saved.", "%i cards could not be saved.", lost),
            report.Lost);
    }
    if (nameless > 0) {
        add(wxPLURAL("The name of %i category was lost. It is named by a number.",
                     "The names of %i categories were lost. They are named by numbers.", nameless),
            report.NamelessCategories);
    }
    return text;
}
