#pragma once

#include "scheduler/StudyDay.h"

// Stands apart from Settings.h, which knows no room of the core but the settings file.

// Returns what the settings want of a day of study. A number that makes no sense is no limit.
DayLimits ReadDayLimits();
