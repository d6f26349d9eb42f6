#include "exchange/NewCards.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "store/Database.h"

namespace {

constexpr double kLongestSeconds = 0.1;
// Larger groups hardly gain. The sizes in between are those that the store writes at once.
constexpr size_t kSmallestGroup = 256;
constexpr size_t kLargestGroup = 4096;
constexpr size_t kStep = 4;

size_t Characters(const FlashCard& card) {
    return card.Front.length() + card.Back.length() + card.Notes.length() + card.Author.length() +
           card.Chapter.length();
}

}  // namespace

size_t NewCards::IdHash::operator()(const CardUuid& id) const {
    size_t hash = 0;
    std::memcpy(&hash, id.Bytes.data(), sizeof hash);
    return hash;
}

void NewCards::Add(FlashCard&& card, int32_t line) {
    mIds.insert(card.CardId);
    mCharacters += Characters(card);
    mCards.push_back(std::move(card));
    mLines.push_back(line);
}

bool NewCards::HasCategory(int32_t categoryId) const {
    return std::any_of(mCards.begin(), mCards.end(), [categoryId](const FlashCard& card) {
        return card.CategoryId == categoryId;
    });
}

NewCards::Outcome NewCards::Write() {
    const auto start = std::chrono::steady_clock::now();
    const size_t count = mCards.size();
    const size_t written = WriteCards();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    Outcome outcome;
    outcome.Written = static_cast<int32_t>(written);
    outcome.HasFailed = written < count;
    if (outcome.HasFailed) {
        outcome.Line = mLines[written];
        DropFirst(written + 1);
    } else {
        Resize(count, taken.count());
        DropFirst(count);
    }
    return outcome;
}

// Keeps a write under a tenth of a second where a smaller group can do that. It cannot where
// waiting for the disk takes the time, which is as long for one card as for 1,000. A small group
// that takes more than half the time of a larger one shows that, and the next one is larger again.
void NewCards::Resize(size_t count, double seconds) {
    if (seconds > kLongestSeconds && mSize > kSmallestGroup) {
        mSize /= kStep;
        mSecondsOfLarger = seconds;
    } else if (count >= mSize && mSize < kLargestGroup &&
               (seconds < kLongestSeconds / 2 || seconds > mSecondsOfLarger / 2)) {
        mSize *= kStep;
    }
}

// Returns how many cards the store has taken, in their order. A refused card fails its whole
// statement, so ever smaller parts are tried, until the cards before it are in the store and the
// store has reported what is wrong with it.
size_t NewCards::WriteCards() {
    size_t written = 0;
    size_t part = mCards.size();
    while (written < mCards.size()) {
        part = std::min(part, mCards.size() - written);
        const size_t taken = WritePart(written, part);
        written += taken;
        if (taken < part) {
            if (part == 1) {
                break;
            }
            part /= 2;
        }
    }
    return written;
}

size_t NewCards::WritePart(size_t first, size_t count) {
    if (count == 1) {
        return mDatabase.InsertFlashCard(mCards[first]) < 0 ? 0 : 1;
    }
    // A failure shows in the number of cards written; the next one is then written by itself.
    size_t written = 0;
    if (count == mCards.size()) {
        mDatabase.InsertFlashCards(mCards, written);
    } else {
        const auto begin = mCards.begin() + static_cast<std::ptrdiff_t>(first);
        mDatabase.InsertFlashCards({begin, begin + static_cast<std::ptrdiff_t>(count)}, written);
    }
    return written;
}

void NewCards::DropFirst(size_t count) {
    const auto end = static_cast<std::ptrdiff_t>(count);
    for (size_t i = 0; i < count; ++i) {
        mCharacters -= Characters(mCards[i]);
        mIds.erase(mCards[i].CardId);
    }
    mCards.erase(mCards.begin(), mCards.begin() + end);
    mLines.erase(mLines.begin(), mLines.begin() + end);
}
