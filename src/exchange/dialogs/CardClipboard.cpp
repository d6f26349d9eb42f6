#include "exchange/dialogs/CardClipboard.h"

#include <wx/clipbrd.h>

#include "exchange/dialogs/CardDataObject.h"
#include "exchange/dialogs/PasteCards.h"

void CardClipboard::Put(Database& database, const std::vector<int64_t>& rowIds, bool copy) {
    const wxClipboardLocker clipboard;
    if (!clipboard) {
        return;
    }
    auto cards = std::make_unique<CardDataObject>(database, rowIds, copy);
    mOwn = cards->GetLifeSign();
    wxTheClipboard->SetData(cards.release());
}

void CardClipboard::Paste(Database& database, int32_t categoryId, AppServices::EmptyCut empty) {
    CardDataObject cards(database, {}, true);
    {
        const wxClipboardLocker clipboard;
        if (!HasCards() || !clipboard || !wxTheClipboard->GetData(cards)) {
            return;
        }
        if (!cards.IsCopy() && empty == AppServices::EmptyCut::kBefore) {
            wxTheClipboard->Clear();
        }
    }
    PasteCards(database, mReport, cards.GetRowIds(), cards.IsCopy(), categoryId);
    if (!cards.IsCopy() && empty == AppServices::EmptyCut::kAfter) {
        TakeBack();
    }
}

void CardClipboard::TakeBack() {
    if (HasCards()) {
        wxTheClipboard->Clear();
    }
}
