#pragma once

// Characters by the user's locale, UTF-8 where that has none; numbers always with a point. Call it
// first in main, before the library reads the command line.
void SetUpCharacters();

// The program's own texts in the user's language, where a catalogue of it is installed.
void SetUpTranslations();
