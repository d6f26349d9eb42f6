// Files that chance has changed. Whatever they hold, the passes end, a pass that validates writes
// nothing, and what it lets through the next pass writes.

#include <wx/dir.h>

#include <chrono>
#include <cstdlib>

#include "exchange/ImportFixture.h"
#include "fuzz/Mutator.h"

namespace {

unsigned long ReadNumber(const char* name, unsigned long otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

struct Corpus {
    std::vector<std::string> Files;
    // How each is meant to be read, by the end of its name.
    std::vector<ImportInput> Inputs;
};

Corpus ReadCorpus() {
    wxArrayString names;
    wxDir::GetAllFiles(VELOMIND_CORPUS, &names);
    // The order of a directory differs from one machine to the next.
    names.Sort();
    Corpus corpus;
    for (const wxString& name : names) {
        corpus.Files.push_back(ReadBytes(name));
        ImportInput input;
        input.Format = name.EndsWith(".txt") ? ImportFormat::kVlmText : ImportFormat::kDelimited;
        input.Delimiter = name.EndsWith(".csv") ? L',' : (name.EndsWith(".ssv") ? L';' : L'\t');
        corpus.Inputs.push_back(input);
    }
    return corpus;
}

class ImportFuzz : public ImportFixture {
  protected:
    // What the store holds, as far as an import can change it.
    Strings Content() {
        Strings rows = Query("SELECT * FROM Cards ORDER BY CardId");
        for (const std::string& row : Query("SELECT * FROM Categories ORDER BY Id")) {
            rows.push_back(row);
        }
        return rows;
    }

    void TryFile(const ImportInput& input, ImportMergePolicy policy) {
        std::vector<CardAttribute> first;
        ImportResult preview;
        ImportPreview(input, mDatabase, preview, first);
        ImportPassOptions options;
        options.ValidateOnly = true;
        ImportResult validated;
        const bool isValid = ImportPass(input, mDatabase, validated, options) == 0;
        CheckResult(validated, isValid);
        if (isValid) {
            EXPECT_EQ(Content(), mContent) << "validation wrote";
        }

        mResult = std::make_unique<ImportResult>();
        mResult->MergePolicy = policy;
        const bool isImported = ImportCards(input, mDatabase, *mResult, false, &mTouched) == 0;
        CheckResult(*mResult, isImported);
        EXPECT_EQ(isImported, isValid) << Outcome();
        const size_t cards = std::stoul(Query("SELECT count(*) FROM Cards").front());
        EXPECT_EQ(cards, mCards + static_cast<size_t>(mResult->RecordsInserted));
        mCards = cards;
        if (!isValid) {
            EXPECT_EQ(Content(), mContent) << "a file with a fault was imported in part";
            return;
        }
        mContent = Content();
        ++mImported;
    }

    void CheckResult(const ImportResult& result, bool succeeded) {
        EXPECT_EQ(result.Status, succeeded ? ImportStatus::kFinished : ImportStatus::kFailed);
        EXPECT_EQ(result.Message.empty(), succeeded);
        EXPECT_TRUE(result.Progress >= 0.0f && result.Progress <= 1.0f) << result.Progress;
    }

    // A store that grows would slow the run down.
    void EmptyStore() {
        ASSERT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
        Query("DELETE FROM Cards");
        Query("DELETE FROM Categories WHERE Id > 0");
        Reopen();
        mCards = 0;
        mContent = Content();
    }

    size_t mCards = 0;
    Strings mContent;
    int mImported = 0;
};

}  // namespace

// Changes would not get far in a file that has a fault to begin with.
TEST_F(ImportFuzz, BeginsWithFilesThatAreSound) {
    const Corpus corpus = ReadCorpus();
    for (size_t i = 0; i < corpus.Files.size(); ++i) {
        const ImportInput& input = corpus.Inputs[i];
        ImportResult result;
        ImportCards(TextFile(corpus.Files[i], input.Format, input.Delimiter), mDatabase, result,
                    false, nullptr);
        EXPECT_EQ(result.Status, ImportStatus::kFinished)
            << i << ": " << result.Message << " @" << result.LineNumber;
        EmptyStore();
    }
}

TEST_F(ImportFuzz, EndsWithASoundStore) {
    const auto seed = static_cast<uint32_t>(ReadNumber("VELOMIND_FUZZ_SEED", 1));
    const std::chrono::seconds length(ReadNumber("VELOMIND_FUZZ_SECONDS", 3));
    const Corpus corpus = ReadCorpus();
    ASSERT_FALSE(corpus.Files.empty());
    Mutator mutator(corpus.Files, seed);
    const auto end = std::chrono::steady_clock::now() + length;
    int files = 0;
    while (std::chrono::steady_clock::now() < end && !HasFailure()) {
        if (files % 50 == 0) {
            EmptyStore();
        }
        const size_t file = mutator.Pick(corpus.Files.size());
        const std::string bytes = mutator.Change(file);
        ImportInput input = corpus.Inputs[file];
        if (mutator.Pick(8) == 0) {
            constexpr wchar_t kOdd[] = {L' ', L':', L'\0', L'\\', L'\n', L'"', L'a'};
            input.Format = ImportFormat::kDelimited;
            input.Delimiter = kOdd[mutator.Pick(std::size(kOdd))];
        }
        TryFile(TextFile(bytes, input.Format, input.Delimiter),
                mutator.Pick(2) == 0 ? ImportMergePolicy::kKeepDatabase
                                     : ImportMergePolicy::kKeepImported);
        if (HasFailure()) {
            ADD_FAILURE() << "file " << files << " of seed " << seed << ", format "
                          << static_cast<int>(input.Format) << ", delimiter "
                          << int{input.Delimiter} << ":\n"
                          << ::testing::PrintToString(bytes);
        }
        ++files;
    }
    EXPECT_GT(mImported, 0);
    std::printf("%d files, %d of them imported\n", files, mImported);
}
