#pragma once

#include <wx/frame.h>

#include <utility>
#include <vector>

#include "shell/AppServices.h"
#include "store/UndoHistory.h"
#include "support/Fakes.h"

// The application as a window sees it: everything is to be had unless a test says otherwise, and
// every call is kept.
struct FakeServices : AppServices {
    struct CardsTaken {
        std::vector<int64_t> RowIds;
        bool Cut = false;
    };

    int32_t GetCurrentCategoryId(Database&) override { return CurrentCategory; }
    void SetCurrentCategoryId(Database&, int32_t id) override { CurrentCategory = id; }
    Subject& GetSettingsNotifier() override { return SettingsNotifier; }
    const Clock& GetClock() override { return Time; }
    ReviewRandom& GetReviewRandom() override { return Random; }
    MaintenancePrompt& GetMaintenancePrompt() override { return Maintenance; }

    void FrameActivated(wxFrame&) override {}
    void FrameClosed(wxFrame& frame) override { Closed.push_back(&frame); }

    void OpenFile(const wxString& path) override { Opened.push_back(path); }
    void OpenEditor(const FlashCard& card) override { Edited.push_back(card); }
    void OpenEditorOfMany(const std::vector<int64_t>& rowIds) override {
        EditedTogether.push_back(rowIds);
    }
    bool FindNeighbour(const CardUuid&, int step, FlashCard& card) override {
        const auto place = static_cast<size_t>(step + 1);
        card = place < Neighbours.size() ? Neighbours[place] : FlashCard();
        return place < Neighbours.size();
    }
    void ImportText(wxWindow&, const wxString& text) override { ImportedTexts.push_back(text); }
    void CardSaved(const CardUuid& id) override { Saved.push_back(id); }
    void ExportCards(wxWindow&, const std::vector<int64_t>& rowIds, OfferFirst first) override {
        Exported.push_back(rowIds);
        Offered.push_back(first);
    }
    void ReplaceInCards(wxWindow&, const std::vector<int64_t>& selected,
                        const std::vector<int64_t>& shown) override {
        Replaced.emplace_back(selected, shown);
    }
    void ShowDuplicates(wxWindow&) override { ++DuplicatesShown; }
    void PutCardsOnClipboard(const std::vector<int64_t>& rowIds, bool cut) override {
        Taken.push_back({rowIds, cut});
    }
    bool CanPasteCards() const override { return HasCardsToPaste; }
    void PasteCards(int32_t categoryId, EmptyCut empty) override {
        Pasted.emplace_back(categoryId, empty);
    }
    UndoHistory& GetUndoHistory() override { return History; }
    int BackUpStore(wxWindow*, BackupCause cause) override {
        BackedUp.push_back(cause);
        return 0;
    }
    void ExpectChange(BackupCause, uint64_t) override {}
    void BackUpDay(wxWindow*) override {}
    bool IsReverseStudy() const override { return ReverseStudy; }
    void SetReverseStudy(bool reverse) override { ReverseStudy = reverse; }
    void SetStudyMessage(const wxString& text) override { StudyMessage = text; }

    int32_t CurrentCategory = 0;
    Subject SettingsNotifier;
    FakeClock Time;
    FakeRandom Random;
    SilentMaintenance Maintenance;

    UndoHistory History;
    bool HasCardsToPaste = false;

    std::vector<BackupCause> BackedUp;
    std::vector<wxFrame*> Closed;
    std::vector<wxString> Opened;
    std::vector<FlashCard> Edited;
    std::vector<std::vector<int64_t>> EditedTogether;
    // The card before the one in the editor, that one, and the card after it.
    std::vector<FlashCard> Neighbours;
    std::vector<wxString> ImportedTexts;
    std::vector<std::vector<int64_t>> Exported;
    std::vector<OfferFirst> Offered;
    std::vector<std::pair<std::vector<int64_t>, std::vector<int64_t>>> Replaced;
    int DuplicatesShown = 0;
    std::vector<CardUuid> Saved;
    std::vector<CardsTaken> Taken;
    std::vector<std::pair<int32_t, EmptyCut>> Pasted;
    bool ReverseStudy = false;
    wxString StudyMessage;
};
