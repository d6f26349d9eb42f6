#include "list/CardColumns.h"

#include <wx/intl.h>
#include <wx/tokenzr.h>

#include <algorithm>

#include "base/Text.h"
#include "media/MediaLines.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"

const std::vector<ListColumnTraits>& AllListColumns() {
    using L = ListColumn;
    using C = CardColumn;
    static const std::vector<ListColumnTraits> columns = {
        {L::kNumber, wxTRANSLATE("#"), 0, 5, C::kIntroductionOrder, C::kIntroductionOrder},
        {L::kFront, wxTRANSLATE("Front"), 0, 0, C::kFront, C::kFront},
        {L::kBack, wxTRANSLATE("Back"), 0, 0, C::kBack, C::kBack},
        {L::kAuthor, wxTRANSLATE("Author"), ID_COLUMN_AUTHOR, 12, C::kAuthor, C::kAuthor},
        {L::kChapter, wxTRANSLATE("Chapter"), ID_COLUMN_CHAPTER, 10, C::kChapter, C::kChapter},
        {L::kForwardExclude, wxTRANSLATE("Forward Exclude"), ID_COLUMN_FORWARD_EXCLUDE, 3,
         C::kForwardX, C::kForwardX},
        {L::kReverseExclude, wxTRANSLATE("Reverse Exclude"), ID_COLUMN_REVERSE_EXCLUDE, 3,
         C::kReverseX, C::kReverseX},
        {L::kNotes, wxTRANSLATE("Notes"), ID_COLUMN_NOTES, 18, C::kNotes, C::kNotes},
        {L::kCategory, wxTRANSLATE("Category"), ID_COLUMN_CATEGORY, 14, C::kCategoryName,
         C::kCategoryName},
        {L::kNextReview, wxTRANSLATE("Next Review"), ID_COLUMN_NEXT_REVIEW, 16, C::kNextReview,
         C::kRNextReview},
        {L::kInterval, wxTRANSLATE("Interval"), ID_COLUMN_INTERVAL, 11, C::kReviewInterval,
         C::kRReviewInterval},
        {L::kLastReview, wxTRANSLATE("Last Review"), ID_COLUMN_LAST_REVIEW, 16, C::kLastReview,
         C::kRLastReview},
        {L::kDifficulty, wxTRANSLATE("Difficulty"), ID_COLUMN_DIFFICULTY, 3, C::kDifficulty,
         C::kRDifficulty},
        {L::kFailures, wxTRANSLATE("Failures"), ID_COLUMN_FAILURES, 3, C::kIntroductionOrder,
         C::kIntroductionOrder}};
    return columns;
}

const ListColumnTraits& TraitsOf(ListColumn column) {
    return AllListColumns()[static_cast<size_t>(column)];
}

namespace {

constexpr char kDescending[] = ",descending";

wxString FormatTime(const wxDateTime& time) {
    return time.IsValid() ? time.Format("%Y-%m-%d %H:%M") : wxString();
}

wxString FormatInterval(const CardSchedule& schedule) {
    const IntervalInUnits interval = SplitInterval(schedule.ReviewInterval);
    return wxString::Format("%.1f %s", static_cast<double>(interval.Value),
                            IntervalUnitName(interval.Unit));
}

wxString FormatFlag(bool flag) {
    return flag ? _("Yes") : wxString();
}

wxString ScheduleText(const CardSchedule& schedule, ListColumn column) {
    if (!schedule.Introduced) {
        return wxString();
    }
    switch (column) {
        case ListColumn::kNextReview:
            return FormatTime(schedule.NextReview());
        case ListColumn::kInterval:
            return FormatInterval(schedule);
        case ListColumn::kLastReview:
            return FormatTime(schedule.LastReview);
        default:
            return wxString::Format("%i", schedule.Difficulty);
    }
}

}  // namespace

wxString MakeCellText(const FlashCard& card, ListColumn column, ReviewDirection direction) {
    switch (column) {
        case ListColumn::kNumber:
            return wxString::Format("%i", card.IntroductionOrder);
        case ListColumn::kFront:
            return CellText(WithMediaMarks(card.Front));
        case ListColumn::kBack:
            return CellText(WithMediaMarks(card.Back));
        case ListColumn::kAuthor:
            return CellText(card.Author);
        case ListColumn::kChapter:
            return CellText(card.Chapter);
        case ListColumn::kForwardExclude:
            return FormatFlag(card.ForwardX);
        case ListColumn::kReverseExclude:
            return FormatFlag(card.ReverseX);
        case ListColumn::kNotes:
            return CellText(WithMediaMarks(card.Notes));
        case ListColumn::kNextReview:
        case ListColumn::kInterval:
        case ListColumn::kLastReview:
        case ListColumn::kDifficulty:
            return ScheduleText(ScheduleOf(card, direction), column);
        case ListColumn::kCategory:
        case ListColumn::kFailures:
            break;
    }
    return wxString();
}

ListColumns ReadShownColumns() {
    const wxArrayString names = wxStringTokenize(ReadStringSetting(kSettingCardListShown), ",");
    ListColumns shown;
    for (const ListColumnTraits& traits : AllListColumns()) {
        if (traits.MenuId == 0 || names.Index(traits.Heading) != wxNOT_FOUND) {
            shown.push_back(traits.Column);
        }
    }
    return shown;
}

void WriteShownColumns(const ListColumns& columns) {
    wxString names;
    for (const ListColumn column : columns) {
        const ListColumnTraits& traits = TraitsOf(column);
        if (traits.MenuId != 0) {
            names << (names.empty() ? "" : ",") << traits.Heading;
        }
    }
    WriteStringSetting(kSettingCardListShown, names);
}

ListOrder ReadListOrder() {
    wxString heading = ReadStringSetting(kSettingCardListOrder);
    ListOrder order;
    order.IsDescending = heading.EndsWith(kDescending, &heading);
    for (const ListColumnTraits& traits : AllListColumns()) {
        if (heading == traits.Heading) {
            order.Column = traits.Column;
        }
    }
    return order;
}

void WriteListOrder(const ListOrder& order) {
    WriteStringSetting(kSettingCardListOrder, TraitsOf(order.Column).Heading +
                                                  wxString(order.IsDescending ? kDescending : ""));
}

void ShareRoom(std::vector<int>& widths, int room, int least) {
    auto sharing = static_cast<int>(std::count(widths.begin(), widths.end(), 0));
    for (const int width : widths) {
        room -= width;
    }
    for (int& width : widths) {
        if (width == 0) {
            width = std::max(room / sharing, least);
            room -= width;
            --sharing;
        }
    }
}
