#include "formats/decks/DeckFormats.h"

#include <wx/intl.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "formats/HtmlText.h"
#include "formats/MediaSource.h"
#include "formats/decks/AnkiPlan.h"
#include "formats/decks/AnkiTemplate.h"

namespace {

constexpr int64_t kDay = 86400;
// More than all days up to the year 9999, and small enough that sums do not overflow.
constexpr int64_t kGreatestDays = 3000000;
// Separates numbers of days, which are smaller, from moments since 2001, which are greater.
constexpr int64_t kLeastMoment = 1000000000;
// Numbers of deletions have four digits at the most.
constexpr int64_t kMostClozes = 9999;

// Returns true for Han, kana and Hangul: the side that has them gets the reading.
bool HasEastAsian(const wxString& text) {
    const std::wstring_view view(text.wc_str(), text.length());
    return std::any_of(view.begin(), view.end(), [](wchar_t character) {
        const uint32_t code = wxUniChar(character).GetValue();
        return (code >= 0x3040 && code < 0xA000) || (code >= 0xAC00 && code < 0xD7B0) ||
               (code >= 0x20000 && code < 0x30000);
    });
}

wxString IdText(int64_t id) {
    return wxString(std::to_wstring(id));
}

void AddLine(wxString& text, const wxString& line) {
    if (!line.empty()) {
        text.append(text.empty() ? 0 : 1, L'\n');
        text += line;
    }
}

// A second text is one line, in which a picture or a sound has no place.
wxString OneLine(wxString text) {
    text = WithoutMediaLines(text);
    if (text.find(L'\n') != wxString::npos) {
        text.Replace(L"\n", L" ");
    }
    return text;
}

// The fields of a note as text, each converted once.
class NoteTexts {
  public:
    NoteTexts(const TypePlan& plan, const wxString& fields, MediaSource* media, HtmlLosses& losses)
        : mpMedia(media) {
        mEmpty.set();
        const std::wstring_view whole(fields.wc_str(), fields.length());
        for (size_t at = 0; at <= whole.size() && !mHasTooMany;) {
            const size_t end = std::min(whole.find(L'\x1F', at), whole.size());
            mHasTooMany = mSources.size() == mEmpty.size();
            if (!mHasTooMany) {
                Add(plan, wxString(whole.data() + at, end - at), losses);
            }
            at = end + 1;
        }
    }

    // Fields of the type that the note does not have are empty.
    size_t Count() const { return mTexts.size(); }
    bool HasTooMany() const { return mHasTooMany; }
    const wxString& Source(size_t field) const {
        return field < mSources.size() ? mSources[field] : kNothing.Text;
    }
    const wxString& Text(size_t field) const { return At(field).Text; }
    const wxString& Reading(size_t field) const { return At(field).Reading; }

    bool IsShown(const ShownField& field) const {
        return field.Within == nullptr ||
               ((field.Within->Filled & mEmpty).none() && (field.Within->Empty & ~mEmpty).none());
    }

  private:
    static const HtmlText kNothing;

    const HtmlText& At(size_t field) const {
        return field < mTexts.size() ? mTexts[field] : kNothing;
    }

    void Add(const TypePlan& plan, const wxString& source, HtmlLosses& losses) {
        const size_t field = mSources.size();
        HtmlLosses counted;
        HtmlText text = ReadHtml(source, false, counted, mpMedia);
        mEmpty[field] = text.Text.empty() && counted.Pictures == 0 && counted.Sounds == 0;
        losses.Pictures += counted.Pictures;
        losses.Sounds += counted.Sounds;
        losses.Formulas += counted.Formulas;
        if (plan.WithReadings[field] && text.Text.find(L'[') != wxString::npos) {
            const FuriganaText split = ReadFurigana(text.Text);
            text.Text = split.Base;
            text.Reading = split.Reading.empty() ? text.Reading : split.Reading;
        }
        mSources.push_back(source);
        mTexts.push_back(std::move(text));
    }

    MediaSource* mpMedia;
    std::vector<wxString> mSources;
    std::vector<HtmlText> mTexts;
    // The fields in which there is nothing to be seen.
    FieldBits mEmpty;
    bool mHasTooMany = false;
};

const HtmlText NoteTexts::kNothing;

// A note of which cards are still to be made.
struct OpenNote {
    const AnkiNoteType* Type = nullptr;
    const TypePlan* Plan = nullptr;
    std::unique_ptr<NoteTexts> Texts;
    // In the order of their numbers.
    std::vector<AnkiCard> Cards;
    // What its cards have their identities from: as it is now, and with the note's number.
    std::string Id;
    std::string LongId;
    wxString Tags;
    // The next pair of templates, or the next card of a text with deletions.
    size_t Next = 0;

    size_t CountSteps() const {
        return Texts == nullptr ? 0 : Type->IsCloze ? Cards.size() : Plan->Pairs.size();
    }
};

class AnkiDeck : public Deck {
  public:
    explicit AnkiDeck(const DeckOptions& options) : Deck(options), mCollection(mRoom) {}

    bool Open(const wxString& path);

    std::vector<DeckNoteType> GetNoteTypes() const override;
    float GetProgress() const override {
        const size_t count = mCollection.CountNotes();
        return count == 0 ? 1.0f : static_cast<float>(mNext) / static_cast<float>(count);
    }

  private:
    bool ReadNote() override;
    void TakeNote(const AnkiNote& row, const AnkiNoteType& type, std::vector<AnkiCard> cards);
    void TakeClozeRows();
    void MakePairCard(size_t which);
    void MakeClozeCard(const AnkiCard& row);
    void SetId(const std::string& part, DeckCard& card) const;
    void FillSides(size_t which, DeckCard& card, FieldBits& used) const;
    void FillChosen(DeckCard& card, FieldBits& used) const;
    wxString MakeNotes(const FieldBits& used) const;
    void TakeSchedule(const AnkiCard& row, const CardUuid& id, CardSchedule& schedule,
                      bool& excluded);
    const wxString& CategoryOf(const AnkiCard& row);

    AnkiCollection mCollection;
    int64_t mNow = 0;
    std::map<int64_t, TypePlan> mPlans;
    // The categories of decks that were looked up.
    std::map<int64_t, wxString> mCategories;
    size_t mNext = 0;
    OpenNote mNote;
};

bool AnkiDeck::Open(const wxString& path) {
    mNow = static_cast<int64_t>(CurrentTime().GetTicks());
    if (!mCollection.Open(path, mOptions.WithSchedules, mOptions.IsCancelled)) {
        return Fail(mCollection.GetFailure());
    }
    Count(DeckLoss::kReviews, mCollection.CountReviews());
    for (const auto& [id, type] : mCollection.GetTypes()) {
        TypePlan& plan = mPlans.emplace(id, MakeTypePlan(type)).first->second;
        const auto chosen = mOptions.Roles.find(IdText(id));
        if (chosen != mOptions.Roles.end()) {
            plan.Chosen = chosen->second;
        }
    }
    return true;
}

std::vector<DeckNoteType> AnkiDeck::GetNoteTypes() const {
    std::vector<DeckNoteType> types;
    if (mPlans.empty()) {
        // The deck was not read to the end of its description.
        return types;
    }
    for (const auto& [id, type] : mCollection.GetTypes()) {
        DeckNoteType shown;
        shown.Id = IdText(id);
        shown.Name = type.Name;
        shown.Fields = type.Fields;
        shown.IsCloze = type.IsCloze;
        shown.Roles.assign(type.Fields.size(), FieldRole::kNotes);
        const TypePlan& plan = mPlans.at(id);
        if (!plan.Pairs.empty()) {
            const TemplatePair& pair = plan.Pairs.front();
            const FieldBits front = FieldSet(pair.Front);
            const FieldBits back = FieldSet(pair.Back);
            for (size_t field = 0; field < shown.Roles.size(); ++field) {
                shown.Roles[field] = front[field]  ? FieldRole::kFront
                                     : back[field] ? FieldRole::kBack
                                                   : FieldRole::kNotes;
            }
            if (!pair.Second.empty()) {
                shown.Roles[pair.Second.front()] = FieldRole::kFront2;
            }
        }
        types.push_back(std::move(shown));
    }
    return types;
}

bool AnkiDeck::ReadNote() {
    if (mNote.Next < mNote.CountSteps()) {
        const size_t step = mNote.Next++;
        if (mNote.Type->IsCloze) {
            MakeClozeCard(mNote.Cards[step]);
        } else {
            MakePairCard(step);
        }
        return true;
    }
    if (mNext == mCollection.CountNotes()) {
        return false;
    }
    AnkiNote row;
    std::vector<AnkiCard> cards;
    if (!mCollection.ReadNote(mNext++, row, cards)) {
        return Fail(mCollection.GetFailure());
    }
    ++mNotes;
    const auto type = mCollection.GetTypes().find(row.TypeId);
    if (type == mCollection.GetTypes().end() || cards.empty() || type->second.Fields.empty() ||
        type->second.Templates.empty()) {
        Count(DeckLoss::kNotesSkipped);
        return true;
    }
    TakeNote(row, type->second, std::move(cards));
    return !mNote.Texts->HasTooMany() || Fail(BoundMessage(kMostFields));
}

void AnkiDeck::TakeNote(const AnkiNote& row, const AnkiNoteType& type,
                        std::vector<AnkiCard> cards) {
    const TypePlan& plan = mPlans.at(row.TypeId);
    HtmlLosses losses;
    mNote = OpenNote();
    mNote.Type = &type;
    mNote.Plan = &plan;
    mNote.Texts = std::make_unique<NoteTexts>(plan, row.Fields, mOptions.Media.get(), losses);
    mNote.LongId = row.Guid + ' ' + std::to_string(row.Id);
    mNote.Id = row.IsGuidTaken ? mNote.LongId : row.Guid;
    mNote.Tags = TrimWide(row.Tags);
    mNote.Cards = std::move(cards);
    Count(DeckLoss::kPictures, losses.Pictures);
    Count(DeckLoss::kSounds, losses.Sounds);
    Count(DeckLoss::kFormulas, losses.Formulas);
    Count(DeckLoss::kHints, plan.Hints);
    for (AnkiCard& card : mNote.Cards) {
        if (card.HomeDeck != 0) {
            Count(DeckLoss::kFiltered);
            card.Deck = card.HomeDeck;
            card.Due = card.HomeDue != 0 ? card.HomeDue : card.Due;
        }
    }
    if (type.IsCloze) {
        TakeClozeRows();
    }
}

// Leaves the rows whose numbers the text has, each once. A card has the whole text in it, so rows
// without end would make a store without end.
void AnkiDeck::TakeClozeRows() {
    const wxString& source = mNote.Texts->Source(mNote.Plan->ClozeField);
    if (source.Contains("image-occlusion:")) {
        Count(DeckLoss::kOcclusions, static_cast<int64_t>(mNote.Cards.size()));
        mNote.Cards.clear();
        return;
    }
    const std::set<int> numbers = FindClozeNumbers(source);
    std::vector<AnkiCard> kept;
    for (const AnkiCard& card : mNote.Cards) {
        const bool isKnown = card.Number >= 0 && card.Number < kMostClozes &&
                             numbers.count(static_cast<int>(card.Number) + 1) != 0;
        if (!isKnown || (!kept.empty() && kept.back().Number == card.Number)) {
            Count(DeckLoss::kEmptySides);
        } else {
            kept.push_back(card);
        }
    }
    mNote.Cards = std::move(kept);
    if (mNote.Cards.size() > 1) {
        Count(DeckLoss::kClozesSplit);
    }
}

void AnkiDeck::SetId(const std::string& part, DeckCard& card) const {
    card.Card.CardId = NoteCardId(mNote.Id, part);
    // What earlier versions gave.
    const CardUuid other = NamedUuid(mNote.LongId + '\n' + part);
    card.OtherId = other == card.Card.CardId ? CardUuid() : other;
}

const AnkiCard* FindCard(const std::vector<AnkiCard>& cards, size_t number) {
    const auto wanted = static_cast<int64_t>(number);
    const auto found =
        std::lower_bound(cards.begin(), cards.end(), wanted,
                         [](const AnkiCard& card, int64_t least) { return card.Number < least; });
    return found == cards.end() || found->Number != wanted ? nullptr : &*found;
}

void AnkiDeck::MakePairCard(size_t which) {
    const TypePlan& plan = *mNote.Plan;
    const std::vector<AnkiCard>& cards = mNote.Cards;
    const TemplatePair& pair = plan.Pairs[which];
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
    SetId(which == 0 ? "" : std::to_string(pair.Forward), card);
    FieldBits used;
    if (which == 0 && !plan.Chosen.empty()) {
        FillChosen(card, used);
    } else {
        FillSides(which, card, used);
    }
    card.Card.Notes = MakeNotes(used);
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

void AnkiDeck::FillSides(size_t which, DeckCard& card, FieldBits& used) const {
    const NoteTexts& note = *mNote.Texts;
    const TemplatePair& pair = mNote.Plan->Pairs[which];
    const auto add = [&](const std::vector<ShownField>& shown, bool always, wxString& side,
                         wxString& second) {
        for (const ShownField& field : shown) {
            if (always || note.IsShown(field)) {
                AddLine(side, note.Text(field.Field));
                AddLine(second, OneLine(note.Reading(field.Field)));
                used.set(field.Field);
            }
        }
    };
    const auto fill = [&](const std::vector<ShownField>& shown, wxString& side, wxString& second) {
        add(shown, false, side, second);
        // The question is empty in a direction that this note lacks.
        if (side.empty()) {
            add(shown, true, side, second);
        }
    };
    used = mNote.Plan->Switches;
    fill(pair.Front, card.Card.Front, card.Front2);
    fill(pair.Back, card.Card.Back, card.Back2);
    for (const size_t field : pair.Second) {
        const bool isOfBack = !HasEastAsian(card.Card.Front) && HasEastAsian(card.Card.Back);
        wxString& second = isOfBack ? card.Back2 : card.Front2;
        if (second.empty()) {
            second = OneLine(note.Text(field));
            used.set(field);
        }
    }
    card.Front2 = OneLine(card.Front2);
    card.Back2 = OneLine(card.Back2);
}

void AnkiDeck::FillChosen(DeckCard& card, FieldBits& used) const {
    const NoteTexts& note = *mNote.Texts;
    const std::vector<FieldRole>& roles = mNote.Plan->Chosen;
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
            used.set(i);
        }
    }
    card.Front2 = OneLine(card.Front2);
    card.Back2 = OneLine(card.Back2);
}

wxString AnkiDeck::MakeNotes(const FieldBits& used) const {
    const NoteTexts& note = *mNote.Texts;
    const std::vector<wxString>& names = mNote.Type->Fields;
    wxString notes;
    for (size_t i = 0; i < note.Count(); ++i) {
        if (!used[i] && !note.Text(i).empty()) {
            const wxString name = i < names.size() ? names[i] + L":" : wxString();
            const wxString reading = OneLine(note.Reading(i));
            // A line of a picture or a sound has nothing before and after it.
            const bool hasFile = !FindMediaLines(note.Text(i)).empty();
            AddLine(notes, name +
                               (name.empty() ? L""
                                : hasFile    ? L"\n"
                                             : L" ") +
                               note.Text(i) +
                               (reading.empty() || hasFile ? wxString() : L" (" + reading + L")"));
        }
    }
    if (!mNote.Tags.empty()) {
        AddLine(notes, L"Tags: " + mNote.Tags);
    }
    return notes;
}

void AnkiDeck::MakeClozeCard(const AnkiCard& row) {
    const size_t field = mNote.Plan->ClozeField;
    const int number = static_cast<int>(row.Number) + 1;
    const ClozeCard cloze = ::MakeClozeCard(mNote.Texts->Source(field), number);
    HtmlLosses counted;
    DeckCard card;
    SetId("c" + std::to_string(number), card);
    MediaSource* const media = mOptions.Media.get();
    card.Card.Front = ReadHtml(cloze.Question, false, counted, media).Text;
    for (const wxString& hidden : cloze.Hidden) {
        const wxString text = ReadHtml(hidden, false, counted, media).Text;
        const bool hasFile = !FindMediaLines(card.Card.Back + L"\n" + text).empty();
        card.Card.Back += (card.Card.Back.empty() ? "" : hasFile ? "\n" : ", ") + text;
    }
    card.Card.Notes = ReadHtml(cloze.Whole, false, counted, media).Text;
    FieldBits used;
    used.set(field);
    AddLine(card.Card.Notes, MakeNotes(used));
    card.Category = CategoryOf(row);
    card.Card.ReverseX = true;
    TakeSchedule(row, card.Card.CardId, card.Card.Forward, card.Card.ForwardX);
    Push(std::move(card));
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
        schedule = MakeAnkiSchedule(row, mCollection.GetCreated(), mNow, clamped);
        schedule.ERC = schedule.Introduced ? DeckErc(id) : 0;
        Count(DeckLoss::kClamped, clamped ? 1 : 0);
    }
}

const wxString& AnkiDeck::CategoryOf(const AnkiCard& row) {
    const auto known = mCategories.find(row.Deck);
    if (known != mCategories.end()) {
        return known->second;
    }
    const wxString name = TrimWide(mCollection.FindDeckName(row.Deck));
    const size_t level = mOptions.WholeDeckNames ? wxString::npos : name.rfind(L"::");
    const wxString last = level == wxString::npos ? name : TrimWide(name.Mid(level + 2));
    return mCategories[row.Deck] = last.empty() ? wxString(_("Default")) : OneLine(last);
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
    // One that is too large is opened, so that it can be asked about.
    if (!deck->Open(path) && !deck->IsTooLarge()) {
        message = deck->GetFailure();
        return nullptr;
    }
    return deck;
}
