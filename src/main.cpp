#include "app/ExitCodes.h"
#include "app/Locale.h"
#include "app/VelomindApp.h"

wxIMPLEMENT_APP_NO_MAIN(VelomindApp);

int main(int argc, char** argv) {
    SetUpCharacters();
    const int result = wxEntry(argc, argv);
    // -1 is the library's own word for a start that came to nothing.
    return result == -1 ? kExitRefused : result;
}
