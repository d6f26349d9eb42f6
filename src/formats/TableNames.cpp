#include <wx/intl.h>

#include <string_view>

#include "base/Text.h"
#include "formats/Table.h"

// What people write above the columns of their lists, and what each use of a column is called.

namespace {

struct UseRow {
    ColumnUse Use;
    const char* Attribute;
    // Null where the attribute is shown by its own name.
    const char* Label;
};

constexpr UseRow kUses[] = {
    {ColumnUse::kIgnore, nullptr, wxTRANSLATE("Ignore")},
    {ColumnUse::kAppend, nullptr, wxTRANSLATE("Notes (appended)")},
    {ColumnUse::kFront, "Front", wxTRANSLATE("Front")},
    {ColumnUse::kFront2, "Front2", wxTRANSLATE("Front, second text")},
    {ColumnUse::kBack, "Back", wxTRANSLATE("Back")},
    {ColumnUse::kBack2, "Back2", wxTRANSLATE("Back, second text")},
    {ColumnUse::kNotes, "Notes", wxTRANSLATE("Notes")},
    {ColumnUse::kCategory, "Category", wxTRANSLATE("Category")},
    {ColumnUse::kChapter, "Chapter", wxTRANSLATE("Chapter")},
    {ColumnUse::kAuthor, "Author", wxTRANSLATE("Author")},
    {ColumnUse::kIntroductionOrder, "IntroductionOrder", wxTRANSLATE("Introduction Order")},
    {ColumnUse::kForwardX, "ForwardX", wxTRANSLATE("Exclude from forward review")},
    {ColumnUse::kReverseX, "ReverseX", wxTRANSLATE("Exclude from reverse review")},
    {ColumnUse::kId, "id", wxTRANSLATE("Id of the card")},
    {ColumnUse::kNoteId, "id", wxTRANSLATE("Id of an Anki note")},
    {ColumnUse::kIntroduced, "Introduced", nullptr},
    {ColumnUse::kLastReview, "LastReview", nullptr},
    {ColumnUse::kLastScore, "LastScore", nullptr},
    {ColumnUse::kReviewInterval, "ReviewInterval", nullptr},
    {ColumnUse::kDifficulty, "Difficulty", nullptr},
    {ColumnUse::kErc, "ERC", nullptr},
    {ColumnUse::kReverseIntroduced, "RIntroduced", nullptr},
    {ColumnUse::kReverseLastReview, "RLastReview", nullptr},
    {ColumnUse::kReverseLastScore, "RLastScore", nullptr},
    {ColumnUse::kReverseReviewInterval, "RReviewInterval", nullptr},
    {ColumnUse::kReverseDifficulty, "RDifficulty", nullptr},
    {ColumnUse::kReverseErc, "RERC", nullptr},
    {ColumnUse::kFrontFile, nullptr, wxTRANSLATE("Front, picture or sound")},
    {ColumnUse::kBackFile, nullptr, wxTRANSLATE("Back, picture or sound")},
};
static_assert(sizeof(kUses) / sizeof(kUses[0]) == static_cast<size_t>(ColumnUse::kCount));

const UseRow& RowOf(ColumnUse use) {
    return kUses[static_cast<size_t>(use)];
}

struct Words {
    ColumnUse Use;
    // Words in lower case, each between two "|".
    std::wstring_view Text;
};

// A word's first row counts.
constexpr Words kWords[] = {
    {ColumnUse::kFront,
     L"|term|word|words|vocabulary|vocab|expression|phrase|prompt|front side|frontside|cue|source"
     L"|source text|foreign|foreign word|target word|headword|lemma|kanji|hanzi|character"
     L"|frage|vokabel|vokabeln|wort|w\u00F6rter|begriff|ausdruck|vorderseite|fremdwort|vorne"
     L"|fremdsprache|lernwort|stichwort|phrase/satz"
     L"|mot|terme|recto|vocabulaire"
     L"|pregunta|palabra|t\u00E9rmino|anverso|vocablo"
     L"|domanda|parola|termine|fronte|vocabolo"
     L"|pergunta|palavra|termo|frente"
     L"|vraag|woord|voorkant|pytanie|s\u0142owo|s\u0142\u00F3wko|prz\u00F3d"
     L"|fr\u00E5ga|ord|framsida|ot\u00E1zka|slovo|soru|kelime|k\u00E9rd\u00E9s|sz\u00F3"
     L"|\u0432\u043E\u043F\u0440\u043E\u0441|\u0441\u043B\u043E\u0432\u043E"
     L"|\u5358\u8A9E|\u8868|\u8868\u9762|\u8CEA\u554F|\u554F\u984C|\u8A9E|\u8A9E\u5F59|\u6F22\u5B57"
     L"|\u8868\u73FE|\u7528\u8A9E|\u898B\u51FA\u3057\u8A9E"
     L"|\u5355\u8BCD|\u8BCD|\u8BCD\u8BED|\u8BCD\u6C47|\u751F\u8BCD|\u6B63\u9762|\u95EE\u9898|"
     L"\u6C49\u5B57"
     L"|\u55AE\u8A5E|\u8A5E|\u8A5E\u5F59|\u554F|\uB2E8\uC5B4|\uC9C8\uBB38|\uC55E\uBA74|\uC55E|"},
    {ColumnUse::kBack,
     L"|translation|translations|meaning|meanings|definition|definitions|back side|backside"
     L"|response|gloss|solution|target|target text|native|equivalent"
     L"|antwort|\u00FCbersetzung|\u00FCbersetzungen|bedeutung|bedeutungen|r\u00FCckseite|"
     L"l\u00F6sung"
     L"|definition/erkl\u00E4rung|hinten|muttersprache|uebersetzung|rueckseite|loesung"
     L"|r\u00E9ponse|traduction|signification|d\u00E9finition|verso|sens"
     L"|respuesta|traducci\u00F3n|significado|definici\u00F3n|reverso"
     L"|risposta|traduzione|significato|definizione|retro"
     L"|resposta|tradu\u00E7\u00E3o|defini\u00E7\u00E3o|verso/costas"
     L"|antwoord|vertaling|betekenis|achterkant|odpowied\u017A|t\u0142umaczenie|znaczenie|ty\u0142"
     L"|svar|\u00F6vers\u00E4ttning|baksida|betydelse|p\u0159eklad|v\u00FDznam|cevap|anlam|"
     L"\u00E7eviri"
     L"|v\u00E1lasz|jelent\u00E9s"
     L"|\u043E\u0442\u0432\u0435\u0442|\u043F\u0435\u0440\u0435\u0432\u043E\u0434"
     L"|\u0437\u043D\u0430\u0447\u0435\u043D\u0438\u0435"
     L"|\u610F\u5473|\u88CF|\u88CF\u9762|\u7B54\u3048|\u7B54|\u89E3\u7B54|\u56DE\u7B54|\u8A33|"
     L"\u7FFB\u8A33"
     L"|\u548C\u8A33|\u5B9A\u7FA9|\u65E5\u672C\u8A9E\u8A33"
     L"|\u7FFB\u8BD1|\u8BD1\u6587|\u610F\u601D|\u91CA\u4E49|\u4E49|\u53CD\u9762|\u80CC\u9762|"
     L"\u7B54\u6848"
     L"|\u7FFB\u8B6F|\u91CB\u7FA9|\uB73B|\uC758\uBBF8|\uBC88\uC5ED|\uB2F5|\uB4B7\uBA74|\uB4A4|"},
    {ColumnUse::kFront2,
     L"|reading|pronunciation|furigana|kana|pinyin|transcription|transliteration|romanization"
     L"|romaji|phonetic|ipa|hiragana|second text"
     L"|aussprache|lautschrift|lesung|umschrift|prononciation|pronunciaci\u00F3n|pronuncia"
     L"|pron\u00FAncia|uitspraak|wymowa|"
     L"\u043F\u0440\u043E\u0438\u0437\u043D\u043E\u0448\u0435\u043D"
     L"\u0438\u0435|\u0442\u0440\u0430\u043D\u0441\u043A\u0440\u0438\u043F\u0446\u0438\u044F"
     L"|\u8AAD\u307F|\u8AAD\u307F\u65B9|\u8AAD\u307F\u4EEE\u540D|\u3088\u307F|"
     L"\u3088\u307F\u304C\u306A"
     L"|\u3075\u308A\u304C\u306A|\u632F\u308A\u4EEE\u540D|\u304B\u306A|\u4EEE\u540D|\u767A\u97F3"
     L"|\u62FC\u97F3|\u53D1\u97F3|\u6CE8\u97F3|\uBC1C\uC74C|"},
    {ColumnUse::kNotes,
     L"|note|comment|comments|remark|remarks|example|examples|example sentence|sentence|hint|extra"
     L"|explanation|usage|context|additional|info|information|mnemonic"
     L"|notiz|notizen|anmerkung|anmerkungen|bemerkung|bemerkungen|kommentar|beispiel|beispiele"
     L"|beispielsatz|satz|hinweis|hinweise|erkl\u00E4rung|merkhilfe|eselsbr\u00FCcke"
     L"|remarque|commentaire|exemple|notas|nota|comentario|ejemplo|esempio|commento|exemplo"
     L"|coment\u00E1rio|opmerking|voorbeeld|notatka|przyk\u0142ad|uwagi"
     L"|\u043F\u0440\u0438\u043C\u0435\u0447\u0430\u043D\u0438\u0435|\u043F\u0440\u0438\u043C\u0435"
     L"\u0440|\u043A\u043E\u043C\u043C\u0435\u043D\u0442\u0430\u0440\u0438\u0439"
     L"|\u5099\u8003|\u30E1\u30E2|\u4F8B\u6587|\u4F8B|\u6CE8|\u6CE8\u91C8|\u88DC\u8DB3|\u8AAC\u660E"
     L"|\u30CE\u30FC\u30C8|\u30B3\u30E1\u30F3\u30C8|\u5907\u6CE8|\u7B14\u8BB0|\u4F8B\u53E5|"
     L"\u8BF4\u660E"
     L"|\uBA54\uBAA8|\uC608\uBB38|\uC124\uBA85|\uBE44\uACE0|"},
    {ColumnUse::kCategory,
     L"|categories|deck|group|topic|subject|list|folder|set"
     L"|kategorie|gruppe|thema|themengebiet|fach|stapel|liste|ordner|bereich"
     L"|cat\u00E9gorie|paquet|th\u00E8me|categor\u00EDa|mazo|tema|categoria|mazzo|categorie"
     L"|kategoria|talia|\u043A\u0430\u0442\u0435\u0433\u043E\u0440\u0438\u044F|"
     L"\u0442\u0435\u043C\u0430"
     L"|\u30AB\u30C6\u30B4\u30EA|\u30AB\u30C6\u30B4\u30EA\u30FC|\u5206\u985E|\u30C7\u30C3\u30AD"
     L"|\u30B0\u30EB\u30FC\u30D7|\u7C7B\u522B|\u5206\u7C7B|\u5206\u7EC4|\uCE74\uD14C\uACE0\uB9AC|"
     L"\uBD84"
     L"\uB958|"},
    {ColumnUse::kChapter,
     L"|lesson|unit|section|part|level|page"
     L"|kapitel|lektion|einheit|abschnitt|teil|stufe|seite|le\u00E7on|chapitre|unit\u00E9"
     L"|cap\u00EDtulo|lecci\u00F3n|unidad|capitolo|lezione|li\u00E7\u00E3o|hoofdstuk|les|"
     L"rozdzia\u0142"
     L"|lekcja|\u0443\u0440\u043E\u043A|\u0433\u043B\u0430\u0432\u0430"
     L"|\u7AE0|\u8AB2|\u30EC\u30C3\u30B9\u30F3|\u30E6\u30CB\u30C3\u30C8|\u5358\u5143|\u8BFE|"
     L"\u5355\u5143"
     L"|\u7AE0\u8282|\uACFC|\uB2E8\uC6D0|"},
    {ColumnUse::kAuthor,
     L"|autor|verfasser|auteur|autore|\u0430\u0432\u0442\u043E\u0440|\u4F5C\u8005|\u8457\u8005"
     L"|\uC800\uC790|"},
    {ColumnUse::kAppend,
     L"|tags|tag|label|labels|keyword|keywords|part of speech|pos|word class|gender|plural|synonym"
     L"|synonyms|antonym|schlagwort|schlagworte|schlagw\u00F6rter|stichworte|stichw\u00F6rter"
     L"|etikett|etiketten|wortart|geschlecht|synonyme|\u00E9tiquettes|\u00E9tiquette|etiquetas"
     L"|etiqueta|etichette|etichetta|tagi|\u0442\u0435\u0433\u0438|\u0442\u0435\u0433|\u30BF\u30B0"
     L"|\u54C1\u8A5E|\u6807\u7B7E|\u8BCD\u6027|\uD0DC\uADF8|\uD488\uC0AC|"},
    {ColumnUse::kIgnore,
     L"|#|no|no.|nr|nr.|number|num|index|row|nummer|lfd. nr.|lfd.nr.|lfd nr|num\u00E9ro|n\u00B0"
     L"|n\u00FAmero|numero|numer|\u2116|\u756A\u53F7|\u5E8F\u53F7|\u7F16\u53F7|\uBC88\uD638"
     L"|notetype|note "
     L"type|notiztyp|date|created"
     L"|datum|erstellt|"},
    // How a word sounds belongs to it, and a picture of what it means to the other side.
    {ColumnUse::kFrontFile,
     L"|sound|audio|front picture|front sound|ton|klang|bild vorn|son|sonido|audio file"
     L"|\u97F3\u58F0|\u97F3\u9891|\uC18C\uB9AC|"},
    {ColumnUse::kBackFile,
     L"|picture|image|photo|back picture|back sound|bild|foto|bild hinten|imagen|immagine"
     L"|\u753B\u50CF|\u5199\u771F|\u56FE\u7247|\uADF8\uB9BC|"},
};

// One language a row, by the names that its speakers and others give it. The longer ones take
// several literals.
// NOLINTBEGIN(bugprone-suspicious-missing-comma)
constexpr std::wstring_view kLanguages[] = {
    L"|english|englisch|anglais|ingl\u00E9s|inglese|ingl\u00EAs|engels|angielski|en|eng"
    L"|\u0430\u043D\u0433\u043B\u0438\u0439\u0441\u043A\u0438\u0439|\u82F1\u8A9E|\u82F1\u8BED|"
    L"\uC601"
    L"\uC5B4|",
    L"|german|deutsch|allemand|alem\u00E1n|tedesco|alem\u00E3o|duits|niemiecki|de|ger"
    L"|\u043D\u0435\u043C\u0435\u0446\u043A\u0438\u0439|\u30C9\u30A4\u30C4\u8A9E|\u5FB7\u8BED|"
    L"\uB3C5"
    L"\uC77C\uC5B4|",
    L"|french|franz\u00F6sisch|fran\u00E7ais|franc\u00E9s|francese|franc\u00EAs|frans|francuski|fr"
    L"|\u0444\u0440\u0430\u043D\u0446\u0443\u0437\u0441\u043A\u0438\u0439|"
    L"\u30D5\u30E9\u30F3\u30B9\u8A9E"
    L"|\u6CD5\u8BED|",
    L"|spanish|spanisch|espagnol|espa\u00F1ol|spagnolo|espanhol|spaans|hiszpa\u0144ski|es"
    L"|\u0438\u0441\u043F\u0430\u043D\u0441\u043A\u0438\u0439|\u30B9\u30DA\u30A4\u30F3\u8A9E"
    L"|\u897F\u73ED\u7259\u8BED|",
    L"|italian|italienisch|italien|italiano|italiaans|w\u0142oski|it|\u0438\u0442\u0430\u043B\u044C"
    L"\u044F\u043D\u0441\u043A\u0438\u0439|\u30A4\u30BF\u30EA\u30A2\u8A9E|",
    L"|portuguese|portugiesisch|portugais|portugu\u00E9s|portoghese|portugu\u00EAs|portugees|pt"
    L"|\u30DD\u30EB\u30C8\u30AC\u30EB\u8A9E|",
    L"|latin|latein|lateinisch|latino|lat\u00EDn|latijn|la|\u30E9\u30C6\u30F3\u8A9E|",
    L"|russian|russisch|russe|ruso|russo|rosyjski|ru|\u0440\u0443\u0441\u0441\u043A\u0438\u0439"
    L"|\u30ED\u30B7\u30A2\u8A9E|\u4FC4\u8BED|",
    L"|japanese|japanisch|japonais|japon\u00E9s|giapponese|japans|ja|jp|\u65E5\u672C\u8A9E|\u65E5"
    L"\u8BED|\uC77C\uBCF8\uC5B4|",
    L"|chinese|chinesisch|chinois|chino|cinese|zh|\u4E2D\u6587|\u4E2D\u56FD\u8A9E|\u6C49\u8BED|"
    L"mandarin|",
    L"|korean|koreanisch|cor\u00E9en|coreano|ko|\uD55C\uAD6D\uC5B4|\u97D3\u56FD\u8A9E|",
    L"|dutch|niederl\u00E4ndisch|n\u00E9erlandais|nederlands|holand\u00E9s|nl|",
    L"|polish|polnisch|polonais|polski|pl|",
    L"|swedish|schwedisch|svenska|sv|",
    L"|turkish|t\u00FCrkisch|turc|t\u00FCrk\u00E7e|tr|",
    L"|greek|griechisch|altgriechisch|grec|\u03B5\u03BB\u03BB\u03B7\u03BD\u03B9\u03BA\u03AC|el|",
    L"|arabic|arabisch|arabe|\u0627\u0644\u0639\u0631\u0628\u064A\u0629|ar|",
    L"|hebrew|hebr\u00E4isch|\u05E2\u05D1\u05E8\u05D9\u05EA|he|",
    L"|czech|tschechisch|\u010De\u0161tina|cs|",
    L"|hungarian|ungarisch|magyar|hu|",
    L"|danish|d\u00E4nisch|dansk|da|",
    L"|norwegian|norwegisch|norsk|no|",
    L"|finnish|finnisch|suomi|fi|",
};
// NOLINTEND(bugprone-suspicious-missing-comma)

bool Contains(std::wstring_view words, const wxString& word) {
    const std::wstring framed = L"|" + word.ToStdWstring() + L"|";
    return words.find(framed) != std::wstring_view::npos;
}

std::optional<ColumnUse> FindUseOfAttribute(const wxString& name) {
    AttributeInfo info;
    if (!LookupAttribute(name, info)) {
        return std::nullopt;
    }
    for (const UseRow& row : kUses) {
        AttributeInfo own;
        if (row.Attribute != nullptr && LookupAttribute(row.Attribute, own) &&
            own.Mask == info.Mask) {
            return row.Use;
        }
    }
    return std::nullopt;
}

// Strips a mark at the end and what stands in brackets: "Wort*", "Front (de)".
wxString BareHeading(const wxString& heading) {
    wxString bare = LowerWide(heading);
    const size_t bracket = bare.find_first_of(L"([");
    if (bracket != wxString::npos && bracket > 0) {
        bare.Truncate(bracket);
    }
    bare = TrimWide(bare);
    while (bare.length() > 1 && (bare.Last() == ':' || bare.Last() == '*')) {
        bare = TrimWide(bare.Left(bare.length() - 1));
    }
    bare.Replace("|", " ");
    return bare;
}

}  // namespace

const char* AttributeOfUse(ColumnUse use) {
    return RowOf(use).Attribute;
}

wxString DescribeUse(ColumnUse use) {
    const UseRow& row = RowOf(use);
    return row.Label != nullptr ? wxGetTranslation(row.Label) : wxString(row.Attribute);
}

std::optional<ColumnUse> FindUseOfHeading(const wxString& heading, int& language) {
    language = 0;
    const wxString bare = BareHeading(heading);
    if (bare.empty()) {
        return std::nullopt;
    }
    if (const auto use = FindUseOfAttribute(bare)) {
        return use;
    }
    for (const Words& row : kWords) {
        if (Contains(row.Text, bare)) {
            return row.Use;
        }
    }
    for (const std::wstring_view& names : kLanguages) {
        if (Contains(names, bare)) {
            language = static_cast<int>(&names - kLanguages) + 1;
        }
    }
    return std::nullopt;
}
