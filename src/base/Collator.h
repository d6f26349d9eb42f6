#pragma once

#include <wx/string.h>

#include <memory>
#include <string>
#include <string_view>

struct UCollator;

// The order of texts in dictionaries and indexes of a language: "Äpfel" stands among the words with
// A in German and after Z in Swedish. Numbers within texts count by their value, so that "Unit 9"
// comes before "Unit 10". The rules are those of the ICU library, which is loaded when a Collator
// is first made: a program that sorts nothing does not wait for it. An object belongs to one thread
// at a time.
class Collator {
  public:
    // Takes the language of the environment, or that name of a locale such as "de_DE.UTF-8".
    Collator();
    explicit Collator(const std::string& locale);

    // Returns false where the library is missing. Keys are empty then, and no text is less.
    bool IsLoaded() const { return mpCollator != nullptr; }

    // Appends bytes that compare (strcmp) as the beginnings of the texts do, up to kMostUnits, and
    // the NUL after them.
    static constexpr size_t kMostUnits = 200;
    void AppendKey(std::u16string_view text, std::string& keys) const;
    // Compares the texts as a whole.
    bool IsLess(const wxString& a, const wxString& b) const;

  private:
    std::unique_ptr<UCollator, void (*)(UCollator*)> mpCollator;
};
