#include "shell/StudySettings.h"

#include <algorithm>

#include "shell/Settings.h"

DayLimits ReadDayLimits() {
    DayLimits limits;
    limits.NewCards = std::max(0, ReadIntegerSetting(kSettingNewCardsPerDay));
    limits.NewCardsPerCategory = ReadBooleanSetting(kSettingNewCardsPerCategory);
    limits.Enough = std::max(0, ReadIntegerSetting(kSettingEnoughForToday));
    limits.EnoughIsMinutes = ReadBooleanSetting(kSettingEnoughIsMinutes);
    limits.RelearnShare = ReadIntegerSetting(kSettingRelearnShare);
    return limits;
}
