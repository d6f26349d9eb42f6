#include "decks/AnkiDeck.h"

#include <wx/intl.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <deque>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "decks/AnkiTemplate.h"
#include "exchange/HtmlText.h"
#include "store/ForeignDatabase.h"

namespace {

using nlohmann::json;

constexpr int64_t kDay = 86400;
// Keeps sums far from their ends; more than all the days of the years up to 9999.
constexpr int64_t kGreatestDays = 3000000;
// A number of days is never so large, nor a moment since 2001 so small.
constexpr int64_t kLeastMoment = 1000000000;
constexpr size_t kNoField = static_cast<size_t>(-1);

// The least schema that has tables in place of texts in JSON.
constexpr int64_t kFirstWithTables = 15;

bool IsKnownSchema(int64_t schema) {
    return schema == 11 || (schema >= 14 && schema <= 18);
}

struct Template {
    wxString Question;
    wxString Answer;
};

struct NoteType {
    wxString Name;
    bool IsCloze = false;
    std::vector<wxString> Fields;
    std::vector<Template> Templates;
};

using NoteTypes = std::map<int64_t, NoteType>;

struct DeckName {
    wxString Name = _("Default");
    bool IsFiltered = false;
};

// JSON of other programs, whose values may be of any type.

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

// Reads a message of "protocol buffers", as far as they are needed: numbered fields, each a number
// or a text. What is cut or of another kind ends the reading.
class Message {
  public:
    explicit Message(std::string_view bytes) : mRest(bytes) {}

    // The last text, or number, of that field; empty or 0 when there is none.
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
    bool Has(uint64_t field) const {
        bool has = false;
        Visit([&](uint64_t number, uint64_t, std::string_view) { has = has || number == field; });
        return has;
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

// Which templates of a type are the two directions of one card.
struct Pair {
    size_t Forward = 0;
    size_t Reverse = kNoField;
    // Templates that ask the same as the forward one.
    std::vector<size_t> Same;
    std::vector<ShownField> Front;
    std::vector<ShownField> Back;
    // A field that both answers show and no question asks.
    std::vector<size_t> Second;
};

struct TypePlan {
    std::vector<Pair> Pairs;
    // What somebody has chosen for the fields; empty for none.
    std::vector<FieldRole> Chosen;
    size_t ClozeField = 0;
    // Some template shows the field with its readings.
    std::set<size_t> WithReadings;
    // Fields that only switch others on, such as one that asks for a reverse card.
    std::set<size_t> Switches;
    int64_t Hints = 0;
};

std::set<size_t> FieldSet(const std::vector<ShownField>& shown) {
    std::set<size_t> fields;
    for (const ShownField& field : shown) {
        fields.insert(field.Field);
    }
    return fields;
}

bool Meet(const std::set<size_t>& one, const std::set<size_t>& other) {
    return std::any_of(one.begin(), one.end(),
                       [&other](size_t field) { return other.count(field) != 0; });
}

// Without what is hidden at first or to be typed, in a question; each field once.
std::vector<ShownField> Visible(const std::vector<ShownField>& shown, bool isQuestion) {
    std::vector<ShownField> visible;
    std::set<size_t> seen;
    for (const ShownField& field : shown) {
        if (!field.IsHint && !(isQuestion && field.IsTyped) && seen.insert(field.Field).second) {
            visible.push_back(field);
        }
    }
    return visible;
}

// Finds out how the templates of a type belong together. The forward direction is a template that
// asks with its own fields; its mirror asks with what that answers, and answers with what it asks.
class Planner {
  public:
    explicit Planner(const NoteType& type) : mType(type) {}

    TypePlan Make() {
        for (const Template& source : mType.Templates) {
            const auto question = ParseTemplate(source.Question, mType.Fields);
            const auto answer = ParseTemplate(source.Answer, mType.Fields);
            NoteFilters(question);
            NoteFilters(answer);
            NoteSwitches(question);
            NoteSwitches(answer);
            mQuestions.push_back(Visible(question, true));
            mAnswers.push_back(Visible(answer, false));
            if (mQuestions.back().empty() && !mType.Fields.empty()) {
                mQuestions.back().push_back(ShownField());
            }
        }
        for (const size_t field : mShown) {
            mPlan.Switches.erase(field);
        }
        std::set<size_t> taken;
        for (size_t i = 0; i < mQuestions.size(); ++i) {
            if (taken.insert(i).second) {
                MakePair(i, taken);
            }
        }
        return std::move(mPlan);
    }

  private:
    void NoteFilters(const std::vector<ShownField>& shown) {
        using Filter = ShownField::Filter;
        for (const ShownField& field : shown) {
            if (field.How == Filter::kCloze) {
                mPlan.ClozeField = field.Field;
            } else if (field.How != Filter::kNone) {
                mPlan.WithReadings.insert(field.Field);
            }
            mPlan.Hints += field.IsHint ? 1 : 0;
        }
    }

    void NoteSwitches(const std::vector<ShownField>& shown) {
        for (const ShownField& field : shown) {
            mShown.insert(field.Field);
            for (const ShownField::Condition& condition : field.Conditions) {
                mPlan.Switches.insert(condition.Field);
            }
        }
    }

    std::vector<ShownField> BackOf(size_t forward) const {
        const std::set<size_t> asked = FieldSet(mQuestions[forward]);
        std::vector<ShownField> back;
        for (const ShownField& field : mAnswers[forward]) {
            if (asked.count(field.Field) == 0) {
                back.push_back(field);
            }
        }
        if (back.empty() && mType.Fields.size() > 1) {
            ShownField second;
            second.Field = asked.count(1) == 0 ? 1 : 0;
            back.push_back(second);
        }
        return back;
    }

    bool IsMirror(const Pair& pair, size_t candidate) const {
        const std::set<size_t> front = FieldSet(pair.Front);
        const std::set<size_t> asked = FieldSet(mQuestions[candidate]);
        return !Meet(front, asked) && Meet(asked, FieldSet(pair.Back)) &&
               Meet(FieldSet(mAnswers[candidate]), front);
    }

    void MakePair(size_t forward, std::set<size_t>& taken) {
        Pair pair;
        pair.Forward = forward;
        pair.Front = mQuestions[forward];
        pair.Back = BackOf(forward);
        const std::set<size_t> front = FieldSet(pair.Front);
        for (size_t i = forward + 1; i < mQuestions.size(); ++i) {
            if (taken.count(i) != 0) {
                continue;
            }
            if (FieldSet(mQuestions[i]) == front) {
                pair.Same.push_back(i);
                taken.insert(i);
            } else if (pair.Reverse == kNoField && IsMirror(pair, i)) {
                pair.Reverse = i;
                taken.insert(i);
            }
        }
        if (pair.Reverse != kNoField) {
            pair.Back = mQuestions[pair.Reverse];
            FindSecond(pair);
        }
        mPlan.Pairs.push_back(std::move(pair));
    }

    void FindSecond(Pair& pair) const {
        const std::set<size_t> front = FieldSet(pair.Front);
        const std::set<size_t> back = FieldSet(pair.Back);
        const std::set<size_t> other = FieldSet(mAnswers[pair.Reverse]);
        for (const size_t field : FieldSet(mAnswers[pair.Forward])) {
            if (other.count(field) != 0 && front.count(field) == 0 && back.count(field) == 0) {
                pair.Second.push_back(field);
            }
        }
    }

    const NoteType& mType;
    std::vector<std::vector<ShownField>> mQuestions;
    std::vector<std::vector<ShownField>> mAnswers;
    std::set<size_t> mShown;
    TypePlan mPlan;
};

// Han, kana and Hangul, to which a reading belongs rather than to a translation.
bool HasEastAsian(const wxString& text) {
    const std::wstring_view view(text.wc_str(), text.length());
    return std::any_of(view.begin(), view.end(), [](wchar_t character) {
        const auto code = static_cast<uint32_t>(character);
        return (code >= 0x3040 && code < 0xA000) || (code >= 0xAC00 && code < 0xD7B0) ||
               (code >= 0x20000 && code < 0x30000);
    });
}

wxString IdText(int64_t id) {
    return wxString::Format("%lld", static_cast<long long>(id));
}

void AddLine(wxString& text, const wxString& line) {
    if (!line.empty()) {
        text += (text.empty() ? "" : "\n") + line;
    }
}

wxString OneLine(wxString text) {
    text.Replace("\n", " ");
    return text;
}

// A note with its fields turned into text, each once.
class Note {
  public:
    Note(const NoteType& type, const TypePlan& plan, const wxString& fields, HtmlLosses& losses) {
        const std::wstring_view whole(fields.wc_str(), fields.length());
        size_t at = 0;
        while (at <= whole.size()) {
            const size_t end = std::min(whole.find(L'\x1F', at), whole.size());
            mSources.emplace_back(whole.data() + at, end - at);
            at = end + 1;
        }
        mSources.resize(std::max(mSources.size(), type.Fields.size()));
        for (size_t i = 0; i < mSources.size(); ++i) {
            HtmlText text = ReadHtml(mSources[i], false, losses);
            if (plan.WithReadings.count(i) != 0) {
                const FuriganaText split = ReadFurigana(text.Text);
                text.Text = split.Base;
                text.Reading = split.Reading.empty() ? text.Reading : split.Reading;
            }
            mTexts.push_back(std::move(text));
        }
    }

    size_t Count() const { return mTexts.size(); }
    const wxString& Source(size_t field) const { return mSources[field]; }
    const wxString& Text(size_t field) const { return mTexts[field].Text; }
    const wxString& Reading(size_t field) const { return mTexts[field].Reading; }

    bool IsShown(const ShownField& field) const {
        return std::all_of(field.Conditions.begin(), field.Conditions.end(),
                           [this](const ShownField::Condition& condition) {
                               return IsEmptyHtml(mSources[condition.Field]) == condition.IsEmpty;
                           });
    }

  private:
    std::vector<wxString> mSources;
    std::vector<HtmlText> mTexts;
};

class AnkiDeck : public Deck {
  public:
    explicit AnkiDeck(DeckOptions options) : mOptions(std::move(options)) {}

    bool Open(const wxString& path);

    std::vector<DeckNoteType> GetNoteTypes() const override;
    bool ReadCard(DeckCard& card) override;
    float GetProgress() const override {
        return mOrder.empty() ? 1.0f
                              : static_cast<float>(mNext) / static_cast<float>(mOrder.size());
    }

  private:
    // A row of a table and the note that it belongs to.
    struct RowOfNote {
        int64_t NoteId;
        int64_t RowId;
    };
    struct Answer {
        int64_t Time = -1;
        int64_t Ease = 0;
    };

    bool FailDamaged() {
        return Fail(wxString::Format(_("The deck is damaged.  (%s)"), mDatabase.GetError()));
    }
    bool ReadCollection(int64_t& schema, json& types, json& decks);
    void TakeTypes(const json& types);
    void TakeDecks(const json& decks);
    bool ReadTypeTables();
    bool ReadDeckTable();
    bool ReadCardRows(std::unordered_map<int64_t, int64_t>& places);
    bool ReadNoteRows(const std::unordered_map<int64_t, int64_t>& places);
    bool ReadReviews();

    bool ReadNote(const RowOfNote& row);
    bool ReadCardsOf(int64_t noteId, std::vector<AnkiCard>& cards);
    void MakeCards(const NoteType& type, const TypePlan& plan, const Note& note,
                   std::vector<AnkiCard> cards, const wxString& id, const wxString& tags);
    void MakePairCard(const NoteType& type, const TypePlan& plan, size_t which, const Note& note,
                      const std::vector<AnkiCard>& cards, const wxString& id, const wxString& tags);
    void MakeClozeCards(const NoteType& type, const TypePlan& plan, const Note& note,
                        const std::vector<AnkiCard>& cards, const wxString& id,
                        const wxString& tags);
    void FillSides(const TypePlan& plan, size_t which, const Note& note, DeckCard& card,
                   std::set<size_t>& used) const;
    void FillChosen(const std::vector<FieldRole>& roles, const Note& note, DeckCard& card,
                    std::set<size_t>& used) const;
    wxString MakeNotes(const NoteType& type, const Note& note, const std::set<size_t>& used,
                       const wxString& tags) const;
    void TakeSchedule(const AnkiCard& row, const CardUuid& id, CardSchedule& schedule,
                      bool& excluded);
    wxString CategoryOf(const AnkiCard& row) const;
    void Push(DeckCard&& card);

    DeckOptions mOptions;
    ForeignDatabase mDatabase;
    bool mHasReviews = false;
    int64_t mCreated = 0;
    int64_t mNow = 0;
    NoteTypes mTypes;
    std::map<int64_t, TypePlan> mPlans;
    std::map<int64_t, DeckName> mDecks;
    // Sorted by note.
    std::vector<RowOfNote> mCardRows;
    // The notes in the order in which their cards come.
    std::vector<RowOfNote> mOrder;
    std::unordered_map<int64_t, Answer> mAnswers;
    size_t mNext = 0;
    std::deque<DeckCard> mReady;
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

bool AnkiDeck::Open(const wxString& path) {
    mNow = static_cast<int64_t>(CurrentTime().GetTicks());
    if (mDatabase.Open(path) < 0) {
        return FailDamaged();
    }
    for (const char* const table : {"col", "notes", "cards"}) {
        if (!mDatabase.HasTable(table)) {
            return Fail(_("The deck is damaged.  A table is missing."));
        }
    }
    int64_t schema = 0;
    json types;
    json decks;
    if (!ReadCollection(schema, types, decks)) {
        return false;
    }
    if (!IsKnownSchema(schema)) {
        return Fail(_("The deck comes from a version of Anki that is not known here."));
    }
    if (schema >= kFirstWithTables) {
        if (!ReadTypeTables() || !ReadDeckTable()) {
            return false;
        }
    } else if (types.is_discarded() || decks.is_discarded()) {
        return Fail(_("The deck is damaged.  Its description is cut."));
    } else {
        TakeTypes(types);
        TakeDecks(decks);
    }
    for (const auto& [id, type] : mTypes) {
        TypePlan& plan = mPlans.emplace(id, Planner(type).Make()).first->second;
        const auto chosen = mOptions.Roles.find(IdText(id));
        if (chosen != mOptions.Roles.end()) {
            plan.Chosen = chosen->second;
        }
    }
    std::unordered_map<int64_t, int64_t> places;
    return ReadCardRows(places) && ReadNoteRows(places) && ReadReviews();
}

bool AnkiDeck::ReadCollection(int64_t& schema, json& types, json& decks) {
    const int result = mDatabase.ReadAll("col", {"ver", "crt", "models", "decks"},
                                         [&](const ForeignDatabase::Row& row) {
                                             schema = row.Int64(0);
                                             mCreated = row.Int64(1);
                                             types = ParseJson(row.Bytes(2));
                                             decks = ParseJson(row.Bytes(3));
                                             return false;
                                         });
    return result < 0 ? FailDamaged() : true;
}

void AnkiDeck::TakeTypes(const json& types) {
    for (const auto& entry : types.items()) {
        NoteType type;
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
}

void AnkiDeck::TakeDecks(const json& decks) {
    for (const auto& entry : decks.items()) {
        long long id = 0;
        if (FromUtf8(entry.key()).ToLongLong(&id)) {
            mDecks[id] = {TextOf(entry.value(), "name"), NumberOf(entry.value(), "dyn") != 0};
        }
    }
}

bool AnkiDeck::ReadTypeTables() {
    for (const char* const table : {"notetypes", "fields", "templates"}) {
        if (!mDatabase.HasTable(table)) {
            return Fail(_("The deck is damaged.  A table is missing."));
        }
    }
    std::map<int64_t, std::map<int64_t, wxString>> fields;
    std::map<int64_t, std::map<int64_t, Template>> templates;
    const int results[] = {
        mDatabase.ReadAll("notetypes", {"id", "name", "config"},
                          [this](const ForeignDatabase::Row& row) {
                              NoteType& type = mTypes[row.Int64(0)];
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

bool AnkiDeck::ReadDeckTable() {
    if (!mDatabase.HasTable("decks")) {
        return Fail(_("The deck is damaged.  A table is missing."));
    }
    const int result =
        mDatabase.ReadAll("decks", {"id", "name", "kind"}, [this](const ForeignDatabase::Row& row) {
            wxString name = row.Text(1);
            name.Replace(L"\x1F", "::");
            const std::string kind = row.Bytes(2);
            mDecks[row.Int64(0)] = {name, Message(kind).Has(2)};
            return true;
        });
    return result < 0 ? FailDamaged() : true;
}

// Reads which cards each note has, and the least place of a new card of each.
bool AnkiDeck::ReadCardRows(std::unordered_map<int64_t, int64_t>& places) {
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

bool AnkiDeck::ReadNoteRows(const std::unordered_map<int64_t, int64_t>& places) {
    struct Placed {
        int64_t Place;
        RowOfNote Row;
    };
    std::vector<Placed> notes;
    const int result =
        mDatabase.ReadAll("notes", {"rowid", "id"}, [&](const ForeignDatabase::Row& row) {
            const int64_t id = row.Int64(1);
            const auto place = places.find(id);
            // Notes without a new card come behind those that have one.
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

// Reads the last real answer of each card; an answer out of turn that left the schedule alone and a
// change by hand are none.
bool AnkiDeck::ReadReviews() {
    if (!mOptions.WithSchedules || !mDatabase.HasTable("revlog")) {
        return true;
    }
    const int result = mDatabase.ReadAll(
        "revlog", {"id", "cid", "ease", "type", "factor"}, [this](const ForeignDatabase::Row& row) {
            const int64_t ease = row.Int64(2);
            const bool isCramming = row.Int64(3) == 3 && row.Int64(4) == 0;
            Count(DeckLoss::kReviews);
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

std::vector<DeckNoteType> AnkiDeck::GetNoteTypes() const {
    std::vector<DeckNoteType> types;
    for (const auto& [id, type] : mTypes) {
        DeckNoteType shown;
        shown.Id = IdText(id);
        shown.Name = type.Name;
        shown.Fields = type.Fields;
        shown.IsCloze = type.IsCloze;
        shown.Roles.assign(type.Fields.size(), FieldRole::kNotes);
        const TypePlan& plan = mPlans.at(id);
        if (!plan.Pairs.empty()) {
            const Pair& pair = plan.Pairs.front();
            for (const size_t field : FieldSet(pair.Back)) {
                shown.Roles[field] = FieldRole::kBack;
            }
            for (const size_t field : FieldSet(pair.Front)) {
                shown.Roles[field] = FieldRole::kFront;
            }
            if (!pair.Second.empty()) {
                shown.Roles[pair.Second.front()] = FieldRole::kFront2;
            }
        }
        types.push_back(std::move(shown));
    }
    return types;
}

bool AnkiDeck::ReadCard(DeckCard& card) {
    while (mReady.empty()) {
        if (mNext == mOrder.size() || !mFailure.empty()) {
            return false;
        }
        if (!ReadNote(mOrder[mNext++])) {
            return false;
        }
    }
    card = std::move(mReady.front());
    mReady.pop_front();
    return true;
}

bool AnkiDeck::ReadNote(const RowOfNote& row) {
    std::vector<AnkiCard> cards;
    if (!ReadCardsOf(row.NoteId, cards)) {
        return false;
    }
    int64_t typeId = 0;
    wxString id;
    wxString tags;
    wxString fields;
    const int result = mDatabase.ReadRow("notes", {"guid", "mid", "tags", "flds"}, row.RowId,
                                         [&](const ForeignDatabase::Row& columns) {
                                             id = columns.Text(0);
                                             typeId = columns.Int64(1);
                                             tags = columns.Text(2);
                                             fields = columns.Text(3);
                                             return false;
                                         });
    if (result < 0) {
        return FailDamaged();
    }
    ++mNotes;
    const auto type = mTypes.find(typeId);
    if (type == mTypes.end() || cards.empty() || type->second.Fields.empty() ||
        type->second.Templates.empty()) {
        Count(DeckLoss::kNotesSkipped);
        return true;
    }
    id += " " + IdText(row.NoteId);
    const TypePlan& plan = mPlans.at(typeId);
    HtmlLosses losses;
    const Note note(type->second, plan, fields, losses);
    Count(DeckLoss::kPictures, losses.Pictures);
    Count(DeckLoss::kSounds, losses.Sounds);
    Count(DeckLoss::kFormulas, losses.Formulas);
    Count(DeckLoss::kHints, plan.Hints);
    MakeCards(type->second, plan, note, std::move(cards), id, TrimWide(tags));
    return true;
}

bool AnkiDeck::ReadCardsOf(int64_t noteId, std::vector<AnkiCard>& cards) {
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
    std::stable_sort(cards.begin(), cards.end(), [](const AnkiCard& one, const AnkiCard& other) {
        return one.Number < other.Number;
    });
    return true;
}

void AnkiDeck::MakeCards(const NoteType& type, const TypePlan& plan, const Note& note,
                         std::vector<AnkiCard> cards, const wxString& id, const wxString& tags) {
    for (AnkiCard& card : cards) {
        if (card.HomeDeck != 0) {
            Count(DeckLoss::kFiltered);
            card.Deck = card.HomeDeck;
            card.Due = card.HomeDue != 0 ? card.HomeDue : card.Due;
        }
    }
    if (type.IsCloze) {
        MakeClozeCards(type, plan, note, cards, id, tags);
        return;
    }
    for (size_t i = 0; i < plan.Pairs.size(); ++i) {
        MakePairCard(type, plan, i, note, cards, id, tags);
    }
}

const AnkiCard* FindCard(const std::vector<AnkiCard>& cards, size_t number) {
    const auto found = std::find_if(cards.begin(), cards.end(), [number](const AnkiCard& card) {
        return card.Number == static_cast<int64_t>(number);
    });
    return found == cards.end() ? nullptr : &*found;
}

void AnkiDeck::MakePairCard(const NoteType& type, const TypePlan& plan, size_t which,
                            const Note& note, const std::vector<AnkiCard>& cards,
                            const wxString& id, const wxString& tags) {
    const Pair& pair = plan.Pairs[which];
    const AnkiCard* forward = FindCard(cards, pair.Forward);
    for (const size_t same : pair.Same) {
        const AnkiCard* const copy = FindCard(cards, same);
        if (copy != nullptr && forward == nullptr) {
            forward = copy;
        } else if (copy != nullptr) {
            Count(DeckLoss::kTemplatesDropped);
        }
    }
    const AnkiCard* const reverse =
        pair.Reverse == kNoField ? nullptr : FindCard(cards, pair.Reverse);
    if (forward == nullptr && reverse == nullptr) {
        return;
    }
    DeckCard card;
    // A card of the first pair keeps its identity when the type gets further templates.
    const wxString part = which == 0 ? wxString() : wxString::Format("%zu", pair.Forward);
    card.Card.CardId = DeckCardId(id, part);
    std::set<size_t> used;
    if (which == 0 && !plan.Chosen.empty()) {
        FillChosen(plan.Chosen, note, card, used);
    } else {
        FillSides(plan, which, note, card, used);
    }
    card.Card.Notes = MakeNotes(type, note, used, tags);
    const AnkiCard& named = forward != nullptr ? *forward : *reverse;
    card.Category = CategoryOf(named);
    card.Card.ForwardX = forward == nullptr;
    card.Card.ReverseX = reverse == nullptr;
    if (forward != nullptr) {
        TakeSchedule(*forward, card.Card.CardId, card.Card.Forward, card.Card.ForwardX);
    }
    if (reverse != nullptr) {
        TakeSchedule(*reverse, card.Card.CardId, card.Card.Reverse, card.Card.ReverseX);
    }
    if (forward != nullptr && reverse != nullptr && forward->Deck != reverse->Deck) {
        Count(DeckLoss::kSistersApart);
    }
    if (which > 0) {
        Count(DeckLoss::kTemplatesSplit);
    }
    Push(std::move(card));
}

void AnkiDeck::FillSides(const TypePlan& plan, size_t which, const Note& note, DeckCard& card,
                         std::set<size_t>& used) const {
    const Pair& pair = plan.Pairs[which];
    const auto add = [&](const std::vector<ShownField>& shown, bool always, wxString& side,
                         wxString& second) {
        for (const ShownField& field : shown) {
            if (field.Field < note.Count() && (always || note.IsShown(field))) {
                AddLine(side, note.Text(field.Field));
                AddLine(second, OneLine(note.Reading(field.Field)));
                used.insert(field.Field);
            }
        }
    };
    const auto fill = [&](const std::vector<ShownField>& shown, wxString& side, wxString& second) {
        add(shown, false, side, second);
        // The question of a direction that this note does not have shows nothing.
        if (side.empty()) {
            add(shown, true, side, second);
        }
    };
    used = plan.Switches;
    fill(pair.Front, card.Card.Front, card.Front2);
    fill(pair.Back, card.Card.Back, card.Back2);
    for (const size_t field : pair.Second) {
        const bool isOfBack = !HasEastAsian(card.Card.Front) && HasEastAsian(card.Card.Back);
        wxString& second = isOfBack ? card.Back2 : card.Front2;
        if (second.empty()) {
            second = OneLine(note.Text(field));
            used.insert(field);
        }
    }
    card.Front2 = OneLine(card.Front2);
    card.Back2 = OneLine(card.Back2);
}

void AnkiDeck::FillChosen(const std::vector<FieldRole>& roles, const Note& note, DeckCard& card,
                          std::set<size_t>& used) const {
    for (size_t i = 0; i < std::min(roles.size(), note.Count()); ++i) {
        wxString* const sides[] = {&card.Card.Front, &card.Front2, &card.Card.Back, &card.Back2};
        const auto role = static_cast<size_t>(roles[i]);
        if (role < std::size(sides)) {
            const bool isSecond = role % 2 == 1;
            AddLine(*sides[role], isSecond ? OneLine(note.Text(i)) : note.Text(i));
            wxString& second = *sides[role | 1U];
            if (!isSecond && second.empty()) {
                second = OneLine(note.Reading(i));
            }
        }
        if (roles[i] != FieldRole::kNotes) {
            used.insert(i);
        }
    }
    card.Front2 = OneLine(card.Front2);
    card.Back2 = OneLine(card.Back2);
}

wxString AnkiDeck::MakeNotes(const NoteType& type, const Note& note, const std::set<size_t>& used,
                             const wxString& tags) const {
    wxString notes;
    for (size_t i = 0; i < note.Count(); ++i) {
        if (used.count(i) == 0 && !note.Text(i).empty()) {
            const wxString name = i < type.Fields.size() ? type.Fields[i] + ": " : wxString();
            const wxString& reading = note.Reading(i);
            AddLine(notes, name + note.Text(i) + (reading.empty() ? "" : " (" + reading + ")"));
        }
    }
    if (!tags.empty()) {
        AddLine(notes, "Tags: " + tags);
    }
    return notes;
}

void AnkiDeck::MakeClozeCards(const NoteType& type, const TypePlan& plan, const Note& note,
                              const std::vector<AnkiCard>& cards, const wxString& id,
                              const wxString& tags) {
    const wxString& source = note.Source(plan.ClozeField);
    if (source.Contains("image-occlusion:")) {
        Count(DeckLoss::kOcclusions, static_cast<int64_t>(cards.size()));
        return;
    }
    if (cards.size() > 1) {
        Count(DeckLoss::kClozesSplit);
    }
    HtmlLosses counted;
    for (const AnkiCard& row : cards) {
        const int number = static_cast<int>(std::clamp<int64_t>(row.Number, 0, 9998)) + 1;
        const ClozeCard cloze = MakeClozeCard(source, number);
        DeckCard card;
        card.Card.CardId = DeckCardId(id, wxString::Format("c%i", number));
        card.Card.Front = ReadHtml(cloze.Question, false, counted).Text;
        for (const wxString& hidden : cloze.Hidden) {
            const wxString text = ReadHtml(hidden, false, counted).Text;
            card.Card.Back += (card.Card.Back.empty() ? "" : ", ") + text;
        }
        card.Card.Notes = ReadHtml(cloze.Whole, false, counted).Text;
        AddLine(card.Card.Notes, MakeNotes(type, note, {plan.ClozeField}, tags));
        card.Category = CategoryOf(row);
        card.Card.ReverseX = true;
        TakeSchedule(row, card.Card.CardId, card.Card.Forward, card.Card.ForwardX);
        Push(std::move(card));
    }
}

void AnkiDeck::TakeSchedule(const AnkiCard& row, const CardUuid& id, CardSchedule& schedule,
                            bool& excluded) {
    if (row.Queue == -1) {
        excluded = true;
        Count(DeckLoss::kSuspended);
    } else if (row.Queue < -1) {
        Count(DeckLoss::kBuried);
    }
    if (mOptions.WithSchedules) {
        bool clamped = false;
        schedule = MakeAnkiSchedule(row, mCreated, mNow, clamped);
        schedule.ERC = schedule.Introduced ? DeckErc(id) : 0;
        Count(DeckLoss::kClamped, clamped ? 1 : 0);
    }
}

wxString AnkiDeck::CategoryOf(const AnkiCard& row) const {
    const auto found = mDecks.find(row.Deck);
    const wxString name = found == mDecks.end() ? _("Default") : TrimWide(found->second.Name);
    const size_t level = mOptions.WholeDeckNames ? wxString::npos : name.rfind("::");
    const wxString last = level == wxString::npos ? name : TrimWide(name.Mid(level + 2));
    return last.empty() ? wxString(_("Default")) : OneLine(last);
}

void AnkiDeck::Push(DeckCard&& card) {
    card.Card.Front = GuardSide(card.Card.Front);
    card.Card.Back = GuardSide(card.Card.Back);
    if (card.Card.Front.empty() || card.Card.Back.empty()) {
        Count(DeckLoss::kEmptySides);
        return;
    }
    mReady.push_back(std::move(card));
}

}  // namespace

CardSchedule MakeAnkiSchedule(const AnkiCard& card, int64_t created, int64_t now, bool& clamped) {
    CardSchedule schedule;
    if (card.Type == 0) {
        return schedule;
    }
    const auto days = [](int64_t count) {
        return std::clamp(count, -kGreatestDays, kGreatestDays) * kDay;
    };
    created = std::clamp<int64_t>(created, 0, kLastTimeStamp);
    const bool isInDays = card.Due <= kLeastMoment;
    const int64_t at =
        isInDays ? created + days(card.Due) : std::min(card.Due, int64_t{2} * kLastTimeStamp);
    const int64_t interval =
        card.Interval < 0 ? std::min(-std::max(card.Interval, -kLastTimeStamp), kLastTimeStamp)
                          : days(card.Interval);
    int64_t last = card.LastReview;
    if (last < 0) {
        const bool isReview = card.Type == 2 && isInDays;
        last = isReview ? at - interval : std::min(card.Changed, at);
    }
    last = std::clamp<int64_t>(last, 0, std::max<int64_t>(now, 0));
    int64_t wait = at - last;
    if (card.Type == 2 && isInDays && std::abs(last + interval - at) <= kDay) {
        wait = interval;
    }
    schedule.Introduced = true;
    schedule.LastReview = wxDateTime(static_cast<time_t>(last));
    schedule.ReviewInterval = StoredInterval(last, static_cast<double>(wait), clamped);
    constexpr uint8_t kScores[] = {0, 0, 3, 4, 5};
    const uint8_t unknown = card.Type == 2 ? 4 : 0;
    schedule.LastScore = card.LastAnswer >= 1 && card.LastAnswer <= 4
                             ? kScores[static_cast<size_t>(card.LastAnswer)]
                             : unknown;
    schedule.Difficulty = DifficultyOfEase(static_cast<double>(card.Ease) / 1000.0);
    return schedule;
}

std::unique_ptr<Deck> OpenAnkiDeck(const wxString& path, const DeckOptions& options,
                                   wxString& message) {
    auto deck = std::make_unique<AnkiDeck>(options);
    if (!deck->Open(path)) {
        message = deck->GetFailure();
        return nullptr;
    }
    return deck;
}
