#include "app/ExitCodes.h"

#include <cstdio>
#include <cstdlib>

void EndProcess(ExitCode code) {
    std::fflush(nullptr);
    std::_Exit(code);
}
