#include "formats/decks/DeckFormats.h"

#include <wx/intl.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Time.h"
#include "formats/HtmlText.h"
#include "formats/decks/AnkiPlan.h"
#include "formats/decks/AnkiTemplate.h"

namespace {

constexpr int64_t kDay = 86400;
// More than all days up to the year 9999, and small enough that sums do not overflow.
constexpr int64_t kGreatestDays = 3000000;
// Separates numbers of days, which are smaller, from moments since 2001, which are greater.
constexpr int64_t kLeastMoment = 1000000000;

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

wxString OneLine(wxString text) {
    if (text.find(L'\n') != wxString::npos) {
        text.Replace(L"\n", L" ");
    }
    return text;
}

// The fields of a note as text, each converted once.
class NoteTexts {
  public:
    NoteTexts(const AnkiNoteType& type, const TypePlan& plan, const wxString& fields,
              HtmlLosses& losses) {
        const std::wstring_view whole(fields.wc_str(), fields.length());
        size_t at = 0;
        while (at <= whole.size()) {
            const size_t end = std::min(whole.find(L'\x1F', at), whole.size());
            mSources.emplace_back(whole.data() + at, end - at);
            at = end + 1;
        }
        mSources.resize(std::max(mSources.size(), type.Fields.size()));
        mTexts.reserve(mSources.size());
        for (size_t i = 0; i < mSources.size(); ++i) {
            HtmlText text = ReadHtml(mSources[i], false, losses);
            if (plan.WithReadings.count(i) != 0 && text.Text.find(L'[') != wxString::npos) {
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
    float GetProgress() const override {
        const size_t count = mCollection.CountNotes();
        return count == 0 ? 1.0f : static_cast<float>(mNext) / static_cast<float>(count);
    }

  private:
    bool ReadNote() override;
    void MakeCards(const AnkiNoteType& type, const TypePlan& plan, const NoteTexts& note,
                   std::vector<AnkiCard> cards, const std::string& id, const wxString& tags);
    void MakePairCard(const AnkiNoteType& type, const TypePlan& plan, size_t which,
                      const NoteTexts& note, const std::vector<AnkiCard>& cards,
                      const std::string& id, const wxString& tags);
    void MakeClozeCards(const AnkiNoteType& type, const TypePlan& plan, const NoteTexts& note,
                        const std::vector<AnkiCard>& cards, const std::string& id,
                        const wxString& tags);
    void FillSides(const TypePlan& plan, size_t which, const NoteTexts& note, DeckCard& card,
                   std::set<size_t>& used) const;
    void FillChosen(const std::vector<FieldRole>& roles, const NoteTexts& note, DeckCard& card,
                    std::set<size_t>& used) const;
    wxString MakeNotes(const AnkiNoteType& type, const NoteTexts& note,
                       const std::set<size_t>& used, const wxString& tags) const;
    void TakeSchedule(const AnkiCard& row, const CardUuid& id, CardSchedule& schedule,
                      bool& excluded);
    const wxString& CategoryOf(const AnkiCard& row);

    DeckOptions mOptions;
    AnkiCollection mCollection;
    int64_t mNow = 0;
    std::map<int64_t, TypePlan> mPlans;
    // The categories of decks that were looked up.
    std::map<int64_t, wxString> mCategories;
    size_t mNext = 0;
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

bool AnkiDeck::ReadNote() {
    if (mNext == mCollection.CountNotes() || !mFailure.empty()) {
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
    const TypePlan& plan = mPlans.at(row.TypeId);
    HtmlLosses losses;
    const NoteTexts note(type->second, plan, row.Fields, losses);
    Count(DeckLoss::kPictures, losses.Pictures);
    Count(DeckLoss::kSounds, losses.Sounds);
    Count(DeckLoss::kFormulas, losses.Formulas);
    Count(DeckLoss::kHints, plan.Hints);
    MakeCards(type->second, plan, note, std::move(cards), row.Guid + ' ' + std::to_string(row.Id),
              TrimWide(row.Tags));
    return true;
}

void AnkiDeck::MakeCards(const AnkiNoteType& type, const TypePlan& plan, const NoteTexts& note,
                         std::vector<AnkiCard> cards, const std::string& id, const wxString& tags) {
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

void AnkiDeck::MakePairCard(const AnkiNoteType& type, const TypePlan& plan, size_t which,
                            const NoteTexts& note, const std::vector<AnkiCard>& cards,
                            const std::string& id, const wxString& tags) {
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
    const std::string part = which == 0 ? "" : std::to_string(pair.Forward);
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

void AnkiDeck::FillSides(const TypePlan& plan, size_t which, const NoteTexts& note, DeckCard& card,
                         std::set<size_t>& used) const {
    const TemplatePair& pair = plan.Pairs[which];
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
        // The question is empty in a direction that this note lacks.
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

void AnkiDeck::FillChosen(const std::vector<FieldRole>& roles, const NoteTexts& note,
                          DeckCard& card, std::set<size_t>& used) const {
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

wxString AnkiDeck::MakeNotes(const AnkiNoteType& type, const NoteTexts& note,
                             const std::set<size_t>& used, const wxString& tags) const {
    wxString notes;
    for (size_t i = 0; i < note.Count(); ++i) {
        if (used.count(i) == 0 && !note.Text(i).empty()) {
            const wxString name = i < type.Fields.size() ? type.Fields[i] + L": " : wxString();
            const wxString& reading = note.Reading(i);
            AddLine(notes,
                    name + note.Text(i) + (reading.empty() ? wxString() : L" (" + reading + L")"));
        }
    }
    if (!tags.empty()) {
        AddLine(notes, L"Tags: " + tags);
    }
    return notes;
}

void AnkiDeck::MakeClozeCards(const AnkiNoteType& type, const TypePlan& plan, const NoteTexts& note,
                              const std::vector<AnkiCard>& cards, const std::string& id,
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
        card.Card.CardId = DeckCardId(id, "c" + std::to_string(number));
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
    if (!deck->Open(path)) {
        message = deck->GetFailure();
        return nullptr;
    }
    return deck;
}
