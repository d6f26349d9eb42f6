#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/VelomindApp.h"
#include "base/Process.h"
#include "media/PictureProcess.h"

wxIMPLEMENT_APP_NO_MAIN(VelomindApp);

int main(int argc, char** argv) {
    if (const int drawn = DrawIfAsked(argc, argv); drawn >= 0) {
        return drawn;
    }
    SetUpCharacters();
    std::vector<std::wstring> words = ReadCommandWords(argc, argv);
    std::vector<wchar_t*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::wstring& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    if (AnswerWithoutDisplay(argc, arguments.data())) {
        return 0;
    }
    const int result = wxEntry(argc, arguments.data());
    // -1 is the library's own word for a start that came to nothing.
    return result == -1 ? kExitRefused : result;
}
