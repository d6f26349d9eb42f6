#pragma once

#include <unicode/uvernum.h>

// The larger library of ICU sorts and transliterates. It is not linked but loaded when one of its
// functions is first looked for, because a start of the program would wait a millisecond for it.
// Its tables are read only as far as they are used.

// The functions have the version of the library in their names, which its headers add.
#define VELOMIND_NAME_AS_TEXT(name) #name
#define VELOMIND_ICU_NAME(name) VELOMIND_NAME_AS_TEXT(name)

// Returns a function of the library, such as FIND_ICU(ucol_open); null where there is no library.
#define FIND_ICU(name) reinterpret_cast<decltype(&(name))>(FindIcuSymbol(VELOMIND_ICU_NAME(name)))

void* FindIcuSymbol(const char* name);
