#pragma once

#include "exchange/CardRecordWriter.h"
#include "exchange/ExportOptions.h"
#include "store/FlashCard.h"

class DelimitedWriter;

// Which attributes of a card go into its record, in which order and with which values.

// The attributes of the full forms. The second texts of the sides become attributes of their own
// only when they are to be split off. An empty category is left out. 0, or -1 from the writer.
int WriteCardRecord(CardRecordWriter& writer, const FlashCard& card, const wxString& category,
                    bool splitSecondTexts, bool includeScheduling);

// The header of the delimited form: a column for each attribute that WriteCardRecord writes.
void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling);

// The few attributes that the previous generation of the program knows.
int WriteVersion1Record(CardRecordWriter& writer, const FlashCard& card, bool includeScheduling);
