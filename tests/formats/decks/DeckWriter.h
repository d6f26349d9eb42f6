#pragma once

#include <sqlite3.h>
#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// Writes decks as their programs would write them.

using Members = std::vector<std::pair<std::string, std::string>>;

inline const char kRows[] =
    "CREATE TABLE notes(id INTEGER PRIMARY KEY, guid, mid, tags, flds);"
    "CREATE TABLE cards(id INTEGER PRIMARY KEY, nid, did, odid, ord, mod, type, queue, due, odue,"
    " ivl, factor, data);"
    "CREATE TABLE revlog(id INTEGER PRIMARY KEY, cid, ease, type, factor);";

// One type with both directions, one with deletions.
inline const std::string kTypes =
    R"({"7":{"name":"Two","type":0,"flds":[{"name":"Switch","ord":2},{"name":"Word","ord":0},)"
    R"({"name":"Sense","ord":1},{"name":"More","ord":3}],"tmpls":[{"ord":1,)"
    R"("qfmt":"{{#Switch}}{{Sense}}{{/Switch}}","afmt":"{{FrontSide}}{{Word}}"},)"
    R"({"ord":0,"qfmt":"{{furigana:Word}}","afmt":"{{FrontSide}}<hr>{{Sense}}{{More}}"}]},)"
    R"("8":{"name":"Gaps","type":1,"flds":[{"name":"Text","ord":0},{"name":"Extra","ord":1}],)"
    R"("tmpls":[{"ord":0,"qfmt":"{{cloze:Text}}","afmt":"{{cloze:Text}}{{Extra}}"}]}})";

// Schema 11, where the kinds of notes and the decks are JSON. Times begin at 1,000,000,000.
inline std::string Schema11(const std::string& rows) {
    return std::string(kRows) + "CREATE TABLE col(ver, crt, models, decks);" +
           "INSERT INTO col VALUES(11, 1000000000, '" + kTypes +
           R"(', '{"1":{"name":"Default"},"2":{"name":"A::B"},"3":{"name":"C","dyn":1}}');)" + rows;
}

// Schema 18, where they are tables, with texts in messages of "protocol buffers".
inline std::string Schema18(const std::string& rows) {
    return std::string(kRows) +
           "CREATE TABLE col(ver, crt, models, decks);INSERT INTO col VALUES(18,1000000000,'','');"
           "CREATE TABLE notetypes(id INTEGER PRIMARY KEY, name COLLATE NOCASE, config);"
           "CREATE TABLE fields(ntid, ord, name, PRIMARY KEY(ntid, ord)) WITHOUT ROWID;"
           "CREATE TABLE templates(ntid, ord, config, PRIMARY KEY(ntid, ord)) WITHOUT ROWID;"
           "CREATE TABLE decks(id INTEGER PRIMARY KEY, name, kind);"
           "INSERT INTO notetypes VALUES(7, 'Two', x'');"
           "INSERT INTO fields VALUES(7, 0, 'Word'), (7, 1, 'Sense'), (7, 2, 'More');"
           // The fields 1 and 2: "{{Word}}" and "{{Sense}}".
           "INSERT INTO templates VALUES(7, 0, x'0A08' || CAST('{{Word}}' AS BLOB) || x'1209' ||"
           " CAST('{{Sense}}' AS BLOB));"
           "INSERT INTO decks VALUES(2, 'A' || char(31) || 'B', x'0A00');" +
           rows;
}

// A note, and a new card of it in a direction.
inline std::string NoteRow(int id, const std::string& guid, int type, const std::string& fields) {
    return "INSERT INTO notes VALUES(" + std::to_string(id) + ",'" + guid + "'," +
           std::to_string(type) + ",' t1 t2 ',replace('" + fields + "', '|', char(31)));";
}
inline std::string NewCard(int note, int number, const std::string& due = "1") {
    return "INSERT INTO cards(nid, did, odid, ord, mod, type, queue, due, odue, ivl, factor, data)"
           " VALUES(" +
           std::to_string(note) + ",2,0," + std::to_string(number) + ",0,0,0," + due +
           ",0,0,0,'');";
}

inline const char kXml[] =
    "<openSM2sync number_of_entries=\"4\">"
    "<log type=\"10\" o_id=\"t\"><name>French</name></log>"
    "<log type=\"16\" o_id=\"f\"><f>chat</f><m_1>cat\nkitty</m_1><p_1>sha</p_1><n>n</n></log>"
    "<log type=\"6\" o_id=\"c1\" card_t=\"3\" fact=\"f\" fact_v=\"3.1\" tags=\"t\" gr=\"4\" "
    "e=\"2.0\""
    " l_rp=\"1600000000\" n_rp=\"1600864000\"/>"
    "<log type=\"6\" o_id=\"c2\" card_t=\"3\" fact=\"f\" fact_v=\"3.2\" tags=\"t\" gr=\"-1\" "
    "e=\"2.5\""
    " l_rp=\"-1\" n_rp=\"-1\"/></openSM2sync>";

// Makes a database by a script. Returns what is wrong, or nothing.
inline std::string WriteDatabase(const wxString& path, const std::string& script) {
    std::remove(path.utf8_str());
    sqlite3* handle = nullptr;
    sqlite3_open(path.utf8_str(), &handle);
    const int result = sqlite3_exec(handle, script.c_str(), nullptr, nullptr, nullptr);
    std::string error = result == SQLITE_OK ? "" : sqlite3_errmsg(handle);
    sqlite3_close(handle);
    return error;
}

inline void WritePackage(const wxString& path, const Members& members) {
    wxFileOutputStream file(path);
    wxZipOutputStream zip(file);
    for (const auto& [name, bytes] : members) {
        zip.PutNextEntry(name);
        zip.Write(bytes.data(), bytes.size());
    }
}
