#pragma once

#include <string>
#include <vector>

// Characters and messages by the user's locale, UTF-8 where that has none; numbers always with a
// point. Call it first in main.
void SetUpCharacters();

// The words of the command line. The library's own conversion would go by the locale that the
// process started in, not by the one that was set up.
std::vector<std::wstring> ReadCommandWords(int argc, char** argv);

// The program's own texts in the user's language, where a catalogue of it is installed.
void SetUpTranslations();
