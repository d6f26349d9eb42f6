#include "formats/decks/DeckFormats.h"

#include <libxml/xmlreader.h>
#include <wx/intl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "files/ForeignDatabase.h"
#include "formats/HtmlText.h"

namespace {

// The values of a fact by their keys, such as "f" and "b".
using Fact = std::map<std::string, std::string>;

// One direction of a fact, or one gap of a text.
struct Direction {
    std::string Id;
    std::string Fact;
    std::string Type;
    // The type's view, such as "2.1".
    std::string View;
    // The ids of its tags, each once.
    std::vector<std::string> Tags;
    int Grade = -1;
    double Ease = 2.5;
    int64_t Last = -1;
    int64_t Next = -1;
    bool IsActive = true;
};

// The common contents of the program's two kinds of files.
struct Contents {
    std::unordered_map<std::string, Fact> Facts;
    std::vector<std::string> FactOrder;
    std::unordered_map<std::string, std::vector<Direction>> Cards;
    std::map<std::string, std::string> TagNames;
};

// Returns the number at the front of a type; a user's type is "2::My type".
char BaseType(const std::string& type) {
    return type.empty() ? '\0' : type.front();
}

// A text such as "The capital of France is [Paris:a city]", of which each bracket becomes a card.
struct OpenText {
    struct Gap {
        size_t Begin;
        size_t End;
    };

    std::string Id;
    wxString Text;
    std::vector<Gap> Gaps;
    const std::vector<Direction>* Directions = nullptr;
    // The next gap that becomes a card.
    size_t Next = 0;

    size_t CountCards() const {
        return Directions == nullptr ? 0 : std::min(Gaps.size(), Directions->size());
    }
};

class MnemosyneDeck : public Deck {
  public:
    MnemosyneDeck(const wxString& name, const DeckOptions& options) : Deck(options), mName(name) {}

    // Each reads a file of the program whole. Returns false on a failure, which GetFailure tells.
    bool OpenXml(const wxString& path);
    bool OpenStore(const wxString& path);

    std::vector<DeckNoteType> GetNoteTypes() const override { return {}; }
    float GetProgress() const override {
        const size_t count = mContents.FactOrder.size();
        return count == 0 ? 1.0f : static_cast<float>(mNext) / static_cast<float>(count);
    }

  private:
    bool ReadNote() override;
    void ReadFact(const std::string& id);
    wxString Value(const Fact& fact, const char* key, bool withMedia = true);
    void MakeTwoSided(const std::string& id, const Fact& fact,
                      const std::vector<Direction>& directions);
    void OpenGaps(const std::string& id, const Fact& fact,
                  const std::vector<Direction>& directions);
    void MakeGapCard(size_t which);
    void TakeSchedule(const Direction& direction, const CardUuid& id, CardSchedule& schedule,
                      bool& excluded);
    void TakeTags(const Direction& direction, DeckCard& card) const;

    Contents mContents;
    wxString mName;
    size_t mNext = 0;
    OpenText mText;
};

bool MnemosyneDeck::ReadNote() {
    if (mText.Next < mText.CountCards()) {
        MakeGapCard(mText.Next++);
        return true;
    }
    if (mNext == mContents.FactOrder.size()) {
        return false;
    }
    ReadFact(mContents.FactOrder[mNext++]);
    return true;
}

wxString MnemosyneDeck::Value(const Fact& fact, const char* key, bool withMedia) {
    const auto found = fact.find(key);
    if (found == fact.end()) {
        return wxString();
    }
    HtmlLosses losses;
    const wxString text =
        ReadHtml(FromUtf8(found->second), true, losses, withMedia ? mOptions.Media.get() : nullptr)
            .Text;
    Count(DeckLoss::kPictures, losses.Pictures);
    Count(DeckLoss::kSounds, losses.Sounds);
    Count(DeckLoss::kFormulas, losses.Formulas);
    return text;
}

void MnemosyneDeck::ReadFact(const std::string& id) {
    ++mNotes;
    const auto fact = mContents.Facts.find(id);
    const auto cards = mContents.Cards.find(id);
    if (fact == mContents.Facts.end() || cards == mContents.Cards.end()) {
        Count(DeckLoss::kNotesSkipped);
        return;
    }
    switch (BaseType(cards->second.front().Type)) {
        case '4':
            Count(DeckLoss::kOcclusions, static_cast<int64_t>(cards->second.size()));
            break;
        case '5':
            OpenGaps(id, fact->second, cards->second);
            break;
        default:
            MakeTwoSided(id, fact->second, cards->second);
            break;
    }
}

void MnemosyneDeck::MakeTwoSided(const std::string& id, const Fact& fact,
                                 const std::vector<Direction>& directions) {
    DeckCard card;
    card.Card.CardId = NoteCardId(id, "");
    const bool isFromAnki = BaseType(directions.front().Type) == '7';
    const bool hasMeaning = fact.count("m_1") != 0;
    card.Card.Front = Value(fact, isFromAnki ? "0" : "f");
    card.Card.Back = Value(fact, isFromAnki ? "1" : hasMeaning ? "m_1" : "b");
    card.Front2 = Value(fact, "p_1", false);
    card.Front2.Replace("\n", " ");
    card.Card.Notes = Value(fact, "n");
    card.Card.ForwardX = true;
    card.Card.ReverseX = true;
    for (const Direction& direction : directions) {
        const bool isReverse = !direction.View.empty() && direction.View.back() == '2';
        bool& excluded = isReverse ? card.Card.ReverseX : card.Card.ForwardX;
        excluded = false;
        TakeSchedule(direction, card.Card.CardId, isReverse ? card.Card.Reverse : card.Card.Forward,
                     excluded);
    }
    TakeTags(directions.front(), card);
    Push(std::move(card));
}

void MnemosyneDeck::OpenGaps(const std::string& id, const Fact& fact,
                             const std::vector<Direction>& directions) {
    mText = OpenText();
    mText.Id = id;
    // The brackets are the gaps here, so the line of a file would be one.
    mText.Text = Value(fact, "text", false);
    mText.Directions = &directions;
    size_t at = 0;
    while ((at = mText.Text.find('[', at)) != wxString::npos) {
        const size_t end = mText.Text.find(']', at);
        if (end == wxString::npos) {
            break;
        }
        mText.Gaps.push_back({at, end});
        at = end + 1;
    }
    if (mText.Gaps.size() > 1) {
        Count(DeckLoss::kClozesSplit);
    }
}

void MnemosyneDeck::MakeGapCard(size_t which) {
    const wxString& text = mText.Text;
    const Direction& direction = (*mText.Directions)[which];
    DeckCard card;
    card.Card.CardId = NoteCardId(mText.Id, "c" + std::to_string(which + 1));
    size_t rest = 0;
    for (size_t i = 0; i < mText.Gaps.size(); ++i) {
        const OpenText::Gap& gap = mText.Gaps[i];
        const wxString inner = text.Mid(gap.Begin + 1, gap.End - gap.Begin - 1);
        const wxString word = inner.BeforeFirst(':');
        const wxString hint = inner.AfterFirst(':');
        const wxString before = text.Mid(rest, gap.Begin - rest);
        card.Card.Notes += before + word;
        card.Card.Front += before + (i != which ? word : "[" + (hint.empty() ? "..." : hint) + "]");
        if (i == which) {
            card.Card.Back = word;
        }
        rest = gap.End + 1;
    }
    card.Card.Front += text.Mid(rest);
    card.Card.Notes += text.Mid(rest);
    card.Card.ReverseX = true;
    TakeSchedule(direction, card.Card.CardId, card.Card.Forward, card.Card.ForwardX);
    TakeTags(direction, card);
    Push(std::move(card));
}

void MnemosyneDeck::TakeSchedule(const Direction& direction, const CardUuid& id,
                                 CardSchedule& schedule, bool& excluded) {
    if (!direction.IsActive) {
        excluded = true;
        Count(DeckLoss::kSuspended);
    }
    if (!mOptions.WithSchedules || direction.Grade < 0 || direction.Last < 0) {
        return;
    }
    const int64_t last = std::min(direction.Last, kLastTimeStamp);
    bool clamped = false;
    schedule.Introduced = true;
    schedule.LastReview = wxDateTime(static_cast<time_t>(last));
    schedule.LastScore = static_cast<uint8_t>(std::min(direction.Grade, 5));
    schedule.ReviewInterval = StoredInterval(
        last, static_cast<double>(direction.Next) - static_cast<double>(last), clamped);
    schedule.Difficulty = DifficultyOfEase(direction.Ease);
    schedule.ERC = DeckErc(id);
    Count(DeckLoss::kClamped, clamped ? 1 : 0);
}

void MnemosyneDeck::TakeTags(const Direction& direction, DeckCard& card) const {
    wxString tags;
    for (const std::string& tag : direction.Tags) {
        const auto known = mContents.TagNames.find(tag);
        const wxString name =
            known == mContents.TagNames.end() ? wxString() : TrimWide(FromUtf8(known->second));
        if (name.empty() || name == "__UNTAGGED__") {
            continue;
        }
        if (card.Category.empty()) {
            card.Category = name;
        }
        tags += (tags.empty() ? "" : ", ") + name;
    }
    if (card.Category.empty()) {
        card.Category = mName;
    }
    if (!mOptions.WholeDeckNames && card.Category.Contains("::")) {
        card.Category = card.Category.AfterLast(':');
    }
    if (!tags.empty()) {
        card.Card.Notes += (card.Card.Notes.empty() ? "" : "\n") + ("Tags: " + tags);
    }
}

// The bytes of a list of cards as the parser takes them: as they are, since the parser would unpack
// a list that is packed once more, past all bounds. Entries have few attributes; the parser
// compares each with all others.
class XmlInput {
  public:
    XmlInput(const wxString& path, const std::atomic<bool>* isCancelled)
        : mFile(std::filesystem::u8path(ToUtf8(path)), std::ios::binary),
          mpIsCancelled(isCancelled) {}

    // Called by the parser. Returns how many bytes there are, 0 at the end, or -1 to end it.
    static int Read(void* input, char* bytes, int count) {
        return static_cast<XmlInput*>(input)->Read(bytes, count);
    }
    bool HasTooManyAttributes() const { return mAttributes > kMostAttributes.Most; }

  private:
    int Read(char* bytes, int count) {
        if (mpIsCancelled != nullptr && *mpIsCancelled) {
            return -1;
        }
        mFile.read(bytes, count);
        const auto length = static_cast<int>(mFile.gcount());
        for (int i = 0; i < length && !HasTooManyAttributes(); ++i) {
            Look(bytes[i]);
        }
        return HasTooManyAttributes() || mFile.bad() ? -1 : length;
    }

    // Counts the values in quotes since the last "<", which is always the beginning of a tag.
    void Look(char byte) {
        if (byte == '<') {
            mIsInTag = true;
            mQuote = '\0';
            mAttributes = 0;
        } else if (mQuote != '\0') {
            mQuote = byte == mQuote ? '\0' : mQuote;
        } else if (byte == '>') {
            mIsInTag = false;
        } else if (mIsInTag && (byte == '"' || byte == '\'')) {
            mQuote = byte;
            ++mAttributes;
        }
    }

    std::ifstream mFile;
    const std::atomic<bool>* mpIsCancelled;
    bool mIsInTag = false;
    char mQuote = '\0';
    int64_t mAttributes = 0;
};

// A list of cards as elements, each a line of the program's log:
//
//   <log type="16" o_id="x"><f>chat</f><b>cat</b></log>
//   <log type="6" o_id="y" card_t="1" fact="x" fact_v="1.1" tags="z" gr="4" .../>
class XmlLoader {
  public:
    // The input and the room are not owned.
    XmlLoader(XmlInput& input, DeckRoom& room)
        : mRoom(room),
          mpReader(xmlReaderForIO(&XmlInput::Read, nullptr, &input, nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {}
    ~XmlLoader() { xmlFreeTextReader(mpReader); }
    XmlLoader(const XmlLoader&) = delete;
    XmlLoader& operator=(const XmlLoader&) = delete;

    bool Load(Contents& contents) {
        int result = 0;
        while (mpReader != nullptr && (result = xmlTextReaderRead(mpReader)) == 1) {
            // A document's own entities could grow without end.
            if (xmlTextReaderNodeType(mpReader) == XML_READER_TYPE_DOCUMENT_TYPE) {
                return false;
            }
            if (xmlTextReaderNodeType(mpReader) == XML_READER_TYPE_ELEMENT &&
                xmlTextReaderDepth(mpReader) == 1 && !ReadEntry(contents)) {
                return false;
            }
        }
        return mpReader != nullptr && result == 0;
    }

  private:
    std::string Attribute(const char* name) {
        xmlChar* const value =
            xmlTextReaderGetAttribute(mpReader, reinterpret_cast<const xmlChar*>(name));
        std::string text = value == nullptr ? "" : reinterpret_cast<const char*>(value);
        xmlFree(value);
        mRoom.TakeText(text.size());
        return text;
    }
    int64_t Number(const char* name, int64_t missing) {
        long long number = 0;
        return FromUtf8(Attribute(name)).ToLongLong(&number) ? number : missing;
    }

    bool ReadEntry(Contents& contents) {
        const std::string type = Attribute("type");
        const std::string id = Attribute("o_id");
        if (type == "10") {
            const Fact fields = ReadFields();
            const auto name = fields.find("name");
            contents.TagNames[id] = name == fields.end() ? "" : name->second;
            mRoom.TakeRow(mTags);
        } else if (type == "16") {
            if (contents.Facts.emplace(id, ReadFields()).second) {
                contents.FactOrder.push_back(id);
                mRoom.TakeRow(mFacts);
            }
        } else if (type == "6") {
            ReadDirection(contents, id);
            mRoom.TakeRow(mDirections);
        }
        return mRoom.GetPassed() == nullptr;
    }

    // Reads the elements within the present one; a numeric key is written with underlines.
    Fact ReadFields() {
        Fact fields;
        if (xmlTextReaderIsEmptyElement(mpReader) != 0) {
            return fields;
        }
        std::string key;
        while (xmlTextReaderRead(mpReader) == 1 && xmlTextReaderDepth(mpReader) > 1 &&
               mRoom.GetPassed() == nullptr) {
            const int kind = xmlTextReaderNodeType(mpReader);
            if (kind == XML_READER_TYPE_ELEMENT) {
                key = reinterpret_cast<const char*>(xmlTextReaderConstName(mpReader));
                if (key.rfind("___", 0) == 0) {
                    key.erase(0, 3);
                }
                mRoom.TakeText(key.size());
            } else if (kind == XML_READER_TYPE_TEXT || kind == XML_READER_TYPE_CDATA ||
                       kind == XML_READER_TYPE_SIGNIFICANT_WHITESPACE) {
                const xmlChar* const value = xmlTextReaderConstValue(mpReader);
                std::string& field = fields[key];
                const size_t length = field.size();
                field += value == nullptr ? "" : reinterpret_cast<const char*>(value);
                mRoom.TakeText(field.size() - length);
            }
        }
        return fields;
    }

    void ReadDirection(Contents& contents, const std::string& id) {
        Direction direction;
        direction.Id = id;
        direction.Fact = Attribute("fact");
        direction.Type = Attribute("card_t");
        direction.View = Attribute("fact_v");
        direction.Grade = static_cast<int>(std::clamp<int64_t>(Number("gr", -1), -1, 5));
        direction.Last = Number("l_rp", -1);
        direction.Next = Number("n_rp", -1);
        double ease = 0.0;
        direction.Ease = FromUtf8(Attribute("e")).ToCDouble(&ease) ? ease : 2.5;
        const std::string tags = Attribute("tags") + ",";
        std::set<std::string> seen;
        for (size_t at = 0; at < tags.size();) {
            const size_t end = tags.find(',', at);
            const std::string tag = tags.substr(at, end - at);
            if (contents.TagNames.count(tag) != 0 && seen.insert(tag).second) {
                direction.Tags.push_back(tag);
            }
            at = end + 1;
        }
        contents.Cards[direction.Fact].push_back(std::move(direction));
    }

    DeckRoom& mRoom;
    xmlTextReaderPtr mpReader;
    int64_t mTags = 0;
    int64_t mFacts = 0;
    int64_t mDirections = 0;
};

// Rows refer to each other by numbers, which become texts as in the list of cards.
std::string KeyOf(int64_t number) {
    return std::to_string(number);
}

bool LoadStore(ForeignDatabase& database, Contents& contents, DeckRoom& room) {
    int64_t facts = 0;
    int64_t directions = 0;
    using Row = ForeignDatabase::Row;
    for (const char* const table : {"facts", "data_for_fact", "cards", "tags", "tags_for_card"}) {
        if (!database.HasTable(table)) {
            return false;
        }
    }
    std::unordered_map<std::string, std::string> ids;
    std::unordered_map<std::string, std::vector<std::string>> tags;
    int result = database.ReadAll("facts", {"_id", "id"}, [&](const Row& row) {
        const std::string key = KeyOf(row.Int64(0));
        ids[key] = row.Bytes(1);
        contents.FactOrder.push_back(row.Bytes(1));
        contents.Facts[row.Bytes(1)];
        return room.TakeRow(facts) && room.TakeText(row.Bytes(1).size());
    });
    result = std::min(result, database.ReadAll("data_for_fact", {"_fact_id", "key", "value"},
                                               [&](const Row& row) {
                                                   const auto id = ids.find(KeyOf(row.Int64(0)));
                                                   const std::string key = row.Bytes(1);
                                                   const std::string value = row.Bytes(2);
                                                   if (id == ids.end()) {
                                                       return true;
                                                   }
                                                   contents.Facts[id->second][key] = value;
                                                   return room.TakeText(key.size() + value.size());
                                               }));
    result = std::min(result, database.ReadAll("tags", {"_id", "name"}, [&](const Row& row) {
        const std::string name = row.Bytes(1);
        contents.TagNames[KeyOf(row.Int64(0))] = name;
        return room.TakeText(name.size());
    }));
    result = std::min(
        result, database.ReadAll("tags_for_card", {"_card_id", "_tag_id"}, [&](const Row& row) {
            const std::string tag = KeyOf(row.Int64(1));
            tags[KeyOf(row.Int64(0))].push_back(tag);
            return room.TakeText(tag.size());
        }));
    result = std::min(
        result, database.ReadAll("cards",
                                 {"_id", "id", "_fact_id", "card_type_id", "fact_view_id", "grade",
                                  "easiness", "last_rep", "next_rep", "active"},
                                 [&](const Row& row) {
                                     Direction direction;
                                     direction.Id = row.Bytes(1);
                                     direction.Fact = ids[KeyOf(row.Int64(2))];
                                     direction.Type = row.Bytes(3);
                                     direction.View = row.Bytes(4);
                                     direction.Grade =
                                         static_cast<int>(std::clamp<int64_t>(row.Int64(5), -1, 5));
                                     direction.Ease = row.Double(6);
                                     direction.Last = row.Int64(7);
                                     direction.Next = row.Int64(8);
                                     direction.IsActive = row.Int64(9) != 0;
                                     direction.Tags = std::move(tags[KeyOf(row.Int64(0))]);
                                     const size_t size = direction.Id.size() +
                                                         direction.Type.size() +
                                                         direction.View.size();
                                     contents.Cards[direction.Fact].push_back(std::move(direction));
                                     return room.TakeRow(directions) && room.TakeText(size);
                                 }));
    return result >= 0;
}

bool MnemosyneDeck::OpenXml(const wxString& path) {
    XmlInput input(path, mOptions.IsCancelled);
    const bool isLoaded = XmlLoader(input, mRoom).Load(mContents);
    if (mRoom.GetPassed() != nullptr || input.HasTooManyAttributes()) {
        return Fail(
            BoundMessage(input.HasTooManyAttributes() ? kMostAttributes : *mRoom.GetPassed()));
    }
    return isLoaded || Fail(_("The deck is damaged.  Its list of cards is cut."));
}

bool MnemosyneDeck::OpenStore(const wxString& path) {
    ForeignDatabase database;
    const bool isLoaded =
        database.Open(path, mOptions.IsCancelled) >= 0 && LoadStore(database, mContents, mRoom);
    if (mRoom.GetPassed() != nullptr) {
        return Fail(BoundMessage(*mRoom.GetPassed()));
    }
    return isLoaded || Fail(wxString::Format(_("The deck is damaged.  (%s)"), database.GetError()));
}

}  // namespace

// A deck that is too large is opened, so that it can be asked about.

std::unique_ptr<Deck> OpenMnemosyneXml(const wxString& path, const wxString& name,
                                       const DeckOptions& options, wxString& message) {
    auto deck = std::make_unique<MnemosyneDeck>(name, options);
    if (!deck->OpenXml(path) && !deck->IsTooLarge()) {
        message = deck->GetFailure();
        return nullptr;
    }
    return deck;
}

std::unique_ptr<Deck> OpenMnemosyneStore(const wxString& path, const wxString& name,
                                         const DeckOptions& options, wxString& message) {
    auto deck = std::make_unique<MnemosyneDeck>(name, options);
    if (!deck->OpenStore(path) && !deck->IsTooLarge()) {
        message = deck->GetFailure();
        return nullptr;
    }
    return deck;
}
