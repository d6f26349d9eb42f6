#pragma once

#include <wx/print.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "list/PrintLayout.h"

class CardPictures;
class Database;
class wxFrame;

// Cards on their way to paper, and their pictures. Shared by all printouts of the same cards.
struct PrintedCards {
    std::shared_ptr<PrintLayout> Layout;
    std::shared_ptr<CardPictures> Pictures;
};

// Draws the pages of a layout on a printer, into a file, or in the window of the preview.
class CardPrintout : public wxPrintout {
  public:
    CardPrintout(const wxString& title, PrintedCards cards)
        : wxPrintout(title), mpLayout(cards.Layout), mpPictures(cards.Pictures) {}

    void OnPreparePrinting() override;
    bool HasPage(int page) override { return page >= 1 && page <= mpLayout->CountPages(); }
    void GetPageInfo(int* first, int* last, int* from, int* to) override;
    bool OnPrintPage(int page) override;

  private:
    std::shared_ptr<PrintLayout> mpLayout;
    std::shared_ptr<CardPictures> mpPictures;
};

// Lays the cards with these row ids out, which are read from the store as long as the layout is
// used. A card that is gone meanwhile leaves its place empty.
PrintedCards LayOutCards(Database& database, std::vector<int64_t> rowIds, const wxString& heading,
                         PrintForm form);

// Asks how to print these cards, and prints them or shows them in a preview, from which they can be
// printed. Returns the window of the preview, which reads the store until it is closed, or null.
wxFrame* PrintCards(wxWindow& parent, Database& database, const std::vector<int64_t>& rowIds,
                    const wxString& heading);
