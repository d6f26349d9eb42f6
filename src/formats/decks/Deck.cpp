#include "formats/decks/Deck.h"

#include <wx/intl.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "store/Database.h"

// The names of attributes, made once: a text of more than three characters allocates memory.
struct DeckReader::ScheduleNames {
    explicit ScheduleNames(const wxString& prefix)
        : Introduced(prefix + L"introduced"),
          LastReview(prefix + L"lastReview"),
          LastScore(prefix + L"lastScore"),
          ReviewInterval(prefix + L"reviewInterval"),
          Difficulty(prefix + L"difficulty"),
          Erc(prefix + L"erc") {}

    wxString Introduced, LastReview, LastScore, ReviewInterval, Difficulty, Erc;
};

struct DeckReader::Names {
    wxString Id = L"id", Front = L"front", Front2 = L"front2", Back = L"back", Back2 = L"back2",
             Notes = L"notes", Category = L"category", ForwardX = L"forwardX",
             ReverseX = L"reverseX";
    wxString True = L"true";
    ScheduleNames Forward{wxString()};
    ScheduleNames Reverse{L"r"};
};

DeckReader::DeckReader(std::unique_ptr<Deck> deck, const DeckOptions& options)
    : mDeck(std::move(deck)), mOptions(options) {}

uint32_t DeckReader::GetAttributeCount() const {
    return static_cast<uint32_t>(mAttributes.Count());
}

const CardAttribute& DeckReader::GetAttribute(uint32_t index) const {
    return mAttributes[index];
}

void DeckReader::Add(const wxString& name, const wxString& value) {
    CardAttribute& attribute = mAttributes.Append();
    attribute.Name = name;
    attribute.Value = value;
    attribute.Line = mCardNumber;
}

bool DeckReader::SkipRecord() {
    DeckCard card;
    return mDeck->ReadCard(card);
}

bool DeckReader::ReadRecord() {
    static const Names kNames;
    mAttributes.Clear();
    DeckCard card;
    if (!mDeck->ReadCard(card)) {
        return false;
    }
    ++mCardNumber;
    bool isStored = mOptions.IsStored && mOptions.IsStored(card.Card.CardId);
    if (!isStored && mOptions.IsStored && !card.OtherId.IsZero() &&
        mOptions.IsStored(card.OtherId)) {
        isStored = true;
        card.Card.CardId = card.OtherId;
    }
    Add(kNames.Id, FormatUuid(card.Card.CardId));
    Add(kNames.Front, card.Card.Front);
    Add(kNames.Back, card.Card.Back);
    // Where the card stands and what was learned of it here is newer than the deck, and so is what
    // the deck has nothing for. All else is the deck's.
    const auto addText = [this](const wxString& name, const wxString& text) {
        if (!text.empty()) {
            Add(name, text);
        }
    };
    addText(kNames.Front2, card.Front2);
    addText(kNames.Back2, card.Back2);
    addText(kNames.Notes, card.Card.Notes);
    if (isStored) {
        return true;
    }
    Add(kNames.Category, card.Category);
    if (card.Card.ForwardX) {
        Add(kNames.ForwardX, kNames.True);
    }
    if (card.Card.ReverseX) {
        Add(kNames.ReverseX, kNames.True);
    }
    if (mOptions.WithSchedules) {
        AddSchedule(kNames.Forward, card.Card.Forward);
        AddSchedule(kNames.Reverse, card.Card.Reverse);
    }
    return true;
}

void DeckReader::AddSchedule(const ScheduleNames& names, const CardSchedule& schedule) {
    if (!schedule.Introduced) {
        return;
    }
    Add(names.Introduced, L"true");
    Add(names.LastReview, FormatTimeStamp(schedule.LastReview));
    Add(names.LastScore, wxString::Format("%u", unsigned{schedule.LastScore}));
    Add(names.ReviewInterval,
        wxString::FromCDouble(static_cast<double>(schedule.ReviewInterval), 6));
    Add(names.Difficulty, wxString::Format("%u", unsigned{schedule.Difficulty}));
    Add(names.Erc, wxString::Format("%i", schedule.ERC));
}

namespace {

// Indents a line that would be mistaken for a second text.
void GuardSide(wxString& side) {
    if (side.find(L"\n\u3010") != wxString::npos) {
        side.Replace(L"\n\u3010", L"\n \u3010");
    }
}

std::function<bool(const CardUuid&)> StoredCardFinder(Database& database) {
    return [&database](const CardUuid& id) {
        std::list<FlashCard> cards;
        return database.SelectCardById(id, cards) >= 0 && !cards.empty();
    };
}

}  // namespace

Deck::Deck(DeckOptions options)
    : mOptions(std::move(options)), mRoom(mOptions.FileSize, mOptions.MayBeLarge) {}

bool Deck::ReadCard(DeckCard& card) {
    while (mReady.empty()) {
        if (!mFailure.empty()) {
            return false;
        }
        if (mOptions.IsCancelled != nullptr && *mOptions.IsCancelled) {
            return Fail(_("Cancelled"));
        }
        const bool hasNote = ReadNote();
        if (mRoom.GetPassed() != nullptr) {
            mReady.clear();
            return Fail(BoundMessage(*mRoom.GetPassed()));
        }
        if (!hasNote) {
            return false;
        }
    }
    card = std::move(mReady.front());
    mReady.pop_front();
    return true;
}

void Deck::Push(DeckCard&& card) {
    GuardSide(card.Card.Front);
    GuardSide(card.Card.Back);
    if (card.Card.Front.empty() || card.Card.Back.empty()) {
        Count(DeckLoss::kEmptySides);
        return;
    }
    const wxString* const texts[] = {&card.Card.Front, &card.Front2,     &card.Card.Back,
                                     &card.Back2,      &card.Card.Notes, &card.Category};
    size_t characters = 0;
    for (const wxString* const text : texts) {
        characters += text->length();
    }
    mRoom.TakeCard(characters);
    mReady.push_back(std::move(card));
}

std::unique_ptr<DeckReader> MakeDeckReader(const std::shared_ptr<DeckFile>& file,
                                           DeckOptions options, Database& database,
                                           wxString& message) {
    // An empty store, such as a new user's, has nothing to find.
    if (!database.IsEmpty()) {
        options.IsStored = StoredCardFinder(database);
    }
    std::unique_ptr<Deck> deck = file == nullptr ? nullptr : file->OpenDeck(options, message);
    if (deck == nullptr) {
        return nullptr;
    }
    return std::make_unique<DeckReader>(std::move(deck), options);
}

float StoredInterval(int64_t lastReview, double seconds, bool& clamped) {
    const auto greatest = static_cast<double>(kLastTimeStamp - lastReview);
    if (seconds > greatest) {
        clamped = true;
        seconds = greatest;
    }
    const double wanted = std::max(seconds, 1.0);
    auto interval = static_cast<float>(wanted);
    if (static_cast<double>(interval) > wanted) {
        interval = std::nextafter(interval, 0.0f);
    }
    return interval;
}

// An ease of 2.5 multiplies intervals like the neutral difficulty, one of 1.3 like the hardest;
// each step of difficulty between them is a factor of 1.1.
uint8_t DifficultyOfEase(double ease) {
    constexpr uint8_t kNeutral = 16;
    constexpr double kHardest = 32.0;
    constexpr double kStep = 1.1;
    if (!(ease > 0.0)) {
        return kNeutral;
    }
    const double growth = (ease - 1.0) / 1.5;
    if (growth <= 0.0) {
        return static_cast<uint8_t>(kHardest);
    }
    const double steps = std::floor(std::log(growth) / std::log(kStep) + 0.5);
    return static_cast<uint8_t>(std::clamp(kNeutral - steps, 0.0, kHardest));
}

int32_t DeckErc(const CardUuid& id) {
    constexpr int32_t kBlock = 4095;
    return (id.Bytes[14] * 256 + id.Bytes[15]) % kBlock;
}
