// Files that chance has changed. Whatever they hold, their import ends, and writes all or nothing.

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
        const bool isText = name.EndsWith(".txt");
        corpus.Inputs.push_back(
            {wxString(), isText ? ImportFormat::kVlmText : ImportFormat::kDelimited,
             name.EndsWith(".csv") ? L',' : (name.EndsWith(".ssv") ? L';' : L'\t')});
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

    void TryFile(const std::string& bytes, const ImportInput& form, ImportMergePolicy policy) {
        const ImportInput input = TextFile(bytes, form.Format, form.Delimiter);
        std::vector<CardAttribute> first;
        ImportResult preview;
        ImportPreview(input, mDatabase, preview, first);
        mResult = std::make_unique<ImportResult>();
        mResult->MergePolicy = policy;
        const bool isImported = ImportCards(input, mDatabase, *mResult, false, &mTouched) == 0;
        EXPECT_EQ(mResult->Status, isImported ? ImportStatus::kFinished : ImportStatus::kFailed);
        EXPECT_EQ(mResult->Message.empty(), isImported);
        EXPECT_TRUE(mResult->Progress >= 0.0f && mResult->Progress <= 1.0f) << mResult->Progress;
        const size_t cards = mCards + static_cast<size_t>(mResult->RecordsInserted);
        mCards = std::stoul(Query("SELECT count(*) FROM Cards").front());
        EXPECT_EQ(mCards, cards);
        const Strings before = std::exchange(mContent, Content());
        if (!isImported) {
            EXPECT_EQ(mContent, before) << "a file with a fault was imported in part";
        }
        mImported += isImported ? 1 : 0;
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

TEST_F(ImportFuzz, EndsWithASoundStore) {
    const auto seed = static_cast<uint32_t>(ReadNumber("VELOMIND_FUZZ_SEED", 1));
    const std::chrono::seconds length(ReadNumber("VELOMIND_FUZZ_SECONDS", 3));
    const Corpus corpus = ReadCorpus();
    ASSERT_FALSE(corpus.Files.empty());
    // Changes would not get far in a file that has a fault to begin with.
    for (size_t i = 0; i < corpus.Files.size(); ++i) {
        EmptyStore();
        TryFile(corpus.Files[i], corpus.Inputs[i], ImportMergePolicy::kKeepImported);
        ASSERT_EQ(mResult->Status, ImportStatus::kFinished) << i << ": " << Outcome();
    }
    mImported = 0;
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
        TryFile(bytes, input,
                mutator.Pick(2) == 0 ? ImportMergePolicy::kKeepDatabase
                                     : ImportMergePolicy::kKeepImported);
        if (HasFailure()) {
            ADD_FAILURE() << "file " << files << " of seed " << seed << ", delimiter "
                          << int{input.Delimiter} << ": " << ::testing::PrintToString(bytes);
        }
        ++files;
    }
    EXPECT_GT(mImported, 0);
    std::printf("%d files, %d of them imported\n", files, mImported);
}
