#include "sync/ExchangeFile.h"

#include "support/StoreFixture.h"
