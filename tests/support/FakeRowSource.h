#pragma once

#include <string>
#include <vector>

#include "formats/LegacyRowSource.h"

// An engine of version 1.0 and what it holds. Each reader gets a copy of it.
struct FakeEngine : LegacyRowSource {
    using Row = std::vector<std::wstring>;

    // An engine that fails so often before it is there.
    int Missing = 0;
    int32_t OpenResult = 0;
    bool HasDifficulty = true;
    std::vector<Row> Cards;

    LegacyRowSourceMaker Maker() {
        return [this] {
            auto copy = std::make_unique<FakeEngine>(*this);
            --Missing;
            return copy;
        };
    }

    int32_t Initialize() override { return Missing > 0 ? -1 : 0; }
    int32_t Open(const std::wstring& path) override {
        return path.find(L"FlashCards.vls") == std::wstring::npos ? -1 : OpenResult;
    }
    int32_t Run(const std::wstring& statement) override {
        mNames = {L"CardId",     L"Question",       L"Answer",   L"Active",
                  L"LastReview", L"ReviewInterval", L"LastScore"};
        if (HasDifficulty) {
            mNames.insert(mNames.end() - 1, L"Difficulty");
        } else if (statement.find(L"Difficulty") != std::wstring::npos) {
            return kErrorsInCommand;
        }
        const bool counts = statement == L"SELECT COUNT(*) FROM Cards;";
        mRows = counts ? std::vector<Row>{{std::to_wstring(Cards.size())}} : Cards;
        mNext = 0;
        return 0;
    }
    const std::vector<std::wstring>& GetColumnNames() const override { return mNames; }
    bool ReadRow(std::vector<std::wstring>& values) override {
        const bool isRow = mNext < mRows.size();
        values = isRow ? mRows[mNext++] : Row();
        return isRow;
    }

  private:
    std::vector<std::wstring> mNames;
    std::vector<Row> mRows;
    size_t mNext = 0;
};
