#include "shell/ProgramInfo.h"

wxString GetVersionText() {
    return wxString(kApplicationName) + " Mobile " + VELOMIND_VERSION;
}
