#pragma once

#include <wx/defs.h>

// The program's own command ids. A command that the windowing library has an id for uses that one.
// The windows' ids lie together, so that one handler takes their range. The library takes no id
// above 32766. Where a dialog repeats an id, handlers bind to the control. The library takes no id
// above 32766. Where a dialog repeats an id, handlers bind to the control.
enum CommandId : int {
    ID_WINDOW_STUDY = 28000,
    ID_WINDOW_LIST = 28001,
    ID_WINDOW_EDIT = 28002,
    ID_WINDOW_STATISTICS = 28003,
    ID_WINDOW_FIRST = 28000,
    ID_WINDOW_LAST = 28999,

    ID_STUDY_FORWARD = 30000,
    ID_NEW_CATEGORY = 30001,
    ID_IMPORT = 30002,
    ID_STATUS_BAR = 30003,
    ID_LEARNING_PROGRESS = 30004,
    ID_STUDY_REVERSE = 30005,
    ID_MINIMIZE = 30006,
    ID_MINIMIZE_ALL = 30007,
    ID_BRING_ALL_TO_FRONT = 30009,
    ID_ZOOM = 30010,
    ID_EXPORT = 30011,
    ID_BACK_UP = 30060,
    ID_RESTORE = 30061,
    ID_STATISTICS = 30062,
    ID_OPEN_STORE = 30063,
    ID_RECENT_STORES = 30064,
    ID_FOLLOW_SAVED = 30065,
    // One id for each store in the menu of the last ones.
    ID_RECENT_STORE_FIRST = 30070,
    ID_RECENT_STORE_LAST = 30074,
    ID_LAYOUT_HORIZONTAL = 30012,
    ID_LAYOUT_VERTICAL = 30013,
    ID_RENAME_CATEGORY = 30020,
    ID_COMPACT_SCORING = 30034,
    ID_QUICK_HELP = 30040,
    ID_FEEDBACK = 30041,
    ID_FORUMS = 30042,
    ID_SUPPORT = 30043,
    ID_CHOOSE_CATEGORY = 30050,
    ID_NEXT_DUE_CATEGORY = 30051,
    ID_TYPE_ANSWER = 30052,
    ID_SHOW_MORE_TODAY = 30053,
    ID_TEST_MENU = 30095,
    ID_CRASH_TEST = 30096,
    ID_SAVE_CLOSE = 30109,
    ID_SAVE_NEW = 30110,
    ID_RENAME = 30112,
    ID_CUSTOMIZE_MENU = 30122,
    ID_COLUMN_AUTO_SIZE = 32000,
    ID_COLUMN_AUTO_SIZE_ALL = 32001,
    ID_COLUMN_AUTHOR = 32003,
    ID_COLUMN_CHAPTER = 32004,
    ID_COLUMN_FORWARD_EXCLUDE = 32005,
    ID_COLUMN_REVERSE_EXCLUDE = 32006,
    ID_COLUMN_NOTES = 32007,
    ID_COLUMN_CATEGORY = 32008,
    ID_COLUMN_NEXT_REVIEW = 32009,
    ID_COLUMN_INTERVAL = 32010
};
