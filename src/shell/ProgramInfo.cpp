#include "shell/ProgramInfo.h"

wxString GetVersionText() {
    return wxString::Format("Velomind %s %i.%i.%i.%i", "Mobile", 2, 5, 7, 1625);
}
