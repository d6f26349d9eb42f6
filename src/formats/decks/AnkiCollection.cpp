#include "formats/decks/AnkiCollection.h"

#include <wx/intl.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
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

// Reading Reading Reading JSON of other programs, whose values may be of any type.

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
    if (found->is_number_float()) {
        // Beyond the range of whole numbers nothing is meant.
        constexpr double kGreatest = 9e15;
        const double number = found->get<double>();
        return std::abs(number) < kGreatest ? static_cast<int64_t>(number) : 0;
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

// Returns the bound that a text in JSON passes, or null. The parser takes a hundred bytes for each
// value of two, so they are counted before it sees them.
const DeckBound* FindPassedBound(const std::string& text) {
    int64_t parts = 1;
    int64_t depth = 0;
    bool isText = false;
    for (size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (isText) {
            at += byte == '\\' ? 1 : 0;
            isText = byte != '"';
            continue;
        }
        isText = byte == '"';
        const bool isOpening = byte == '[' || byte == '{';
        depth += isOpening ? 1 : byte == ']' || byte == '}' ? -1 : 0;
        parts += isOpening || byte == ',' ? 1 : 0;
        if (depth > kDeepestPart.Most) {
            return &kDeepestPart;
        }
        if (parts > kMostParts.Most) {
            return &kMostParts;
        }
    }
    return nullptr;
}

json ParseJson(const std::string& text) {
    return FindPassedBound(text) == nullptr ? json::parse(text, nullptr, false)
                                            : json(json::value_t::discarded);
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

// Counts a description that stands in tables.
class DescriptionSize {
  public:
    // Takes in a row with so many bytes of text. Returns false beyond a bound.
    bool Take(size_t bytes) {
        ++mRows;
        mBytes += static_cast<int64_t>(bytes);
        return FindPassedBound() == nullptr;
    }
    const DeckBound* FindPassedBound() const {
        return mBytes > kMostDescription.Most ? &kMostDescription
               : mRows > kMostParts.Most      ? &kMostParts
                                              : nullptr;
    }

  private:
    int64_t mRows = 0;
    int64_t mBytes = 0;
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
    if (data.find("\"lrt\"") != std::string::npos) {
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

bool AnkiCollection::IsGood(int result) {
    if (mRoom.GetPassed() != nullptr) {
        return FailBound(*mRoom.GetPassed());
    }
    return result < 0 ? FailDamaged() : true;
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
        return ReadTypeTables() && ReadDeckTable() && CheckTypes();
    }
    if (!CheckDescription(types, decks)) {
        return false;
    }
    return TakeTypes(types) && TakeDecks(decks)
               ? CheckTypes()
               : Fail(_("The deck is damaged.  Its description is cut."));
}

bool AnkiCollection::CheckDescription(const std::string& types, const std::string& decks) {
    if (types.size() + decks.size() > static_cast<size_t>(kMostDescription.Most)) {
        return FailBound(kMostDescription);
    }
    for (const std::string* const text : {&types, &decks}) {
        const DeckBound* const passed = FindPassedBound(*text);
        if (passed != nullptr) {
            return FailBound(*passed);
        }
    }
    return true;
}

bool AnkiCollection::CheckTypes() {
    if (mTypes.size() > static_cast<size_t>(kMostNoteTypes.Most)) {
        return FailBound(kMostNoteTypes);
    }
    for (const auto& [id, type] : mTypes) {
        if (type.Fields.size() > static_cast<size_t>(kMostFields.Most)) {
            return FailBound(kMostFields);
        }
        if (type.Templates.size() > static_cast<size_t>(kMostTemplates.Most)) {
            return FailBound(kMostTemplates);
        }
    }
    return true;
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
    DescriptionSize size;
    const int results[] = {
        mDatabase.ReadAll("notetypes", {"id", "name", "config"},
                          [&](const ForeignDatabase::Row& row) {
                              const std::string name = row.Bytes(1);
                              const std::string config = row.Bytes(2);
                              AnkiNoteType& type = mTypes[row.Int64(0)];
                              type.Name = FromUtf8(name);
                              type.IsCloze = Message(config).Number(1) == 1;
                              return size.Take(name.size() + config.size());
                          }),
        mDatabase.ReadAll("fields", {"ntid", "ord", "name"},
                          [&](const ForeignDatabase::Row& row) {
                              const std::string name = row.Bytes(2);
                              fields[row.Int64(0)][row.Int64(1)] = FromUtf8(name);
                              return size.Take(name.size());
                          }),
        mDatabase.ReadAll(
            "templates", {"ntid", "ord", "config"}, [&](const ForeignDatabase::Row& row) {
                const std::string bytes = row.Bytes(2);
                if (!size.Take(bytes.size())) {
                    return false;
                }
                const Message config(bytes);
                templates[row.Int64(0)][row.Int64(1)] = {FromUtf8(std::string(config.Text(1))),
                                                         FromUtf8(std::string(config.Text(2)))};
                return true;
            })};
    if (size.FindPassedBound() != nullptr) {
        return FailBound(*size.FindPassedBound());
    }
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
    DescriptionSize size;
    const int result =
        mDatabase.ReadAll("decks", {"id", "name"}, [&](const ForeignDatabase::Row& row) {
            const std::string bytes = row.Bytes(1);
            wxString name = FromUtf8(bytes);
            name.Replace(L"\x1F", "::");
            mDecks[row.Int64(0)] = name;
            return size.Take(bytes.size());
        });
    if (size.FindPassedBound() != nullptr) {
        return FailBound(*size.FindPassedBound());
    }
    return result < 0 ? FailDamaged() : true;
}

// Reads which cards each note has, and the least place of a new card of each.
bool AnkiCollection::ReadCardRows(Places& places) {
    int64_t rows = 0;
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
                              return mRoom.TakeRow(rows);
                          });
    std::sort(mCardRows.begin(), mCardRows.end(), [](const RowOfNote& one, const RowOfNote& other) {
        return std::pair(one.NoteId, one.RowId) < std::pair(other.NoteId, other.RowId);
    });
    return IsGood(result);
}

bool AnkiCollection::ReadNoteRows(const Places& places) {
    struct Placed {
        int64_t Place;
        RowOfNote Row;
    };
    std::vector<Placed> notes;
    // The notes by their guids, of which a number is enough.
    std::vector<std::pair<size_t, int64_t>> guids;
    int64_t rows = 0;
    const int result =
        mDatabase.ReadAll("notes", {"rowid", "id", "guid"}, [&](const ForeignDatabase::Row& row) {
            const int64_t id = row.Int64(1);
            const std::string guid = row.Bytes(2);
            guids.emplace_back(std::hash<std::string>()(guid), id);
            if (guid.empty()) {
                mTaken.insert(id);
            }
            const auto place = places.find(id);
            // Notes without a new card come after those that have one.
            notes.push_back(
                {place == places.end() ? std::numeric_limits<int64_t>::max() : place->second,
                 {id, row.Int64(0)}});
            return mRoom.TakeRow(rows) && mRoom.TakeText(guid.size());
        });
    std::sort(guids.begin(), guids.end());
    for (size_t i = 1; i < guids.size(); ++i) {
        if (guids[i].first == guids[i - 1].first && guids[i].second != guids[i - 1].second) {
            mTaken.insert(guids[i].second);
        }
    }
    std::sort(notes.begin(), notes.end(), [](const Placed& one, const Placed& other) {
        return std::pair(one.Place, one.Row.NoteId) < std::pair(other.Place, other.Row.NoteId);
    });
    mOrder.reserve(notes.size());
    for (const Placed& note : notes) {
        mOrder.push_back(note.Row);
    }
    return IsGood(result);
}

// Reads the last real answer of each card; changes by hand and answers out of turn, which left the
// schedule alone, do not count.
bool AnkiCollection::ReadAnswers() {
    if (!mDatabase.HasTable("revlog")) {
        return true;
    }
    int64_t rows = 0;
    const int result = mDatabase.ReadAll(
        "revlog", {"id", "cid", "ease", "type", "factor"}, [&](const ForeignDatabase::Row& row) {
            const int64_t ease = row.Int64(2);
            const bool isCramming = row.Int64(3) == 3 && row.Int64(4) == 0;
            ++mReviews;
            if (ease >= 1 && ease <= 4 && !isCramming) {
                const auto [answer, isNew] = mAnswers.try_emplace(row.Int64(1));
                const int64_t time = row.Int64(0) / 1000;
                if (time > answer->second.Time) {
                    answer->second = {time, ease};
                }
                return !isNew || mRoom.TakeRow(rows);
            }
            return true;
        });
    return IsGood(result);
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
                                         [&](const ForeignDatabase::Row& columns) {
                                             const std::string tags = columns.Bytes(2);
                                             const std::string fields = columns.Bytes(3);
                                             if (!mRoom.TakeText(tags.size() + fields.size())) {
                                                 return false;
                                             }
                                             note.Guid = columns.Bytes(0);
                                             note.TypeId = columns.Int64(1);
                                             note.Tags = FromUtf8(tags);
                                             note.Fields = FromUtf8(fields);
                                             return false;
                                         });
    note.IsGuidTaken = mTaken.count(row.NoteId) != 0;
    return IsGood(result) && ReadCardsOf(row.NoteId, cards);
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
