#include "cli/CardsOutput.h"

#include <wx/intl.h>

#include <cstdio>
#include <utility>

#include "base/Time.h"
#include "base/Unicode.h"
#include "exchange/ImportJob.h"
#include "exchange/ImportPass.h"
#include "files/StoreRepair.h"
#include "sync/Exchange.h"

namespace {

// Appends a character for JSON, or for a cell of a line, in which line breaks and tabs are blanks.
void AppendCharacter(std::string& out, char32_t point, bool json) {
    if (json && (point == '"' || point == '\\')) {
        out.push_back('\\');
    }
    if (point >= 0x20) {
        char bytes[4];
        out.append(bytes, PutUtf8(point, bytes));
    } else if (json) {
        constexpr char kDigits[] = "0123456789abcdef";
        out.append("\\u00").append(1, kDigits[point >> 4]).append(1, kDigits[point & 0xF]);
    } else {
        const bool isBlank = point == '\n' || point == '\r' || point == '\t';
        out.push_back(isBlank ? ' ' : static_cast<char>(point));
    }
}

// Appends a text in UTF-16, whose broken parts become U+FFFD.
void AppendUtf8(std::string& out, std::u16string_view text, bool json) {
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        const bool isHigh = point >= 0xD800 && point < 0xDC00;
        if (isHigh && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            point = 0x10000 + ((point - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00);
        }
        AppendCharacter(out, IsScalarValue(point) ? point : kReplacement, json);
    }
}

// Returns whether a value of an export, such as "-5" or "2.500000", is a number of JSON; a time and
// an identity, which may also begin with digits, are not.
bool IsJsonNumber(std::string_view value) {
    const std::string_view digits = value.substr(!value.empty() && value.front() == '-' ? 1 : 0);
    return !digits.empty() && digits.front() != '.' &&
           digits.find_first_not_of("0123456789.") == std::string_view::npos;
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

int CardPrinter::WriteAttribute(const AttributeName& name, std::u16string_view value) {
    if (mIsJson) {
        AppendKey(name.Text());
        mText.push_back('"');
        AppendUtf8(mText, value, true);
        mText.push_back('"');
        return 0;
    }
    for (const auto& [cell, text] :
         {std::make_pair(u"Front", &mFront), std::make_pair(u"Back", &mBack),
          std::make_pair(u"Category", &mCategory)}) {
        if (name.Text() == cell) {
            AppendUtf8(*text, value, false);
        }
    }
    return 0;
}

int CardPrinter::WritePlain(const AttributeName& name, std::string_view value) {
    if (!mIsJson) {
        return 0;
    }
    AppendKey(name.Text());
    const bool isValue = value == "true" || value == "false" || IsJsonNumber(value);
    mText.append(isValue ? "" : "\"").append(value).append(isValue ? "" : "\"");
    return 0;
}

void CardPrinter::AppendKey(std::u16string_view name) {
    mText.append(!mIsOpen ? (mHasRecords ? ",{\"" : "{\"") : ",\"");
    mIsOpen = true;
    AppendUtf8(mText, name, true);
    mText.append("\":");
}

void CardPrinter::EndRecord() {
    if (mIsJson) {
        mText.append("}\n");
    } else {
        mText.append(mFront).append("\t").append(mBack).append("\t").append(mCategory).append("\n");
        mFront.clear();
        mBack.clear();
        mCategory.clear();
    }
    mIsOpen = false;
    mHasRecords = true;
}

bool CardPrinter::Print() {
    const bool isGood = std::fwrite(mText.data(), 1, mText.size(), stdout) == mText.size();
    mText.clear();
    return isGood;
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

bool PrintExchange(const ExchangeReport& report, const wxString& message, bool json) {
    const auto newsOf = [](const ExchangeMachine& machine) {
        return ToUtf8(FormatTimeStamp(wxDateTime(wxLongLong(machine.LastNews))));
    };
    if (json) {
        Json machines = Json::array();
        for (const ExchangeMachine& machine : report.Machines) {
            machines.push_back({{"name", machine.Name}, {"lastNews", newsOf(machine)}});
        }
        return PrintJson({{"sent", report.Sent},
                          {"received", report.Received},
                          {"conflicts", report.Conflicts},
                          {"machines", machines},
                          {"message", ToUtf8(message)}});
    }
    bool isGood = PrintLine(ToUtf8(wxString::Format(
        _("Sent: %lld, received: %lld, changed on both: %lld"), static_cast<long long>(report.Sent),
        static_cast<long long>(report.Received), static_cast<long long>(report.Conflicts))));
    for (const ExchangeMachine& machine : report.Machines) {
        isGood = isGood && PrintLine(ToUtf8(wxString::Format(_("Last news of \"%s\": %s"),
                                                             FromUtf8(Cell(FromUtf8(machine.Name))),
                                                             FromUtf8(newsOf(machine)))));
    }
    return isGood && (message.empty() || PrintLine(ToUtf8(message)));
}

bool PrintRepair(const RepairReport& report, bool json) {
    return json ? PrintJson({{"cards", report.Cards},
                             {"remade", report.Remade},
                             {"lost", report.Lost},
                             {"categories", report.Categories},
                             {"namelessCategories", report.NamelessCategories},
                             {"mediaLeft", report.MediaError == 0 ? "" : ToUtf8(report.MediaLeft)}})
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
