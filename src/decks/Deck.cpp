#include "decks/Deck.h"

#include <algorithm>
#include <cmath>
#include <list>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "store/Database.h"

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
    mAttributes.Clear();
    DeckCard card;
    if (!mDeck->ReadCard(card)) {
        return false;
    }
    ++mCardNumber;
    Add("id", FormatUuid(card.Card.CardId));
    Add("front", card.Card.Front);
    Add("front2", card.Front2);
    Add("back", card.Card.Back);
    Add("back2", card.Back2);
    Add("notes", card.Card.Notes);
    // Where the card stands and what was learned of it here is newer than the deck.
    wxString category;
    if (mOptions.FindStored && mOptions.FindStored(card.Card.CardId, category)) {
        Add("category", category);
        return true;
    }
    Add("category", card.Category);
    Add("forwardX", card.Card.ForwardX ? "true" : "false");
    Add("reverseX", card.Card.ReverseX ? "true" : "false");
    if (mOptions.WithSchedules) {
        AddSchedule(wxString(), card.Card.Forward);
        AddSchedule("r", card.Card.Reverse);
    }
    return true;
}

void DeckReader::AddSchedule(const wxString& prefix, const CardSchedule& schedule) {
    if (!schedule.Introduced) {
        return;
    }
    Add(prefix + "introduced", "true");
    Add(prefix + "lastReview", FormatTimeStamp(schedule.LastReview));
    Add(prefix + "lastScore", wxString::Format("%u", unsigned{schedule.LastScore}));
    Add(prefix + "reviewInterval",
        wxString::FromCDouble(static_cast<double>(schedule.ReviewInterval), 6));
    Add(prefix + "difficulty", wxString::Format("%u", unsigned{schedule.Difficulty}));
    Add(prefix + "erc", wxString::Format("%i", schedule.ERC));
}

std::unique_ptr<DeckReader> MakeDeckReader(const std::shared_ptr<DeckFile>& file,
                                           DeckOptions options, Database& database,
                                           wxString& message) {
    options.FindStored = [&database](const CardUuid& id, wxString& name) {
        std::list<FlashCard> cards;
        if (database.SelectCardById(id, cards) < 0 || cards.empty()) {
            return false;
        }
        std::list<Category> categories;
        if (database.SelectCategoryById(cards.front().CategoryId, categories) >= 0 &&
            !categories.empty()) {
            name = categories.front().Name;
        }
        return true;
    };
    std::unique_ptr<Deck> deck = file == nullptr ? nullptr : file->OpenDeck(options, message);
    if (deck == nullptr) {
        return nullptr;
    }
    return std::make_unique<DeckReader>(std::move(deck), options);
}

wxString GuardSide(const wxString& side) {
    wxString guarded = side;
    guarded.Replace(L"\n\u3010", L"\n \u3010");
    return guarded;
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

// An ease of 2.5 multiplies intervals as the neutral difficulty does, one of 1.3 as the hardest; a
// step of difficulty is a factor of 1.1 between them.
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

CardUuid DeckCardId(const wxString& noteId, const wxString& part) {
    return NamedUuid(ToUtf8(noteId + "\n" + part));
}

int32_t DeckErc(const CardUuid& id) {
    constexpr int32_t kBlock = 4095;
    return (id.Bytes[14] * 256 + id.Bytes[15]) % kBlock;
}
