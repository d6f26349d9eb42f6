#include "exchange/ImportRecord.h"

#include <wx/intl.h>

#include "exchange/CardAttributes.h"
#include "exchange/CardRecord.h"
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

bool ImportRecord::Read(const CardRecordReader& reader, Database& database, ImportResult& result) {
    const uint32_t count = reader.GetAttributeCount();
    for (uint32_t i = 0; i < count; ++i) {
        const CardAttribute& attribute = reader.GetAttribute(i);
        result.LineNumber = attribute.Line;
        if (!Add(attribute, database, result)) {
            return false;
        }
    }
    return true;
}

bool ImportRecord::Add(const CardAttribute& attribute, Database& database, ImportResult& result) {
    AttributeInfo info;
    if (!LookupAttribute(attribute.Name, info)) {
        return result.Fail(UnknownAttributeMessage(attribute.Name));
    }
    if ((Mask & info.Mask) != 0) {
        return result.Fail(RepeatedAttributeMessage());
    }
    if (info.Mask == kIdMask) {
        return SetId(attribute, database, result);
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

bool ImportRecord::SetId(const CardAttribute& attribute, Database& database, ImportResult& result) {
    if (attribute.Value.empty()) {
        // As if it were not there, so it may also stand behind others.
        return true;
    }
    if (Mask != 0) {
        return result.Fail(NamedMessage(_("\"%s\" must be specified before any other attributes."),
                                        attribute.Name));
    }
    // The identity of no card is none to store a card under.
    if (ParseUuid(attribute.Value, Card.CardId) != 0 || Card.CardId.IsZero()) {
        return result.Fail(NamedMessage(
            _("\"%s\" must be followed by a valid UUID (Universally Unique Identifier)."),
            attribute.Name));
    }
    Mask = kIdMask;
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
    }
    if (!mBack2.empty()) {
        Card.Back = JoinSecondText(Card.Back, mBack2);
    }
}

bool ImportRecord::IsDuplicate() const {
    const FlashCard& stored = Stored.front();
    return Card.CardId == stored.CardId && Card.Front == stored.Front && Card.Back == stored.Back &&
           Card.CategoryId == stored.CategoryId && Card.Author == stored.Author &&
           Card.IntroductionOrder == stored.IntroductionOrder && Card.ForwardX == stored.ForwardX &&
           Card.ReverseX == stored.ReverseX && Card.Forward == stored.Forward &&
           Card.Reverse == stored.Reverse;
}
