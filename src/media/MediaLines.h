#pragma once

#include <wx/string.h>

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

// A picture or a sound of a card is a line of its own in a text of the card:
//
//     [picture: bird.png]
//     [sound: bird.ogg]
//
// The words are the same in every language, so that stores and tables can be exchanged. The file
// has that name in the folder of the store (MediaFolder). A line that names no safe file is text
// like any other.

enum class MediaKind { kPicture, kSound };

struct MediaLine {
    MediaKind Kind = MediaKind::kPicture;
    wxString Name;
    // Where the line begins, and where it ends without its line break.
    size_t Begin = 0;
    size_t End = 0;
};

// Returns false where a text certainly has no such line. Costs next to nothing.
bool MayHaveMediaLine(std::wstring_view text);
// The same for a text as the store has it.
bool MayHaveMediaLine(std::u16string_view text);

// Returns the lines in their order.
std::vector<MediaLine> FindMediaLines(const wxString& text);

// Returns the line for a file, without a line break.
wxString MakeMediaLine(MediaKind kind, const wxString& name);

// Returns a text with each of its lines replaced by what the function gives for it. Where that is
// empty, the line goes with its break.
wxString ReplaceMediaLines(const wxString& text,
                           const std::function<wxString(const MediaLine&)>& replace);

// Returns the words of a text: all but its lines.
wxString WithoutMediaLines(const wxString& text);

// Returns a text in which a short mark stands for each line, for a list.
wxString WithMediaMarks(const wxString& text);
// The same with the name of the file after each mark, where cards are named or compared.
wxString WithNamedMediaMarks(const wxString& text);
// The same, but a line that the other text does not have stays as it is, as it is what differs.
wxString WithSharedMediaMarks(const wxString& text, const wxString& other);

// Returns whether a file of the folder may have this name: a name without a path that every system
// can have, of at most kLongestMediaName bytes in UTF-8.
bool IsSafeMediaName(const wxString& name);
constexpr size_t kLongestMediaName = 120;

// Returns the safe name that is nearest to another one, of which it keeps the extension. Never
// empty.
wxString MakeSafeMediaName(const wxString& name);

// Returns a name with the number before its extension, such as "bird-2.png"; the name alone for 1.
wxString NumberedMediaName(const wxString& name, int number);

// Returns whether a name has the extension of a picture, or of a sound, that can be shown.
bool HasPictureName(const wxString& name);
bool HasSoundName(const wxString& name);
