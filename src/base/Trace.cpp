#include "base/Trace.h"

TraceHook gTraceHook = nullptr;
