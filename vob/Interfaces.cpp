#include "vob/iImageViewClient.h"
#include "vob/iStillsProvider.h"

iImageViewClient::~iImageViewClient() = default;
iStillsProvider::~iStillsProvider() = default;
