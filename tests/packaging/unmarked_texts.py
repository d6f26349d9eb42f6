"""Finds texts in the sources of the windows that look as if a person reads them and are not marked
for translation. Prints them and ends with 1 if there are any: unmarked_texts.py SOURCE-FOLDER...

A literal is taken for a text when it has two words, or is one capitalised word or carries the marks
of a label (&, a colon, an ellipsis). What is for machines all the same stands in ALLOWED.
"""

import os
import re
import sys

MARKS = {"_", "wxPLURAL", "wxTRANSLATE", "wxGETTEXT_IN_CONTEXT"}
# Calls whose texts machines or developers read.
MACHINE_CALLS = re.compile(
    r"VELOMIND_TRACE|static_assert|wx(CHECK|ASSERT|FAIL)\w*|wxGetEnv|StartsWith|Execute|Step"
    r"|Read(Int|Rows)|VisitReady|SelectReadyCount|SelectIntBindInt|CardSelectRowIdsOrder"
    r"|(Read|Write)\w+Setting")
LABEL = re.compile(r"[A-Z][a-z]+\W*\Z|.*(\w\s+[\w(\"']|&\w|\w:|\w\.\.\.)", re.DOTALL)
SQL = re.compile(r"\b(SELECT|INSERT|UPDATE|DELETE|CREATE|WHERE|ORDER BY|LIKE|VALUES|ON Cards|FROM Cards|INDEXED|LIMIT)\b")
ADDRESS = re.compile(r"://|[?&]\w+=")
class Any:
    """Holds every text."""
    def __contains__(self, _):
        return True


ANY = Any()
# By the end of the file's name.
ALLOWED = {
    # What columns are called in the tables of others, in many languages.
    "TableNames.cpp": ANY,
    # The words of the headings of tables for Anki.
    "Table.cpp": {"Tags"}, "TableSurvey.cpp": {"if matches", "match scope", "guid column", "deck column", "tags column",
                        "notetype column", "&nbsp;", "&lt;", "&amp;", "[sound:", "[sound: ",
                        "Tags"},
    # Drawings are a language of their own.
    "PlotCanvas.cpp": ANY,
    # Rules in the library's own language.
    "Folding.cpp": ANY, "DatabaseSearch.cpp": ANY, "TextPattern.cpp": ANY,
    # A word of the search.
    "SearchQuery.cpp": {"is:"},
    # The heading of a file for machines, and what databases of others are asked.
    "ReviewLog.cpp": ANY, "ForeignDatabase.cpp": ANY,
    # The names of attributes in exported files, and the category that they leave out.
    "Export.cpp": {"Front", "Back", "Category", "Author", "Chapter", "Notes", "Active",
                   "Introduced", "Difficulty", "Default"},
    # The names of columns, and the end of a statement.
    "DatabaseTexts.cpp": {"Front", "Back", "Notes", "Author", "Chapter", " RETURNING ROWID;"},
    # How a file of the engine begins, and what it is asked.
    "PageFile.cpp": {"SQLite format 3"}, "RepairedStore.cpp": ANY, "StoreRepair.cpp": ANY,
    "StoreCheck.cpp": {"PRAGMA integrity_check(10000)", "PRAGMA page_size"},
    "StoreSchema.cpp": {"PRAGMA ignore_check_constraints = 1"},
    "StoreFiles.cpp": {"Cards", "Categories", "Globals", "SQLite format 3\\0"},
    # Words of the files of other programs.
    "AnkiDeck.cpp": {"Tags: ", "image-occlusion:"}, "MnemosyneDeck.cpp": {"Tags: "},
    "AnkiText.cpp": ANY,
    "HtmlText.cpp": {"[sound:"},
    # The words of the lines of pictures and sounds.
    "MediaLines.cpp": {"[picture:", "[sound:"},
    # The words of a command line, and names of attributes.
    "CardsOptions.cpp": {"export [--format vlm|delimited|vlm1|anki] [--scheduling] [--output FILE]",
                         "list [--category NAME] [--exact] [--reverse] [SEARCH]", "restore FILE", "repair DAMAGED NEW",
                         "import [--dry-run] [--large] [--encoding NAME] [--delimiter TEXT] [--columns LIST] "
                         "[--headings yes|no] [--known stop|skip|update] FILE",
                         "check [--encoding NAME] [--delimiter TEXT] [--columns LIST] "
                         "[--headings yes|no] FILE",
                         "sync [--name NAME] [--take-newer|--take-mine] [--join-equal yes|no] FOLDER"},
    # What the engine is asked.
    "SyncState.cpp": ANY,
    "CardsOutput.cpp": {"Front", "Back", "Category"},
    # Names and values of settings.
    "SettingsFile.h": {"Backups"},
    "Settings.h": {"Font", "Test"},
    "Settings.cpp": {"R%03iG%03iB%03i", "Category", "Position", "Size", "Test", "Dummy", "XDG_CONFIG_HOME"},
    "PreferencesDialog.cpp": {"Font"},
    # What the platform tells of.
    "Toolkit.cpp": {"notify::gtk-theme-name", "notify::gtk-application-prefer-dark-theme",
                    "notify::gtk-xft-dpi"},
    # What stands on the cards that are shown in place of one.
    "Scheduler.cpp": {"Empty", "Error"},
    "Commands.cpp": {"mailto:"},
    "ImportCommand.cpp": {"Velomind Classic"},
    "ProgramInfo.cpp": {" Mobile ", "Language", "Help."},
    # Names of columns in the store, and of its operations in messages.
    "CardParts.cpp": ANY, "DatabaseParts.cpp": ANY,
    "DatabaseLists.cpp": {"Front", "Back", "Author", "Chapter", "Notes"},
    "DatabaseCards.cpp": {"Delete CardId: %s", " NOT NULL", ") AND ROWID IN "},
    "DatabaseCategories.cpp": {"Delete Category: %i", "%s Global: %s/%s", "Insert", "Update"},
    # The program, its maker, and the category that each store begins with.
    "": {"Velomind", "Ostrel"},
    "CardCollector.cpp": {"Default"}, "CurrentCategory.cpp": {"Default"},
    "EditFrame.cpp": {"Default"}, "ImportRecord.h": {"Default"}}

TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|^[ \t]*#[^\n]*'
    r'|(?P<text>(?:u8|[LuU])?"(?:\\.|[^"\\])*")'
    r"|'(?:\\.|[^'\\])+'"
    r'|(?P<word>[A-Za-z_]\w*)|(?P<sign>[^\s])', re.DOTALL | re.MULTILINE)


def texts_of(source):
    """(line, calls around it from the outside in, text) of each literal; neighbours are joined."""
    calls, last = [], None
    literal = None
    for token in TOKEN.finditer(source):
        if token["text"]:
            words = token["text"].split('"', 1)[1][:-1]
            if literal:
                literal[2] += words
            else:
                literal = [source.count("\n", 0, token.start()) + 1, tuple(calls), words]
            continue
        if not token["word"] and not token["sign"]:
            continue
        if literal:
            yield literal
            literal = None
        if token["sign"] in ("(", "{"):
            calls.append(last or "")
        elif token["sign"] in (")", "}") and calls:
            calls.pop()
        last = token["word"]


def is_unmarked(path, calls, text):
    if any(path.endswith(end) and text in texts for end, texts in ALLOWED.items()):
        return False
    if SQL.search(text) or any(c in MARKS or MACHINE_CALLS.fullmatch(c) for c in calls):
        return False
    plain = re.sub(r"\\[ntr]", " ", text).replace('\\"', '"')
    plain = re.sub(r"%[-+0-9.$]*l*[a-zA-Z]", "", plain)
    return not ADDRESS.search(plain) and bool(LABEL.match(plain))


def find_unmarked(folder):
    for where, _, names in sorted(os.walk(folder)):
        for name in sorted(names):
            if name.endswith((".cpp", ".h")):
                path = os.path.join(where, name)
                with open(path, encoding="utf-8") as file:
                    for line, calls, text in texts_of(file.read()):
                        if is_unmarked(path, calls, text):
                            yield f'{path}:{line}: "{text}"'


SAMPLE = r"""
    // "A comment"
    auto* const button = new wxButton(this, wxID_ANY, "Press \"me\"" " now");
    SetTitle(wxString::Format(_("Marked %s"), "Forgotten"));
    constexpr Row kRows[] = {{ID_ROW, wxTRANSLATE("Marked too")}, {'"', "&Row"}, {0, "RowKey"}};
"""


def main(folders):
    seen = [text for _, calls, text in texts_of(SAMPLE) if is_unmarked("", calls, text)]
    assert seen == [r'Press \"me\" now', "Forgotten", "&Row"], seen
    found = [text for folder in folders for text in find_unmarked(folder)]
    print("\n".join(found) or "every text is marked")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
