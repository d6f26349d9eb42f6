#include "exchange/ImportRecord.h"

#include <wx/intl.h>

#include <limits>

#include "exchange/ImportJob.h"
#include "store/Database.h"

namespace {

constexpr uint32_t kIdMask = AttributeMask(false, false, kAttributeId);

wxString SetFront(const wxString& value, wxString& front) {
    if (value.empty()) {
        return _("Every card must have a front attribute.");
    }
    front = value;
    return wxString();
}

wxString SetBack(const wxString& value, wxString& back) {
    if (value.empty()) {
        return _("Every card must have an back attribute.");
    }
    back = value;
    return wxString();
}

}  // namespace

bool ImportGroup::Add(FlashCard&& card) {
    mCards.Add(std::move(card), mResult.LineNumber);
    return !mCards.IsFull() || Write();
}

bool ImportGroup::Settle(const CardUuid& id) {
    return !mCards.HasCard(id) || Write();
}

bool ImportGroup::Settle(int32_t categoryId) {
    return !mCards.HasCategory(categoryId) || Write();
}

bool ImportGroup::Write() {
    if (mCards.IsEmpty()) {
        return true;
    }
    const NewCards::Outcome outcome = mCards.Write();
    mResult.RecordsInserted += outcome.Written;
    if (!outcome.HasFailed) {
        mIgnored.clear();
        return true;
    }
    for (const Ignored& ignored : mIgnored) {
        *ignored.pCounter -= ignored.Line > outcome.Line ? 1 : 0;
    }
    mIgnored.clear();
    mResult.LineNumber = outcome.Line;
    // Drops what came after it in the file.
    mCards.Clear();
    return mResult.Fail(
        StoreMessage(_("Unable to add flash card to database.  (%i:%s)"), mDatabase));
}

void ImportGroup::CountIgnored(int32_t& counter) {
    ++counter;
    if (!mCards.IsEmpty()) {
        mIgnored.push_back({&counter, mResult.LineNumber});
    }
}

bool ImportRecord::Read(const CardRecordReader& reader, Database& database, ImportResult& result,
                        ImportGroup& group) {
    const uint32_t count = reader.GetAttributeCount();
    for (uint32_t i = 0; i < count; ++i) {
        const CardAttribute& attribute = reader.GetAttribute(i);
        result.LineNumber = attribute.Line;
        if (!Add(attribute, database, result, group)) {
            return false;
        }
    }
    return true;
}

bool ImportRecord::Add(const CardAttribute& attribute, Database& database, ImportResult& result,
                       ImportGroup& group) {
    AttributeInfo info;
    if (!LookupAttribute(attribute.Name, info)) {
        return result.Fail(UnknownAttributeMessage(attribute.Name));
    }
    if ((Mask & info.Mask) != 0) {
        return result.Fail(RepeatedAttributeMessage());
    }
    if (info.Mask == kIdMask) {
        return SetId(attribute, database, result, group);
    }
    Mask |= info.Mask;
    wxString fault;
    if (info.IsSchedule) {
        CardSchedule& schedule = info.IsReverse ? Card.Reverse : Card.Forward;
        fault = SetScheduleValue(info.Code, attribute.Name, attribute.Value, schedule);
    } else {
        fault = SetValue(info.Code, attribute);
    }
    return fault.empty() || result.Fail(fault);
}

bool ImportRecord::SetId(const CardAttribute& attribute, Database& database, ImportResult& result,
                         ImportGroup& group) {
    if (attribute.Value.empty()) {
        // An empty id counts as absent, so it may also follow other attributes.
        return true;
    }
    if (Mask != 0) {
        return result.Fail(NamedMessage(_("\"%s\" must be specified before any other attributes."),
                                        attribute.Name));
    }
    // The zero identity stands for no card.
    if (ParseUuid(attribute.Value, Card.CardId) != 0 || Card.CardId.IsZero()) {
        return result.Fail(NamedMessage(
            _("\"%s\" must be followed by a valid UUID (Universally Unique Identifier)."),
            attribute.Name));
    }
    Mask = kIdMask;
    if (!group.Settle(Card.CardId)) {
        return false;
    }
    if (database.SelectCardById(Card.CardId, Stored) < 0) {
        return result.Fail(StoreReadMessage(database));
    }
    if (IsStored()) {
        Card = Stored.front();
    }
    return true;
}

wxString ImportRecord::SetValue(int code, const CardAttribute& attribute) {
    const wxString& value = attribute.Value;
    switch (code) {
        case kAttributeFront:
            return SetFront(value, Card.Front);
        case kAttributeFront2:
            mFront2 = value;
            break;
        case kAttributeBack:
            return SetBack(value, Card.Back);
        case kAttributeBack2:
            mBack2 = value;
            break;
        case kAttributeAuthor:
            Card.Author = value;
            break;
        case kAttributeCategory:
            if (!value.empty()) {
                CategoryName = value;
                NamesCategory = true;
            }
            break;
        case kAttributeChapter:
            Card.Chapter = value;
            break;
        case kAttributeIntroductionOrder:
            return SetIntroductionOrder(attribute.Name, value, Card.IntroductionOrder);
        case kAttributeForwardX:
            return value.empty() ? value : SetFlag(attribute.Name, value, Card.ForwardX);
        case kAttributeReverseX:
            return value.empty() ? value : SetFlag(attribute.Name, value, Card.ReverseX);
        default:
            Card.Notes = value;
            break;
    }
    return wxString();
}

void ImportRecord::JoinSecondTexts() {
    if (!mFront2.empty()) {
        Card.Front = JoinSecondText(Card.Front, mFront2);
        mFront2.clear();
    }
    if (!mBack2.empty()) {
        Card.Back = JoinSecondText(Card.Back, mBack2);
        mBack2.clear();
    }
}

void ImportRecord::StartFromPair(const FlashCard& stored) {
    Stored = {stored};
    Card = stored;
    IsPair = true;
}

bool ImportRecord::IsDuplicate() const {
    const FlashCard& stored = Stored.front();
    if ((IsPair || IsForeign) && (Card.Chapter != stored.Chapter || Card.Notes != stored.Notes)) {
        return false;
    }
    return Card.CardId == stored.CardId && Card.Front == stored.Front && Card.Back == stored.Back &&
           Card.CategoryId == stored.CategoryId && Card.Author == stored.Author &&
           Card.IntroductionOrder == stored.IntroductionOrder && Card.ForwardX == stored.ForwardX &&
           Card.ReverseX == stored.ReverseX && Card.Forward == stored.Forward &&
           Card.Reverse == stored.Reverse;
}

bool ImportCategories::Load() {
    std::list<Category> categories;
    if (mDatabase.SelectAllCategories(categories) < 0) {
        return false;
    }
    for (const Category& category : categories) {
        mIds.emplace(category.Name, category.Id);
    }
    return true;
}

bool ImportCategories::FindOrCreate(const wxString& name, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    // The cards before it come first, in the store as in the file.
    if (!mGroup.Write()) {
        return false;
    }
    if (mDatabase.CategoryInsert(name) < 0) {
        return mResult.Fail(StoreMessage(_("Category create error %i:%s"), mDatabase));
    }
    switch (FindInStore(name, id)) {
        case Search::kFound:
            return true;
        case Search::kMissing:
            return mResult.Fail(_("Category create failed. (3)"));
        default:
            return false;
    }
}

bool ImportCategories::FindOrNote(const wxString& name, bool ask, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    id = -1;
    mIds.emplace(name, id);
    if (ask) {
        mResult.NewCategories.push_back(name);
    }
    return true;
}

bool ImportCategories::AskForMissing(int32_t line) {
    return mResult.NewCategories.empty() || mResult.Ask(ImportRequest::kNewCategories, line);
}

ImportCategories::Search ImportCategories::Find(const wxString& name, int32_t& id) {
    const auto known = mIds.find(name);
    if (known == mIds.end()) {
        return FindInStore(name, id);
    }
    id = known->second;
    return Search::kFound;
}

ImportCategories::Search ImportCategories::FindInStore(const wxString& name, int32_t& id) {
    std::list<Category> found;
    if (mDatabase.SelectCategoryByName(name, found) < 0) {
        mResult.Fail(StoreReadMessage(mDatabase));
        return Search::kFailed;
    }
    if (found.empty()) {
        return Search::kMissing;
    }
    id = found.front().Id;
    mIds.emplace(name, id);
    return Search::kFound;
}

namespace {

int32_t Following(int32_t order) {
    return order == std::numeric_limits<int32_t>::max() ? order : order + 1;
}

}  // namespace

void IntroductionOrders::Note(int32_t categoryId, int32_t order) {
    const auto next = mNext.find(categoryId);
    if (next != mNext.end() && next->second <= order) {
        next->second = Following(order);
    }
}

bool IntroductionOrders::Take(int32_t categoryId, int32_t& order) {
    auto next = mNext.find(categoryId);
    if (next == mNext.end()) {
        if (!mGroup.Settle(categoryId)) {
            return false;
        }
        int32_t greatest = 0;
        const bool found = mDatabase.SelectMaxIntroductionOrder(categoryId, greatest) >= 0;
        next = mNext.emplace(categoryId, found ? Following(greatest) : 0).first;
    }
    order = next->second;
    next->second = Following(order);
    return true;
}
