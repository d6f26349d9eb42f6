#pragma once

#include <wx/print.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "list/PrintLayout.h"

class Database;
class wxFrame;

// Draws the pages of a layout on a printer, into a file, or in the window of the preview.
class CardPrintout : public wxPrintout {
  public:
    CardPrintout(const wxString& title, std::shared_ptr<PrintLayout> layout)
        : wxPrintout(title), mpLayout(std::move(layout)) {}

    void OnPreparePrinting() override;
    bool HasPage(int page) override { return page >= 1 && page <= mpLayout->CountPages(); }
    void GetPageInfo(int* first, int* last, int* from, int* to) override;
    bool OnPrintPage(int page) override;

  private:
    std::shared_ptr<PrintLayout> mpLayout;
};

// Returns the layout of the cards with these row ids, which it reads from the store as long as it
// is used. A card that is gone meanwhile leaves its place empty.
std::shared_ptr<PrintLayout> MakePrintLayout(Database& database, std::vector<int64_t> rowIds,
                                             const wxString& heading, PrintForm form);

// Asks how to print these cards, and prints them or shows them in a preview, from which they can be
// printed. Returns the window of the preview, which reads the store until it is closed, or null.
wxFrame* PrintCards(wxWindow& parent, Database& database, const std::vector<int64_t>& rowIds,
                    const wxString& heading);
