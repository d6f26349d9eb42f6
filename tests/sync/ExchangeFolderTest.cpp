#include "sync/ExchangeFolder.h"

#include "support/StoreFixture.h"
