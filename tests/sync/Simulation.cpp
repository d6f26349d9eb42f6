#include "sync/Simulation.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/Unicode.h"
#include "files/StoreFiles.h"
#include "reviews/EditNotes.h"
#include "reviews/ReviewLog.h"
#include "reviews/ScheduleEvents.h"
#include "scheduler/ReviewArithmetic.h"
#include "store/CardRow.h"
#include "sync/StoreScan.h"
#include "sync/SyncState.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFirstCards = 6;
constexpr int kListCards = 5;
constexpr int64_t kNineYears = int64_t{9} * 365 * 86400;
constexpr int kMostRounds = 12;
// Seconds by which a clock is wrong that counts as right.
constexpr int64_t kMostWrong = 300;

class SeededRandom : public ReviewRandom {
  public:
    explicit SeededRandom(std::mt19937& random) : mRandom(random) {}
    float Next() override { return static_cast<float>(mRandom() % 1000) / 999.0f; }

  private:
    std::mt19937& mRandom;
};

std::string ScheduleText(const CardSchedule& schedule) {
    CardSchedule shown = schedule;
    shown.ERC = 0;
    shown.LastReview = shown.Introduced ? shown.LastReview : wxDateTime();
    shown.LastScore = shown.Introduced ? shown.LastScore : uint8_t{0};
    return FormatSchedule(shown);
}

std::vector<FlashCard> AllCards(Database& store) {
    std::vector<FlashCard> cards;
    int64_t row = 0;
    store.VisitCardsAfter(row, INT32_MAX, [&cards](const CardRow& each) {
        FlashCard card;
        if (each.Read(card) == 0) {
            cards.push_back(card);
        }
    });
    return cards;
}

}  // namespace

// What a computer did to a card, and what it knew then of the others.
struct Simulation::Change {
    CardUuid Card;
    size_t Machine = 0;
    int Number = 0;
    bool IsDeletion = false;
    // The field that got a new text; none of them for all else.
    char Field = ' ';
    std::string Text;
    // When its editor noted it, in seconds; 0 for a change that nobody noted.
    int64_t NotedAt = 0;
    // For each machine the number of its changes that this one knew of.
    std::vector<int> Known;
};

struct Simulation::Machine {
    size_t Index = 0;
    std::string Path;
    std::string Folder;
    // Seconds by which its clock is wrong.
    int64_t Offset = 0;
    int Share = 0;
    uint64_t Session = 0;
    int64_t EventNumber = 0;
    int Changes = 0;
    std::vector<int> Known;
    // The changes in its files, by their numbers, and what the other machines are called there.
    std::map<int64_t, std::vector<int>> KnownByFile;
    uint64_t Identity = 0;
    RecordingReport Report;
    SilentUpgradeWait Wait;
    Database Store{Report};
    // The last score, which can be given anew.
    std::optional<ScheduleEvent> Last;
    std::vector<FlashCard> Deleted;

    wxString StorePath() const { return FromUtf8(Path + "/Words.vlm"); }
    void Open() { Store.Open(StorePath(), Wait); }
};

Simulation::Simulation(const Options& options) : mOptions(options), mRandom(options.Seed) {
    const size_t count = options.LeastMachines + 1 + mRandom() % 3;
    std::vector<fs::path> folders;
    for (size_t i = 0; i < count; ++i) {
        auto machine = std::make_unique<Machine>();
        machine->Index = i;
        machine->Path =
            mDirectory.Path(wxString::Format("machine%i", static_cast<int>(i))).utf8_string();
        machine->Folder = machine->Path + "/folder";
        fs::create_directories(machine->Folder);
        folders.push_back(machine->Folder);
        machine->Session = uint64_t{mRandom()} << 32 | (i + 1);
        machine->Known.assign(count, 0);
        const int clock = Number(6);
        machine->Offset = clock == 0   ? kNineYears
                          : clock == 1 ? -kNineYears / 2
                          : clock < 4  ? Number(600) - kMostWrong
                                       : 0;
        machine->Share = i == 0 ? 25 : 0;
        machine->Open();
        machine->Store.CategoryInsert("Default");
        mMachines.push_back(std::move(machine));
    }
    mCarrier = std::make_unique<Carrier>(std::move(folders));
}

Simulation::~Simulation() = default;

int Simulation::Number(int below) {
    return static_cast<int>(mRandom() % static_cast<uint32_t>(below));
}

bool Simulation::Chance(double share) {
    return Number(1000) < share * 1000;
}

std::string Simulation::Run() {
    if (mOptions.ImportsTwice) {
        for (const auto& machine : mMachines) {
            if (machine->Index < 2 || Chance(0.5)) {
                ImportList(*machine);
            }
        }
    }
    for (int i = 0; i < kFirstCards; ++i) {
        AddCard(*mMachines.front());
    }
    for (int step = 0; step < mOptions.Steps && mFaults.empty(); ++step) {
        Step();
    }
    // All is carried, as often as there is news. What a folder forgot is sent again a round later.
    mStudiesOn = false;
    int quietRounds = 0;
    for (int round = 0; round < kMostRounds && quietRounds < 2 && mFaults.empty(); ++round) {
        mTime += 60;
        mCarrier->CarryAll();
        ++quietRounds;
        for (const auto& machine : mMachines) {
            const ExchangeReport report = Exchange(*machine);
            if (report.Sent > 0 || report.Received > 0 || report.HasChanged) {
                quietRounds = 0;
            }
            mCarrier->CarryAll();
        }
    }
    if (quietRounds < 2 && mFaults.empty()) {
        mFaults += "the exchange never comes to rest\n";
    }
    mFaults += Compare();
    // What is left of a faulty course can be looked at.
    const char* const kept = std::getenv("VELOMIND_KEEP");
    if (!mFaults.empty() && kept != nullptr) {
        fs::copy(ToUtf8(mDirectory.Path("")), kept, fs::copy_options::recursive);
    }
    return mFaults;
}

void Simulation::Step() {
    mTime += 20 + Number(20000);
    Machine& machine = *mMachines[static_cast<size_t>(Number(static_cast<int>(mMachines.size())))];
    const int kind = Number(10);
    if (kind < 7) {
        DoSomething(machine);
    } else if (kind < 9) {
        Exchange(machine);
    } else {
        mCarrier->Carry(mRandom, mOptions.Badness);
    }
}

void Simulation::DoSomething(Machine& machine) {
    const int kind = Number(20);
    if (kind < 8) {
        Score(machine);
    } else if (kind < 12) {
        EditCard(machine);
    } else if (kind < 14) {
        AddCard(machine);
    } else if (kind < 15) {
        DeleteCard(machine);
    } else if (kind < 16) {
        BringBackCard(machine);
    } else if (kind < 18) {
        ChangeCategories(machine);
    } else if (kind < 19) {
        SetSchedule(machine);
    } else if (mOptions.RestoresBackups) {
        Restore(machine);
    }
}

std::optional<FlashCard> Simulation::AnyCard(Machine& machine) {
    const std::vector<FlashCard> cards = AllCards(machine.Store);
    return cards.empty()
               ? std::nullopt
               : std::optional(cards[static_cast<size_t>(Number(static_cast<int>(cards.size())))]);
}

void Simulation::NoteChange(Machine& machine, const CardUuid& card, bool isDeletion, char field,
                            const std::string& text, int64_t notedAt) {
    machine.Known[machine.Index] = ++machine.Changes;
    mChanges.push_back(
        {card, machine.Index, machine.Changes, isDeletion, field, text, notedAt, machine.Known});
}

// Half of the changes are our own editor's, the others those of some other program.
int64_t Simulation::Note(Machine& machine, const CardUuid& card, const std::string& fields) {
    if (Chance(0.5)) {
        return 0;
    }
    EditNote note;
    note.Time = (mTime + machine.Offset) * 1000;
    note.CardId = card;
    const std::string letters = "FBCAHOXYNfrD";
    for (const char field : fields) {
        note.Fields.set(letters.find(field));
    }
    AddEditNotes(machine.StorePath(), {note});
    const bool isRight = std::abs(machine.Offset) <= kMostWrong && TakesPart(machine.StorePath());
    return isRight ? mTime : 0;
}

FlashCard Simulation::NewCard(const wxString& front, const wxString& back, int32_t categoryId) {
    FlashCard card = MakeCard(front, back, categoryId);
    for (uint8_t& byte : card.CardId.Bytes) {
        byte = static_cast<uint8_t>(mRandom());
    }
    return card;
}

void Simulation::AddCard(Machine& machine) {
    std::list<Category> categories;
    machine.Store.SelectAllCategories(categories);
    const auto category =
        std::next(categories.begin(), Number(static_cast<int>(categories.size())));
    ++mText;
    FlashCard card = NewCard(wxString::Format("front %i", mText),
                             wxString::Format("back %i", mText), category->Id);
    machine.Store.InsertFlashCard(card);
    NoteChange(machine, card.CardId, false);
}

void Simulation::ImportList(Machine& machine) {
    for (int i = 0; i < kListCards; ++i) {
        FlashCard card =
            NewCard(wxString::Format("list %i", i), wxString::Format("Liste %i", i), 0);
        machine.Store.InsertFlashCard(card);
        mListed.insert(card.CardId);
    }
}

void Simulation::EditCard(Machine& machine) {
    std::optional<FlashCard> card = AnyCard(machine);
    if (!card) {
        return;
    }
    const wxString text = wxString::Format("text %i", ++mText);
    std::string field;
    switch (Number(6)) {
        case 0:
            card->Front = text;
            field = "F";
            break;
        case 1:
            card->Back = text;
            field = "B";
            break;
        case 2:
            card->Notes = text;
            field = "N";
            break;
        case 3:
            if (card->ForwardX) {
                return;
            }
            card->ForwardX = true;
            field = "X";
            break;
        case 4: {
            std::list<Category> categories;
            machine.Store.SelectAllCategories(categories);
            const int32_t id =
                std::next(categories.begin(), Number(static_cast<int>(categories.size())))->Id;
            if (id == card->CategoryId) {
                return;
            }
            card->CategoryId = id;
            field = "C";
            break;
        }
        default:
            card->IntroductionOrder = ++mText;
            field = "O";
    }
    machine.Store.UpdateFlashCard(*card);
    const int64_t noted = Note(machine, card->CardId, field);
    const bool isText = field == "F" || field == "B" || field == "N";
    NoteChange(machine, card->CardId, false, isText ? field[0] : ' ', text.utf8_string(), noted);
}

void Simulation::DeleteCard(Machine& machine) {
    const std::optional<FlashCard> card = AnyCard(machine);
    std::vector<int64_t> rows;
    if (!card || machine.Store.SelectRowIdById(card->CardId, rows) < 0) {
        return;
    }
    machine.Store.CardsDeleteByRowId(rows);
    machine.Deleted.push_back(*card);
    NoteChange(machine, card->CardId, true);
}

void Simulation::BringBackCard(Machine& machine) {
    if (machine.Deleted.empty()) {
        return;
    }
    FlashCard card = machine.Deleted.back();
    machine.Deleted.pop_back();
    // As long as nobody knows of it, a deletion that was taken back is no change at all.
    card.Notes = wxString::Format("text %i", ++mText);
    const std::string text = card.Notes.utf8_string();
    int32_t count = 0;
    machine.Store.SelectCardIdCount(card.CardId, count);
    std::list<Category> found;
    machine.Store.SelectCategoryById(card.CategoryId, found);
    if (count == 0 && !found.empty()) {
        machine.Store.InsertFlashCard(card);
        NoteChange(machine, card.CardId, false, 'N', text);
    }
}

void Simulation::Score(Machine& machine) {
    std::optional<FlashCard> card = AnyCard(machine);
    if (!card) {
        return;
    }
    ReviewDirection direction = Chance(0.5) ? kReviewForward : kReviewReverse;
    SeededRandom random(mRandom);
    const int64_t time = mTime + machine.Offset;
    const wxDateTime now(static_cast<time_t>(time));
    const int score = Number(6);
    ScheduleEvent event;
    CardSchedule before = ScheduleOf(*card, direction);
    const bool isAnew = machine.Last && Chance(0.2);
    if (isAnew) {
        std::list<FlashCard> cards;
        machine.Store.SelectCardById(machine.Last->CardId, cards);
        if (cards.empty() || machine.Last->Review.Score == score) {
            return;
        }
        card = cards.front();
        direction = machine.Last->Direction;
        event.Review.Replaces = machine.Last->Time;
        before = machine.Last->From;
        before.ERC = ScheduleOf(*card, direction).ERC;
    }
    CardSchedule& schedule = ScheduleOf(*card, direction);
    const ReviewResult result = Review(before, score, now, random, 0);
    event.Time = time;
    event.CardId = card->CardId;
    event.Direction = direction;
    event.Session = machine.Session;
    event.Number = ++machine.EventNumber;
    event.From = before;
    event.Share = machine.Share;
    event.HasExtension = true;
    schedule = before;
    schedule.Introduced = true;
    schedule.LastReview = now;
    schedule.LastScore = static_cast<uint8_t>(score);
    schedule.ReviewInterval = result.NewInterval;
    schedule.Difficulty = result.Difficulty;
    schedule.ERC = Number(1000000);
    event.After = schedule;
    ReviewRecord& record = event.Review;
    record.Time = time;
    record.CardId = card->CardId;
    record.Direction = direction;
    record.Score = static_cast<uint8_t>(score);
    record.Elapsed =
        before.Introduced ? std::max<int64_t>(0, SecondsBetween(before.LastReview, now)) : -1;
    record.OldInterval = result.OldInterval;
    record.NewInterval = result.NewInterval;
    record.OldDifficulty = before.Difficulty;
    record.NewDifficulty = result.Difficulty;
    machine.Store.UpdateFlashCard(*card);
    const wxString path = ReviewLogPath(machine.StorePath());
    std::string log = fs::exists(ToUtf8(path)) ? ReadBytes(path) : std::string("# log\n");
    WriteBytes(path, log + FormatEvent(event));
    mReviews.insert(FormatEventKey(event));
    machine.Last = event;
    NoteChange(machine, card->CardId, false);
}

void Simulation::SetSchedule(Machine& machine) {
    std::optional<FlashCard> card = AnyCard(machine);
    if (!card) {
        return;
    }
    if (Chance(0.5)) {
        if (!card->Forward.Introduced) {
            return;
        }
        card->Forward = CardSchedule();
    } else {
        card->Reverse.ReviewInterval = static_cast<float>(100 + ++mText);
    }
    machine.Store.UpdateFlashCard(*card);
    NoteChange(machine, card->CardId, false);
}

void Simulation::ChangeCategories(Machine& machine) {
    std::list<Category> categories;
    machine.Store.SelectAllCategories(categories);
    Category category = *std::next(categories.begin(), Number(static_cast<int>(categories.size())));
    switch (Number(3)) {
        case 0:
            machine.Store.CategoryInsert(wxString::Format("category %i", Number(6)));
            break;
        case 1: {
            category.Name = wxString::Format("category %i", Number(6));
            std::list<Category> found;
            machine.Store.SelectCategoryByName(category.Name, found);
            if (found.empty()) {
                machine.Store.UpdateCategory(category);
            }
            break;
        }
        default: {
            int32_t count = 0;
            machine.Store.SelectCategoryIdCount(category.Id, count);
            if (count == 0 && categories.size() > 1) {
                machine.Store.DeleteCategory(category.Id);
                // The id is used again.
                machine.Store.CategoryInsert(wxString::Format("category %i", 10 + Number(6)));
            }
        }
    }
}

// Goes back to a copy of the store that was made just after an exchange.
void Simulation::Restore(Machine& machine) {
    const wxString backup = machine.StorePath() + ".backup";
    if (!fs::exists(ToUtf8(backup)) || Chance(0.7)) {
        return;
    }
    // What was done since the last exchange is sent first, or it would be lost with the store.
    mStudiesOn = false;
    Exchange(machine);
    mStudiesOn = true;
    machine.Store.Close();
    fs::copy_file(ToUtf8(backup), ToUtf8(machine.StorePath()),
                  fs::copy_options::overwrite_existing);
    if (Chance(0.5)) {
        // As the program restores, with the log; else as a person copies the store alone.
        WriteBytes(machine.StorePath() + kRestoredSuffix, "");
        WriteBytes(ReviewLogPath(machine.StorePath()), ReadBytes(ReviewLogPath(backup)));
    }
    machine.Last.reset();
    machine.Deleted.clear();
    machine.Open();
    // Nobody studies on an earlier store for long.
    Exchange(machine);
}

// Notes what a computer knows of the others by the files that it has taken.
void Simulation::Learn(Machine& machine) {
    SyncState state;
    if (!state.OpenAlone(machine.StorePath())) {
        return;
    }
    for (const ExchangeMachine& other : state.ReadMachines()) {
        for (const auto& known : mMachines) {
            if (known->Identity == other.Id) {
                const auto file = known->KnownByFile.upper_bound(other.Taken);
                if (file != known->KnownByFile.begin()) {
                    const std::vector<int>& numbers = std::prev(file)->second;
                    for (size_t i = 0; i < numbers.size(); ++i) {
                        machine.Known[i] = std::max(machine.Known[i], numbers[i]);
                    }
                }
            }
        }
    }
    machine.KnownByFile[state.GetNumber("number")] = machine.Known;
}

ExchangeReport Simulation::Exchange(Machine& machine) {
    FakeClock clock(mTime + machine.Offset + 15);
    ExchangeOptions options;
    options.StorePath = machine.StorePath();
    options.Folder = FromUtf8(machine.Folder);
    options.Name = wxString::Format("machine %i", static_cast<int>(machine.Index));
    options.Time = &clock;
    options.MakeIdentity = [&] {
        machine.Identity = uint64_t{mRandom()} << 32 | (machine.Index + 1);
        return machine.Identity;
    };
    options.Rules = mOptions.Rules;
    options.MostInMemory = 5;
    options.JoinsEqualCards = true;
    // Study goes on while the exchange ends.
    options.AfterChange = [&] {
        Learn(machine);
        if (mStudiesOn && Chance(0.2)) {
            EditCard(machine);
        }
    };
    ExchangeReport report = RunExchange(options);
    if (report.End == ExchangeEnd::kAsks) {
        options.Answer = ExchangeAnswer::kTakeNewer;
        report = RunExchange(options);
    }
    if (report.End != ExchangeEnd::kDone) {
        mFaults +=
            "machine " + std::to_string(machine.Index) + ": " + report.Message.utf8_string() + "\n";
    }
    Learn(machine);
    if (mOptions.RestoresBackups && Chance(0.3)) {
        fs::copy_file(ToUtf8(machine.StorePath()), ToUtf8(machine.StorePath() + ".backup"),
                      fs::copy_options::overwrite_existing);
        WriteBytes(ReviewLogPath(machine.StorePath() + ".backup"),
                   ReadBytes(ReviewLogPath(machine.StorePath())));
    }
    return report;
}

// Returns the lines of a card in the log, for the report of a fault.
std::string Simulation::LogOf(const Machine& machine, const std::string& id) {
    std::string lines;
    const std::atomic<bool> goesOn{false};
    VisitEvents(
        ReviewLogPath(machine.StorePath()), 0,
        [&](const ScheduleEvent& event) {
            if (IdText(event.CardId) == id) {
                lines += FormatEvent(event);
            }
        },
        goesOn);
    SyncState state;
    state.OpenAlone(machine.StorePath());
    CardUuid card;
    ParseUuidUtf8(id, card);
    for (const auto& [gone, stays] : state.ReadUnions()) {
        if (stays == card || gone == card) {
            lines += "   union of " + IdText(gone) + " and " + IdText(stays) + "\n";
        }
    }
    SyncedCard copy;
    state.LoadCopy(card, copy);
    MachineNumbers numbers;
    lines += "   stamps " + FormatStamps(copy.Stamps, numbers) + " category " +
             copy.Value(CardField::kCategory) + " of";
    for (int64_t number = 0; number < numbers.GetCount(); ++number) {
        uint64_t identity = 0;
        numbers.MachineOf(number, identity);
        lines += " " + HexText(identity);
    }
    return lines + "\n" + EventsOf(machine);
}

std::string Simulation::Compare() {
    std::string faults;
    std::map<std::string, std::string> first;
    std::set<std::string> firstCategories;
    for (const auto& machine : mMachines) {
        std::map<int32_t, std::string> names;
        std::set<std::string> categories;
        std::list<Category> all;
        machine->Store.SelectAllCategories(all);
        for (const Category& category : all) {
            names[category.Id] = category.Name.utf8_string();
            categories.insert(names[category.Id]);
        }
        std::map<std::string, std::string> cards;
        for (const FlashCard& card : AllCards(machine->Store)) {
            const auto name = names.find(card.CategoryId);
            cards[IdText(card.CardId)] =
                card.Front.utf8_string() + "|" + card.Back.utf8_string() + "|" +
                card.Notes.utf8_string() + "|" + (name == names.end() ? "-" : "=" + name->second) +
                "|" + std::to_string(card.IntroductionOrder) + (card.ForwardX ? "|X|" : "||") +
                ScheduleText(card.Forward) + "|" + ScheduleText(card.Reverse);
        }
        const std::string who = "machine " + std::to_string(machine->Index) + ": ";
        std::set<std::string> events;
        const std::atomic<bool> goesOn{false};
        VisitEvents(
            ReviewLogPath(machine->StorePath()), 0,
            [&](const ScheduleEvent& event) {
                if (!event.IsSet && !events.insert(FormatEventKey(event)).second) {
                    faults += who + "a review stands twice in the log\n";
                }
            },
            goesOn);
        for (const std::string& review : mReviews) {
            if (events.count(review) == 0) {
                faults += who + "review " + review + " is not in the log\n";
            }
        }
        if (machine->Index == 0) {
            first = cards;
            firstCategories = categories;
            faults += CompareDeletions(cards) + CompareTexts(cards);
            continue;
        }
        for (const auto& [id, card] : first) {
            const auto other = cards.find(id);
            if (other == cards.end()) {
                faults += who + "lacks " + id + " " + card + "\n";
            } else if (other->second != card) {
                faults += who + id + "\n   " + other->second + "\n" + LogOf(*machine, id) + "   " +
                          card + "\n" + LogOf(*mMachines.front(), id);
            }
        }
        for (const auto& [id, card] : cards) {
            if (first.count(id) == 0) {
                faults += who + "has more: " + id + " " + card + "\n";
            }
        }
        if (categories != firstCategories) {
            faults += who + "categories differ:";
            for (const std::string& name : categories) {
                faults += " " + name;
            }
            faults += " /";
            for (const std::string& name : firstCategories) {
                faults += " " + name;
            }
            faults += "\n" + EventsOf(*machine) + "/\n" + EventsOf(*mMachines.front());
        }
    }
    return faults;
}

// Returns what was done to a card, for the report of a fault.
std::string Simulation::CourseOf(const CardUuid& card) {
    std::string course;
    for (const Change& change : mChanges) {
        if (change.Card != card) {
            continue;
        }
        course += (change.IsDeletion ? "   deleted" : "   changed") + std::string(" by ") +
                  std::to_string(change.Machine) + ", its change " + std::to_string(change.Number) +
                  " " + change.Field + " " + change.Text + ", knowing";
        for (const int known : change.Known) {
            course += " " + std::to_string(known);
        }
        course += "\n";
    }
    return course;
}

// Each text that was typed is in its card, or was replaced by somebody who knew it, or is listed as
// lost.
std::string Simulation::CompareTexts(const std::map<std::string, std::string>& cards) {
    std::set<std::string> lost;
    for (const auto& machine : mMachines) {
        for (const LostText& text : ReadLostTexts(machine->StorePath())) {
            lost.insert(text.Value);
        }
    }
    std::string faults;
    for (const Change& change : mChanges) {
        const auto card = cards.find(IdText(change.Card));
        const auto stands = [&](const Change& other) {
            return other.Card == change.Card && other.Field == change.Field &&
                   card->second.find(other.Text + "|") != std::string::npos;
        };
        const auto last = card == cards.end() || change.Field == ' '
                              ? mChanges.end()
                              : std::find_if(mChanges.begin(), mChanges.end(), stands);
        if (last != mChanges.end() && change.NotedAt > 0 && last->NotedAt > 0 &&
            lost.count(change.Text) > 0 && change.NotedAt > last->NotedAt + 2 * kMostWrong &&
            last->Known[change.Machine] < change.Number) {
            faults += "\"" + change.Text + "\" lost against the older \"" + last->Text + "\"\n" +
                      CourseOf(change.Card);
        }
        if (change.Field == ' ' || mListed.count(change.Card) > 0 || card == cards.end() ||
            card->second.find(change.Text + "|") != std::string::npos ||
            lost.count(change.Text) > 0) {
            continue;
        }
        const bool isReplaced =
            std::any_of(mChanges.begin(), mChanges.end(), [&](const Change& other) {
                const bool isLater =
                    other.Machine != change.Machine || other.Number > change.Number;
                return other.Card == change.Card && isLater &&
                       (other.Field == change.Field || other.IsDeletion) &&
                       other.Known[change.Machine] >= change.Number;
            });
        if (!isReplaced) {
            faults += "\"" + change.Text + "\" of " + card->first + " is nowhere\n" +
                      CourseOf(change.Card);
        }
    }
    return faults;
}

std::string Simulation::EventsOf(const Machine& machine) {
    std::string lines;
    SyncState state;
    state.OpenAlone(machine.StorePath());
    for (const CategoryEvent& event : state.ReadCategoryEvents()) {
        lines += std::string(1, event.What) + " " + event.Name + " " + event.NewName + " " +
                 std::to_string(event.At.Time) + " " + HexText(event.At.Machine) + "\n";
    }
    return lines;
}

// A card is there unless its deletions had seen all that was done to it.
std::string Simulation::CompareDeletions(const std::map<std::string, std::string>& cards) {
    std::string faults;
    std::map<std::string, std::vector<const Change*>> byCard;
    for (const Change& change : mChanges) {
        // Cards that became one go otherwise than by a deletion.
        if (mListed.count(change.Card) > 0) {
            continue;
        }
        byCard[IdText(change.Card)].push_back(&change);
    }
    for (const auto& [id, changes] : byCard) {
        bool isThere = false;
        for (const Change* const change : changes) {
            const auto hasSeen = [&](const Change* deletion) {
                return deletion->IsDeletion && deletion->Known[change->Machine] >= change->Number;
            };
            isThere = isThere || (!change->IsDeletion &&
                                  std::none_of(changes.begin(), changes.end(), hasSeen));
        }
        if (isThere && cards.count(id) == 0) {
            faults += id + " is gone, though a change had not seen its deletion\n";
            faults += CourseOf(changes.front()->Card);
        }
    }
    return faults;
}
