// What comes from other computers.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "sync/CardMerge.h"

namespace {

// How far a review may be dated past all news from elsewhere, in seconds.
constexpr int64_t kMostAhead = 86400;
// The place of the first value in the record of a card.
constexpr size_t kFirstValue = 3;

// Returns false for a value that the field cannot have.
bool IsValue(CardField field, std::string_view value) {
    int64_t number = 0;
    switch (field) {
        case CardField::kCategory:
            return value == kNoCategory || (!value.empty() && value[0] == kNamedCategory);
        case CardField::kOrder:
            return ParseInt64(value, number) && number >= INT32_MIN && number <= INT32_MAX;
        case CardField::kForwardX:
        case CardField::kReverseX:
            return value == "0" || value == "1";
        default:
            return true;
    }
}

bool ParseId(std::string_view text, CardUuid& id) {
    return text.size() == 36 && ParseUuidUtf8(text, id) == 0 && !id.IsZero();
}

}  // namespace

void CardMerge::Unite(const CardUuid& one, const CardUuid& other) {
    mState.AddUnion(one, other);
    CardUuid gone;
    CardUuid stays;
    if (mUnions.Add(one, other, gone, stays)) {
        ApplyUnion(gone, stays);
    }
}

void CardMerge::EndFile() {
    mFileMachines = MachineNumbers();
    mFileCard = CardUuid();
}

SyncedCard* CardMerge::CurrentCard() {
    return mFileCard.IsZero() ? nullptr : &Load(UnionOf(mFileCard));
}

void CardMerge::Apply(const Sender& sender, const ExchangeFields& record) {
    const std::string_view kind = record[0];
    const auto has = [&record](size_t count) { return record.size() >= count; };
    if (kind == "m" && has(3)) {
        int64_t number = 0;
        uint64_t machine = 0;
        if (ParseInt64(record[1], number) && ParseHexText(record[2], machine)) {
            mFileMachines.Set(number, machine);
        }
    } else if (kind == "c" && has(2)) {
        if (sender.IsWhole && mHasNewNames) {
            // All names precede the cards, which then go into the store's categories at once.
            SettleCategories();
        }
        mFileCard = CardUuid();
        Stamp touched;
        if (has(3) && ParseId(record[1], mFileCard) &&
            ParseStamp(record[2], mFileMachines, touched) && !touched.IsNone()) {
            mContext.Time.See(touched.Time);
            SyncedCard& state = *CurrentCard();
            state.Touch(touched);
            Touch(state.Id);
        }
        ++mReceived;
    } else if (kind == "n" && has(14)) {
        ApplyCard(sender, record);
    } else if (kind == "f" && has(5)) {
        CardField field = CardField::kFront;
        Stamp at;
        Stamp replaced;
        SyncedCard* const state = CurrentCard();
        if (state != nullptr && state->IsKnown && record[1].size() == 1 &&
            FieldOfLetter(record[1][0], field) && ParseStamp(record[2], mFileMachines, at) &&
            ParseStamp(record[3], mFileMachines, replaced) && IsValue(field, record[4])) {
            ApplyField(*state, field, at, replaced, Base::kKnown, std::string(record[4]));
            Touch(state->Id);
        }
    } else if (kind == "d" && has(2)) {
        ApplyDeletion(record);
    } else if (kind == "r" && has(3)) {
        ApplyEvent(sender, record);
    } else if (kind == "k" && has(5)) {
        ApplyCategory(record);
    } else if (kind == "u" && has(3)) {
        CardUuid one;
        CardUuid other;
        if (ParseId(record[1], one) && ParseId(record[2], other)) {
            Unite(one, other);
        }
    } else if (kind == "j" && has(3)) {
        Stamp at;
        Stamp known;
        const std::string answer = mState.GetFact("joins");
        MachineNumbers& numbers = mState.Numbers();
        ParseStamp(mState.GetFact("joins-at"), numbers, known);
        if ((record[1] == "yes" || record[1] == "no") && ParseStamp(record[2], mFileMachines, at) &&
            (answer.empty() || known < at)) {
            mState.SetFact("joins", std::string(record[1]));
            mState.SetFact("joins-at", FormatStamp(at, numbers));
        }
    } else if (kind == "a" && has(4)) {
        uint64_t session = 0;
        int64_t number = 0;
        CardUuid card;
        if (ParseHexText(record[1], session) && ParseInt64(record[2], number) &&
            ParseId(record[3], card) && mAhead.emplace(session, number).second) {
            const std::string sessionText(record[1]);
            const std::string cardText(record[3]);
            Query query(mState.Sql(), "INSERT OR IGNORE INTO beside.Ahead VALUES (?,?,?)",
                        sessionText, number, cardText);
            query.Step();
            const CardUuid id = UnionOf(card);
            SetMark(id, kFolded);
            Touch(id);
        }
    } else if ((kind == "x" && has(7)) || (kind == "v" && has(4))) {
        ApplyLostText(record);
    }
}

void CardMerge::ApplyCard(const Sender& sender, const ExchangeFields& record) {
    SyncedCard* const state = CurrentCard();
    FieldStamps stamps;
    MachineTimes touched;
    if (state == nullptr || !ParseStamps(record[1], mFileMachines, stamps) ||
        !ParseTimes(record[2], mFileMachines, touched)) {
        return;
    }
    const bool isNew = !state->IsKnown;
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        const auto field = static_cast<CardField>(i);
        if (!IsValue(field, record[kFirstValue + i])) {
            continue;
        }
        // A whole copy does not tell what each change replaced, but which changes of each computer
        // it had seen.
        const uint64_t changedBy = state->Stamps[i].Machine;
        const auto seen = touched.find(changedBy);
        const auto known = state->Touched.find(changedBy);
        const bool isUnseen = known != state->Touched.end() &&
                              (seen == touched.end() || seen->second < known->second);
        const Base base = !sender.IsWhole ? Base::kKnown
                          : isUnseen      ? Base::kBothChanged
                                          : Base::kUnknown;
        ApplyField(*state, field, stamps[i], Stamp(), base, std::string(record[kFirstValue + i]));
    }
    for (const auto& [machine, time] : touched) {
        state->Touch({time, machine});
    }
    for (const ReviewDirection direction : kEachDirection) {
        const size_t place = kFirstValue + kCardFieldCount + (direction == kReviewForward ? 0 : 1);
        CardSchedule schedule;
        CardSchedule& own = state->Schedule(direction);
        // It serves until there are reviews.
        if (ParseSchedule(record[place], schedule) && (isNew || IsUntouched(own))) {
            own = schedule;
        }
    }
    if (isNew) {
        state->IsKnown = true;
        ++mNewCount;
        const std::string category = CategoryNow(*state);
        state->CategoryId =
            category[0] == kNamedCategory ? mState.FindCategory(category.substr(1)) : -1;
    }
    mMarks[state->Id] |= kTouched | kFolded | (isNew ? kNew : 0U);
    mChangesStore = true;
}

void CardMerge::ApplyField(SyncedCard& state, CardField field, const Stamp& at,
                           const Stamp& replaced, Base base, const std::string& value) {
    mContext.Time.See(at.Time);
    Stamp& present = state.Stamps[IndexOf(field)];
    if (base == Base::kKnown && !replaced.IsNone()) {
        // What a computer has replaced knowingly is no lost text.
        Query query(mState.Sql(),
                    "UPDATE beside.Conflicts SET Closed=1, Value='' WHERE CardId=? AND Field=?"
                    " AND Time=? AND Machine=?");
        const std::string card = IdText(state.Id);
        const std::string letter(1, kFieldLetters[IndexOf(field)]);
        const std::string machine = HexText(replaced.Machine);
        query.Bind(card);
        query.Bind(letter);
        query.Bind(replaced.Time);
        query.Bind(machine);
        query.Step();
    }
    if (at == present) {
        return;
    }
    const bool wins = present < at;
    const bool bothChanged = !present.IsNone() && (base == Base::kBothChanged ||
                                                   (base == Base::kKnown && replaced != present));
    std::string& own = state.Value(field);
    if (bothChanged && mContext.Rules.ListsLostTexts) {
        const std::string presentName = field == CardField::kCategory ? CategoryNow(state) : own;
        const std::string& loser = wins ? presentName : value;
        if (value != own && value != presentName && !loser.empty()) {
            LostText text;
            text.Card = state.Id;
            text.Field = field;
            text.Value = loser;
            text.Lost = wins ? present : at;
            text.Stands = wins ? at : present;
            mState.AddLostText(text);
            ++mConflicts;
        }
    }
    if (wins) {
        present = at;
        own = value;
        mCacheBytes += value.size();
    }
}

void CardMerge::ApplyDeletion(const ExchangeFields& record) {
    MachineTimes seen;
    const CardUuid named = mFileCard;
    // A deletion that knows nothing of a union is not one of the card that stays.
    if (named.IsZero() || UnionOf(named) != named || !ParseTimes(record[1], mFileMachines, seen)) {
        return;
    }
    SyncedCard& state = Load(named);
    const bool existed = state.Exists();
    if (!state.Seen) {
        state.Seen.emplace();
    }
    if (!mContext.Rules.BringsBack) {
        seen = state.Touched;
    }
    for (const auto& [machine, time] : seen) {
        int64_t& most = (*state.Seen)[machine];
        most = std::max(most, time);
    }
    if (existed && !state.Exists()) {
        ++mLostThere;
        if (mContext.Answer == ExchangeAnswer::kTakeMine) {
            // The user keeps it. A change that the deletion had not seen brings it back everywhere.
            TouchOwn(state);
        }
    }
    Touch(named);
}

void CardMerge::ApplyEvent(const Sender& sender, const ExchangeFields& record) {
    ScheduleEvent event;
    if (!ParseEvent(record[1], record[2], event)) {
        return;
    }
    mReceived += event.IsSet ? 0 : 1;
    event.CardId = event.Review.CardId = UnionOf(event.CardId);
    const std::string text = FormatEvent(event);
    mState.AddPending(text);
    KeepEvent(event.CardId, text);
    SetMark(event.CardId, kFolded);
    mChangesStore = true;
    if (event.Time > sender.LatestElsewhere + kMostAhead &&
        mAhead.emplace(event.Session, event.Number).second) {
        mAheadCount += event.IsSet ? 0 : 1;
        const std::string session = HexText(event.Session);
        const std::string card = IdText(event.CardId);
        Query query(mState.Sql(), "INSERT OR IGNORE INTO beside.Ahead VALUES (?,?,?)", session,
                    event.Number, card);
        query.Step();
        mOut.AddAhead(event);
    }
}

void CardMerge::ApplyCategory(const ExchangeFields& record) {
    CategoryEvent event;
    const std::string_view kind = record[1];
    if (kind.size() != 1 || !ParseStamp(record[2], mFileMachines, event.At) ||
        (kind[0] != CategoryEvent::kAdded && kind[0] != CategoryEvent::kDeleted &&
         kind[0] != CategoryEvent::kRenamed)) {
        return;
    }
    mContext.Time.See(event.At.Time);
    event.What = static_cast<CategoryEvent::Kind>(kind[0]);
    event.Name = record[3];
    event.NewName = record[4];
    if (mState.AddCategoryEvent(event)) {
        mNewCategoryEvents.push_back(event);
        mHasNewNames = true;
    }
}

void CardMerge::ApplyUnion(const CardUuid& gone, const CardUuid& stays) {
    // Both are loaded first: the first one's place may go when the second comes.
    const SyncedCard other = Look(gone);
    SyncedCard& state = Load(stays);
    if (other.IsKnown && !other.IsUnited) {
        for (size_t i = 0; i < kCardFieldCount; ++i) {
            if (!other.Stamps[i].IsNone()) {
                ApplyField(state, static_cast<CardField>(i), other.Stamps[i], Stamp(),
                           Base::kBothChanged, other.Values[i]);
            }
        }
        for (const ReviewDirection direction : kEachDirection) {
            const CardSchedule& theirs =
                direction == kReviewForward ? other.Forward : other.Reverse;
            CardSchedule& ours = state.Schedule(direction);
            if (!state.IsKnown ||
                (theirs.Introduced && (!ours.Introduced || ours.LastReview < theirs.LastReview))) {
                ours = theirs;
            }
        }
        for (const auto& [machine, time] : other.Touched) {
            state.Touch({time, machine});
        }
        state.IsKnown = true;
    }
    SyncedCard& united = Load(gone);
    united.IsUnited = true;
    united.IsKnown = true;
    // What was gathered for either has to be gathered again, under one name.
    mMarks[gone] &= ~(kGathered | kFolded);
    mMarks[stays] &= ~unsigned{kGathered};
    SetMark(stays, kFolded);
    mUnited.push_back(gone);
    Touch(gone);
    Touch(stays);
}

void CardMerge::ApplyLostText(const ExchangeFields& record) {
    CardUuid card;
    CardField field = CardField::kFront;
    Stamp lost;
    if (!ParseId(record[1], card) || record[2].size() != 1 || !FieldOfLetter(record[2][0], field) ||
        !ParseStamp(record[3], mFileMachines, lost) || lost.IsNone()) {
        return;
    }
    card = UnionOf(card);
    if (record[0] == "v" || record[5] == "1") {
        mState.CloseLostText(card, field, lost);
        return;
    }
    LostText text;
    text.Card = card;
    text.Field = field;
    text.Lost = lost;
    text.Value = record[6];
    if (ParseStamp(record[4], mFileMachines, text.Stands) && mContext.Rules.ListsLostTexts) {
        mState.AddLostText(text);
    }
}

int64_t CardMerge::JoinEqualCards(std::optional<bool> answer) {
    if (!mContext.Rules.JoinsEqualCards || mNewCount == 0 || !mHasCardsHere) {
        return 0;
    }
    // Equal texts and category, then the cards from elsewhere and those from here, by identity.
    using Texts = std::tuple<std::string, std::string, std::string>;
    std::map<Texts, std::pair<std::vector<CardUuid>, std::vector<CardUuid>>> groups;
    const auto textsOf = [this](const SyncedCard& state) {
        return Texts(state.Value(CardField::kFront), state.Value(CardField::kBack),
                     CategoryNow(state));
    };
    // A card from elsewhere that has become one with a card from here has found its equal.
    std::set<CardUuid> fromHere;
    std::set<CardUuid> fromElsewhere;
    const std::map<CardUuid, CardUuid> unions = mUnions.GetGone();
    for (const auto& [gone, stays] : unions) {
        for (const CardUuid& card : {gone, stays}) {
            (HasMark(card, kNew) ? fromElsewhere : fromHere).insert(stays);
        }
    }
    std::set<CardUuid> paired;
    std::set_intersection(fromHere.begin(), fromHere.end(), fromElsewhere.begin(),
                          fromElsewhere.end(), std::inserter(paired, paired.begin()));
    FlushCache();
    // Most cards have no equal. Which of them may have one their texts tell without their states.
    using Found = std::pair<size_t, CardUuid>;
    const auto visit = [this](const std::function<void(const Found&)>& take) {
        Query query(mState.Sql(), "SELECT CardId, Front, Back FROM beside.Copy WHERE Gone=0");
        while (query.Step()) {
            const std::hash<std::string> hash;
            CardUuid id;
            if (ParseUuidUtf8(query.Text(0), id) == 0) {
                take({hash(query.Text(1)) * 31 + hash(query.Text(2)), id});
            }
        }
    };
    std::vector<Found> here;
    std::unordered_set<size_t> textsHere;
    visit([&](const Found& found) {
        if (!HasMark(found.second, kNew) && paired.count(found.second) == 0) {
            here.push_back(found);
            textsHere.insert(found.first);
        }
    });
    std::vector<CardUuid> near;
    std::unordered_set<size_t> textsThere;
    visit([&](const Found& found) {
        if (HasMark(found.second, kNew) && paired.count(found.second) == 0 &&
            textsHere.count(found.first) > 0) {
            near.push_back(found.second);
            textsThere.insert(found.first);
        }
    });
    for (const CardUuid& id : near) {
        groups[textsOf(Look(id))].first.push_back(id);
    }
    for (const auto& [texts, id] : here) {
        if (textsThere.count(texts) > 0) {
            const auto group = groups.find(textsOf(Look(id)));
            if (group != groups.end()) {
                group->second.second.push_back(id);
            }
        }
    }
    int64_t pairs = 0;
    for (auto& [texts, cards] : groups) {
        auto& [theirs, ours] = cards;
        std::sort(theirs.begin(), theirs.end());
        std::sort(ours.begin(), ours.end());
        const size_t count = std::min(theirs.size(), ours.size());
        pairs += static_cast<int64_t>(count);
        for (size_t i = 0; answer == true && i < count; ++i) {
            mOut.AddUnion(theirs[i], ours[i]);
            Unite(theirs[i], ours[i]);
        }
    }
    return pairs;
}
