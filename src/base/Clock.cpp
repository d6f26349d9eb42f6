#include "base/Clock.h"

#include <ctime>

wxDateTime CurrentTime() {
    return wxDateTime(std::time(nullptr));
}

wxDateTime SystemClock::Now() const {
    return CurrentTime();
}
