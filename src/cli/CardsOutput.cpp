#include "cli/CardsOutput.h"

#include <wx/intl.h>

#include <cstdio>

#include "base/Unicode.h"
#include "exchange/ImportJob.h"
#include "exchange/ImportPass.h"
#include "files/StoreRepair.h"
#include "formats/TextSink.h"

namespace {

std::string UnitsToUtf8(std::u16string_view text) {
    StringSink sink;
    sink.Write(text);
    return ToUtf8(sink.GetText());
}

// Otherwise text that is not UTF-8, which we never have, would throw.
std::string Dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json LineValue(int32_t line) {
    return line < 1 ? Json(nullptr) : Json(line);
}

std::string Row(const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& cell : cells) {
        row += (&cell == &cells.front() ? "" : "\t") + cell;
    }
    return row;
}

Json DirectionObject(const CategoryCounts::Direction& direction) {
    return {{"studied", direction.Studied},
            {"introduced", direction.Introduced},
            {"due", direction.Due}};
}

}  // namespace

int JsonRecordWriter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    mObject[UnitsToUtf8(name.Text())] = UnitsToUtf8(value);
    return 0;
}

std::string JsonRecordWriter::GetText() const {
    return Dump(mObject);
}

std::string JsonRecordWriter::GetLine() const {
    const auto cell = [this](const char* name) {
        return mObject.contains(name) ? Cell(FromUtf8(mObject[name].get<std::string>())) : "";
    };
    return cell("Front") + "\t" + cell("Back") + "\t" + cell("Category");
}

bool PrintLine(const std::string& line) {
    return std::fwrite(line.data(), 1, line.size(), stdout) == line.size() &&
           std::fputc('\n', stdout) != EOF;
}

bool PrintJson(const Json& value) {
    return PrintLine(Dump(value));
}

std::string Cell(const wxString& text) {
    std::string cell = ToUtf8(text);
    for (char& letter : cell) {
        if (letter == '\n' || letter == '\r' || letter == '\t') {
            letter = ' ';
        }
    }
    return cell;
}

bool PrintImport(const ImportResult& result, const std::vector<wxString>& notices, bool json) {
    if (json) {
        Json value = {
            {"inserted", result.RecordsInserted},
            {"merged", result.RecordsMerged},
            {"duplicates", result.DuplicatesIgnored},
            {"message", ToUtf8(result.Message)},
            {"line", result.Message.empty() ? Json(nullptr) : LineValue(result.LineNumber)}};
        for (const wxString& notice : notices) {
            value["notices"].push_back(ToUtf8(notice));
        }
        return PrintJson(value);
    }
    for (const wxString& notice : notices) {
        if (!PrintLine(ToUtf8(notice))) {
            return false;
        }
    }
    return PrintLine(ToUtf8(wxString::Format(_("Inserted: %i, merged: %i, duplicates ignored: %i"),
                                             result.RecordsInserted, result.RecordsMerged,
                                             result.DuplicatesIgnored)));
}

bool PrintPath(const wxString& path, bool json) {
    return json ? PrintJson({{"backup", ToUtf8(path)}}) : PrintLine(ToUtf8(path));
}

bool PrintRepair(const RepairReport& report, bool json) {
    return json ? PrintJson({{"cards", report.Cards},
                             {"remade", report.Remade},
                             {"lost", report.Lost},
                             {"categories", report.Categories},
                             {"namelessCategories", report.NamelessCategories}})
                : PrintLine(ToUtf8(DescribeRepair(report)));
}

bool PrintFaults(const std::vector<ImportFault>& faults, bool json) {
    if (json) {
        Json rows = Json::array();
        for (const ImportFault& fault : faults) {
            rows.push_back({{"line", LineValue(fault.Line)}, {"message", ToUtf8(fault.Message)}});
        }
        return PrintJson(rows);
    }
    for (const ImportFault& fault : faults) {
        const std::string line = fault.Line < 1 ? "" : std::to_string(fault.Line) + ": ";
        if (!PrintLine(line + Cell(fault.Message))) {
            return false;
        }
    }
    return true;
}

bool PrintDue(const std::vector<CategoryCounts>& categories, bool json) {
    Json rows = Json::array();
    for (const CategoryCounts& counts : categories) {
        if (json) {
            rows.push_back({{"category", ToUtf8(counts.Name)},
                            {"forward", counts.Forward.Due},
                            {"reverse", counts.Reverse.Due}});
        } else if (!PrintLine(Row({std::to_string(counts.Forward.Due),
                                   std::to_string(counts.Reverse.Due), Cell(counts.Name)}))) {
            return false;
        }
    }
    return !json || PrintJson(rows);
}

bool PrintStats(const wxString& store, const std::vector<CategoryCounts>& categories, bool json) {
    if (json) {
        Json rows = Json::array();
        for (const CategoryCounts& counts : categories) {
            rows.push_back({{"category", ToUtf8(counts.Name)},
                            {"cards", counts.Cards},
                            {"forward", DirectionObject(counts.Forward)},
                            {"reverse", DirectionObject(counts.Reverse)}});
        }
        return PrintJson({{"store", ToUtf8(store)}, {"categories", rows}});
    }
    const auto number = [](int32_t count) { return std::to_string(count); };
    bool isGood = PrintLine(
        Row({Cell(_("Cards")), Cell(_("Introduced")), Cell(_("Due")),
             Cell(_("Introduced (reverse)")), Cell(_("Due (reverse)")), Cell(_("Category"))}));
    for (const CategoryCounts& counts : categories) {
        isGood =
            isGood && PrintLine(Row({number(counts.Cards), number(counts.Forward.Introduced),
                                     number(counts.Forward.Due), number(counts.Reverse.Introduced),
                                     number(counts.Reverse.Due), Cell(counts.Name)}));
    }
    return isGood;
}
