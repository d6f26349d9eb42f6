#include "formats/decks/AnkiCollection.h"

#include <wx/intl.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

#include "base/Unicode.h"

// Schema 11 and 14 keep the kinds of notes and the decks as JSON in the one row of the table "col";
// later ones have tables for them, with settings as messages of "protocol buffers".

namespace {

using nlohmann::json;

// The least schema that has tables in place of texts in JSON.
constexpr int64_t kFirstWithTables = 15;

bool IsKnownSchema(int64_t schema) {
    return schema == 11 || (schema >= 14 && schema <= 18);
}

// Reading JSON of other programs, whose values may be of any type.

wxString TextOf(const json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && found->is_string()
               ? FromUtf8(found->get_ref<const std::string&>())
               : wxString();
}

int64_t NumberOf(const json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    if (found == object.end()) {
        return 0;
    }
    if (found->is_boolean()) {
        return found->get<bool>() ? 1 : 0;
    }
    return found->is_number() ? found->get<int64_t>() : 0;
}

// The objects of a list in the order of their "ord", which need not be that of the list.
std::vector<const json*> OrderedList(const json& object, const char* key) {
    std::vector<const json*> list;
    const auto found = object.is_object() ? object.find(key) : object.end();
    if (found != object.end() && found->is_array()) {
        for (const json& entry : *found) {
            list.push_back(&entry);
        }
    }
    std::stable_sort(list.begin(), list.end(), [](const json* one, const json* other) {
        return NumberOf(*one, "ord") < NumberOf(*other, "ord");
    });
    return list;
}

json ParseJson(const std::string& text) {
    return json::parse(text, nullptr, false);
}

// Reads a message of "protocol buffers" as far as needed: numbered fields, each a number or a text.
// A field that is cut off or of another kind ends the reading.
class Message {
  public:
    explicit Message(std::string_view bytes) : mRest(bytes) {}

    // Returns the last text, or number, of that field; empty or 0 when there is none.
    std::string_view Text(uint64_t field) const {
        std::string_view found;
        Visit([&](uint64_t number, uint64_t, std::string_view text) {
            found = number == field ? text : found;
        });
        return found;
    }
    uint64_t Number(uint64_t field) const {
        uint64_t found = 0;
        Visit([&](uint64_t number, uint64_t value, std::string_view) {
            found = number == field ? value : found;
        });
        return found;
    }

  private:
    static bool ReadVarint(std::string_view& rest, uint64_t& value) {
        value = 0;
        for (unsigned shift = 0; shift < 64 && !rest.empty(); shift += 7) {
            const auto byte = static_cast<uint8_t>(rest.front());
            rest.remove_prefix(1);
            value |= static_cast<uint64_t>(byte & 0x7FU) << shift;
            if (byte < 0x80) {
                return true;
            }
        }
        return false;
    }

    template <class Visitor>
    void Visit(Visitor visit) const {
        std::string_view rest = mRest;
        uint64_t key = 0;
        uint64_t value = 0;
        while (ReadVarint(rest, key)) {
            const uint64_t kind = key & 7U;
            size_t length = 0;
            value = 0;
            if (kind == 0 || kind == 2) {
                if (!ReadVarint(rest, value)) {
                    return;
                }
                length = kind == 2 ? static_cast<size_t>(value) : 0;
            } else if (kind == 1 || kind == 5) {
                length = kind == 1 ? 8 : 4;
            } else {
                return;
            }
            if (length > rest.size()) {
                return;
            }
            visit(key >> 3U, value, rest.substr(0, length));
            rest.remove_prefix(length);
        }
    }

    std::string_view mRest;
};

const std::vector<const char*> kCardColumns = {"rowid", "id",  "nid",    "did",   "odid",
                                               "ord",   "mod", "type",   "queue", "due",
                                               "odue",  "ivl", "factor", "data"};

AnkiCard CardOf(const ForeignDatabase::Row& row) {
    AnkiCard card;
    int64_t* const fields[] = {&card.RowId,    nullptr,      &card.NoteId,  &card.Deck,
                               &card.HomeDeck, &card.Number, &card.Changed, &card.Type,
                               &card.Queue,    &card.Due,    &card.HomeDue, &card.Interval,
                               &card.Ease};
    int column = 0;
    for (int64_t* const field : fields) {
        if (field != nullptr) {
            *field = row.Int64(column);
        }
        ++column;
    }
    const std::string data = row.Bytes(column);
    if (!data.empty()) {
        const int64_t time = NumberOf(ParseJson(data), "lrt");
        card.LastReview = time > 0 ? time : -1;
    }
    return card;
}

}  // namespace

bool AnkiCollection::Fail(const wxString& message) {
    mFailure = message;
    return false;
}

bool AnkiCollection::FailDamaged() {
    return Fail(wxString::Format(_("The deck is damaged.  (%s)"), mDatabase.GetError()));
}

bool AnkiCollection::HasTables(std::initializer_list<const char*> tables) {
    const bool hasAll = std::all_of(tables.begin(), tables.end(), [this](const char* table) {
        return mDatabase.HasTable(table);
    });
    return hasAll || Fail(_("The deck is damaged.  A table is missing."));
}

bool AnkiCollection::Open(const wxString& path, bool withAnswers,
                          const std::atomic<bool>* isCancelled) {
    if (mDatabase.Open(path, isCancelled) < 0) {
        return FailDamaged();
    }
    Places places;
    return HasTables({"col", "notes", "cards"}) && ReadDescription() && ReadCardRows(places) &&
           ReadNoteRows(places) && (!withAnswers || ReadAnswers());
}

// Reads the schema's number, and then the kinds of notes and the decks from where it keeps them.
bool AnkiCollection::ReadDescription() {
    int64_t schema = 0;
    std::string types;
    std::string decks;
    const int result = mDatabase.ReadAll("col", {"ver", "crt", "models", "decks"},
                                         [&](const ForeignDatabase::Row& row) {
                                             schema = row.Int64(0);
                                             mCreated = row.Int64(1);
                                             types = row.Bytes(2);
                                             decks = row.Bytes(3);
                                             return false;
                                         });
    if (result < 0) {
        return FailDamaged();
    }
    if (!IsKnownSchema(schema)) {
        return Fail(_("The deck comes from a version of Anki that is not known here."));
    }
    if (schema >= kFirstWithTables) {
        return ReadTypeTables() && ReadDeckTable();
    }
    return (TakeTypes(types) && TakeDecks(decks)) ||
           Fail(_("The deck is damaged.  Its description is cut."));
}

bool AnkiCollection::TakeTypes(const std::string& text) {
    const json types = ParseJson(text);
    for (const auto& entry : types.items()) {
        AnkiNoteType type;
        type.Name = TextOf(entry.value(), "name");
        type.IsCloze = NumberOf(entry.value(), "type") == 1;
        for (const json* const field : OrderedList(entry.value(), "flds")) {
            type.Fields.push_back(TextOf(*field, "name"));
        }
        for (const json* const source : OrderedList(entry.value(), "tmpls")) {
            type.Templates.push_back({TextOf(*source, "qfmt"), TextOf(*source, "afmt")});
        }
        long long id = 0;
        if (FromUtf8(entry.key()).ToLongLong(&id)) {
            mTypes.emplace(id, std::move(type));
        }
    }
    return !types.is_discarded();
}

bool AnkiCollection::TakeDecks(const std::string& text) {
    const json decks = ParseJson(text);
    for (const auto& entry : decks.items()) {
        long long id = 0;
        if (FromUtf8(entry.key()).ToLongLong(&id)) {
            mDecks[id] = TextOf(entry.value(), "name");
        }
    }
    return !decks.is_discarded();
}

bool AnkiCollection::ReadTypeTables() {
    if (!HasTables({"notetypes", "fields", "templates"})) {
        return false;
    }
    std::map<int64_t, std::map<int64_t, wxString>> fields;
    std::map<int64_t, std::map<int64_t, AnkiTemplateText>> templates;
    const int results[] = {
        mDatabase.ReadAll("notetypes", {"id", "name", "config"},
                          [this](const ForeignDatabase::Row& row) {
                              AnkiNoteType& type = mTypes[row.Int64(0)];
                              type.Name = row.Text(1);
                              type.IsCloze = Message(row.Bytes(2)).Number(1) == 1;
                              return true;
                          }),
        mDatabase.ReadAll("fields", {"ntid", "ord", "name"},
                          [&fields](const ForeignDatabase::Row& row) {
                              fields[row.Int64(0)][row.Int64(1)] = row.Text(2);
                              return true;
                          }),
        mDatabase.ReadAll(
            "templates", {"ntid", "ord", "config"}, [&templates](const ForeignDatabase::Row& row) {
                const std::string bytes = row.Bytes(2);
                const Message config(bytes);
                templates[row.Int64(0)][row.Int64(1)] = {FromUtf8(std::string(config.Text(1))),
                                                         FromUtf8(std::string(config.Text(2)))};
                return true;
            })};
    if (*std::min_element(std::begin(results), std::end(results)) < 0) {
        return FailDamaged();
    }
    for (auto& [id, type] : mTypes) {
        for (const auto& [number, name] : fields[id]) {
            type.Fields.push_back(name);
        }
        for (const auto& [number, source] : templates[id]) {
            type.Templates.push_back(source);
        }
    }
    return true;
}

bool AnkiCollection::ReadDeckTable() {
    if (!HasTables({"decks"})) {
        return false;
    }
    const int result =
        mDatabase.ReadAll("decks", {"id", "name"}, [this](const ForeignDatabase::Row& row) {
            wxString name = row.Text(1);
            name.Replace(L"\x1F", "::");
            mDecks[row.Int64(0)] = name;
            return true;
        });
    return result < 0 ? FailDamaged() : true;
}

// Reads which cards each note has, and the least place of a new card of each.
bool AnkiCollection::ReadCardRows(Places& places) {
    const int result =
        mDatabase.ReadAll("cards", {"rowid", "nid", "type", "due", "odid", "odue"},
                          [&](const ForeignDatabase::Row& row) {
                              const int64_t noteId = row.Int64(1);
                              mCardRows.push_back({noteId, row.Int64(0)});
                              if (row.Int64(2) == 0) {
                                  const bool isAway = row.Int64(4) != 0 && row.Int64(5) != 0;
                                  const int64_t due = isAway ? row.Int64(5) : row.Int64(3);
                                  const auto found = places.emplace(noteId, due).first;
                                  found->second = std::min(found->second, due);
                              }
                              return true;
                          });
    std::sort(mCardRows.begin(), mCardRows.end(), [](const RowOfNote& one, const RowOfNote& other) {
        return std::pair(one.NoteId, one.RowId) < std::pair(other.NoteId, other.RowId);
    });
    return result < 0 ? FailDamaged() : true;
}

bool AnkiCollection::ReadNoteRows(const Places& places) {
    struct Placed {
        int64_t Place;
        RowOfNote Row;
    };
    std::vector<Placed> notes;
    const int result =
        mDatabase.ReadAll("notes", {"rowid", "id"}, [&](const ForeignDatabase::Row& row) {
            const int64_t id = row.Int64(1);
            const auto place = places.find(id);
            // Notes without a new card come after those that have one.
            notes.push_back(
                {place == places.end() ? std::numeric_limits<int64_t>::max() : place->second,
                 {id, row.Int64(0)}});
            return true;
        });
    std::sort(notes.begin(), notes.end(), [](const Placed& one, const Placed& other) {
        return std::pair(one.Place, one.Row.NoteId) < std::pair(other.Place, other.Row.NoteId);
    });
    mOrder.reserve(notes.size());
    for (const Placed& note : notes) {
        mOrder.push_back(note.Row);
    }
    return result < 0 ? FailDamaged() : true;
}

// Reads the last real answer of each card; changes by hand and answers out of turn, which left the
// schedule alone, do not count.
bool AnkiCollection::ReadAnswers() {
    if (!mDatabase.HasTable("revlog")) {
        return true;
    }
    const int result = mDatabase.ReadAll(
        "revlog", {"id", "cid", "ease", "type", "factor"}, [this](const ForeignDatabase::Row& row) {
            const int64_t ease = row.Int64(2);
            const bool isCramming = row.Int64(3) == 3 && row.Int64(4) == 0;
            ++mReviews;
            if (ease >= 1 && ease <= 4 && !isCramming) {
                Answer& last = mAnswers[row.Int64(1)];
                const int64_t time = row.Int64(0) / 1000;
                if (time > last.Time) {
                    last = {time, ease};
                }
            }
            return true;
        });
    return result < 0 ? FailDamaged() : true;
}

wxString AnkiCollection::FindDeckName(int64_t deck) const {
    const auto found = mDecks.find(deck);
    return found == mDecks.end() ? wxString() : found->second;
}

bool AnkiCollection::ReadNote(size_t place, AnkiNote& note, std::vector<AnkiCard>& cards) {
    const RowOfNote& row = mOrder[place];
    note = AnkiNote();
    note.Id = row.NoteId;
    cards.clear();
    const int result = mDatabase.ReadRow("notes", {"guid", "mid", "tags", "flds"}, row.RowId,
                                         [&note](const ForeignDatabase::Row& columns) {
                                             note.Guid = columns.Bytes(0);
                                             note.TypeId = columns.Int64(1);
                                             note.Tags = columns.Text(2);
                                             note.Fields = columns.Text(3);
                                             return false;
                                         });
    return result < 0 ? FailDamaged() : ReadCardsOf(row.NoteId, cards);
}

bool AnkiCollection::ReadCardsOf(int64_t noteId, std::vector<AnkiCard>& cards) {
    auto row = std::lower_bound(mCardRows.begin(), mCardRows.end(), noteId,
                                [](const RowOfNote& card, int64_t id) { return card.NoteId < id; });
    for (; row != mCardRows.end() && row->NoteId == noteId; ++row) {
        const int result = mDatabase.ReadRow(
            "cards", kCardColumns, row->RowId, [&](const ForeignDatabase::Row& columns) {
                AnkiCard card = CardOf(columns);
                const auto answer = mAnswers.find(columns.Int64(1));
                if (answer != mAnswers.end()) {
                    card.LastReview = answer->second.Time;
                    card.LastAnswer = answer->second.Ease;
                }
                cards.push_back(card);
                return false;
            });
        if (result < 0) {
            return FailDamaged();
        }
    }
    const auto isBefore = [](const AnkiCard& one, const AnkiCard& other) {
        return one.Number < other.Number;
    };
    if (!std::is_sorted(cards.begin(), cards.end(), isBefore)) {
        std::stable_sort(cards.begin(), cards.end(), isBefore);
    }
    return true;
}
