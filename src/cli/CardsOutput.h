#pragma once

#include <wx/string.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "formats/CardRecord.h"

struct ImportFault;
struct ImportResult;
struct RepairReport;

// What velomind-cards prints on standard output: lines for people and simple scripts, or JSON. No
// lock on the store may be held meanwhile, as the reader of a pipe may take its time.

using Json = nlohmann::ordered_json;

// Collects the attributes of a record, with the texts that a text record gives them.
class JsonRecordWriter : public CardRecordWriter {
  public:
    int WriteAttribute(const AttributeName& name, std::u16string_view value) override;
    void EndRecord() override {}
    void Flush() override {}
    // Returns the record as an object.
    std::string GetText() const;
    // Returns the front, the back and the category, with tabs between them.
    std::string GetLine() const;

  private:
    Json mObject = Json::object();
};

// The counts of one category, for either direction of study.
struct CategoryCounts {
    wxString Name;
    int32_t Cards = 0;
    struct Direction {
        // Cards that are not excluded, those of them that were scored, and those that are due.
        int32_t Studied = 0;
        int32_t Introduced = 0;
        int32_t Due = 0;
    };
    Direction Forward;
    Direction Reverse;
};

// Returns false once something could not be written.
bool PrintJson(const Json& value);
bool PrintLine(const std::string& line);

// Returns the text in UTF-8 with its line breaks and tabs as blanks, for a cell of a line.
std::string Cell(const wxString& text);

// The notices are what the import of a deck could not take along.
bool PrintImport(const ImportResult& result, const std::vector<wxString>& notices, bool json);
// Prints the path of a backup.
bool PrintPath(const wxString& path, bool json);
bool PrintRepair(const RepairReport& report, bool json);
bool PrintFaults(const std::vector<ImportFault>& faults, bool json);
bool PrintDue(const std::vector<CategoryCounts>& categories, bool json);
bool PrintStats(const wxString& store, const std::vector<CategoryCounts>& categories, bool json);
