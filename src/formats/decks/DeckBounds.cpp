#include "formats/decks/DeckBounds.h"

#include <wx/filename.h>

#include <string>

wxString BoundMessage(const DeckBound& bound) {
    return BoundMessage(bound, bound.Most);
}

wxString BoundMessage(const DeckBound& bound, int64_t most) {
    const wxString number =
        bound.IsBytes
            ? wxFileName::GetHumanReadableSize(static_cast<unsigned long long>(most), wxString(), 0)
            : wxString(std::to_string(most));
    return wxString::Format(wxGetTranslation(bound.Sentence), number);
}

DeckRoom::DeckRoom(int64_t fileSize, bool isUnlimited)
    : mIsUnlimited(isUnlimited), mMostBytes(fileSize * kMostGrowth.Most) {}

bool DeckRoom::Compare(int64_t count, int64_t most, const DeckBound& bound) {
    if (!mIsUnlimited && count > most && mpPassed == nullptr) {
        mpPassed = &bound;
    }
    return mpPassed == nullptr;
}

bool DeckRoom::TakeRow(int64_t& rows) {
    return Compare(++rows, kMostCards.Most, kMostCards);
}

bool DeckRoom::TakeText(size_t bytes) {
    mTexts += static_cast<int64_t>(bytes);
    return Compare(mTexts, mMostBytes, kMostGrowth);
}

bool DeckRoom::TakeCard(size_t characters) {
    // As the store keeps them.
    constexpr size_t kBytesPerCharacter = 2;
    mCardBytes += static_cast<int64_t>(characters * kBytesPerCharacter);
    return Compare(++mCards, kMostCards.Most, kMostCards) &&
           Compare(mCardBytes, mMostBytes, kMostGrowth);
}
