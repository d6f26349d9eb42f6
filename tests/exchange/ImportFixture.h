#pragma once

#include "exchange/ImportPass.h"
#include "support/StoreFixture.h"

// A real store, and files to import into it.
struct ImportFixture : StoreFixture {
    // Writes the bytes to a file.
    ImportInput TextFile(const std::string& bytes, ImportFormat format = ImportFormat::kVlmText,
                         wchar_t delimiter = L',') {
        ImportInput input{mDirectory.Path("import.txt"), format, delimiter};
        WriteBytes(input.FileName, bytes);
        return input;
    }

    // Imports without questions, and leaves the outcome in mResult.
    int Import(const std::string& text) { return Run(TextFile(text)); }
    int ImportTable(const std::string& text) {
        return Run(TextFile(text, ImportFormat::kDelimited));
    }

    // The counters, or the message and its line.
    std::string Outcome() const {
        if (mResult->Status == ImportStatus::kFinished) {
            return std::to_string(mResult->RecordsInserted) + " inserted, " +
                   std::to_string(mResult->RecordsMerged) + " merged, " +
                   std::to_string(mResult->DuplicatesIgnored) + " ignored";
        }
        return mResult->Message.utf8_string() + " @" + std::to_string(mResult->LineNumber);
    }

    int Run(const ImportInput& input) {
        mResult = std::make_unique<ImportResult>();
        mTouched.clear();
        return ImportCards(input, mDatabase, *mResult, false, &mTouched);
    }

    // The files of the store's cards, as "name=bytes".
    Strings MediaFiles() const {
        Strings files;
        std::error_code none;
        for (const auto& entry :
             std::filesystem::directory_iterator(ToPath(StorePath() + ".media"), none)) {
            files.push_back(entry.path().filename().string() + "=" +
                            ReadBytes(FromPath(entry.path())));
        }
        std::sort(files.begin(), files.end());
        return files;
    }

    std::unique_ptr<ImportResult> mResult;
    std::set<int32_t> mTouched;
};
