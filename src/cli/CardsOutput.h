#pragma once

#include <wx/string.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "formats/CardRecord.h"

struct ExchangeReport;
struct ImportFault;
struct ImportResult;
struct RepairReport;

// Prints to standard output: lines for people and simple scripts, or JSON. Hold no lock on the
// store meanwhile, as the reader of a pipe may take its time.

using Json = nlohmann::ordered_json;

// Prints the records of cards: as JSON objects whose numbers and booleans are such, with commas
// between them, or as lines of the front, the back and the category. The objects are written here,
// since a million of them through values of the library take half a minute.
class CardPrinter : public CardRecordWriter {
  public:
    explicit CardPrinter(bool json) : mIsJson(json) {}

    int WriteAttribute(const AttributeName& name, std::u16string_view value) override;
    int WritePlain(const AttributeName& name, std::string_view value) override;
    void EndRecord() override;
    void Flush() override {}
    // Prints the records that have ended. Returns false when something could not be written.
    bool Print();

  private:
    void AppendKey(std::u16string_view name);

    bool mIsJson;
    // Whether a record was begun, and whether one has ended.
    bool mIsOpen = false;
    bool mHasRecords = false;
    std::string mText;
    // The cells of a line.
    std::string mFront;
    std::string mBack;
    std::string mCategory;
};

// The counts of one category in each direction.
struct CategoryCounts {
    wxString Name;
    int32_t Cards = 0;
    struct Direction {
        // Cards that are not excluded, and those of them that were scored and that are due.
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

// The notices say what the import of a deck left out.
bool PrintImport(const ImportResult& result, const std::vector<wxString>& notices, bool json);
// Prints the path of a backup.
bool PrintPath(const wxString& path, bool json);
// The message is that of the report, or the question that it asks.
bool PrintExchange(const ExchangeReport& report, const wxString& message, bool json);
bool PrintRepair(const RepairReport& report, bool json);
bool PrintFaults(const std::vector<ImportFault>& faults, bool json);
bool PrintDue(const std::vector<CategoryCounts>& categories, bool json);
bool PrintStats(const wxString& store, const std::vector<CategoryCounts>& categories, bool json);
