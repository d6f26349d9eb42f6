#pragma once

#include <wx/filename.h>
#include <zstd.h>

#include "exchange/ImportFixture.h"
#include "formats/decks/Deck.h"
#include "formats/decks/DeckWriter.h"

// A database of Mnemosyne with the fact 1.
constexpr char kMnemosyneTables[] =
    "CREATE TABLE facts(_id INTEGER PRIMARY KEY, id);INSERT INTO facts VALUES(1,'g');"
    "CREATE TABLE data_for_fact(_fact_id, key, value);"
    "CREATE TABLE tags(_id INTEGER PRIMARY KEY, id, name);"
    "CREATE TABLE tags_for_card(_card_id, _tag_id);"
    "CREATE TABLE cards(_id INTEGER PRIMARY KEY, id, card_type_id, _fact_id, fact_view_id,"
    " grade, next_rep, last_rep, easiness, active);";

// Whole decks, written as their programs would write them, on their way into a store.
struct DeckFixture : ImportFixture {
    // The bytes of a database that a script makes.
    std::string MakeDatabase(const std::string& script) {
        const wxString path = mDirectory.Path("made.db");
        EXPECT_EQ(WriteDatabase(path, script), "");
        return ReadBytes(path);
    }
    std::string MakePackage(const Members& members) {
        const wxString path = mDirectory.Path("made.zip");
        WritePackage(path, members);
        return ReadBytes(path);
    }
    static std::string Compress(const std::string& bytes) {
        std::string compressed(ZSTD_compressBound(bytes.size()), '\0');
        compressed.resize(
            ZSTD_compress(compressed.data(), compressed.size(), bytes.data(), bytes.size(), 3));
        return compressed;
    }

    // Imports a file of these bytes and returns the outcome.
    std::string ImportDeck(const std::string& bytes, const DeckOptions& options = {},
                           const DeckFileOptions& fileOptions = {}) {
        ImportInput input;
        input.FileName = mDirectory.Path("My deck.bin");
        WriteBytes(input.FileName, bytes);
        if (!DeckFile::IsDeck(input.FileName)) {
            return "no deck";
        }
        input.Format = ImportFormat::kDeck;
        wxString message;
        const std::shared_ptr<DeckFile> file = DeckFile::Open(input.FileName, message, fileOptions);
        if (file == nullptr) {
            return message.utf8_string();
        }
        input.MakeDeckReader = [file, options](Database& database, const std::atomic<bool>&,
                                               wxString& why) {
            return MakeDeckReader(file, options, database, why);
        };
        input.Media = file->GetMedia();
        Run(input);
        return Outcome();
    }
    std::string ImportRows(const std::string& rows) {
        return ImportDeck(MakePackage({{"collection.anki2", MakeDatabase(Schema11(rows))}}));
    }
    Strings Cards() {
        return Query(
            "SELECT Front, Back, Notes, ForwardX, ReverseX, Name FROM Cards JOIN Categories "
            "ON CategoryId = Categories.Id ORDER BY IntroductionOrder");
    }
};
