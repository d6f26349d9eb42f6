// The collecting of what changed here, and the writing of what the store becomes. What comes from
// other computers is taken in by CardMergeApply.cpp.

#include "sync/CardMerge.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "base/Unicode.h"
#include "scheduler/ScheduleFold.h"
#include "sync/StoreScan.h"

namespace {

// How many states are kept in memory.
constexpr size_t kCacheSize = 4096;
// A score is written into the store a moment before its line is in the log. A schedule as young as
// this, in seconds, is left for the next exchange unless a line explains it.
constexpr int64_t kYoungReview = 10;
// How far ahead of all news from other computers, in seconds, the clock is believed.
constexpr int64_t kMostAhead = int64_t{60} * 86400;

int64_t SecondsOf(const wxDateTime& time) {
    return time.IsValid() ? int64_t{time.GetTicks()} : -1;
}

// Notes have the letters of the fields, and two for the schedules.
EditedField NotedField(CardField field) {
    return static_cast<EditedField>(field);
}
EditedField NotedField(ReviewDirection direction) {
    return direction == kReviewForward ? EditedField::kForward : EditedField::kReverse;
}

}  // namespace

size_t CardMerge::IdHash::operator()(const CardUuid& id) const {
    size_t hash = 0;
    std::memcpy(&hash, id.Bytes.data(), sizeof hash);
    return hash;
}

CardMerge::CardMerge(const Context& context, const std::vector<EditNote>& notes)
    : mContext(context),
      mState(context.State),
      mOut(context.Out),
      mOwnTouch{context.IsJoining ? kTimeBeforeExchanges : context.Time.Next(context.Now),
                context.Machine} {
    for (const EditNote& note : notes) {
        for (size_t field = 0; field < kEditedFieldCount; ++field) {
            if (note.Fields.test(field)) {
                mNotes[{note.CardId, field}] = note.Time;
            }
        }
    }
    mState.ReadCategories();
    mNames.Set(mState.ReadCategoryEvents());
    mNamesHere = mNames;
    for (const auto& [card, with] : mState.ReadUnions()) {
        CardUuid gone;
        CardUuid stays;
        mUnions.Add(card, with, gone, stays);
    }
    Query ahead(mState.Sql(), "SELECT Session, Number FROM beside.Ahead");
    while (ahead.Step()) {
        uint64_t session = 0;
        ParseHexText(ahead.Text(0), session);
        mAhead.emplace(session, ahead.Int(1));
    }
    mState.Sql().Execute(
        "CREATE TEMP TABLE IF NOT EXISTS Events(CardId TEXT, Direction INTEGER,"
        " Text TEXT); DELETE FROM temp.Events;"
        "CREATE INDEX IF NOT EXISTS temp.EventsOfCards ON Events(CardId);");
}

bool CardMerge::HasNote(const CardUuid& id, EditedField field) const {
    return mNotes.count({id, static_cast<size_t>(field)}) > 0;
}

// Tells all that this computer has changed the card, whichever of the changes stands.
void CardMerge::TouchOwn(SyncedCard& state) {
    state.Touch(mOwnTouch);
    mOut.BeginCard(state.Id, mOwnTouch);
}

Stamp CardMerge::StampFor(const CardUuid& id, CardField field, const Stamp& replaced) {
    if (mContext.IsJoining) {
        return {kTimeBeforeExchanges, mContext.Machine};
    }
    const auto note = mNotes.find({id, IndexOf(field)});
    if (note == mNotes.end() || !mContext.Rules.KnowsTimesOfEdits) {
        return {mContext.Time.Next(mContext.Now), mContext.Machine};
    }
    // What was changed again later is not older than what it replaced.
    const int64_t time = std::max(note->second, replaced.Time + 1);
    mContext.Time.See(time);
    return {time, mContext.Machine};
}

void CardMerge::CollectCategories() {
    const std::map<int32_t, std::string> before = mState.ReadCopyCategories();
    const std::map<int32_t, std::string> now = mState.Categories();
    std::vector<CategoryEvent> events;
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    const Stamp at = mContext.IsJoining ? Stamp{kTimeBeforeExchanges, mContext.Machine}
                                        : Stamp{mContext.Time.Next(mContext.Now), mContext.Machine};
    const auto isThere = [&now](const std::string& name) {
        return std::any_of(now.begin(), now.end(),
                           [&](const auto& category) { return category.second == name; });
    };
    std::set<std::string> renamedTo;
    for (const auto& [id, name] : before) {
        const auto found = now.find(id);
        if (found != now.end() && found->second == name) {
            continue;
        }
        // The id of a category that is gone is used again. A rename leaves cards where they were.
        const bool keepsCards = found != now.end() && mState.KeepsCards(id);
        if (goesBack) {
            // An earlier store has no say in what became of its categories since.
            mRestoresCategories = true;
            if (keepsCards && mState.FindCategory(name) == -1) {
                mState.RenameCategory(id, name);
                renamedTo.insert(found->second);
            }
        } else if (keepsCards || (!mContext.Rules.NamesCategories && found != now.end())) {
            events.push_back({CategoryEvent::kRenamed, name, found->second, at});
            renamedTo.insert(found->second);
        } else if (!isThere(name)) {
            events.push_back({CategoryEvent::kDeleted, name, "", at});
        }
    }
    // A name that a category has lost may have been given to another one since.
    const Stamp later =
        mContext.IsJoining ? at : Stamp{mContext.Time.Next(mContext.Now), mContext.Machine};
    for (const auto& [id, name] : now) {
        const auto found = before.find(id);
        const bool isNew = found == before.end() || found->second != name;
        const bool isFree =
            std::any_of(events.begin(), events.end(),
                        [lost = name](const CategoryEvent& event) { return event.Name == lost; });
        if (isNew && renamedTo.count(name) == 0 &&
            (!mNames.IsGiven(name) || isFree || mContext.IsJoining)) {
            events.push_back({CategoryEvent::kAdded, name, "", later});
        }
    }
    for (const CategoryEvent& event : events) {
        if (mState.AddCategoryEvent(event)) {
            mOut.AddCategory(event);
        }
    }
    mNames.Set(mState.ReadCategoryEvents());
    mNamesHere = mNames;
}

int64_t CardMerge::ReadOwnEvents(int64_t offset, bool isWhole) {
    mReadsWholeLog = isWhole || mContext.IsJoining || mContext.Answer != ExchangeAnswer::kAsk;
    return VisitEvents(
        mContext.LogPath, offset, [this](const ScheduleEvent& event) { TakeNewEvent(event); },
        mContext.IsCancelled);
}

void CardMerge::TakeNewEvent(const ScheduleEvent& event) {
    mOut.AddEvent(event);
    mLastEvent = FormatEventKey(event);
    const Place place(event.CardId, event.Direction);
    auto last = mLastEvents.find(place);
    const bool isFirst = last == mLastEvents.end();
    if (isFirst) {
        SyncedCard copy;
        if (!mReadsWholeLog) {
            mState.LoadCopy(event.CardId, copy);
        }
        const CardSchedule known = copy.Schedule(event.Direction);
        last = mLastEvents.emplace(place, LastEvent{known, known}).first;
        if (!copy.IsKnown) {
            // The first event of a card is not held against anything.
            last->second.After = event.From;
        }
    }
    if (!event.IsSet && event.Review.Replaces < 0 &&
        !IsSameSchedule(event.From, last->second.After)) {
        if (mReadsWholeLog) {
            mDoubtful.insert(place);
        } else {
            mBreaks.push_back({event, isFirst});
        }
    }
    last->second = {event.From, event.After};
}

void CardMerge::Collect(const CardUuid& id) {
    Load(id);
}

SyncedCard& CardMerge::Load(const CardUuid& id) {
    const auto found = mCache.find(id);
    if (found != mCache.end()) {
        return found->second;
    }
    if (mCache.size() >= kCacheSize) {
        FlushCache();
    }
    SyncedCard& state = mCache[id];
    mState.LoadCopy(id, state);
    if (mCollected.insert(id).second) {
        CollectCard(state);
    }
    return state;
}

void CardMerge::FlushCache() {
    for (const auto& [id, state] : mCache) {
        Store(id);
    }
    mCache.clear();
}

void CardMerge::Store(const CardUuid& id) {
    const SyncedCard& state = mCache.at(id);
    const bool wasEver = std::any_of(state.Stamps.begin(), state.Stamps.end(),
                                     [](const Stamp& stamp) { return !stamp.IsNone(); });
    if (wasEver || state.IsUnited || state.Seen) {
        mState.SaveCopy(state);
    }
}

void CardMerge::CollectCard(SyncedCard& state) {
    SyncedCard live;
    const bool isThere = mState.LoadLive(state.Id, live);
    const bool wasThere = state.IsKnown && state.Exists();
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    if (isThere && !wasThere) {
        if (state.IsKnown && (state.IsUnited || goesBack)) {
            // It became one with another card, or the earlier store still has it.
            mTouched.insert(state.Id);
        } else {
            CollectNew(state, live);
        }
    } else if (!isThere && wasThere) {
        if (goesBack && !HasNote(state.Id, EditedField::kDeletion)) {
            mTouched.insert(state.Id);
            return;
        }
        ++mLostHere;
        state.Seen = state.Touched;
        mOut.BeginCard(state.Id, Stamp());
        mOut.AddDeletion(state.Touched);
    } else if (isThere) {
        CollectFields(state, live);
    }
}

void CardMerge::CollectNew(SyncedCard& state, const SyncedCard& live) {
    const SyncedCard before = state;
    state.Values = live.Values;
    state.Forward = live.Forward;
    state.Reverse = live.Reverse;
    state.CategoryId = live.CategoryId;
    state.IsKnown = true;
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        state.Stamps[i] = StampFor(state.Id, static_cast<CardField>(i), before.Stamps[i]);
    }
    TouchOwn(state);
    mOut.AddCard(state);
    if (before.IsKnown) {
        // It was deleted and is back as it was then. Its reviews since count.
        mFolded.insert(state.Id);
        return;
    }
    for (const ReviewDirection direction : kEachDirection) {
        const CardSchedule& schedule = state.Schedule(direction);
        const auto last = mLastEvents.find({state.Id, direction});
        const bool isExplained = last != mLastEvents.end()
                                     ? IsSameSchedule(last->second.After, schedule) &&
                                           mDoubtful.count({state.Id, direction}) == 0
                                     : IsUntouched(schedule);
        if (!isExplained) {
            mUnexplained.push_back({{state.Id, direction}, schedule});
        }
    }
}

void CardMerge::CollectFields(SyncedCard& state, const SyncedCard& live) {
    const bool goesBack = mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining;
    const auto collect = [&](CardField field, const std::string& before) {
        const std::string& now = live.Value(field);
        if (now == before) {
            return;
        }
        if (goesBack && !HasNote(state.Id, NotedField(field))) {
            mTouched.insert(state.Id);
            return;
        }
        Stamp& stamp = state.Stamps[IndexOf(field)];
        const Stamp replaced = stamp;
        stamp = StampFor(state.Id, field, replaced);
        state.Value(field) = now;
        TouchOwn(state);
        mOut.AddField(field, stamp, replaced, now);
    };
    for (size_t i = 0; i < kCardFieldCount; ++i) {
        const auto field = static_cast<CardField>(i);
        if (field == CardField::kCategory) {
            const std::string name = CategoryIn(mNamesHere, state);
            collect(field, name);
        } else {
            const std::string before = state.Value(field);
            collect(field, before);
        }
    }
    state.CategoryId = live.CategoryId;
    for (const ReviewDirection direction : kEachDirection) {
        CollectSchedule(state, live, direction);
    }
}

void CardMerge::CollectSchedule(SyncedCard& state, const SyncedCard& live,
                                ReviewDirection direction) {
    CardSchedule& before = state.Schedule(direction);
    const CardSchedule& now = direction == kReviewForward ? live.Forward : live.Reverse;
    // The number for early review is never a change by itself.
    before.ERC = now.ERC;
    if (IsSameSchedule(before, now)) {
        return;
    }
    if (mContext.Answer == ExchangeAnswer::kTakeNewer && !mContext.IsJoining &&
        !HasNote(state.Id, NotedField(direction))) {
        mTouched.insert(state.Id);
        mFolded.insert(state.Id);
        return;
    }
    const auto last = mLastEvents.find({state.Id, direction});
    const bool isExplained = last != mLastEvents.end() && IsSameSchedule(last->second.After, now);
    const int64_t age = mContext.Now / 1000 - SecondsOf(now.LastReview);
    const bool isScored = SecondsOf(now.LastReview) != SecondsOf(before.LastReview);
    if (!isExplained && isScored && age >= 0 && age < kYoungReview) {
        mLeavesSomething = true;
        return;
    }
    if (now.Introduced < before.Introduced ||
        (now.Introduced && before.Introduced &&
         SecondsOf(now.LastReview) < SecondsOf(before.LastReview))) {
        ++mLostHere;
    }
    before = now;
    TouchOwn(state);
    if (!isExplained) {
        mUnexplained.push_back({{state.Id, direction}, now});
    }
}

void CardMerge::GatherEvents(const std::unordered_set<CardUuid, IdHash>& cards) {
    std::unordered_set<CardUuid, IdHash> wanted;
    for (const CardUuid& card : cards) {
        if (mGathered.insert(card).second) {
            wanted.insert(card);
        }
    }
    if (wanted.empty()) {
        return;
    }
    VisitEvents(
        mContext.LogPath, 0,
        [&](const ScheduleEvent& event) {
            if (wanted.count(UnionOf(event.CardId)) > 0) {
                KeepEvent(event);
            }
        },
        mContext.IsCancelled);
}

void CardMerge::KeepEvent(const ScheduleEvent& event) {
    const std::string card = IdText(UnionOf(event.CardId));
    const std::string text = FormatEvent(event);
    Query query(mState.Sql(), "INSERT INTO temp.Events VALUES (?,?,?)", card, int{event.Direction},
                text);
    query.Step();
}

std::vector<ScheduleEvent> CardMerge::EventsOf(const CardUuid& id, ReviewDirection direction) {
    std::vector<ScheduleEvent> events;
    const std::string card = IdText(id);
    Query query(mState.Sql(), "SELECT Text FROM temp.Events WHERE CardId=? AND Direction=?", card,
                int{direction});
    while (query.Step()) {
        ScheduleEvent event;
        if (ParseStoredEvent(query.Text(0), event)) {
            events.push_back(std::move(event));
        }
    }
    return events;
}

// Gives an event of this computer to the log and to the others.
void CardMerge::AddSet(ScheduleEvent event) {
    mState.AddPending(event);
    mOut.AddEvent(event);
    if (mGathered.count(event.CardId) > 0) {
        KeepEvent(event);
    }
}

void CardMerge::ExplainSchedules() {
    std::unordered_set<CardUuid, IdHash> cards;
    for (const auto& [place, last] : mLastEvents) {
        // The store may not have taken the score, an exchange may have come in between, or a clock
        // may have dated an earlier event later.
        if (!mReadsWholeLog) {
            mFolded.insert(place.first);
            SyncedCard& state = Load(place.first);
            if (state.IsKnown && state.Exists()) {
                TouchOwn(state);
            }
        }
    }
    for (const Break& found : mBreaks) {
        cards.insert(found.Event.CardId);
    }
    for (const auto& [place, schedule] : mUnexplained) {
        cards.insert(place.first);
    }
    GatherEvents(cards);
    for (const auto& [event, isFirst] : mBreaks) {
        const std::vector<ScheduleEvent> events = EventsOf(event.CardId, event.Direction);
        const CardSchedule& from = event.From;
        const EventKey key = KeyOf(event);
        const bool isFork =
            isFirst && std::any_of(events.begin(), events.end(), [&](const ScheduleEvent& other) {
                return !(KeyOf(other) == key) &&
                       (IsSameSchedule(other.After, from) ||
                        (!other.IsSet && IsSameSchedule(other.From, from)));
            });
        if (isFork) {
            // It was given before the card had what the last exchange brought.
            mFolded.insert(event.CardId);
            continue;
        }
        // Another program had set the schedule in between.
        ScheduleEvent set = event;
        set.IsSet = true;
        set.After = from;
        set.HasExtension = false;
        AddSet(std::move(set));
    }
    for (const auto& [place, schedule] : mUnexplained) {
        const std::vector<ScheduleEvent> events = EventsOf(place.first, place.second);
        const auto ahead = [this](const ScheduleEvent& event) { return IsAhead(event); };
        if (events.empty() ? IsUntouched(schedule)
                           : IsSameSchedule(FoldEvents(events, ahead).Schedule, schedule)) {
            continue;
        }
        int64_t time = schedule.Introduced ? SecondsOf(schedule.LastReview) : -1;
        const auto note = mNotes.find({place.first, static_cast<size_t>(NotedField(place.second))});
        int64_t found = mContext.Now;
        if (note != mNotes.end()) {
            found = note->second;
        }
        // A clock that is far ahead of all news would make this stand for years.
        if ((time < 0 || !events.empty()) && found / 1000 <= mContext.LatestNews + kMostAhead) {
            time = std::max(time, found / 1000);
        }
        // It stands for what came last here, whatever the clock was.
        for (const ScheduleEvent& event : events) {
            time = std::max(time, event.Time + 1);
        }
        AddSet(MakeSetEvent(std::max<int64_t>(time, 0), place.first, place.second, schedule));
    }
}

// Returns the names with all events that have come so far.
CategoryNames& CardMerge::Names() {
    if (mHasNewNames) {
        mHasNewNames = false;
        mNames.Set(mState.ReadCategoryEvents());
    }
    return mNames;
}

std::string CardMerge::CategoryNow(const SyncedCard& state) {
    return CategoryIn(Names(), state);
}

std::string CardMerge::CategoryIn(const CategoryNames& names, const SyncedCard& state) {
    const std::string& value = state.Value(CardField::kCategory);
    if (value.empty() || value[0] != kNamedCategory) {
        return kNoCategory;
    }
    return kNamedCategory +
           names.NameNow(value.substr(1), state.Stamps[IndexOf(CardField::kCategory)]);
}

bool CardMerge::IsAhead(const ScheduleEvent& event) const {
    return mAhead.count({event.Session, event.Number}) > 0;
}

void CardMerge::Touch(const CardUuid& id) {
    mTouched.insert(id);
    mChangesStore = true;
}

void CardMerge::Settle() {
    SettleCategories();
    GatherEvents(mFolded);
    // One after the other in the order of the tables. What is settled touches nothing else.
    std::set<CardUuid> cards = std::exchange(mTouched, {});
    const std::set<CardUuid> touched = cards;
    cards.insert(mFolded.begin(), mFolded.end());
    for (const CardUuid& id : cards) {
        bool differs = false;
        if (mFolded.count(id) > 0) {
            SyncedCard& state = Load(id);
            for (const ReviewDirection direction : kEachDirection) {
                differs = SettleSchedule(state, direction) || differs;
            }
            differs = differs && state.IsKnown && state.Exists();
        }
        if (differs || touched.count(id) > 0) {
            mChangesStore = true;
            SettleCard(id);
        }
    }
    FlushCache();
    DropEmptyCategories();
    mState.MirrorCategories();
}

// Sees to the cards that went into a category by one of these names.
void CardMerge::TouchCardsOf(const std::set<std::string>& names) {
    for (const std::string& name : names) {
        const std::string value = kNamedCategory + name;
        Query query(mState.Sql(), "SELECT CardId FROM beside.Copy WHERE Category=? AND Gone=0",
                    value);
        while (query.Step()) {
            CardUuid card;
            if (ParseUuidUtf8(query.Text(0), card) == 0) {
                mTouched.insert(card);
            }
        }
    }
}

void CardMerge::SettleCategories() {
    FlushCache();
    std::set<std::string> names;
    for (const CategoryEvent& event : mNewCategoryEvents) {
        const std::string& last =
            event.What == CategoryEvent::kRenamed ? event.NewName : event.Name;
        for (const std::string& name : Names().NamesThatBecame(last)) {
            names.insert(name);
        }
        if (event.What != CategoryEvent::kRenamed) {
            continue;
        }
        const int32_t id = mState.FindCategory(event.Name);
        const bool isFree = mState.FindCategory(event.NewName) == -1;
        // Where the old name was given anew, or the new one has been renamed since, the cards go
        // one by one.
        if (id != -1 && isFree && !Names().IsGiven(event.Name) &&
            Names().NameNow(event.Name, Stamp()) == event.NewName) {
            mState.RenameCategory(id, event.NewName);
            mChangesStore = true;
        }
    }
    TouchCardsOf(names);
    if (mNewCategoryEvents.empty() && !mContext.IsJoining && !mRestoresCategories) {
        return;
    }
    for (const std::string& name : Names().GivenNames()) {
        if (mState.FindCategory(name) == -1) {
            mState.FindOrAddCategory(name);
            mChangesStore = true;
        }
    }
}

void CardMerge::SettleCard(const CardUuid& id) {
    SyncedCard& state = Load(id);
    if (!state.Exists()) {
        mState.DeleteLive(id);
        return;
    }
    if (!state.IsKnown) {
        return;
    }
    const std::string category = CategoryNow(state);
    state.CategoryId = -1;
    if (category[0] == kNamedCategory) {
        const std::string name = category.substr(1);
        state.CategoryId = mState.FindOrAddCategory(name);
        if (!Names().IsGiven(name)) {
            // A card from elsewhere brings back a category that was deleted.
            const CategoryEvent event = {CategoryEvent::kAdded,
                                         name,
                                         "",
                                         {mContext.Time.Next(mContext.Now), mContext.Machine}};
            mState.AddCategoryEvent(event);
            mOut.AddCategory(event);
            mHasNewNames = true;
        }
    }
    mState.WriteLive(state);
}

// Gives a card the schedule that follows from its reviews. Returns true when it is another one.
bool CardMerge::SettleSchedule(SyncedCard& state, ReviewDirection direction) {
    const std::vector<ScheduleEvent> events =
        mContext.Rules.FoldsReviews ? EventsOf(state.Id, direction) : std::vector<ScheduleEvent>();
    if (events.empty()) {
        return false;
    }
    const FoldResult folded =
        FoldEvents(events, [this](const ScheduleEvent& event) { return IsAhead(event); });
    CardSchedule& schedule = state.Schedule(direction);
    if (IsSameSchedule(schedule, folded.Schedule)) {
        return false;
    }
    // Where the log was deleted no event tells of the schedule here, and the later one stands.
    const bool isKnown = std::any_of(events.begin(), events.end(), [&](const auto& event) {
        return IsSameSchedule(event.After, schedule) ||
               (!event.IsSet && IsSameSchedule(event.From, schedule));
    });
    const bool isLater = schedule.Introduced &&
                         SecondsOf(schedule.LastReview) > SecondsOf(folded.Schedule.LastReview);
    const bool hasSet =
        std::any_of(events.begin(), events.end(), [](const auto& event) { return event.IsSet; });
    if (!isKnown && isLater && !folded.HasForked && !hasSet) {
        return false;
    }
    schedule = folded.Schedule;
    return true;
}

void CardMerge::DropEmptyCategories() {
    if (mNewCategoryEvents.empty()) {
        return;
    }
    const std::map<int32_t, std::string> categories = mState.Categories();
    for (const auto& [id, name] : categories) {
        // A store has one category at least.
        if (!Names().IsGiven(name) && mState.Categories().size() > 1 && !mState.HasCards(id)) {
            mState.DeleteCategory(id);
            mChangesStore = true;
        }
    }
}
