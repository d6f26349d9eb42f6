#pragma once

#include <string>
#include <vector>

#include "exchange/LegacyRowSource.h"

// What an engine of version 1.0 holds, shared by the sources that a run makes one after the other.
struct FakeEngine {
    using Row = std::vector<std::wstring>;

    // An engine that fails so often before it is there.
    int Missing = 0;
    int32_t OpenResult = 0;
    bool HasDifficulty = true;
    std::vector<Row> Cards;

    LegacyRowSourceMaker Maker();
};

class FakeRowSource : public LegacyRowSource {
  public:
    explicit FakeRowSource(FakeEngine& engine) : mEngine(engine) {}

    int32_t Initialize() override { return mEngine.Missing-- > 0 ? -1 : 0; }
    int32_t Open(const std::wstring&) override { return mEngine.OpenResult; }
    int32_t Run(const std::wstring& statement) override {
        mNames = {L"CardId",     L"Question",       L"Answer",   L"Active",
                  L"LastReview", L"ReviewInterval", L"LastScore"};
        if (mEngine.HasDifficulty) {
            mNames.insert(mNames.end() - 1, L"Difficulty");
        } else if (statement.find(L"Difficulty") != std::wstring::npos) {
            return kErrorsInCommand;
        }
        const bool counts = statement == L"SELECT COUNT(*) FROM Cards;";
        mRows = counts ? std::vector<FakeEngine::Row>{{std::to_wstring(mEngine.Cards.size())}}
                       : mEngine.Cards;
        mNext = 0;
        return 0;
    }
    const std::vector<std::wstring>& GetColumnNames() const override { return mNames; }
    bool ReadRow(std::vector<std::wstring>& values) override {
        const bool isRow = mNext < mRows.size();
        values = isRow ? mRows[mNext++] : FakeEngine::Row();
        return isRow;
    }

  private:
    FakeEngine& mEngine;
    std::vector<std::wstring> mNames;
    std::vector<FakeEngine::Row> mRows;
    size_t mNext = 0;
};

inline LegacyRowSourceMaker FakeEngine::Maker() {
    return [this] { return std::make_unique<FakeRowSource>(*this); };
}
