#pragma once

#include <wx/string.h>

#include <cstdint>
#include <vector>

#include "scheduler/ReviewArithmetic.h"
#include "store/Database.h"

// The columns that the list of cards can show, in the order in which they stand. The first three
// are always there, and the user shows and hides the others.
enum class ListColumn : uint8_t {
    kNumber,
    kFront,
    kBack,
    kAuthor,
    kChapter,
    kForwardExclude,
    kReverseExclude,
    kNotes,
    // Shown only during a search in all categories.
    kCategory,
    kNextReview,
    kInterval,
    kLastReview,
    kDifficulty,
    // Counted in the log of reviews.
    kFailures
};
using ListColumns = std::vector<ListColumn>;

// The column by whose values the rows are sorted.
struct ListOrder {
    ListColumn Column = ListColumn::kNumber;
    bool IsDescending = false;
};

struct ListColumnTraits {
    ListColumn Column;
    // Not translated yet. The menu and the settings use this name too.
    const char* Heading;
    // The menu entry that shows and hides the column; 0 when it is always shown.
    int MenuId;
    // How many digits the column has room for at first; 0 for a text column, which shares what
    // others leave.
    int Digits;
    // What the store sorts by while cards are studied forward, and in reverse.
    CardColumn Order;
    CardColumn ReverseOrder;
};
const std::vector<ListColumnTraits>& AllListColumns();
const ListColumnTraits& TraitsOf(ListColumn column);

// Returns what the cell of a card shows, on one line. What belongs to a schedule is that of the
// direction, and empty until the card was scored in it. The cells of kCategory and kFailures are
// empty: a card knows neither the name of its category nor its reviews.
wxString MakeCellText(const FlashCard& card, ListColumn column, ReviewDirection direction);

// Returns the columns that are always there and those that the settings show, in order.
ListColumns ReadShownColumns();
void WriteShownColumns(const ListColumns& columns);
// The order that the user chose last.
ListOrder ReadListOrder();
void WriteListOrder(const ListOrder& order);

// Gives the columns of width 0 equal shares of the room, in pixels, that the others leave, but at
// least the least width.
void ShareRoom(std::vector<int>& widths, int room, int least);
